#include "barrier/sifting_duals.hpp"

#include <algorithm>
#include <cmath>

namespace zorvex {

namespace {

constexpr double kRounding = 1e-13;  // relative size of a sum that is nothing but rounding
constexpr int kHalvings = 6;         // of a step along which the bound does not grow

// What a dual `d` of a variable with these bounds adds to the objective.
Extended priced(double d, double lower, double upper, double tolerance) {
  const double bound = d > 0 ? lower : upper;
  if (std::isfinite(bound)) return Extended(d) * bound;
  return std::abs(d) <= tolerance ? Extended(0) : Extended(-kInf);
}

// Largest step in [0, longest] for which d + step * rate prices no infinite bound.
double feasible_step(double d, double rate, double lower, double upper, double tolerance, double longest) {
  if (rate < 0 && upper == kInf && d + longest * rate < -tolerance) return std::max(0.0, d) / -rate;
  if (rate > 0 && lower == -kInf && d + longest * rate > tolerance) return std::max(0.0, -d) / rate;
  return longest;
}

}  // namespace

SiftingDuals::SiftingDuals(const LpData& lp, double tolerance)
    : lp_(lp),
      tolerance_(tolerance),
      pi_(lp.row_lower.size(), 0.0),
      reduced_cost_(lp.cost),
      direction_(lp.row_lower.size(), 0.0),
      rate_(lp.cost.size(), 0.0) {}

std::vector<double> SiftingDuals::minus_transposed_product(const std::vector<double>& y) const {
  std::vector<double> product(lp_.cost.size());
  for (Index col = 0; col < lp_.num_cols(); ++col) {
    double sum = 0;
    double magnitude = 0;
    for (Offset k = lp_.matrix.begin(col); k < lp_.matrix.end(col); ++k) {
      const double term = lp_.matrix.value[k] * y[lp_.matrix.index[k]];
      sum -= term;
      magnitude += std::abs(term);
    }
    product[col] = std::abs(sum) <= kRounding * magnitude ? 0.0 : sum;
  }
  return product;
}

bool SiftingDuals::find_start() {
  objective_ = objective_at(0);
  return objective_ > -kInf || try_start(1) || try_start(-1);
}

// The smallest multiple of the vector with `row_sign` on the rows that allow it that is feasible.
bool SiftingDuals::try_start(double row_sign) {
  std::vector<double> ones(lp_.row_lower.size(), 0.0);
  for (Index row = 0; row < lp_.num_rows(); ++row) {
    if (std::isfinite(row_sign > 0 ? lp_.row_lower[row] : lp_.row_upper[row])) ones[row] = row_sign;
  }
  set_direction(std::move(ones));
  double step = 0;
  for (Index col = 0; col < lp_.num_cols(); ++col) {
    const double c = lp_.cost[col];
    const bool wrong =
        (c < -tolerance_ && lp_.col_upper[col] == kInf) || (c > tolerance_ && lp_.col_lower[col] == -kInf);
    if (!wrong) continue;
    if (rate_[col] * c >= 0) return false;
    step = std::max(step, -c / rate_[col]);
  }
  objective_ = objective_at(step);
  if (!(objective_ > -kInf)) return false;
  for (Index row = 0; row < lp_.num_rows(); ++row) pi_[row] = step * direction_[row];
  for (Index col = 0; col < lp_.num_cols(); ++col) reduced_cost_[col] += step * rate_[col];
  return true;
}

void SiftingDuals::set_direction(std::vector<double> direction) {
  direction_ = std::move(direction);
  rate_ = minus_transposed_product(direction_);
}

double SiftingDuals::longest_feasible(double longest) const {
  for (Index row = 0; row < lp_.num_rows(); ++row) {
    longest = feasible_step(pi_[row], direction_[row], lp_.row_lower[row], lp_.row_upper[row], tolerance_, longest);
  }
  for (Index col = 0; col < lp_.num_cols(); ++col) {
    longest =
        feasible_step(reduced_cost_[col], rate_[col], lp_.col_lower[col], lp_.col_upper[col], tolerance_, longest);
  }
  return longest;
}

Extended SiftingDuals::objective_at(double step) const {
  Extended sum = 0;
  for (Index row = 0; row < lp_.num_rows(); ++row) {
    sum += priced(pi_[row] + step * direction_[row], lp_.row_lower[row], lp_.row_upper[row], tolerance_);
  }
  for (Index col = 0; col < lp_.num_cols(); ++col) {
    sum += priced(reduced_cost_[col] + step * rate_[col], lp_.col_lower[col], lp_.col_upper[col], tolerance_);
  }
  return sum;
}

void SiftingDuals::advance(double longest) {
  double step = longest_feasible(longest);
  if (!std::isfinite(step)) return;  // a proof of infeasibility: the caller has seen that no column is in the way
  for (int k = 0; k <= kHalvings && step > 0; ++k, step /= 2) {
    const Extended reached = objective_at(step);
    if (reached <= objective_) continue;
    objective_ = reached;
    for (Index row = 0; row < lp_.num_rows(); ++row) pi_[row] += step * direction_[row];
    for (Index col = 0; col < lp_.num_cols(); ++col) reduced_cost_[col] += step * rate_[col];
    return;
  }
}

}  // namespace zorvex
