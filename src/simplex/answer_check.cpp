#include "simplex/answer_check.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zorvex {

namespace {
constexpr double kFarkasDrop = 1e-11;   // relative size of entries that rounding may have left in y and A'y
constexpr double kRayTolerance = 1e-9;  // relative to the largest entry
constexpr double kMinRayDescent = 1e-9;
}  // namespace

ProblemView view_of(const LpData& lp) {
  return {lp.num_rows(),  lp.num_cols(),       lp.matrix.start.data(), lp.matrix.index.data(), lp.matrix.value.data(),
          lp.cost.data(), lp.col_lower.data(), lp.col_upper.data(),    lp.row_lower.data(),    lp.row_upper.data()};
}

std::vector<double> gradient_at(const LpData& lp, const std::vector<double>& x) {
  if (!lp.is_quadratic()) return lp.cost;
  std::vector<Extended> gradient(lp.cost.begin(), lp.cost.end());
  const SparseMatrix& q = lp.quadratic;
  for (Index col = 0; col < q.num_cols; ++col) {
    for (Offset k = q.begin(col); k < q.end(col); ++k) {
      const Index row = q.index[k];
      gradient[row] += Extended(q.value[k]) * x[col];
      if (row != col) gradient[col] += Extended(q.value[k]) * x[row];
    }
  }
  std::vector<double> result;
  result.reserve(gradient.size());
  for (const Extended value : gradient) result.push_back(static_cast<double>(value));
  return result;
}

double objective_at(const LpData& lp, const std::vector<double>& x) {
  Extended sum = lp.offset;
  for (Index col = 0; col < lp.num_cols(); ++col) sum += Extended(lp.cost[col]) * x[col];
  const SparseMatrix& q = lp.quadratic;
  for (Index col = 0; col < q.num_cols; ++col) {
    for (Offset k = q.begin(col); k < q.end(col); ++k) {
      const Extended product = Extended(q.value[k]) * x[q.index[k]] * x[col];
      sum += q.index[k] == col ? product / 2 : product;
    }
  }
  return static_cast<double>(sum);
}

bool is_feasible(const LpData& lp, const std::vector<double>& x, double tolerance) {
  const PrimalQuality primal = measure_primal(view_of(lp), x, {});
  return primal.bound.max <= tolerance && primal.row.max <= tolerance;
}

DualQuality dual_quality_of(const LpData& lp, const LpPoint& point, bool with_point) {
  ProblemView view = view_of(lp);
  const std::vector<double> gradient = gradient_at(lp, point.x);
  view.cost = gradient.data();
  return measure_dual(view, point.pi, point.reduced_cost, with_point ? std::span(point.x) : std::span<const double>());
}

namespace {

// At points this far out Qx swallows what the dual tolerance is about: nothing can be said about the gradient.
bool gradient_is_lost(const LpData& lp, const std::vector<double>& x, double tolerance) {
  const SparseMatrix& q = lp.quadratic;
  std::vector<double> magnitude(x.size(), 0);
  for (Index col = 0; col < q.num_cols; ++col) {
    for (Offset k = q.begin(col); k < q.end(col); ++k) {
      magnitude[q.index[k]] += std::abs(q.value[k] * x[col]);
      if (q.index[k] != col) magnitude[col] += std::abs(q.value[k] * x[q.index[k]]);
    }
  }
  const double largest = magnitude.empty() ? 0 : *std::max_element(magnitude.begin(), magnitude.end());
  return !(largest * static_cast<double>(std::numeric_limits<Extended>::epsilon()) <= tolerance);
}

}  // namespace

bool is_optimal(const LpData& lp, const LpPoint& point, const SimplexOptions& options) {
  if (!is_feasible(lp, point.x, options.primal_feasibility_tol)) return false;
  const DualQuality dual = dual_quality_of(lp, point, false);
  if (!(dual.sign.max <= options.dual_feasibility_tol)) return false;
  if (!lp.is_quadratic()) return true;
  return closes_gap(lp, point, options) && !gradient_is_lost(lp, point.x, options.dual_feasibility_tol);
}

bool closes_gap(const LpData& lp, const LpPoint& point, const SimplexOptions& options) {
  const DualQuality dual = dual_quality_of(lp, point, true);
  const double lacking = dual.complementarity.sum + (lp.is_quadratic() ? 0 : dual.promise.sum);
  return lacking <= options.dual_feasibility_tol * std::max(1.0, std::abs(objective_at(lp, point.x)));
}

