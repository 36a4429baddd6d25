// Dual simplex: phase 1 by the box problem, phase 2 with bound flipping and steepest edge, cost perturbation and its
// removal.
//   Source   A. Koberstein, "The dual simplex method, techniques for a fast and stable implementation", thesis,
//            Paderborn 2005; A. Koberstein, U. Suhl, Comput. Optim. Appl. 37 (2007) 49-65 (phase 1).
#pragma once

#include "simplex/dual_pricing.hpp"
#include "simplex/dual_ratio_test.hpp"
#include "simplex/simplex_core.hpp"
#include "simplex/simplex_outcome.hpp"

namespace zorvex {

struct DualOptions {
  int pricing = -1;
  int norm_adjust = -1;         // parameter NormAdjust: weights of a basis that brings none, or is not to bring any
  double perturb_value = 2e-4;  // 0: never perturb
  double free_box = 1000;       // bounds of free variables in the box problem of phase 1
  bool bound_flipping = true;   // the ratio test passes breakpoints while the dual objective rises
  bool nondegenerate_flips = false;  // the ratio test would rather pass breakpoints than make no step
  double objective_limit = kInf;     // scaled objective at which the solve may stop
  std::uint64_t seed = 0;
  // Go on from the values of the last solve where the core is warm, and end on updated values without computing them
  // anew: optimality and infeasibility are then for the caller to check. `fresh` of the core tells which it was.
  bool trust_updates = false;
};

// Work arrays live from run to run.
template <class Real>
class DualSimplex {
 public:
  explicit DualSimplex(SimplexCore<Real>& core);

  // Runs from the basis in the core. kOtherAlgorithm: the basis is primal feasible but lost dual feasibility when the
  // perturbation went, or cannot be made dual feasible, or the model is probably infeasible but no proof was found, or
  // the run goes on for far longer than runs do: it cycles.
  SimplexOutcome run(const DualOptions& options);
  [[nodiscard]] bool in_first_phase() const { return phase1_; }

 private:
  enum class Step { kContinue, kRebuild, kNoLeaving, kNoEntering, kStopped, kCutoff, kGivenUp };

  void begin(const DualOptions& options);
  SimplexOutcome solve();
  bool start_warm();
  bool start_cold(SimplexOutcome& outcome);
  void start_iterating();
  SimplexOutcome rebuild(bool& stopped);
  Step iterate();
  [[nodiscard]] double patience() const;
  void count_degeneracy(bool degenerate);
  // Degenerate dual steps make a perturbation of the costs worth its repair.
  [[nodiscard]] bool stalls() const;
  bool select_pivot_row(Index& position);
  bool pivot_is_trustworthy(Index position, Index entering, Real row_alpha);
  void load_tau();
  void count_tau();
  void apply_flips(bool weighing);
  void update_duals(Index entering, Real dual_step);
  void move_basic(const Scattered<Real>& column, Real step);
  void refresh_pricing(bool flipped);
  void shift_group(Index entering);
  SimplexOutcome finish_phase1(bool& stopped);
  SimplexOutcome finish_phase2(bool& stopped);
  SimplexOutcome finish_infeasible(bool& stopped);
  bool finish_unrefreshed(Step step, SimplexOutcome& outcome);
  bool cutoff_reached();

  void perturb_costs();
  void remove_cost_changes();
  void enter_phase1();
  void enter_phase2();
  // Flips boxed variables whose reduced cost has the wrong sign; returns the sum of what flipping cannot cure.
  Real flip_to_dual_feasibility();
  void ensure_weights();
  bool proves_infeasibility();
  void keep_proof();

  SimplexCore<Real>& core_;
  DualOptions options_;
  DualPricing<Real> pricing_;
  DualRatioTest<Real> ratio_test_;
  Scattered<Real> rho_, alpha_row_, alpha_col_, tau_, flip_column_;
  Real rho_norm_ = 0;
  Real dual_objective_ = 0;        // of the working problem
  double cutoff_check_at_ = kInf;  // dual objective at which the limit is looked at again
  bool phase1_ = false;
  bool costs_changed_ = false;
  bool may_perturb_ = true;
  bool leaving_above_ = false;
  Index failed_position_ = -1;  // leaving row for which no entering variable was found
  int small_pivots_ = 0;
  int degenerate_in_a_row_ = 0;
  Index degenerate_steps_ = 0;  // of this run
  bool from_slacks_ = false;    // started without a structural column in the basis
  double run_iterations_ = 0;
  bool perturbed_late_ = false;
};

}  // namespace zorvex
