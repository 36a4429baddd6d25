// The primal-dual point and basis that postsolve carries back through the stack, in original indices. At any time the
// entries of the rows and columns that exist at that stage are complete and consistent: activity = A x, d = c + Qx -
// A'pi, and x is zero where columns do not exist yet.
#pragma once

#include <vector>

#include "base/types.hpp"
#include "linalg/basis.hpp"
#include "linalg/sparse_matrix.hpp"

namespace zorvex {

struct PostsolvePoint {
  std::vector<double> x, pi, reduced_cost;
  std::vector<Extended> activity;
  std::vector<BasisStatus> col_status, row_status;
  // A Farkas proof is a dual solution for zero cost: recorded costs count as zero, nonbasic sides follow from signs.
  bool farkas = false;
  bool exact_basis = true;  // the statuses are those of a basis that x and pi belong to

  // No basis belongs to the point: statuses say on which bounds and sides its multipliers put it, but it need not stand
  // there to the last digit.
  bool interior = false;
  const SparseMatrix* quadratic = nullptr;  // all of Q, null when the model is linear

  [[nodiscard]] double cost(double recorded) const { return farkas ? 0 : recorded; }
  // Of the objective along the column, whose cost was recorded when the columns that do not exist yet had been fixed.
  [[nodiscard]] Extended gradient(Index col, double recorded) const {
    Extended sum = cost(recorded);
    if (farkas || quadratic == nullptr) return sum;
    for (Offset k = quadratic->begin(col); k < quadratic->end(col); ++k) {
      sum += Extended(quadratic->value[k]) * x[quadratic->index[k]];
    }
    return sum;
  }

  // The bound that a nonbasic variable with dual value d rests at; when its bounds coincide the sign of d decides.
  [[nodiscard]] BasisStatus side(BasisStatus status, double d, bool coincide) const {
    if ((coincide || farkas) && d != 0) return d > 0 ? BasisStatus::kAtLower : BasisStatus::kAtUpper;
    return status;
  }
};

inline bool at_bound(BasisStatus status) { return status == BasisStatus::kAtLower || status == BasisStatus::kAtUpper; }
inline BasisStatus side_of_sign(double d) { return d >= 0 ? BasisStatus::kAtLower : BasisStatus::kAtUpper; }
inline BasisStatus opposite(BasisStatus side) {
  return side == BasisStatus::kAtLower ? BasisStatus::kAtUpper : BasisStatus::kAtLower;
}

}  // namespace zorvex
