// The dual of a linear model, written as a model to be minimised, and the way back: its solution is a solution of the
// primal with the roles of values and multipliers exchanged, its basis the complementary basis.
//   Form     columns are shifted to x = reference + x' with a finite bound at zero where there is one. The dual has a
//            column for the multiplier of each row (two for a range) and a row for the reduced cost of each column. A
//            column with both bounds adds a dual column for the part of its reduced cost that its far bound prices.
//   Source   R. Vanderbei, "Linear Programming", 4th ed. (2014), chapter 5; the ranged case from the same Lagrangian.
#pragma once

#include <vector>

#include "linalg/lp_data.hpp"
#include "presolve/presolve.hpp"

namespace zorvex {

enum class DualRows {
  kInequalities,  // reduced costs are the logicals of the dual rows
  kEquations,     // reduced costs are columns of their own, the dual rows equations
};

// True if solving the dual is likely to be quicker: with many more rows than columns its basis matrices are smaller.
[[nodiscard]] bool dual_pays(const LpData& primal);

class DualForm {
 public:
  // The primal must outlive this; it has crossing bounds nowhere and no quadratic terms.
  DualForm(const LpData& primal, DualRows rows);

  // Its optimal value is minus that of the primal, offsets included.
  [[nodiscard]] const LpData& lp() const { return dual_; }

  // A point of lp() with or without basis as a point of the primal.
  [[nodiscard]] PresolvePoint primal_point(const PresolvePoint& dual) const;
  // An improving ray of lp() as a Farkas proof over the rows of the primal.
  [[nodiscard]] std::vector<double> primal_proof(const std::vector<double>& ray) const;

 private:
  // Columns of dual_; -1 for none. A range has both multipliers, any other row one of them, a free row none.
  struct RowColumns {
    Index at_lower, at_upper;
  };
  // Columns of dual_: `near` prices the reference bound (kEquations only), `far` the other one; -1 for none.
  struct ReducedCostColumns {
    Index near, far;
  };

  void choose_references();
  void add_multipliers();
  void add_reduced_costs();
  Index add_column(const std::vector<Index>& index, const std::vector<double>& value, double cost, bool positive);
  [[nodiscard]] bool rests_at_upper(Index col) const;
  [[nodiscard]] std::vector<double> multipliers(const std::vector<double>& x) const;
  [[nodiscard]] Basis complementary(const Basis& dual) const;

  const LpData& primal_;
  DualRows rows_;
  LpData dual_;
  std::vector<double> reference_;  // per primal column
  std::vector<RowColumns> row_columns_;
  std::vector<ReducedCostColumns> reduced_cost_columns_;
};

}  // namespace zorvex
