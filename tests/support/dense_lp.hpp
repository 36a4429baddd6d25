// Independent oracle for small linear programs: a dense tableau simplex in long double with Bland's rule. Slow, simple,
// and sharing nothing with the solver but the LpData it reads. Meant for a few dozen rows and columns with coefficients
// of moderate size.
#pragma once

#include <vector>

#include "base/status.hpp"
#include "linalg/basis.hpp"
#include "linalg/lp_data.hpp"

namespace zorvex::oracle {

// status is kOptimal, kInfeasible or kUnbounded (then a feasible point exists). The vectors and the basis hold the last
// vertex: the optimal one after kOptimal. Signs as in LpPoint.
struct DenseLpResult {
  SolveStatus status = SolveStatus::kLoaded;
  double objective = 0;  // offset included
  std::vector<double> x, row_activity, pi, reduced_cost;
  Basis basis;                 // statuses only
  std::vector<double> farkas;  // after kInfeasible: multipliers as farkas_gap wants them
};

DenseLpResult solve_dense_lp(const LpData& lp);

// The point that a basis stands for: nonbasic variables on their bounds (or at `free_value[col]` when nonbasic off
// bounds), basic ones from a dense solve of the rows. False when the basis has the wrong count or is singular.
bool point_of_basis(const LpData& lp, const Basis& basis, const std::vector<double>& free_value, std::vector<double>& x,
                    std::vector<double>& row_activity);

// Duals of a basis: pi with zero reduced cost on basic columns and zero pi on basic rows. False when singular.
bool duals_of_basis(const LpData& lp, const Basis& basis, std::vector<double>& pi);

}  // namespace zorvex::oracle
