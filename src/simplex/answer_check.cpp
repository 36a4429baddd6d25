#include "simplex/answer_check.hpp"

#include <cmath>

namespace zorvex {

namespace {
constexpr double kFarkasDrop = 1e-11;   // relative size of entries that rounding may have left in A'y
constexpr double kRayTolerance = 1e-9;  // relative to the largest entry
constexpr double kMinRayDescent = 1e-9;
}  // namespace

ProblemView view_of(const LpData& lp) {
  return {lp.num_rows(),  lp.num_cols(),       lp.matrix.start.data(), lp.matrix.index.data(), lp.matrix.value.data(),
          lp.cost.data(), lp.col_lower.data(), lp.col_upper.data(),    lp.row_lower.data(),    lp.row_upper.data()};
}

double objective_at(const LpData& lp, const std::vector<double>& x) {
  Extended sum = lp.offset;
  for (Index col = 0; col < lp.num_cols(); ++col) sum += Extended(lp.cost[col]) * x[col];
  return static_cast<double>(sum);
}

bool is_feasible(const LpData& lp, const std::vector<double>& x, double tolerance) {
  const PrimalQuality primal = measure_primal(view_of(lp), x, {});
  return primal.bound.max <= tolerance && primal.row.max <= tolerance;
}

bool is_optimal(const LpData& lp, const LpPoint& point, const SimplexOptions& options) {
  if (!is_feasible(lp, point.x, options.primal_feasibility_tol)) return false;
  const DualQuality dual = measure_dual(view_of(lp), point.pi, point.reduced_cost, {});
  return dual.sign.max <= options.dual_feasibility_tol;
}

bool proves_infeasible(const LpData& lp, const std::vector<double>& y, double& gap) {
  gap = farkas_gap(view_of(lp), y, kFarkasDrop);
  return gap > kMinFarkasGap;
}

bool is_improving_ray(const LpData& lp, const std::vector<double>& ray) {
  return ray_descent(view_of(lp), ray, kRayTolerance) > kMinRayDescent;
}

}  // namespace zorvex
