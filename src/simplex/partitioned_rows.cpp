#include "simplex/partitioned_rows.hpp"

#include <limits>
#include <new>
#include <utility>

#include "simplex/kernel_tolerances.hpp"

namespace zorvex {

namespace {
constexpr double kListShare = 0.35;  // entries met, over columns, from which a result without list is cheaper
constexpr std::size_t kAhead = 4;    // rows fetched into the cache before their turn
}  // namespace

template <class Real>
void PartitionedRows<Real>::build(const ColumnView<Real>& columns, std::span<const char> active) {
  columns_ = columns;
  active_.assign(active.begin(), active.end());
  const Index m = columns.num_rows;
  const Index n = columns.num_cols;
  const Offset nonzeros = n > 0 ? columns.start[n] : 0;
  if (nonzeros > std::numeric_limits<Slot>::max()) throw std::bad_alloc();
  start_.assign(static_cast<std::size_t>(m) + 1, 0);
  active_end_.assign(static_cast<std::size_t>(m), 0);
  col_.resize(static_cast<std::size_t>(nonzeros));
  value_.resize(static_cast<std::size_t>(nonzeros));
  entry_.resize(static_cast<std::size_t>(nonzeros));
  slot_.resize(static_cast<std::size_t>(nonzeros));
  std::vector<Slot> inactive_next(static_cast<std::size_t>(m), 0);
  for (Index col = 0; col < n; ++col) {
    for (Offset k = columns.start[col]; k < columns.start[col + 1]; ++k) {
      ++start_[columns.index[k] + 1];
      if (active_[col]) ++active_end_[columns.index[k]];
    }
  }
  for (Index row = 0; row < m; ++row) {
    start_[row + 1] += start_[row];
    inactive_next[row] = start_[row] + active_end_[row];
    active_end_[row] = start_[row];
  }
  for (Index col = 0; col < n; ++col) {
    for (Offset k = columns.start[col]; k < columns.start[col + 1]; ++k) {
      const Index row = columns.index[k];
      const Slot slot = active_[col] ? active_end_[row]++ : inactive_next[row]++;
      col_[slot] = col;
      value_[slot] = columns.value[k];
      entry_[slot] = static_cast<Slot>(k);
      slot_[k] = slot;
    }
  }
}

template <class Real>
void PartitionedRows<Real>::swap_slots(Slot a, Slot b) {
  if (a == b) return;
  std::swap(col_[a], col_[b]);
  std::swap(value_[a], value_[b]);
  std::swap(entry_[a], entry_[b]);
  slot_[entry_[a]] = a;
  slot_[entry_[b]] = b;
}

template <class Real>
void PartitionedRows<Real>::set_active(Index col, bool active) {
  if ((active_[col] != 0) == active) return;
  active_[col] = active ? 1 : 0;
  for (Offset k = columns_.start[col]; k < columns_.start[col + 1]; ++k) {
    const Index row = columns_.index[k];
    if (active) {
      swap_slots(slot_[k], active_end_[row]++);
    } else {
      swap_slots(slot_[k], --active_end_[row]);
    }
  }
}

template <class Real>
void PartitionedRows<Real>::price_sparse(const Scattered<Real>& rho, Scattered<Real>& alpha, Offset& touched) {
  list_.resize(active_.size() + 1);  // the loop writes before it counts
  Index* list = list_.data();
  Real* target = alpha.value.data();
  Index count = 0;
  const std::size_t length = rho.index.size();
  for (std::size_t at = 0; at < length; ++at) {
    if (at + kAhead < length) {
      const Slot ahead = start_[rho.index[at + kAhead]];
      __builtin_prefetch(col_.data() + ahead);
      __builtin_prefetch(value_.data() + ahead);
    }
    const Index row = rho.index[at];
    const Real multiplier = rho.value[row];
    touched += active_end_[row] - start_[row];
    for (Slot k = start_[row]; k < active_end_[row]; ++k) {
      const Index col = col_[k];
      const Real old = target[col];
      const Real sum = old + multiplier * value_[k];
      list[count] = col;  // without a branch: fill-in is hard to predict
      count += old == Real(0) ? 1 : 0;
      target[col] = sum != Real(0) ? sum : KernelTolerances<Real>::kTinyCancel;
    }
  }
  alpha.index.assign(list, list + count);
}

template <class Real>
void PartitionedRows<Real>::price_dense(const Scattered<Real>& rho, Scattered<Real>& alpha, Offset& touched) const {
  const auto add_row = [&](Index row) {
    const Real multiplier = rho.value[row];
    if (multiplier == 0) return;
    touched += active_end_[row] - start_[row];
    for (Slot k = start_[row]; k < active_end_[row]; ++k) alpha.value[col_[k]] += multiplier * value_[k];
  };
  if (rho.dense) {
    for (Index row = 0; row < rho.size(); ++row) add_row(row);
  } else {
    for (const Index row : rho.index) add_row(row);
  }
  alpha.dense = true;
}

template <class Real>
Offset PartitionedRows<Real>::price(const Scattered<Real>& rho, Scattered<Real>& alpha) {
  Offset touched = 0;
  Offset expected = 0;
  if (!rho.dense) {
    for (const Index row : rho.index) expected += active_end_[row] - start_[row];
  }
  if (!rho.dense && static_cast<double>(expected) < kListShare * static_cast<double>(active_.size())) {
    price_sparse(rho, alpha, touched);
  } else {
    price_dense(rho, alpha, touched);
  }
  return touched;
}

template class PartitionedRows<double>;
template class PartitionedRows<Extended>;

}  // namespace zorvex
