// The answer gate: a claim about an LP counts only after it has been checked against the LP's own data in long double.
#pragma once

#include <vector>

#include "base/quality.hpp"
#include "linalg/lp_data.hpp"
#include "simplex/lp_solver.hpp"

namespace zorvex {

// Smallest proven gap, relative to max |y|, that counts: far above the rounding of long double sums.
inline constexpr double kMinFarkasGap = 1e-12;

ProblemView view_of(const LpData& lp);

// cost'x + offset, summed in long double.
double objective_at(const LpData& lp, const std::vector<double>& x);

// Bounds and rows hold within `tolerance` (absolute).
bool is_feasible(const LpData& lp, const std::vector<double>& x, double tolerance);

// Feasible, and the duals have the signs that the bounds allow, within the user's tolerances.
bool is_optimal(const LpData& lp, const LpPoint& point, const SimplexOptions& options);

// True when `y` proves that no point satisfies rows and bounds; `gap` receives the amount, relative to max |y|.
bool proves_infeasible(const LpData& lp, const std::vector<double>& y, double& gap);

// True when the objective falls without end along `ray`, whatever the starting point.
bool is_improving_ray(const LpData& lp, const std::vector<double>& ray);

}  // namespace zorvex
