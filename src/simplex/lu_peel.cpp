#include "simplex/lu_peel.hpp"

#include <cmath>

#include "simplex/lu_traits.hpp"

namespace zorvex {

template <class Real>
LuStatus LuPeel<Real>::run(const ColumnView<Real>& columns, std::span<const Index> head, LuFactors<Real>& factors,
                           LuPoll& poll) {
  columns_ = columns;
  head_ = head;
  factors_ = &factors;
  pivot_logicals();
  if (!count_entries(poll)) return LuStatus::kInterrupted;
  build_row_lists();
  const bool finished = pivot_column_singletons(poll);
  factors.num_column_singletons = static_cast<Index>(factors.order.size());
  return finished ? pivot_row_singletons(poll) : LuStatus::kInterrupted;
}

// A logical whose row is taken already stays without pivot: it is dependent.
template <class Real>
void LuPeel<Real>::pivot_logicals() {
  structurals_.clear();
  for (Index pos = 0; pos < factors_->m; ++pos) {
    if (!is_logical(pos)) {
      structurals_.push_back(pos);
      continue;
    }
    const Index row = head_[pos] - columns_.num_cols;
    if (factors_->row_active(row)) factors_->add_pivot(row, pos, Real(1));
  }
}

template <class Real>
bool LuPeel<Real>::count_entries(LuPoll& poll) {
  row_count_.assign(factors_->m, 0);
  col_count_.assign(factors_->m, 0);
  queue_.clear();
  for (const Index pos : structurals_) {
    Index count = 0;
    for (Offset k = begin(pos); k < end(pos); ++k) {
      const Index row = columns_.index[k];
      const Index active = factors_->row_active(row) ? 1 : 0;
      row_count_[row] += active;
      count += active;
    }
    col_count_[pos] = count;
    if (count == 1) queue_.push_back(pos);
    if (poll.spend(end(pos) - begin(pos) + 1)) return false;
  }
  return true;
}

template <class Real>
void LuPeel<Real>::build_row_lists() {
  const Index m = factors_->m;
  row_start_.resize(static_cast<std::size_t>(m) + 1);
  Offset total = 0;
  for (Index row = 0; row < m; ++row) {
    total += row_count_[row];
    row_start_[row] = total;
  }
  row_start_[m] = total;
  if (static_cast<Offset>(row_list_.size()) < total) row_list_.resize(total);
  for (auto it = structurals_.rbegin(); it != structurals_.rend(); ++it) {
    if (col_count_[*it] == 0) continue;
    for (Offset k = begin(*it); k < end(*it); ++k) {
      const Index row = columns_.index[k];
      if (factors_->row_active(row)) row_list_[--row_start_[row]] = *it;
    }
  }
}

template <class Real>
bool LuPeel<Real>::pivot_column_singletons(LuPoll& poll) {
  using std::abs;
  for (std::size_t next = 0; next < queue_.size(); ++next) {
    const Index pos = queue_[next];
    if (col_count_[pos] != 1) continue;
    Offset k = begin(pos);
    while (!factors_->row_active(columns_.index[k])) ++k;
    const Index row = columns_.index[k];
    if (abs(columns_.value[k]) < LuTraits<Real>::kAbsolutePivot) continue;
    factors_->add_pivot(row, pos, columns_.value[k]);
    for (Offset e = row_start_[row]; e < row_start_[row + 1]; ++e) {
      const Index other = row_list_[e];
      if (--col_count_[other] == 1) queue_.push_back(other);
    }
    if (poll.spend(k - begin(pos) + row_start_[row + 1] - row_start_[row] + 1)) return false;
  }
  return true;
}

template <class Real>
LuStatus LuPeel<Real>::pivot_row_singletons(LuPoll& poll) {
  using std::abs;
  queue_.clear();
  for (Index row = 0; row < factors_->m; ++row) {
    if (row_count_[row] == 1 && factors_->row_active(row)) queue_.push_back(row);
  }
  for (std::size_t next = 0; next < queue_.size(); ++next) {
    const Index row = queue_[next];
    if (row_count_[row] != 1) continue;
    Offset e = row_start_[row];
    while (!factors_->col_active(row_list_[e])) ++e;
    const Index pos = row_list_[e];
    Offset k = begin(pos);
    while (columns_.index[k] != row) ++k;
    const Real pivot = columns_.value[k];
    if (abs(pivot) < LuTraits<Real>::kAbsolutePivot) continue;
    if (!store_l_column(row, pos, pivot)) return LuStatus::kSpaceTooSmall;
    factors_->add_pivot(row, pos, pivot);
    if (poll.spend(e - row_start_[row] + end(pos) - begin(pos) + 1)) return LuStatus::kInterrupted;
  }
  return LuStatus::kOk;
}

// The active entries of the column other than the pivot, divided by it; their rows lose one entry each.
template <class Real>
bool LuPeel<Real>::store_l_column(Index row, Index pos, Real pivot) {
  using std::abs;
  auto& space = factors_->space;
  if (space.available() < col_count_[pos]) return false;
  const Index first = space.low();
  for (Offset k = begin(pos); k < end(pos); ++k) {
    const Index other = columns_.index[k];
    if (other == row || !factors_->row_active(other)) continue;
    if (--row_count_[other] == 1) queue_.push_back(other);
    const Real multiplier = columns_.value[k] / pivot;
    if (abs(multiplier) <= LuTraits<Real>::kTiny) continue;
    const Index slot = space.take_low(1);
    space.index()[slot] = other;
    space.value()[slot] = multiplier;
  }
  factors_->l_col[row] = {first, space.low()};
  if (space.low() > first) factors_->l_order.push_back(row);
  return true;
}

template class LuPeel<double>;
template class LuPeel<Extended>;

}  // namespace zorvex
