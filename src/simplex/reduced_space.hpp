// The superbasic variables of an active set method and the Cholesky factor of the Hessian in their space.
//   Form     superbasic j moves alone along z_j: itself by 1, the basic variables by -B^-1 a_j, all else rests.
//   Spaces   scaled. A superbasic variable is nonbasic with Place::kFree, wherever its value stands between its bounds.
//   Source   see reduced_hessian.hpp.
#pragma once

#include <vector>

#include "simplex/quadratic_form.hpp"
#include "simplex/reduced_hessian.hpp"
#include "simplex/simplex_core.hpp"

namespace zorvex {

template <class Real>
class ReducedSpace {
 public:
  ReducedSpace(SimplexCore<Real>& core, const QuadraticForm<Real>& form) : core_(core), form_(form) {}

  // For the problem that was loaded into core and form.
  void reset();
  [[nodiscard]] const std::vector<Index>& variables() const { return variables_; }
  [[nodiscard]] bool contains(Index var) const { return slot_[var] >= 0; }
  [[nodiscard]] Index slot(Index var) const { return slot_[var]; }  // place in variables(), or -1

  // The factor is dense: with so many variables it takes 36 MB, and ten million multiplications in every step.
  static constexpr Index kMostVariables = 3000;

  // The factor no longer belongs to basis and variables.
  void invalidate() { valid_ = false; }
  [[nodiscard]] bool valid() const { return valid_; }
  [[nodiscard]] Index updates() const { return updates_; }  // since the factor was computed
  // Brings variables and factor up to date with the places of the core. Variables along which the objective has no
  // curvature of its own are left out: they stay where they are, as candidates to enter. False: the stop token asked
  // for an end.
  [[nodiscard]] bool refill();

  // r = R^-T h with h the products z_j'Q z_var with the superbasic variables j; returns z_var'Q z_var.
  Real products(Index var, std::vector<Real>& r);
  // x := (R'R)^-1 x and x := R^-1 x.
  void solve(std::vector<Real>& x) const;
  void solve_upper(std::vector<Real>& x) const { hessian_.solve(x); }

  // `r` from products(), `excess` >= 0 the curvature along the new variable's direction that is conjugate to all
  // others.
  void append(Index var, const std::vector<Real>& r, Real excess);
  void remove(Index slot);
  // The variable in `slot` becomes basic for one that leaves; row[j] is the entry of the leaving position's tableau row
  // in superbasic j. Overwrites `row`.
  void exchange(Index slot, std::vector<Real>& row);

 private:
  void drop_from_list(Index slot);

  SimplexCore<Real>& core_;
  const QuadraticForm<Real>& form_;
  ReducedHessian<Real> hessian_;
  std::vector<Index> variables_;
  std::vector<Index> slot_;  // num_vars
  Scattered<Real> column_, multipliers_;
  std::vector<Real> product_;  // n: Q z
  bool valid_ = false;
  Index updates_ = 0;
};

}  // namespace zorvex
