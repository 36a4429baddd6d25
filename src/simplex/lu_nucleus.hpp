// Second part of the factorization: right-looking elimination of the rows and columns that peeling left, with a
// Markowitz search over count-linked lists and threshold pivoting by rows.
//   Shapes   rows hold values and positions, columns hold rows only; both are numbered as in the whole basis.
//   Results  columns of L go to the factor space; rows of U (without pivots) wait in u_rows() for assembly. Rows and
//            columns left without pivot are dependent.
//   Source   U. Suhl, L. Suhl, ORSA J. Comput. 2 (1990) 325-335, section 4.
#pragma once

#include <limits>
#include <span>
#include <vector>

#include "simplex/basis_lu.hpp"
#include "simplex/lu_count_lists.hpp"
#include "simplex/lu_dense_tail.hpp"
#include "simplex/lu_factors.hpp"
#include "simplex/lu_peel.hpp"
#include "simplex/lu_poll.hpp"

namespace zorvex {

template <class Real>
class LuNucleus {
 public:
  // Continues after peeling; kOk, kSpaceTooSmall or kInterrupted.
  [[nodiscard]] LuStatus run(const ColumnView<Real>& columns, std::span<const Index> head, const LuPeel<Real>& peel,
                             double markowitz, LuFactors<Real>& factors, LuPoll& poll);

  // Rows of U: u_rows().rows[k] belongs to the pivot order[first_pivot() + k].
  [[nodiscard]] Index first_pivot() const { return first_pivot_; }
  [[nodiscard]] const LuPivotRows<Real>& u_rows() const { return u_; }

 private:
  struct Pivot {
    Index row = -1;
    Index pos = -1;
    Offset merit = std::numeric_limits<Offset>::max();  // (row count - 1)(column count - 1)
    Real ratio = 0;                                     // magnitude over the largest in its row

    [[nodiscard]] bool worse_than(Offset other_merit, Real other_ratio) const {
      return other_merit < merit || (other_merit == merit && other_ratio > ratio);
    }
  };

  [[nodiscard]] bool load(const ColumnView<Real>& columns, std::span<const Index> head, const LuPeel<Real>& peel,
                          LuPoll& poll);
  [[nodiscard]] Pivot find_pivot();
  [[nodiscard]] bool search_column(Index pos, Pivot& best);
  [[nodiscard]] bool search_row(Index row, Pivot& best);
  [[nodiscard]] bool is_dense() const;
  [[nodiscard]] LuStatus finish_dense(LuPoll& poll);
  [[nodiscard]] LuStatus eliminate(Pivot pivot, LuPoll& poll);
  [[nodiscard]] Real take_pivot_row(Pivot pivot);
  void eliminate_row(Index row, Index pos, Real pivot);
  void tighten_threshold();
  void add_fill(Index row, Real multiplier, Real& max);

  LuFactors<Real>* factors_ = nullptr;
  Real threshold_ = 0;
  Real growth_limit_ = 0;  // magnitude of an active entry at which the threshold rises
  Index size_ = 0;         // rows (and columns) at the start
  Index first_pivot_ = 0;
  LuLines<Real, true> rows_;
  LuLines<Real, false> cols_;
  LuCountLists row_lists_, col_lists_;
  std::vector<Real> row_max_;    // largest magnitude of each active row
  std::vector<Real> pivot_row_;  // by position, zero outside the present pivot row
  std::vector<Index> hit_;       // by position: the row whose elimination has met this entry of the pivot row
  std::vector<Index> pivot_col_;
  LuPivotRows<Real> u_;
  LuDenseTail<Real> tail_;
  std::vector<Index> active_rows_, active_cols_;  // of the nucleus as loaded
  Offset live_ = 0;                               // entries of the active rows
  Offset search_work_ = 0;
};

}  // namespace zorvex
