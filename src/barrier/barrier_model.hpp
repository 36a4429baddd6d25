// The model as the interior point method sees it:
//     minimise cost'v + 1/2 v'Qv   subject to   A v = rhs,  lower <= v <= upper,
// a scaled copy of the user's model without its fixed columns and empty rows. Every row that is no equation has a slack
// column, which stands behind the structural ones and has the single entry -1.
//   Scaling  x = col_scale * v, rows times row_scale, objective divided by objective_scale; powers of two throughout,
//            so scaling is exact. In linear models the largest side or bound comes out near one, as the largest cost
//            does in all.
//   Errors   is_consistent is false when bounds or sides cross or fixed columns alone violate a row.
#pragma once

#include <vector>

#include "base/types.hpp"
#include "linalg/lp_data.hpp"
#include "simplex/lp_solver.hpp"

namespace zorvex {

struct BarrierModel {
  SparseMatrix matrix;  // num_rows x num_cols, slacks included, entries of a column in increasing row order
  SparseMatrix by_row;  // its transpose
  std::vector<double> rhs;
  std::vector<double> cost, lower, upper;  // num_cols
  SparseMatrix quadratic;                  // lower triangle over the structural columns; no columns when linear
  Index num_structurals = 0;
  Index num_free = 0;  // columns without bounds

  std::vector<Index> user_col;      // of each structural column
  std::vector<Index> user_row;      // of each row
  std::vector<Index> slack_of_row;  // column of the row's slack, -1 for equations
  std::vector<double> fixed_value;  // user space, value of each fixed column (0 elsewhere)
  std::vector<double> col_scale;    // of structurals and slacks: x = col_scale * v
  std::vector<double> row_scale;    // residual in user space = scaled residual / row_scale
  double objective_scale = 1;       // user objective = objective_scale * scaled objective + offset
  double offset = 0;
  bool is_consistent = true;

  [[nodiscard]] Index num_rows() const { return matrix.num_rows; }
  [[nodiscard]] Index num_cols() const { return matrix.num_cols; }
  [[nodiscard]] bool is_quadratic() const { return quadratic.num_cols > 0; }
};

// `feasibility_tol`: how far rows without other than fixed columns may be off. `only_largest`: linear models are scaled
// without regard to their small entries.
BarrierModel make_barrier_model(const LpData& lp, double feasibility_tol, bool only_largest = false);

// sum += factor * Q v (structural columns only).
void add_quadratic_product(const BarrierModel& model, double factor, const std::vector<double>& v,
                           std::vector<double>& sum);

// The point of the user's model that belongs to a scaled one: x inside its bounds, duals of the signs that the rows
// allow, activities and reduced costs afresh in long double.
LpPoint user_point(const LpData& lp, const BarrierModel& model, const std::vector<double>& v,
                   const std::vector<double>& y);

}  // namespace zorvex
