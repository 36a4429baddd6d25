// The end of an elimination whose active part has become dense: plain LU with partial pivoting on a row-major array,
// several times faster per entry than sparse rows.
//   Shapes   `rows` and `positions` have the same length n; matrix() is n x n in their order, zero after reset().
//   Results  as those of the sparse elimination: columns of L in the factor space, rows of U in the store. Columns
//            without acceptable pivot are left without, as are as many rows.
#pragma once

#include <vector>

#include "simplex/basis_lu.hpp"
#include "simplex/lu_factors.hpp"
#include "simplex/lu_poll.hpp"

namespace zorvex {

// Rows of U in pivot order, without pivots, before they are gathered into the factors.
template <class Real>
struct LuPivotRows {
  std::vector<LuRange> rows;
  std::vector<Index> index;  // positions
  std::vector<Real> value;

  void clear() {
    rows.clear();
    index.clear();
    value.clear();
  }
};

template <class Real>
class LuDenseTail {
 public:
  void reset(Index n) { matrix_.assign(static_cast<std::size_t>(n) * n, Real(0)); }
  [[nodiscard]] std::vector<Real>& matrix() { return matrix_; }

  [[nodiscard]] LuStatus run(std::vector<Index>& rows, const std::vector<Index>& positions, LuFactors<Real>& factors,
                             LuPivotRows<Real>& u, LuPoll& poll);

 private:
  [[nodiscard]] Index largest_in_column(Index n, Index from, Index col) const;
  void store_pivot_row(const Real* pivot_row, Index col, const std::vector<Index>& positions, LuPivotRows<Real>& u);

  std::vector<Real> matrix_;
};

}  // namespace zorvex
