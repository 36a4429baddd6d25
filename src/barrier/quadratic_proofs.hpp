// What the simplex can say about a convex quadratic model on which the barrier found no solution: infeasibility does
// not depend on the objective, and the model is unbounded exactly when it is feasible and its linear part falls along a
// direction of recession r with Q r = 0 (M. Frank, P. Wolfe, Naval Res. Logist. Q. 3 (1956) 95-110).
#pragma once

#include "base/stop_token.hpp"
#include "simplex/lp_engine.hpp"

namespace zorvex {

// kInfeasible or kUnbounded with checked proofs; kNumeric, with the barrier's last point, when neither can be shown;
// limits.
EngineAnswer prove_no_solution(const LpData& lp, const SimplexOptions& options, const StopToken& stop, LpPoint last);

}  // namespace zorvex
