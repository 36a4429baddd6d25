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

// c + Qx: what the duals price at x.
std::vector<double> gradient_at(const LpData& lp, const std::vector<double>& x);

// cost'x + 1/2 x'Qx + offset, summed in long double.
double objective_at(const LpData& lp, const std::vector<double>& x);

// Bounds and rows hold within `tolerance` (absolute).
bool is_feasible(const LpData& lp, const std::vector<double>& x, double tolerance);

// Feasible, and the duals have the signs that the bounds allow, within the user's tolerances. Multipliers price the
// gradient at the point. A quadratic model's point is no vertex: there the gap has to be closed too.
bool is_optimal(const LpData& lp, const LpPoint& point, const SimplexOptions& options);

// The same, but rows and reduced costs may miss their bounds by the rounding of x and pi to doubles, unit roundoff
// times the magnitudes they are the sum of, where that is more than the tolerance: no other solver could return less.
// Linear models only.
bool is_optimal_as_stored(const LpData& lp, const LpPoint& point, const SimplexOptions& options);

// What complementary slackness lacks is within the dual tolerance, relative to the objective: the point's objective and
// the bound that its duals prove agree. Where duals of a linear model have the wrong sign, within the tolerance, they
// prove no bound: what they promise at the scale of the point counts in its place.
bool closes_gap(const LpData& lp, const LpPoint& point, const SimplexOptions& options);

// Multipliers of a wrong sign (their rows have no such side) that are no more than rounding become zero.
void drop_sign_noise(const LpData& lp, std::vector<double>& y);

// True when `y` proves that no point satisfies rows and bounds; `gap` receives the amount, relative to max |y|.
bool proves_infeasible(const LpData& lp, const std::vector<double>& y, double& gap);

// measure_dual of the point, with the gradient at the point for cost; complementarity included if `with_point`.
DualQuality dual_quality_of(const LpData& lp, const LpPoint& point, bool with_point);

// True when the objective falls without end along `ray`, whatever the starting point: Q ray = 0 up to rounding.
bool is_improving_ray(const LpData& lp, const std::vector<double>& ray);

}  // namespace zorvex
