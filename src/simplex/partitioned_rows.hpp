// Row-wise copy of the structural matrix in which every row keeps the entries of active columns first, so that a pivot
// row is computed over the columns that can enter and nothing else.
//   Invariant  row i's entries are [start[i], start[i+1]); those of active columns are [start[i], active_end[i]).
//   Cost       set_active() is O(length of the column) through cross links to the column-wise copy.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/types.hpp"
#include "linalg/scattered.hpp"
#include "simplex/basis_lu.hpp"

namespace zorvex {

template <class Real>
class PartitionedRows {
 public:
  // Copies the pattern and values; active[j] != 0 marks the active columns.
  void build(const ColumnView<Real>& columns, std::span<const char> active);
  void set_active(Index col, bool active);
  [[nodiscard]] bool is_active(Index col) const { return active_[col] != 0; }

  // alpha := rho' A over the active columns (entries of inactive columns stay zero). `alpha` must be cleared and have
  // length num_cols. It comes out sparse or dense, whatever promises to be cheaper. Returns the number of entries
  // touched.
  Offset price(const Scattered<Real>& rho, Scattered<Real>& alpha);

 private:
  using Slot = std::uint32_t;  // the build refuses more nonzeros; half the memory traffic of Offset

  void swap_slots(Slot a, Slot b);
  void price_sparse(const Scattered<Real>& rho, Scattered<Real>& alpha, Offset& touched);
  void price_dense(const Scattered<Real>& rho, Scattered<Real>& alpha, Offset& touched) const;

  ColumnView<Real> columns_;
  std::vector<char> active_;
  std::vector<Slot> start_, active_end_;
  std::vector<Index> col_;   // column of each slot
  std::vector<Real> value_;  // value of each slot
  std::vector<Slot> entry_;  // position in the column-wise copy of each slot
  std::vector<Slot> slot_;   // slot of each column-wise position
  std::vector<Index> list_;  // workspace of price_sparse
};

}  // namespace zorvex
