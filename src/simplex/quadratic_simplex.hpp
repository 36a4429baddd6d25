// Primal simplex for convex quadratic objectives: an active set method with basic, superbasic and nonbasic variables.
//   Method   Phase 1 lowers the sum of infeasibilities one variable at a time. Then Newton steps in the space of the
//            superbasic variables, each to the end of the line or to the first bound, alternate with nonbasic variables
//            that join them. A variable that brings no curvature of its own moves along the direction in which the
//            objective is linear until a bound stops it, so that the reduced Hessian stays positive definite.
//   Form     minimise c'x + 1/2 x'Qx, Q positive semi-definite, over rows and bounds of the core; scaled.
//   Source   B. Murtagh, M. Saunders, Math. Program. 14 (1978) 41-72; P. Gill, W. Murray, Math. Program. 14 (1978)
//            349-372; P. Gill, W. Murray, M. Saunders, M. Wright, SIAM Rev. 33 (1991) 1-36 (semi-definite Q).
#pragma once

#include <vector>

#include "simplex/primal_ratio_test.hpp"
#include "simplex/quadratic_form.hpp"
#include "simplex/reduced_space.hpp"
#include "simplex/simplex_core.hpp"
#include "simplex/simplex_outcome.hpp"

namespace zorvex {

struct QuadraticSimplexOptions {
  std::uint64_t seed = 0;
  // The superbasic variables' values are a guess at best: where it is infeasible, start from the minimum of their
  // space, and lead the active set from there to where it is feasible.
  bool may_predict = false;
  double perturb_value = 2e-4;  // parameter PerturbValue; 0: bounds stay as they are
};

template <class Real>
class QuadraticSimplex {
 public:
  explicit QuadraticSimplex(SimplexCore<Real>& core);

  // For the problem that the core has just been given. See QuadraticForm for the parameters.
  void load(const SparseMatrix& lower, const std::vector<double>& scale, double factor);
  [[nodiscard]] bool is_loaded() const { return !form_.empty(); }
  // The basis of the core was changed by somebody else.
  void invalidate() { space_.invalidate(); }
  // A column of Q is free to stand off its bounds.
  [[nodiscard]] bool has_superbasics() const;

  // Slack basis, with every column that Q touches off its bounds.
  void start_from_interior();

  // Runs from basis, places and nonbasic values of the core; free nonbasic variables may stand anywhere between their
  // bounds. Ends with the true bounds. kUnbounded: core.proof holds a direction without curvature over all variables.
  SimplexOutcome run(const QuadraticSimplexOptions& options);

  [[nodiscard]] Real objective() const;  // scaled, at the present point

 private:
  enum class Step { kContinue, kRebuild, kNoEntering, kUnbounded, kStopped, kFailed, kTooLarge };

  void begin(const QuadraticSimplexOptions& options);
  void settle();
  SimplexOutcome solve();
  SimplexOutcome rebuild(bool& stopped);
  bool factorize(SimplexOutcome& outcome);
  void restore_feasibility();
  [[nodiscard]] Index most_infeasible() const;
  bool drive_out(Index var);
  Real set_dual_direction(Index var, Real sign);
  [[nodiscard]] Real entry_in_row(Index var, Index other) const;
  Index first_to_change_sign(Real multiplier, Real sign, Real& limit);
  bool exchange_out(Index position, bool to_upper);
  bool exchange_for(Index position, Index entering, bool to_upper);
  void to_space_minimum();
  void compute_gradient();
  void compute_multipliers();
  [[nodiscard]] Real reduced_cost_of(Index var) const;
  void price();
  void report() const;
  [[nodiscard]] bool is_too_large() const;
  SimplexOutcome finish(bool& stopped);

  Step iterate();
  Index choose_entering();
  Step phase1_step();
  Step enter(Index var);
  void reject(Index var);
  void forget_rejected();
  bool is_subspace_optimal();
  Step newton_step();
  void set_direction();
  [[nodiscard]] bool is_flat() const;
  Step take_step();
  void move(Real step);
  void rest_at_bound(Index var, bool upper);
  Step make_nonbasic(Index position, bool to_upper);
  [[nodiscard]] Index farthest_from_bounds(Real least) const;
  Step trouble();

  SimplexCore<Real>& core_;
  QuadraticForm<Real> form_;
  ReducedSpace<Real> space_;
  PrimalRatioTest<Real> ratio_test_;
  QuadraticSimplexOptions options_;
  std::vector<Real> gradient_;  // n: c + Qx

  // The direction of a step: rate_[i] of moving_[i], which are the superbasic variables and the one that enters; basic
  // variables move by -alpha_, the gradient by curved_. Largest rate one.
  std::vector<Index> moving_;
  std::vector<Real> rate_, curved_;
  Scattered<Real> alpha_, rho_, multipliers_, column_;
  Real curvature_ = 0, magnitude_ = 0, slope_ = 0;
  Real direction_scale_ = 0;  // of the direction of a dual step, before it was made one
  std::vector<Real> row_, column_products_;

  std::vector<Index> rejected_;
  std::vector<char> is_rejected_;  // by variable
  bool phase1_ = false;
  bool predicted_ = false;
  bool bounds_changed_ = false;
  bool may_perturb_ = true;
  int degenerate_steps_ = 0;
  int poor_steps_ = 0;      // Newton steps in a row that hardly lowered the reduced gradient
  bool lossy_ = false;      // the last one left more than the factor should
  Real last_gradient_ = 0;  // largest reduced gradient before the last Newton step in this space, 0 if there was none
  int troubles_ = 0;
  // An optimum by updated values is computed anew to confirm it: so often in this run, and whether that is so now.
  int confirmations_ = 0;
  bool confirming_ = false;
  double run_steps_ = 0;
};

}  // namespace zorvex
