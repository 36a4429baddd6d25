// First part of the factorization: pivots that cause no fill. Logicals and then column singletons (their rows become
// rows of U), then row singletons (their columns become columns of L). What is left is the nucleus.
//   Shapes   counts have length m: entries in rows and columns still without pivot, exact for the nucleus.
//   Cost     O(m + nonzeros of the basis).
//   Source   U. Suhl, L. Suhl, ORSA J. Comput. 2 (1990) 325-335, section 3.
#pragma once

#include <span>
#include <vector>

#include "simplex/basis_lu.hpp"
#include "simplex/lu_factors.hpp"
#include "simplex/lu_poll.hpp"

namespace zorvex {

template <class Real>
class LuPeel {
 public:
  // Appends pivots to the empty factors; kOk, kSpaceTooSmall or kInterrupted.
  [[nodiscard]] LuStatus run(const ColumnView<Real>& columns, std::span<const Index> head, LuFactors<Real>& factors,
                             LuPoll& poll);
  [[nodiscard]] const std::vector<Index>& row_count() const { return row_count_; }
  [[nodiscard]] const std::vector<Index>& col_count() const { return col_count_; }

 private:
  void pivot_logicals();
  [[nodiscard]] bool count_entries(LuPoll& poll);
  void build_row_lists();
  [[nodiscard]] bool pivot_column_singletons(LuPoll& poll);
  [[nodiscard]] LuStatus pivot_row_singletons(LuPoll& poll);
  [[nodiscard]] bool store_l_column(Index row, Index pos, Real pivot);

  [[nodiscard]] bool is_logical(Index pos) const { return head_[pos] >= columns_.num_cols; }
  // Entries of the structural column in a position.
  [[nodiscard]] Offset begin(Index pos) const { return columns_.start[head_[pos]]; }
  [[nodiscard]] Offset end(Index pos) const { return columns_.start[head_[pos] + 1]; }

  ColumnView<Real> columns_;
  std::span<const Index> head_;
  LuFactors<Real>* factors_ = nullptr;
  std::vector<Index> row_count_, col_count_;
  std::vector<Offset> row_start_;  // m + 1; positions of the columns of each row that no logical covers
  std::vector<Index> row_list_;
  std::vector<Index> structurals_;  // positions of structural columns
  std::vector<Index> queue_;
};

}  // namespace zorvex
