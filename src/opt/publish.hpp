// Solver results into the model's solution store and warm start, in the user's terms (see SolutionStore): objective
// values and duals times the objective sense, slacks in the rows' own signs. Nothing that is not a number is stored.
#pragma once

#include "mip/mip_problem.hpp"
#include "model/model.hpp"
#include "simplex/lp_driver.hpp"

namespace zorvex {

// After a limit or an interruption the point is a result only when it is feasible within `feasibility_tol`; the basis
// is kept either way, so that the next solve goes on from it.
//   FarkasDual lambda = -y for the proof y of LpDriverResult: lambda >= 0 on '<' rows, <= 0 on '>' rows, and the
//   least lambda'A x within the bounds exceeds lambda'b by FarkasProof.
// Proof and ray are kept with InfUnbdInfo only; what is read off them (variables, FarkasProof) always.
void publish_lp(ZLPmodel& model, const LpData& lp, LpDriverResult&& result, double feasibility_tol);

void publish_mip(ZLPmodel& model, const MipResult& result);

}  // namespace zorvex
