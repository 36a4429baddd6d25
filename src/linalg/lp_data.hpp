// One continuous model as the solvers see it: minimise cost'x + 1/2 x'Qx + offset over row and column bounds.
#pragma once

#include <vector>

#include "base/types.hpp"
#include "linalg/sparse_matrix.hpp"

namespace zorvex {

// Shapes: cost, col_lower, col_upper have matrix.num_cols entries; row_lower, row_upper matrix.num_rows.
// Infinite bounds are IEEE infinities; an equality row has equal bounds. Always a minimisation: the driver negates the
// objective of a maximisation model and the sign of duals on the way out.
// `quadratic` is the lower triangle of the symmetric Q with its diagonal, num_cols x num_cols, entries of a column in
// increasing row order: an entry v at (i, j), i > j, stands for Q_ij = Q_ji = v. It has no columns when the model is
// linear; without entries the methods for quadratic models solve a linear one.
struct LpData {
  SparseMatrix matrix;
  std::vector<double> cost;
  std::vector<double> col_lower, col_upper;
  std::vector<double> row_lower, row_upper;
  double offset = 0;
  SparseMatrix quadratic;

  [[nodiscard]] bool is_quadratic() const { return quadratic.num_cols > 0; }
  [[nodiscard]] Index num_rows() const { return matrix.num_rows; }
  [[nodiscard]] Index num_cols() const { return matrix.num_cols; }
  // Share of the columns with two finite bounds; 0 without columns.
  [[nodiscard]] double boxed_share() const {
    Index boxed = 0;
    for (Index col = 0; col < num_cols(); ++col) boxed += col_lower[col] > -kInf && col_upper[col] < kInf ? 1 : 0;
    return num_cols() == 0 ? 0 : static_cast<double>(boxed) / num_cols();
  }
};

}  // namespace zorvex
