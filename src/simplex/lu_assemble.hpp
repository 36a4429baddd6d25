// Last part of the factorization: gathers U column-wise into the factor space, row-wise into its line storage, and
// transposes L.
#pragma once

#include <span>
#include <vector>

#include "simplex/basis_lu.hpp"
#include "simplex/lu_factors.hpp"
#include "simplex/lu_nucleus.hpp"

namespace zorvex {

template <class Real>
class LuAssemble {
 public:
  // All pivots are known. kOk or kSpaceTooSmall; on success at least m slots are left, room for one update.
  [[nodiscard]] LuStatus run(const ColumnView<Real>& columns, std::span<const Index> head,
                             const LuNucleus<Real>& nucleus, LuFactors<Real>& factors);

 private:
  [[nodiscard]] bool fill_u_columns(const ColumnView<Real>& columns, std::span<const Index> head,
                                    const LuNucleus<Real>& nucleus, LuFactors<Real>& factors);
  void fill_u_rows(LuFactors<Real>& factors);
  // Places the rows of U, count_ entries each, and lists the nodes of plain loops.
  void list_nodes(LuFactors<Real>& factors);
  void transpose_l(LuFactors<Real>& factors);

  std::vector<Index> count_;  // entries by position or row
};

}  // namespace zorvex
