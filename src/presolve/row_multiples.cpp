#include "presolve/row_multiples.hpp"

#include <algorithm>
#include <cmath>

#include "base/tolerances.hpp"

namespace zorvex {
namespace {

constexpr Index kMaxColumnLength = 100;  // longer columns are not searched for partners

}  // namespace

const std::vector<RowMultiple>& RowMultiples::of(Index row) {
  meetings_.clear();
  for (const auto& own : model_.matrix.row(row)) {
    if (model_.matrix.col_length(own.col) > kMaxColumnLength) continue;
    for (const auto& other : model_.matrix.col(own.col)) {
      if (other.row != row) meetings_.push_back({other.row, -other.value / own.value});
    }
  }
  work_.add(static_cast<std::int64_t>(meetings_.size()));
  std::sort(meetings_.begin(), meetings_.end(),
            [](const Meeting& a, const Meeting& b) { return a.row != b.row ? a.row < b.row : a.factor < b.factor; });
  multiples_.clear();
  for (std::size_t begin = 0, end = 0; begin < meetings_.size(); begin = end) {
    factors_.clear();
    for (; end < meetings_.size() && meetings_[end].row == meetings_[begin].row; ++end) {
      factors_.push_back(meetings_[end].factor);
    }
    if (factors_.size() < 2) continue;
    const CommonRatio best = most_common_ratio(factors_, PresolveTolerances::kCancel,
                                               [this](double factor) { return std::abs(factor) <= most_; });
    if (best.count >= 2) multiples_.push_back({meetings_[begin].row, best.ratio, best.count});
  }
  return multiples_;
}

}  // namespace zorvex
