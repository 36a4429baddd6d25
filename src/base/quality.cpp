#include "base/quality.hpp"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <vector>

#include "base/tolerances.hpp"

namespace zorvex {
namespace {

double narrow(Extended value) { return static_cast<double>(value); }

// How far value is outside [lower, upper]; NaN when any of the three is not a number or value is infinite.
double outside(Extended value, double lower, double upper) {
  if (!std::isfinite(value) || std::isnan(lower) || std::isnan(upper)) return std::nan("");
  return narrow(std::max({Extended(lower) - value, value - Extended(upper), Extended(0)}));
}

// A x, and with `largest` the largest |a_ij x_j| of each row.
std::vector<Extended> activities(const ProblemView& problem, std::span<const double> x,
                                 std::vector<Extended>* largest = nullptr) {
  std::vector<Extended> sum(static_cast<std::size_t>(problem.num_rows), 0);
  if (largest != nullptr) largest->assign(sum.size(), 0);
  for (Index col = 0; col < problem.num_cols; ++col) {
    if (x[col] == 0) continue;
    for (Offset k = problem.start[col]; k < problem.start[col + 1]; ++k) {
      const Extended term = Extended(problem.value[k]) * x[col];
      const Index row = problem.index[k];
      sum[row] += term;
      if (largest != nullptr && !(std::abs(term) <= (*largest)[row])) (*largest)[row] = std::abs(term);
    }
  }
  return sum;
}

struct Sum {
  Extended value = 0;
  Extended largest = 0;  // largest |a_ij y_i|
};

// Column `col` of A'y.
Sum column_product(const ProblemView& problem, Index col, std::span<const double> y) {
  Sum sum;
  for (Offset k = problem.start[col]; k < problem.start[col + 1]; ++k) {
    const Extended term = Extended(problem.value[k]) * y[problem.index[k]];
    sum.value += term;
    if (!(std::abs(term) <= sum.largest)) sum.largest = std::abs(term);
  }
  return sum;
}

// A variable or activity: its bounds, and at a given point its value and how far such values go.
struct Priced {
  double lower = 0, upper = 0;
  const Extended* x = nullptr;
  double reach = 0;
};

// Accounts for one dual value d that `priced` has.
void judge_dual(DualQuality& quality, Extended& objective, Extended d, Extended noise, const Priced& priced, Index at) {
  if (std::isnan(d)) {
    quality.sign.add(kInf, at);
    objective = -kInf;
    return;
  }
  if (d == 0) return;
  const double bound = d > 0 ? priced.lower : priced.upper;
  if (!std::isfinite(bound)) {
    quality.sign.add(narrow(std::abs(d)), at);
    if (!(std::abs(d) > noise)) return;
    objective = -kInf;
    quality.promise.add(narrow(std::abs(d) * priced.reach), at);
    return;
  }
  objective += d * bound;
  if (priced.x != nullptr) quality.complementarity.add(narrow(std::abs(d) * std::abs(*priced.x - bound)), at);
}

// At least 1.
template <class Values>
double largest_magnitude(const Values& values) {
  double largest = 1;
  for (const auto value : values) largest = std::max(largest, std::abs(static_cast<double>(value)));
  return largest;
}

}  // namespace

PrimalQuality measure_primal(const ProblemView& problem, std::span<const double> x, std::span<const double> activity) {
  assert(x.size() == static_cast<std::size_t>(problem.num_cols));
  assert(activity.empty() || activity.size() == static_cast<std::size_t>(problem.num_rows));
  PrimalQuality quality;
  Extended objective = 0;
  for (Index col = 0; col < problem.num_cols; ++col) {
    quality.bound.add(outside(x[col], problem.col_lower[col], problem.col_upper[col]), col);
    objective += Extended(problem.cost[col]) * x[col];
  }
  quality.objective = narrow(objective);
  const std::vector<Extended> sum = activities(problem, x);
  for (Index row = 0; row < problem.num_rows; ++row) {
    quality.row.add(outside(sum[row], problem.row_lower[row], problem.row_upper[row]), row);
    if (!activity.empty()) quality.residual.add(narrow(std::abs(sum[row] - activity[row])), row);
  }
  return quality;
}

DualQuality measure_dual(const ProblemView& problem, std::span<const double> pi, std::span<const double> reduced_cost,
                         std::span<const double> x) {
  assert(pi.size() == static_cast<std::size_t>(problem.num_rows));
  DualQuality quality;
  Extended objective = 0;
  std::vector<Extended> sum;
  if (!x.empty()) sum = activities(problem, x);
  const double col_reach = x.empty() ? 0 : largest_magnitude(x), row_reach = x.empty() ? 0 : largest_magnitude(sum);
  for (Index col = 0; col < problem.num_cols; ++col) {
    const Sum product = column_product(problem, col, pi);
    const Extended d = Extended(problem.cost[col]) - product.value;
    if (!reduced_cost.empty()) quality.residual.add(narrow(std::abs(d - reduced_cost[col])), col);
    const Extended largest = std::max({Extended(1), std::abs(Extended(problem.cost[col])), product.largest});
    const Extended value = x.empty() ? 0 : x[col];
    judge_dual(quality, objective, d, kDualNoise * largest,
               {problem.col_lower[col], problem.col_upper[col], x.empty() ? nullptr : &value, col_reach}, col);
  }
  for (Index row = 0; row < problem.num_rows; ++row) {
    judge_dual(quality, objective, pi[row], kDualNoise,
               {problem.row_lower[row], problem.row_upper[row], x.empty() ? nullptr : &sum[row], row_reach},
               problem.num_cols + row);
  }
  quality.objective = std::isnan(objective) ? -kInf : narrow(objective);
  return quality;
}

double farkas_gap(const ProblemView& problem, std::span<const double> y, double drop) {
  assert(y.size() == static_cast<std::size_t>(problem.num_rows));
  Extended gap = 0;
  Extended scale = 0;
  for (Index row = 0; row < problem.num_rows; ++row) {
    if (y[row] == 0) continue;
    const double side = y[row] > 0 ? problem.row_lower[row] : problem.row_upper[row];
    if (!std::isfinite(y[row]) || !std::isfinite(side)) return -kInf;
    gap += Extended(y[row]) * side;
    scale = std::max(scale, std::abs(Extended(y[row])));
  }
  if (scale == 0) return -kInf;
  for (Index col = 0; col < problem.num_cols; ++col) {
    const Sum z = column_product(problem, col, y);
    if (z.value == 0) continue;
    const double bound = z.value > 0 ? problem.col_upper[col] : problem.col_lower[col];
    if (std::isfinite(bound)) {
      gap -= z.value * bound;
    } else if (std::isnan(bound) || !(std::abs(z.value) <= drop * z.largest)) {
      return -kInf;
    }
  }
  return std::isnan(gap) ? -kInf : narrow(gap / scale);
}

double ray_descent(const ProblemView& problem, std::span<const double> r, double tolerance) {
  assert(r.size() == static_cast<std::size_t>(problem.num_cols));
  Extended scale = 0;
  for (const double entry : r) {
    if (!std::isfinite(entry)) return -kInf;
    scale = std::max(scale, std::abs(Extended(entry)));
  }
  if (scale == 0) return -kInf;
  // Written so that a bound or a product that is not a number fails the test.
  const auto recedes = [](Extended step, double lower, double upper, Extended slack) {
    return (lower == -kInf || step >= -slack) && (upper == kInf || step <= slack);
  };
  Extended descent = 0;
  for (Index col = 0; col < problem.num_cols; ++col) {
    if (!recedes(r[col], problem.col_lower[col], problem.col_upper[col], tolerance * scale)) return -kInf;
    descent -= Extended(problem.cost[col]) * r[col];
  }
  std::vector<Extended> largest;
  const std::vector<Extended> sum = activities(problem, r, &largest);
  for (Index row = 0; row < problem.num_rows; ++row) {
    const Extended slack = tolerance * std::max(scale, largest[row]);
    if (!recedes(sum[row], problem.row_lower[row], problem.row_upper[row], slack)) return -kInf;
  }
  return std::isnan(descent) ? -kInf : narrow(descent / scale);
}

}  // namespace zorvex
