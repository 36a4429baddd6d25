#include "barrier/sifting_subproblem.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace zorvex {

namespace {

// Reduced cost for one unit of activity in all the column's rows together: how cheaply it serves them.
double price_of(const LpData& lp, const SiftingDuals& duals, Index col) {
  double sum = 0;
  for (Offset k = lp.matrix.begin(col); k < lp.matrix.end(col); ++k) sum += std::abs(lp.matrix.value[k]);
  return sum > 0 ? duals.reduced_cost(col) / sum : kInf;
}

}  // namespace

WorkingSet::WorkingSet(const LpData& lp, const SiftingDuals& duals, Index per_row, Index size)
    : lp_(lp), held_(lp.cost.size(), 0) {
  basis_.row.assign(lp.row_lower.size(), BasisStatus::kBasic);
  basis_.col.resize(lp.cost.size());
  for (Index col = 0; col < lp.num_cols(); ++col) {
    basis_.col[col] = rests_above(col) ? BasisStatus::kAtUpper : BasisStatus::kAtLower;
    if (rests_above(col) && lp.col_upper[col] == kInf) {
      basis_.col[col] = BasisStatus::kNonbasicFree;
      add(col);
    }
  }
  add_cheapest_of_rows(duals, per_row);
  std::vector<std::pair<double, Index>> rest;
  for (Index col = 0; col < lp.num_cols(); ++col) {
    if (!held_[col]) rest.emplace_back(price_of(lp, duals, col), col);
  }
  const auto wanted = static_cast<std::size_t>(std::max(0, size - this->size()));
  if (wanted < rest.size())
    std::nth_element(rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(wanted), rest.end());
  rest.resize(std::min(wanted, rest.size()));
  for (const auto& entry : rest) add(entry.second);
}

void WorkingSet::add_cheapest_of_rows(const SiftingDuals& duals, Index per_row) {
  std::vector<Index> order(lp_.cost.size());
  std::iota(order.begin(), order.end(), 0);
  std::vector<double> price(lp_.cost.size());
  for (Index col = 0; col < lp_.num_cols(); ++col) price[col] = price_of(lp_, duals, col);
  std::stable_sort(order.begin(), order.end(), [&](Index a, Index b) { return price[a] < price[b]; });
  std::vector<Index> served(lp_.row_lower.size(), 0);
  for (const Index col : order) {
    bool wanted = false;
    for (Offset k = lp_.matrix.begin(col); k < lp_.matrix.end(col); ++k) {
      wanted = wanted || served[lp_.matrix.index[k]] < per_row;
    }
    if (!wanted) continue;
    add(col);
    for (Offset k = lp_.matrix.begin(col); k < lp_.matrix.end(col); ++k) ++served[lp_.matrix.index[k]];
  }
}

void WorkingSet::add(Index col) {
  if (held_[col]) return;
  held_[col] = 1;
  cols_.push_back(col);
}

void WorkingSet::shrink(const LpPoint& point, Index size) {
  std::vector<std::pair<double, Index>> idle;  // by position in cols_
  for (Index k = 0; k < this->size(); ++k) {
    const Index col = cols_[k];
    if (basis_.col[col] == (rests_above(col) ? BasisStatus::kAtUpper : BasisStatus::kAtLower)) {
      idle.emplace_back(-std::abs(point.reduced_cost[k]), k);
    }
  }
  const auto excess = std::min(idle.size(), static_cast<std::size_t>(std::max(0, this->size() - size)));
  if (excess == 0) return;
  std::nth_element(idle.begin(), idle.begin() + static_cast<std::ptrdiff_t>(excess - 1), idle.end());
  for (std::size_t e = 0; e < excess; ++e) held_[cols_[idle[e].second]] = 0;
  std::erase_if(cols_, [this](Index col) { return !held_[col]; });
}

double WorkingSet::resting_value(Index col) const { return rests_above(col) ? lp_.col_upper[col] : lp_.col_lower[col]; }

LpData WorkingSet::sub_problem() const {
  LpData sub;
  sub.offset = lp_.offset;
  sub.row_lower = lp_.row_lower;
  sub.row_upper = lp_.row_upper;
  for (Index col = 0; col < lp_.num_cols(); ++col) {
    const double x = held_[col] ? 0.0 : resting_value(col);
    if (x == 0) continue;
    sub.offset += lp_.cost[col] * x;
    for (Offset k = lp_.matrix.begin(col); k < lp_.matrix.end(col); ++k) {
      sub.row_lower[lp_.matrix.index[k]] -= lp_.matrix.value[k] * x;
      sub.row_upper[lp_.matrix.index[k]] -= lp_.matrix.value[k] * x;
    }
  }
  sub.matrix.num_rows = lp_.num_rows();
  for (const Index col : cols_) {
    const Offset begin = lp_.matrix.begin(col);
    sub.matrix.append_col(lp_.matrix.index.data() + begin, lp_.matrix.value.data() + begin, lp_.matrix.col_length(col));
    sub.cost.push_back(lp_.cost[col]);
    sub.col_lower.push_back(lp_.col_lower[col]);
    sub.col_upper.push_back(lp_.col_upper[col]);
  }
  return sub;
}

Basis WorkingSet::sub_basis() const {
  Basis sub;
  sub.row = basis_.row;
  for (const Index col : cols_) sub.col.push_back(basis_.col[col]);
  return sub;
}

void WorkingSet::take_basis(const Basis& basis) {
  basis_.row = basis.row;
  for (std::size_t k = 0; k < cols_.size(); ++k) basis_.col[cols_[k]] = basis.col[k];
}

LpPoint WorkingSet::whole_point(const LpPoint& sub) const {
  LpPoint point;
  point.pi = sub.pi;
  point.x.resize(lp_.cost.size());
  for (Index col = 0; col < lp_.num_cols(); ++col) point.x[col] = held_[col] ? 0.0 : resting_value(col);
  for (std::size_t k = 0; k < cols_.size(); ++k) point.x[cols_[k]] = sub.x[k];
  point.reduced_cost = lp_.cost;
  point.row_activity.assign(lp_.row_lower.size(), 0.0);
  for (Index col = 0; col < lp_.num_cols(); ++col) {
    for (Offset k = lp_.matrix.begin(col); k < lp_.matrix.end(col); ++k) {
      point.row_activity[lp_.matrix.index[k]] += lp_.matrix.value[k] * point.x[col];
      point.reduced_cost[col] -= lp_.matrix.value[k] * point.pi[lp_.matrix.index[k]];
    }
  }
  return point;
}

}  // namespace zorvex
