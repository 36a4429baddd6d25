// Cholesky factor R'R of the reduced Hessian Z'QZ of an active set method, Z = [-B^-1 S; I; 0], kept up to date while
// superbasic variables come, go, or change places with basic ones.
//   Shapes   R is k x k, upper triangular, one column a superbasic variable, in their order.
//   Cost     O(k^2) of each change and solve.
//   Source   P. Gill, W. Murray, Math. Program. 14 (1978) 349-372; B. Murtagh, M. Saunders, Math. Program. 14 (1978)
//            41-72, section 3 (exchange of a basic and a superbasic variable).
#pragma once

#include <vector>

#include "base/types.hpp"

namespace zorvex {

template <class Real>
class ReducedHessian {
 public:
  [[nodiscard]] Index size() const { return static_cast<Index>(rows_.size()); }
  void clear() { rows_.clear(); }

  // x := R^-T x and x := R^-1 x, x of length k.
  void solve_transposed(std::vector<Real>& x) const;
  void solve(std::vector<Real>& x) const;

  // Adds a variable with column `r` = R^-T h, h its products with the others, and what its curvature exceeds r'r by:
  // `excess` >= 0. With 0 the matrix is singular until a change takes the variable's direction away.
  void append(const std::vector<Real>& r, Real excess);
  void remove(Index slot);
  // The variable in `slot` turns into the combination sum_j weight[j] z_j of the others and leaves: Z loses its column
  // and gains weight[j] times it in column j. weight[slot] is not looked at.
  void exchange(Index slot, const std::vector<Real>& weight);

  // Smallest over largest diagonal entry: 0 when singular, 1 when empty.
  [[nodiscard]] Real diagonal_ratio() const;

 private:
  struct Rotation {
    Real cosine, sine;
  };
  static Rotation rotation_to(Real kept, Real zeroed);
  void triangularize(Index from, std::vector<Real>& below);

  std::vector<std::vector<Real>> rows_;  // row i holds columns i..k-1
};

}  // namespace zorvex