namespace {

// What storing n numbers as doubles can add to the sum of their products, relative to the sum of the magnitudes.
constexpr Extended kStorage = 0.5L * std::numeric_limits<double>::epsilon();

struct SumOfProducts {
  Extended value = 0;
  Extended size = 0;
  void add(Extended term) {
    value += term;
    size += std::abs(term);
  }
};

// Written so that a value that is not a number fails.
bool within(const SumOfProducts& sum, double lower, double upper, double tolerance) {
  const Extended slack = std::max<Extended>(tolerance, kStorage * sum.size);
  return sum.value >= lower - slack && sum.value <= upper + slack;
}

}  // namespace

bool is_optimal_as_stored(const LpData& lp, const LpPoint& point, const SimplexOptions& options) {
  if (lp.is_quadratic()) return false;
  const double primal_tol = options.primal_feasibility_tol;
  const double dual_tol = options.dual_feasibility_tol;
  std::vector<SumOfProducts> activity(point.pi.size());
  for (Index col = 0; col < lp.num_cols(); ++col) {
    const double x = point.x[col];
    SumOfProducts d;
    d.add(lp.cost[col]);
    for (Offset k = lp.matrix.begin(col); k < lp.matrix.end(col); ++k) {
      const Index row = lp.matrix.index[k];
      activity[row].add(Extended(lp.matrix.value[k]) * x);
      d.add(-Extended(lp.matrix.value[k]) * point.pi[row]);
    }
    const double least = lp.col_upper[col] < kInf ? -kInf : 0;  // of the reduced cost
    const double most = lp.col_lower[col] > -kInf ? kInf : 0;
    if (!within(d, least, most, dual_tol)) return false;
    if (!(x >= lp.col_lower[col] - primal_tol && x <= lp.col_upper[col] + primal_tol)) return false;
  }
  for (Index row = 0; row < lp.num_rows(); ++row) {
    if (!within(activity[row], lp.row_lower[row], lp.row_upper[row], primal_tol)) return false;
    const double least = lp.row_upper[row] < kInf ? -kInf : -dual_tol;
    const double most = lp.row_lower[row] > -kInf ? kInf : dual_tol;
    if (!(point.pi[row] >= least && point.pi[row] <= most)) return false;
  }
  return true;
}

void drop_sign_noise(const LpData& lp, std::vector<double>& y) {
  double largest = 0;
  for (const double entry : y) largest = std::max(largest, std::abs(entry));
  for (Index row = 0; row < lp.num_rows(); ++row) {
    const double side = y[row] > 0 ? lp.row_lower[row] : lp.row_upper[row];
    if (!std::isfinite(side) && std::abs(y[row]) <= kFarkasDrop * largest) y[row] = 0;
  }
}

bool proves_infeasible(const LpData& lp, const std::vector<double>& y, double& gap) {
  gap = farkas_gap(view_of(lp), y, kFarkasDrop);
  return gap > kMinFarkasGap;
}

namespace {

// Q ray is zero up to rounding, entry by entry against the terms it sums.
bool is_flat(const SparseMatrix& q, const std::vector<double>& ray) {
  std::vector<Extended> sum(ray.size(), 0), largest(ray.size(), 0);
  const auto add = [&](Index at, Extended term) {
    sum[at] += term;
    largest[at] = std::max(largest[at], std::abs(term));
  };
  for (Index col = 0; col < q.num_cols; ++col) {
    for (Offset k = q.begin(col); k < q.end(col); ++k) {
      add(q.index[k], Extended(q.value[k]) * ray[col]);
      if (q.index[k] != col) add(col, Extended(q.value[k]) * ray[q.index[k]]);
    }
  }
  for (std::size_t j = 0; j < sum.size(); ++j) {
    if (!(std::abs(sum[j]) <= kRayTolerance * largest[j])) return false;
  }
  return true;
}

}  // namespace

bool is_improving_ray(const LpData& lp, const std::vector<double>& ray) {
  if (lp.is_quadratic() && !is_flat(lp.quadratic, ray)) return false;
  return ray_descent(view_of(lp), ray, kRayTolerance) > kMinRayDescent;
}

}  // namespace zorvex
