#include "simplex/warm_check.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "simplex/answer_check.hpp"

namespace zorvex {

namespace {

// Bound on the relative rounding of a sum of `terms` products, relative to the sum of their magnitudes.
double rounding(Offset terms) { return (static_cast<double>(terms) + 2) * std::numeric_limits<double>::epsilon(); }

// The worst verdict so far. Comparisons are written so that a value that is not a number fails.
class Judge {
 public:
  explicit Judge(double tolerance) : tolerance_(tolerance) {}
  void violation(double amount, double error) {
    if (amount + error <= tolerance_) return;
    verdict_ = amount - error > tolerance_ ? WarmVerdict::kFails : worse(WarmVerdict::kOpen);
    if (std::isnan(amount) || std::isnan(error)) verdict_ = WarmVerdict::kFails;
  }
  [[nodiscard]] WarmVerdict verdict() const { return verdict_; }

 private:
  [[nodiscard]] WarmVerdict worse(WarmVerdict other) const {
    return verdict_ == WarmVerdict::kFails ? verdict_ : other;
  }
  double tolerance_;
  WarmVerdict verdict_ = WarmVerdict::kHolds;
};

WarmVerdict worst(WarmVerdict a, WarmVerdict b) {
  if (a == WarmVerdict::kFails || b == WarmVerdict::kFails) return WarmVerdict::kFails;
  return a == WarmVerdict::kHolds ? b : a;
}

double outside(double x, double lower, double upper) {
  return std::isfinite(x) ? std::max(lower - x, x - upper) : std::nan("");
}

}  // namespace

WarmVerdict WarmCheck::optimal(const LpData& lp, const SimplexOptions& options, bool updated, LpPoint& point,
                               double& objective) {
  const auto m = static_cast<std::size_t>(lp.num_rows());
  activity_.assign(m, Sum{});
  terms_.assign(m, 0);
  Judge primal(options.primal_feasibility_tol);
  Judge dual(options.dual_feasibility_tol);
  double slackness = 0;
  double scale = 1;
  Extended sum_of_costs = lp.offset;
  const Offset* start = lp.matrix.start.data();
  const Index* index = lp.matrix.index.data();
  const double* value = lp.matrix.value.data();
  const double* pi = point.pi.data();
  const auto price = [&](double d, double error, double x, double lower, double upper) {
    const double bound = d > 0 ? lower : upper;
    if (std::isfinite(bound) && !std::isnan(d)) {
      slackness += std::abs(d * (x - bound));
    } else {
      dual.violation(std::abs(d), error);
    }
  };
  for (Index col = 0; col < lp.num_cols(); ++col) {
    const double x = point.x[col];
    const double cost = lp.cost[col];
    Sum product;
    for (Offset k = start[col]; k < start[col + 1]; ++k) {
      const double term = value[k] * pi[index[k]];
      product.value += term;
      product.size += std::abs(term);
    }
    const double d = cost - product.value;
    point.reduced_cost[col] = d;
    price(d, rounding(start[col + 1] - start[col]) * (product.size + std::abs(cost)), x, lp.col_lower[col],
          lp.col_upper[col]);
    primal.violation(outside(x, lp.col_lower[col], lp.col_upper[col]), 0);
    if (x == 0) continue;
    scale += std::abs(cost * x);
    sum_of_costs += Extended(cost) * x;
    for (Offset k = start[col]; k < start[col + 1]; ++k) {
      const double term = value[k] * x;
      Sum& sum = activity_[index[k]];
      sum.value += term;
      sum.size += std::abs(term);
      ++terms_[index[k]];
    }
  }
  for (Index row = 0; row < lp.num_rows(); ++row) {
    const Sum& sum = activity_[row];
    point.row_activity[row] = sum.value;
    primal.violation(outside(sum.value, lp.row_lower[row], lp.row_upper[row]), rounding(terms_[row]) * sum.size);
    price(pi[row], 0, sum.value, lp.row_lower[row], lp.row_upper[row]);
  }
  objective = static_cast<double>(sum_of_costs);
  WarmVerdict verdict = worst(primal.verdict(), dual.verdict());
  if (updated && !(slackness <= options.dual_feasibility_tol * scale)) verdict = WarmVerdict::kFails;
  return verdict;
}

WarmVerdict WarmCheck::infeasible(const LpData& lp, const std::vector<double>& y, double& gap) {
  Sum total;
  double scale = 0;
  Offset terms = 0;
  for (Index row = 0; row < lp.num_rows(); ++row) {
    if (y[row] == 0) continue;
    const double side = y[row] > 0 ? lp.row_lower[row] : lp.row_upper[row];
    if (!std::isfinite(y[row]) || !std::isfinite(side)) return WarmVerdict::kOpen;
    total.value += y[row] * side;
    total.size += std::abs(y[row] * side);
    scale = std::max(scale, std::abs(y[row]));
    ++terms;
  }
  if (scale == 0) return WarmVerdict::kFails;
  for (Index col = 0; col < lp.num_cols(); ++col) {
    Sum z;
    for (Offset k = lp.matrix.begin(col); k < lp.matrix.end(col); ++k) {
      const double term = lp.matrix.value[k] * y[lp.matrix.index[k]];
      z.value += term;
      z.size += std::abs(term);
    }
    if (z.size == 0) continue;
    const double error = rounding(lp.matrix.end(col) - lp.matrix.begin(col)) * z.size;
    // The sign of a sum within its rounding is open: both bounds count then.
    const double high = z.value + error > 0 ? lp.col_upper[col] : lp.col_lower[col];
    const double low = z.value - error < 0 ? lp.col_lower[col] : lp.col_upper[col];
    if (!std::isfinite(high) || !std::isfinite(low)) return WarmVerdict::kOpen;
    const double bound = z.value > 0 ? lp.col_upper[col] : lp.col_lower[col];
    total.value -= z.value * bound;
    total.size += std::abs(z.value * bound) + error * (std::abs(high) + std::abs(low)) / rounding(0);
    ++terms;
  }
  const double error = rounding(terms) * total.size;
  gap = (total.value - error) / scale;
  return gap > kMinFarkasGap ? WarmVerdict::kHolds : WarmVerdict::kOpen;
}

}  // namespace zorvex
