#include "simplex/lu_nucleus.hpp"

#include <algorithm>
#include <cmath>

#include "simplex/lu_traits.hpp"

namespace zorvex {

namespace {
constexpr int kMaxCandidates = 4;   // lists searched with success before the best pivot so far is taken
constexpr double kSafeRatio = 0.1;  // magnitude over the row's largest below which the search looks for better ones
constexpr double kStrictRatio = 0.5;
constexpr double kGrowthStep = 1e3;   // growth of the largest entry over that of the basis at which the threshold rises
constexpr Index kMinDenseTail = 64;   // rows from which a dense end pays
constexpr double kTailDensity = 0.6;  // of the active part; dense elimination is about four times faster per entry
}  // namespace

template <class Real>
LuStatus LuNucleus<Real>::run(const ColumnView<Real>& columns, std::span<const Index> head, const LuPeel<Real>& peel,
                              double markowitz, LuFactors<Real>& factors, LuPoll& poll) {
  factors_ = &factors;
  threshold_ = static_cast<Real>(markowitz);
  first_pivot_ = static_cast<Index>(factors.order.size());
  size_ = factors.m - first_pivot_;
  u_.clear();
  if (size_ == 0) return LuStatus::kOk;
  if (!load(columns, head, peel, poll)) return LuStatus::kInterrupted;
  for (;;) {
    if (is_dense()) return finish_dense(poll);
    const Pivot pivot = find_pivot();
    if (pivot.row < 0) return LuStatus::kOk;
    const LuStatus status = eliminate(pivot, poll);
    if (status != LuStatus::kOk) return status;
  }
}

template <class Real>
bool LuNucleus<Real>::load(const ColumnView<Real>& columns, std::span<const Index> head, const LuPeel<Real>& peel,
                           LuPoll& poll) {
  using std::abs;
  const Index m = factors_->m;
  Offset nonzeros = 0;
  active_rows_.clear();
  active_cols_.clear();
  for (Index pos = 0; pos < m; ++pos) {
    if (factors_->col_active(pos)) {
      active_cols_.push_back(pos);
      nonzeros += peel.col_count()[pos];
    }
  }
  rows_.reset(m, 3 * nonzeros);
  cols_.reset(m, 3 * nonzeros);
  row_lists_.reset(m, size_);
  col_lists_.reset(m, size_);
  row_max_.resize(m);
  if (static_cast<Index>(pivot_row_.size()) != m) pivot_row_.assign(m, Real(0));
  hit_.resize(m);
  for (Index row = 0; row < m; ++row) {
    if (!factors_->row_active(row)) continue;
    active_rows_.push_back(row);
    rows_.place(row, peel.row_count()[row]);
    row_max_[row] = Real(0);
  }
  live_ = 0;
  for (const Index pos : active_cols_) {
    cols_.place(pos, peel.col_count()[pos]);
    const bool logical = head[pos] >= columns.num_cols;  // its row is taken: nothing is left of it
    const Offset end = logical ? 0 : columns.start[head[pos] + 1];
    for (Offset k = logical ? 0 : columns.start[head[pos]]; k < end; ++k) {
      const Index row = columns.index[k];
      const Real magnitude = abs(columns.value[k]);
      if (!factors_->row_active(row) || magnitude <= LuTraits<Real>::kTiny) continue;
      rows_.append(row, pos, columns.value[k]);
      cols_.append(pos, row, Real(0));
      if (magnitude > row_max_[row]) row_max_[row] = magnitude;
    }
    live_ += cols_.length(pos);
    col_lists_.insert(pos, cols_.length(pos));
  }
  Real largest = 0;
  for (const Index row : active_rows_) {
    row_lists_.insert(row, rows_.length(row));
    if (row_max_[row] > largest) largest = row_max_[row];
  }
  growth_limit_ = kGrowthStep * largest;
  return !poll.spend(2 * nonzeros);
}

template <class Real>
bool LuNucleus<Real>::is_dense() const {
  const Offset left = factors_->m - static_cast<Index>(factors_->order.size());
  return left >= kMinDenseTail && static_cast<double>(live_) >= kTailDensity * static_cast<double>(left * left);
}

// Columns with few entries first: the dense elimination takes them in order.
template <class Real>
LuStatus LuNucleus<Real>::finish_dense(LuPoll& poll) {
  std::erase_if(active_rows_, [&](Index row) { return !factors_->row_active(row); });
  std::erase_if(active_cols_, [&](Index pos) { return !factors_->col_active(pos); });
  std::stable_sort(active_cols_.begin(), active_cols_.end(),
                   [&](Index a, Index b) { return cols_.length(a) < cols_.length(b); });
  const auto left = static_cast<Index>(active_cols_.size());
  for (Index j = 0; j < left; ++j) hit_[active_cols_[j]] = j;
  tail_.reset(left);
  for (Index i = 0; i < left; ++i) {
    const LuRange range = rows_.range(active_rows_[i]);
    Real* dense_row = tail_.matrix().data() + static_cast<std::size_t>(i) * left;
    for (Index k = range.begin; k < range.end; ++k) dense_row[hit_[rows_.index()[k]]] = rows_.value()[k];
  }
  return tail_.run(active_rows_, active_cols_, *factors_, u_, poll);
}

// The entry with the least Markowitz merit (row count - 1)(column count - 1) among the first few columns and rows with
// the fewest entries. Columns without acceptable entry leave the lists until an elimination changes them.
template <class Real>
auto LuNucleus<Real>::find_pivot() -> Pivot {
  Pivot best;
  int candidates = 0;
  search_work_ = 0;
  const auto good_enough = [](const Pivot& p, Offset least) { return p.merit <= least && p.ratio >= kSafeRatio; };
  for (Index count = 1; count <= size_; ++count) {
    const Offset least_in_col = static_cast<Offset>(count - 1) * (count - 1);
    const Offset least_in_row = static_cast<Offset>(count - 1) * count;
    for (Index pos = col_lists_.first(count); pos != LuCountLists::kNone;) {
      const Index next = col_lists_.next(pos);
      if (search_column(pos, best)) ++candidates;
      if (good_enough(best, least_in_col) || (best.row >= 0 && candidates >= kMaxCandidates)) return best;
      pos = next;
    }
    for (Index row = row_lists_.first(count); row != LuCountLists::kNone;) {
      const Index next = row_lists_.next(row);
      if (search_row(row, best)) ++candidates;
      if (good_enough(best, least_in_row) || (best.row >= 0 && candidates >= kMaxCandidates)) return best;
      row = next;
    }
  }
  return best;
}

// Both searches return false if the line has no acceptable entry at all; it then left the lists.
template <class Real>
bool LuNucleus<Real>::search_column(Index pos, Pivot& best) {
  using std::abs;
  bool hopeless = true;
  const Offset count = cols_.length(pos);
  const LuRange range = cols_.range(pos);
  for (Index k = range.begin; k < range.end; ++k) {
    const Index row = cols_.index()[k];
    const Offset cost = (rows_.length(row) - 1) * (count - 1);
    if (cost > best.merit) {
      hopeless = false;
      continue;
    }
    const Index slot = rows_.find(row, pos);
    search_work_ += slot - rows_.range(row).begin;
    const Real magnitude = abs(rows_.value()[slot]);
    // A column singleton changes no other entry: any magnitude is as safe as the largest.
    const Real ratio = count == 1 ? Real(1) : magnitude / row_max_[row];
    if (magnitude < LuTraits<Real>::kAbsolutePivot || ratio < threshold_) continue;
    hopeless = false;
    if (best.worse_than(cost, ratio)) best = {row, pos, cost, ratio};
  }
  if (hopeless) col_lists_.remove(pos);
  return !hopeless;
}

template <class Real>
bool LuNucleus<Real>::search_row(Index row, Pivot& best) {
  using std::abs;
  using std::max;
  if (row_max_[row] < LuTraits<Real>::kAbsolutePivot) {
    row_lists_.remove(row);
    return false;
  }
  const Real least = max(LuTraits<Real>::kAbsolutePivot, threshold_ * row_max_[row]);
  const LuRange range = rows_.range(row);
  const Offset count = range.length();
  search_work_ += count;
  for (Index k = range.begin; k < range.end; ++k) {
    const Index pos = rows_.index()[k];
    const Offset cost = (cols_.length(pos) - 1) * (count - 1);
    const Real magnitude = abs(rows_.value()[k]);
    if (cost > best.merit || magnitude < least) continue;
    if (best.worse_than(cost, magnitude / row_max_[row])) best = {row, pos, cost, magnitude / row_max_[row]};
  }
  return true;
}

template <class Real>
LuStatus LuNucleus<Real>::eliminate(Pivot pivot, LuPoll& poll) {
  auto& space = factors_->space;
  const LuRange col = cols_.range(pivot.pos);
  const Offset u_total = static_cast<Offset>(u_.index.size()) + rows_.length(pivot.row);
  if (space.available() < u_total + col.length()) return LuStatus::kSpaceTooSmall;
  pivot_col_.assign(cols_.index() + col.begin, cols_.index() + col.end);
  cols_.clear_line(pivot.pos);
  col_lists_.remove(pivot.pos);
  row_lists_.remove(pivot.row);
  live_ -= rows_.length(pivot.row);
  const Real value = take_pivot_row(pivot);
  factors_->add_pivot(pivot.row, pivot.pos, value);
  const Index first = space.low();
  Offset work = search_work_ + col.length();
  for (const Index row : pivot_col_) {
    if (row == pivot.row) continue;
    work += rows_.length(row) + u_.rows.back().length();
    live_ -= rows_.length(row);
    eliminate_row(row, pivot.pos, value);
    live_ += rows_.length(row);
  }
  factors_->l_col[pivot.row] = {first, space.low()};
  if (space.low() > first) factors_->l_order.push_back(pivot.row);
  const LuRange u_row = u_.rows.back();
  for (Index k = u_row.begin; k < u_row.end; ++k) {
    pivot_row_[u_.index[k]] = Real(0);
    col_lists_.move(u_.index[k], cols_.length(u_.index[k]));
  }
  return poll.spend(work) ? LuStatus::kInterrupted : LuStatus::kOk;
}

// Moves the pivot row to U, out of all column patterns, and spreads it in pivot_row_. Returns the pivot.
template <class Real>
Real LuNucleus<Real>::take_pivot_row(Pivot pivot) {
  const LuRange range = rows_.range(pivot.row);
  const auto begin = static_cast<Index>(u_.index.size());
  Real value = 0;
  for (Index k = range.begin; k < range.end; ++k) {
    const Index pos = rows_.index()[k];
    if (pos == pivot.pos) {
      value = rows_.value()[k];
      continue;
    }
    cols_.remove(pos, pivot.row);
    pivot_row_[pos] = rows_.value()[k];
    hit_[pos] = -1;
    u_.index.push_back(pos);
    u_.value.push_back(rows_.value()[k]);
  }
  rows_.clear_line(pivot.row);
  u_.rows.push_back({begin, static_cast<Index>(u_.index.size())});
  return value;
}

// row -= (entry in the pivot column / pivot) * pivot row; the multiplier goes to L.
template <class Real>
void LuNucleus<Real>::eliminate_row(Index row, Index pos, Real pivot) {
  using std::abs;
  const LuRange u_row = u_.rows.back();
  const Index pivot_slot = rows_.find(row, pos);
  const Real multiplier = rows_.value()[pivot_slot] / pivot;
  rows_.remove_slot(row, pivot_slot);
  if (abs(multiplier) > LuTraits<Real>::kTiny) {
    const Index slot = factors_->space.take_low(1);
    factors_->space.index()[slot] = row;
    factors_->space.value()[slot] = multiplier;
  }
  rows_.ensure(row, u_row.length());
  Real max = 0;
  const Index* index = rows_.index();
  Real* value = rows_.value();
  const Real* pivot_row = pivot_row_.data();
  Index* hit = hit_.data();
  Index unmet = u_row.length();
  const LuRange range = rows_.range(row);
  Index end = range.end;
  for (Index k = range.begin; k < end;) {
    const Index col = index[k];
    const Real factor =
        pivot_row[col];  // zero where the pivot row has no entry: no branch, it would be hard to predict
    hit[col] = row;
    unmet -= factor != Real(0) ? 1 : 0;
    value[k] -= multiplier * factor;
    const Real magnitude = abs(value[k]);
    if (magnitude <= LuTraits<Real>::kTiny) {
      rows_.remove_slot(row, k);
      cols_.remove(col, row);
      --end;
      continue;
    }
    max = std::max(max, magnitude);
    ++k;
  }
  if (unmet > 0) add_fill(row, multiplier, max);
  row_max_[row] = max;
  if (max > growth_limit_) tighten_threshold();
  row_lists_.move(row, rows_.length(row));
}

// Growth of the entries is lost accuracy: pivots are chosen more carefully from here on.
template <class Real>
void LuNucleus<Real>::tighten_threshold() {
  using std::max;
  threshold_ = max(threshold_, Real(threshold_ < kSafeRatio ? kSafeRatio : kStrictRatio));
  growth_limit_ *= kGrowthStep;
}

// Entries of the pivot row that the row had not.
template <class Real>
void LuNucleus<Real>::add_fill(Index row, Real multiplier, Real& max) {
  using std::abs;
  const LuRange u_row = u_.rows.back();
  for (Index k = u_row.begin; k < u_row.end; ++k) {
    const Index pos = u_.index[k];
    if (hit_[pos] == row) continue;
    const Real fill = -multiplier * u_.value[k];
    const Real magnitude = abs(fill);
    if (magnitude <= LuTraits<Real>::kTiny) continue;
    rows_.append(row, pos, fill);
    cols_.push(pos, row);
    if (magnitude > max) max = magnitude;
  }
}

template class LuNucleus<double>;
template class LuNucleus<Extended>;

}  // namespace zorvex
