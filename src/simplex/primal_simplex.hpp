// Primal simplex: composite phase 1 with a long-step ratio test, phase 2 with Harris' test, devex, steepest edge or
// partial pricing, bounds perturbed when it stalls.
//   Source   P. Harris, Math. Program. 5 (1973) 1-28 (devex); D. Goldfarb, J. Reid, Math. Program. 12 (1977) 361-371
//            (steepest edge); P. Gill, W. Murray, M. Saunders, M. Wright, Math. Program. 45 (1989) 437-474 (why bounds
//            have to move when a ratio test has tolerances).
#pragma once

#include <vector>

#include "simplex/primal_ratio_test.hpp"
#include "simplex/simplex_core.hpp"
#include "simplex/simplex_outcome.hpp"

namespace zorvex {

struct PrimalOptions {
  bool may_perturb = true;  // may work with bounds that differ a little from the true ones
  bool long_steps = true;   // phase 1 passes breakpoints while the infeasibility falls
  // Parameter SimplexPricing: 0 partial, 1 and 3 steepest edge from exact and unit weights, 2 devex; -1 steepest edge
  // from unit weights from a slack basis, else devex.
  int pricing = -1;
  // Degenerate steps beyond twice the others that count as stalling; negative: widen the bounds before the first step.
  // Where steps are seldom degenerate the perturbed problem takes longer than the true one: dano3_5 22900 iterations
  // for 16100, perturbed from the start.
  int stall_length = 50;
  double perturb_value = 2e-4;  // parameter PerturbValue; 0: never widen
  std::uint64_t seed = 0;
};

// Work arrays live from run to run.
template <class Real>
class PrimalSimplex {
 public:
  explicit PrimalSimplex(SimplexCore<Real>& core);

  // Runs from the basis in the core. kOtherAlgorithm: optimal for perturbed bounds, but primal infeasible without them,
  // or the run goes on for far longer than runs do: it cycles.
  SimplexOutcome run(const PrimalOptions& options);

  // Pricing weight of a nonbasic variable after the last run; with steepest edge 1 + ||B^-1 a||^2, scaled space.
  [[nodiscard]] Real weight(Index var) const { return weight_[var]; }

 private:
  enum class Step { kContinue, kRebuild, kNoEntering, kUnbounded, kStopped, kGivenUp };

  void begin(const PrimalOptions& options);
  SimplexOutcome solve();
  SimplexOutcome rebuild(bool& stopped);
  void report();
  Step iterate();
  void list_candidates();
  Index choose_entering();
  Index choose_from_section();
  void start_weights();
  void prepare_weight_update(Index entering);
  void measure_in_reference(Index entering);
  void reset_reference();
  [[nodiscard]] Real updated_weight(Index var, Real ratio) const;
  void note_candidate(Index var);
  bool confirm_reduced_cost(Index entering);
  void move_basics(Real step, Real direction);
  void update_duals(Index position, Index entering);
  void refresh_phase1_costs();
  [[nodiscard]] Real phase1_cost(Index position) const;
  SimplexOutcome finish(bool& stopped);

  void perturb_bounds();
  void widen(Index var, bool upper);
  void shift_for_leaving(Index position, bool to_upper);
  void absorb_violations();
  void restore_bounds();

  void note_step(Real step);

  SimplexCore<Real>& core_;
  PrimalRatioTest<Real> ratio_test_;
  PrimalOptions options_;
  Scattered<Real> alpha_, rho_, alpha_row_, cost_change_;
  std::vector<Real> weight_;        // pricing weight per variable
  Scattered<Real> tau_;             // steepest edge: B^-T alpha, over rows
  Real entering_norm_ = 1;          // 1 + ||alpha||^2; devex: the part of it in the reference framework
  std::vector<char> in_reference_;  // devex: variables of the reference framework
  int poor_weights_ = 0;            // devex: weights found far off since the framework was chosen
  bool steepest_edge_ = false;
  bool weights_started_ = false;
  std::size_t section_ = 0;            // partial pricing: where the next section of the candidates begins
  std::vector<Real> phase1_gradient_;  // per position: -1 below, +1 above, 0 within bounds
  std::vector<Index> candidates_;
  std::vector<char> listed_;
  std::vector<Index> rejected_;
  bool phase1_ = false;
  bool was_feasible_ = false;                     // the basis has been feasible for the working bounds
  bool bounds_changed_ = false;                   // working bounds are not the true ones
  bool perturbed_ = false;                        // and entering variables have theirs widened
  std::vector<Real> widening_low_, widening_up_;  // by variable
  int degenerate_steps_ = 0;
  int infeasible_ends_ = 0;  // of phase 1 with changed bounds
  double run_steps_ = 0;
  bool ray_up_ = true;
};

}  // namespace zorvex
