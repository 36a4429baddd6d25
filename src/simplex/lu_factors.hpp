// The factors of a basis B as solves and updates see them: R_t ... R_1 L^-1 B = U up to permutations, where L is a
// product of column etas, the R are row etas of Forrest-Tomlin updates and U is permuted upper triangular.
//   Spaces   a pivot pairs a row with a basis position. Vectors on the L and R side live in row space. A column of U is
//            found under its pivot row and holds rows; a row of U is found under its position and holds positions: so
//            either solve with U stays within one space and changes over as it emits its results.
//   Order    as factored, a column of U has entries only in rows earlier in `order`. An update empties the row of its
//            position and moves it to the end, so plain loops need no more than the lists below.
#pragma once

#include <algorithm>
#include <vector>

#include "base/types.hpp"
#include "simplex/lu_lines.hpp"
#include "simplex/lu_space.hpp"

namespace zorvex {

// x[row] -= sum of value * x[index] over the range, in the factor space.
struct LuRowEta {
  Index row;
  LuRange range;
};

template <class Real>
struct LuFactors {
  Index m = 0;
  FactorSpace<Real> space;  // columns of L, then row etas, from the low end; columns of U from the high end

  std::vector<LuRange> l_col;      // by pivot row: x[index] -= value * x[pivot row]
  std::vector<Index> l_order;      // pivot rows with a nonempty column of L, in pivot order
  std::vector<LuRange> l_row;      // by row: the same entries transposed, index = pivot row
  std::vector<Index> l_row_order;  // rows with a nonempty row of L, in pivot order
  std::vector<Index> l_row_index;
  std::vector<Real> l_row_value;
  std::vector<LuRowEta> etas;

  std::vector<LuRange> u_col;  // by pivot row, without the pivot
  LuLines<Real, true> u_row;   // by position, without the pivot
  std::vector<Real> pivot_of_row, pivot_of_pos;

  // Nodes that a plain loop over U visits. Columns: pivot rows with a nonempty column in order, then updated ones; the
  // earlier entries of an updated row stay, as nothing reaches that row before its last entry. Rows: positions with a
  // nonempty row in order, then those that got their first entry by an update (they point into the tail only), then
  // the tail of updated positions; -1 where a position was updated later.
  std::vector<Index> u_col_order, u_row_order, u_row_tail;
  std::vector<Index> u_row_place;  // by position: index into u_row_order, or m + index into the tail, or kUnlisted

  std::vector<Index> row_of_pos, pos_of_row;  // -1 while without pivot
  std::vector<Index> order;                   // pivot rows as factored
  std::vector<Index> order_at;                // by row, its place in `order`; kUnordered while without pivot
  Index num_column_singletons = 0;            // the first pivots of `order`: rows of L and column etas never meet them

  Offset l_nonzeros = 0, u_nonzeros = 0;  // without pivots

  static constexpr Index kUnordered = std::numeric_limits<Index>::max();
  static constexpr Index kUnlisted = -1;

  void reset(Index rows) {
    m = rows;
    const auto n = static_cast<std::size_t>(rows);
    space.reset();
    l_col.assign(n, LuRange{});
    u_col.assign(n, LuRange{});
    pivot_of_row.resize(n);
    pivot_of_pos.resize(n);
    row_of_pos.assign(n, -1);
    pos_of_row.assign(n, -1);
    order_at.assign(n, kUnordered);
    order.clear();
    l_order.clear();
    etas.clear();
    num_column_singletons = 0;
    l_nonzeros = u_nonzeros = 0;
  }

  void add_pivot(Index row, Index pos, Real value) {
    row_of_pos[pos] = row;
    pos_of_row[row] = pos;
    pivot_of_row[row] = value;
    pivot_of_pos[pos] = value;
    order_at[row] = static_cast<Index>(order.size());
    order.push_back(row);
  }
  [[nodiscard]] bool row_active(Index row) const { return pos_of_row[row] < 0; }
  [[nodiscard]] bool col_active(Index pos) const { return row_of_pos[pos] < 0; }
  [[nodiscard]] bool is_column_singleton_row(Index row) const { return order_at[row] < num_column_singletons; }
};

}  // namespace zorvex
