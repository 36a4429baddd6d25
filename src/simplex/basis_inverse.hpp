// The inverse of a basis in the user's space, for questions about a basis rather than for solving with it.
//   Form     A x + s = r: the logical s_i of row i has the unit column e_i. B has the columns of [A I] that the basis
//            names, in the order of head().
//   Spaces   ftran: vectors over rows to vectors over basis positions; btran the reverse. Unscaled on both sides;
//   inside
//            a copy scaled by powers of two is factored.
//   Errors   factor() is false for a basis of the wrong size or without an inverse; solves need a true one before.
//   Cost     factor() O(nnz of the basis) and the factorization; the model must outlive the object.
#pragma once

#include <vector>

#include "linalg/basis.hpp"
#include "linalg/lp_data.hpp"
#include "linalg/scattered.hpp"
#include "simplex/basis_lu.hpp"

namespace zorvex {

template <class Real>
class BasisInverse {
 public:
  // Takes the order of the positions from basis.head, or else columns first, then rows, by number.
  [[nodiscard]] bool factor(const LpData& lp, const Basis& basis);

  // Variable basic in each position: a column, or num_cols + row for a logical.
  [[nodiscard]] const std::vector<Index>& head() const { return head_; }
  // Basis position of each variable, -1 for nonbasic ones.
  [[nodiscard]] const std::vector<Index>& where() const { return where_; }
  [[nodiscard]] Index num_rows() const { return static_cast<Index>(head_.size()); }

  void ftran(Scattered<Real>& x);  // x := B^-1 x
  void btran(Scattered<Real>& y);  // y := B^-T y

  // Adds `factor` times the column of [A I] of a variable.
  void add_column(Index var, Real factor, Scattered<Real>& vector) const;
  // Product of a vector over rows with the column of a variable.
  [[nodiscard]] Real column_dot(Index var, const Scattered<Real>& vector) const;

 private:
  void take_head(const Basis& basis);
  void copy_columns();
  template <class Factor>
  void scale(Scattered<Real>& vector, Factor factor) const;

  const LpData* lp_ = nullptr;
  std::vector<Index> head_, where_;
  std::vector<double> row_scale_;       // by row
  std::vector<double> position_scale_;  // by position
  std::vector<Offset> start_;           // the basic columns, scaled
  std::vector<Index> index_;
  std::vector<Real> value_;
  std::vector<Index> local_head_;  // head in terms of these
  BasisLu<Real> lu_;
};

}  // namespace zorvex
