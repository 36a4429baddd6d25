// The working set of sifting: which columns the sub-problem holds, where the others sit, and the basis that goes from
// sub-problem to sub-problem.
#pragma once

#include <vector>

#include "barrier/sifting_duals.hpp"
#include "linalg/basis.hpp"
#include "linalg/lp_data.hpp"
#include "simplex/lp_solver.hpp"

namespace zorvex {

class WorkingSet {
 public:
  // Starts with the free columns, the `per_row` cheapest columns of each row for the given duals, and the cheapest of
  // all up to about `size`; slack basis. `lp` must outlive this.
  WorkingSet(const LpData& lp, const SiftingDuals& duals, Index per_row, Index size);

  [[nodiscard]] Index size() const { return static_cast<Index>(cols_.size()); }
  [[nodiscard]] bool holds(Index col) const { return held_[col] != 0; }
  void add(Index col);
  // Drops nonbasic columns at the bound where columns outside sit, those with the largest reduced costs first, until
  // about `size` are left.
  void shrink(const LpPoint& point, Index size);

  // The model over the columns held, with the activities of the others taken off the row bounds. Column k of it is
  // cols()[k].
  [[nodiscard]] LpData sub_problem() const;
  [[nodiscard]] const std::vector<Index>& cols() const { return cols_; }

  // Basis of the sub-problem, and back; the whole model's has the columns outside at their bounds.
  [[nodiscard]] Basis sub_basis() const;
  void take_basis(const Basis& basis);
  [[nodiscard]] const Basis& basis() const { return basis_; }

  // The bound at which a column outside sits, and whether that is the upper one.
  [[nodiscard]] bool rests_above(Index col) const { return lp_.col_lower[col] == -kInf; }
  [[nodiscard]] double resting_value(Index col) const;
  // Point of the whole model from one of the sub-problem.
  [[nodiscard]] LpPoint whole_point(const LpPoint& sub) const;

 private:
  void add_cheapest_of_rows(const SiftingDuals& duals, Index per_row);

  const LpData& lp_;
  std::vector<char> held_;
  std::vector<Index> cols_;
  Basis basis_;
};

}  // namespace zorvex
