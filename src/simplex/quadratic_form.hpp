// The matrix Q of a quadratic objective in the scaled space of a simplex kernel.
//   Form   scaled objective c'x + 1/2 x'Qx, with Q_ij = factor * scale_i * scale_j * (unscaled Q_ij).
#pragma once

#include <vector>

#include "linalg/sparse_matrix.hpp"

namespace zorvex {

template <class Real>
class QuadraticForm {
 public:
  // `lower` is the lower triangle as LpData holds it; without entries there is no quadratic term.
  void load(const SparseMatrix& lower, const std::vector<double>& scale, double factor);

  // No Q, not one without entries.
  [[nodiscard]] bool empty() const { return start_.size() <= 1; }
  [[nodiscard]] bool touches(Index col) const { return start_[col] < start_[col + 1]; }
  // result += multiplier * (column `col` of Q). Returns the entries touched.
  Offset add_column(Index col, Real multiplier, std::vector<Real>& result) const;
  // Square root of the diagonal entry: |Q_ij| never exceeds the product of those of i and j when Q is positive
  // semi-definite.
  [[nodiscard]] Real root_diagonal(Index col) const { return root_diagonal_[col]; }

 private:
  std::vector<Offset> start_{0};  // both triangles, by columns
  std::vector<Index> index_;
  std::vector<Real> value_, root_diagonal_;
};

}  // namespace zorvex
