// Forrest-Tomlin update: the column of U at one position is replaced by the entering column, its row is eliminated by
// a row eta and moves to the end of the elimination order.
//   Shapes   spike = R L^-1 a_q over rows; unit_row = U^-T e_position over rows.
//   Errors   factors are untouched unless kOk is returned.
//   Cost     entries of the old column and row times the length of the lines they are deleted from, plus the spike.
//   Source   J. Forrest, J. Tomlin, Math. Program. 2 (1972) 263-278; U. Suhl, L. Suhl, Ann. Oper. Res. 43 (1993) 33-47.
#pragma once

#include "simplex/basis_lu.hpp"
#include "simplex/lu_factors.hpp"
#include "simplex/lu_solve.hpp"

namespace zorvex {

template <class Real>
class LuUpdate {
 public:
  // `expected` is the old pivot times the entering column's entry at `position`.
  [[nodiscard]] LuUpdateStatus run(LuFactors<Real>& factors, Index position, Real expected,
                                   const LuEntries<Real>& spike, const LuEntries<Real>& unit_row);
  // Nonzeros touched by all updates so far.
  [[nodiscard]] Offset work() const { return work_; }

 private:
  [[nodiscard]] Real new_pivot(const LuFactors<Real>& factors, Index row, const LuEntries<Real>& spike,
                               const LuEntries<Real>& unit_row);
  void store_eta(LuFactors<Real>& factors, Index row, const LuEntries<Real>& unit_row);
  void remove_old(LuFactors<Real>& factors, Index row, Index position);
  void insert_spike(LuFactors<Real>& factors, Index row, Index position, const LuEntries<Real>& spike);
  void move_to_end(LuFactors<Real>& factors, Index row, Index position);

  std::vector<Real> work_vector_;  // by row, zero between calls
  Offset work_ = 0;
};

}  // namespace zorvex
