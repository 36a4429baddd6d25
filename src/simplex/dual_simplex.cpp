#include "simplex/dual_simplex.hpp"

#include <algorithm>
#include <cmath>

namespace zorvex {

namespace {
constexpr double kWeightDistrust = 0.25;   // a stored weight below this share of the exact one re-opens the choice
constexpr int kMaxWeightCorrections = 10;  // choices re-opened in one iteration
constexpr int kStallLength = 50;           // degenerate dual steps in a row that bring on the perturbation
constexpr Index kDegenerateSteps = 10;     // so many in all do, too, for a run from the slacks where they are more than
constexpr double kDegenerateShare = 0.2;   // this share of its steps
constexpr double kWarmPatience = 500, kWarmPatienceShare = 0.5;  // iterations, and per row and column, of a warm run
constexpr double kPatience = 5000, kPatienceShare = 20;          // and of one from fresh values
constexpr int kMaxSmallPivots = 20;                              // rejected rows before a rebuild
}  // namespace

template <class Real>
DualSimplex<Real>::DualSimplex(SimplexCore<Real>& core) : core_(core), pricing_(core) {}

template <class Real>
SimplexOutcome DualSimplex<Real>::run(const DualOptions& options) {
  begin(options);
  const SimplexOutcome outcome = solve();
  if (outcome != SimplexOutcome::kOtherAlgorithm && !phase1_ && core_.factor_valid) {
    core_.warm = !costs_changed_ || core_.restore_true_costs() == 0;
  }
  return outcome;
}

template <class Real>
SimplexOutcome DualSimplex<Real>::solve() {
  SimplexOutcome outcome = SimplexOutcome::kOptimal;
  bool recompute = !options_.trust_updates;
  if (recompute || !start_warm()) {
    if (!start_cold(outcome)) return outcome;
    if (!recompute) {
      core_.compute_primal();
      core_.fresh = core_.lu.num_updates() == 0;
      start_iterating();
    }
  }
  if (!recompute && cutoff_reached()) return SimplexOutcome::kCutoff;
  for (;;) {
    bool stopped = false;
    if (recompute) outcome = rebuild(stopped);
    if (stopped) return outcome;
    recompute = true;
    Step step = Step::kContinue;
    while (step == Step::kContinue) step = iterate();
    if (step == Step::kStopped) return core_.stop_reason();
    if (options_.trust_updates && !core_.fresh && finish_unrefreshed(step, outcome)) return outcome;
    if (step == Step::kNoLeaving) {
      if (!core_.fresh || pricing_.has_rejected()) {
        if (core_.fresh) return phase1_ ? SimplexOutcome::kOtherAlgorithm : SimplexOutcome::kNumeric;
        continue;  // recompute before believing
      }
      outcome = phase1_ ? finish_phase1(stopped) : finish_phase2(stopped);
    } else if (step == Step::kNoEntering) {
      if (!core_.fresh) continue;
      outcome = finish_infeasible(stopped);
    } else if (step == Step::kCutoff) {
      return SimplexOutcome::kCutoff;
    } else if (step == Step::kGivenUp) {
      return SimplexOutcome::kOtherAlgorithm;
    }
    if (stopped) return outcome;
  }
}

// A few updates after good factors the updated values are as good as fresh ones: the caller checks the answer.
template <class Real>
bool DualSimplex<Real>::finish_unrefreshed(Step step, SimplexOutcome& outcome) {
  if (phase1_ || !core_.factor_valid) return false;
  if (step == Step::kNoLeaving && !pricing_.has_rejected()) {
    const Real infeasibility = costs_changed_ ? core_.restore_true_costs() : Real(0);
    costs_changed_ = false;
    outcome = infeasibility > 0 ? SimplexOutcome::kOtherAlgorithm : SimplexOutcome::kOptimal;
    return true;
  }
  if (step != Step::kNoEntering) return false;
  keep_proof();
  outcome = SimplexOutcome::kInfeasible;
  return true;
}

// Fresh factors when due, values and reduced costs from scratch, log line, limits.
template <class Real>
SimplexOutcome DualSimplex<Real>::rebuild(bool& stopped) {
  stopped = true;
  if (core_.needs_refactor() || core_.lu.num_updates() > 0) {
    SimplexOutcome failure = SimplexOutcome::kNumeric;
    if (!core_.factorize(failure)) return failure;
    if (!core_.weights_valid) {
      core_.log->sink().diagnose("Resetting Norm\n");
      ensure_weights();
    }
    core_.compute_duals();
    pricing_.reconsider_mode(core_.iterations);
  }
  // Recomputed reduced costs may have drifted over to the wrong side: boxed variables flip, others get a shifted cost.
  for (Index var = 0; var < core_.num_vars(); ++var) {
    if (core_.is_basic(var) || core_.dual_infeasibility(var) == 0) continue;
    if (std::isfinite(core_.work_lower[var]) && std::isfinite(core_.work_upper[var])) {
      core_.place[var] = core_.place[var] == Place::kLower ? Place::kUpper : Place::kLower;
      core_.value[var] = core_.place[var] == Place::kLower ? core_.work_lower[var] : core_.work_upper[var];
    } else {
      core_.work_cost[var] -= core_.reduced_cost[var];
      core_.reduced_cost[var] = 0;
      costs_changed_ = true;
    }
  }
  core_.compute_primal();
  core_.fresh = true;
  start_iterating();
  if (core_.log->due(core_.iterations + core_.iteration_offset) || core_.log->watched() ||
      (core_.log->sink().enabled() && core_.first_iteration())) {
    core_.log->iteration(core_.iterations + core_.iteration_offset, static_cast<double>(dual_objective_),
                         static_cast<double>(core_.sum_primal_infeasibility()),
                         static_cast<double>(core_.sum_dual_infeasibility()), false);
  }
  if (!phase1_ && cutoff_reached()) return SimplexOutcome::kCutoff;
  stopped = false;
  return SimplexOutcome::kOptimal;
}

// The bound that counts is the one of the true costs: perturbed costs may promise more. The next check waits until the
// objective has risen by what is missing.
template <class Real>
bool DualSimplex<Real>::cutoff_reached() {
  if (phase1_ || static_cast<double>(dual_objective_) < cutoff_check_at_) return false;
  if (!costs_changed_) return !options_.trust_updates || core_.objective(core_.cost) >= Real(options_.objective_limit);
  std::vector<Real> kept = core_.reduced_cost;
  core_.compute_duals_from(core_.cost);
  Real bound = 0;
  for (Index var = 0; var < core_.num_vars(); ++var) {
    const Real d = core_.reduced_cost[var];
    if (core_.is_basic(var) || d == 0) continue;
    bound += d > 0 ? d * core_.lower[var] : d * core_.upper[var];  // -inf where the needed bound is missing
  }
  core_.reduced_cost = std::move(kept);
  const double missing = options_.objective_limit - static_cast<double>(bound);
  if (missing > 0) cutoff_check_at_ = static_cast<double>(dual_objective_) + missing;
  return missing <= 0;
}

template <class Real>
bool DualSimplex<Real>::select_pivot_row(Index& position) {
  for (int attempt = 0;; ++attempt) {
    position = pricing_.choose();
    if (position < 0) return false;
    core_.btran_unit(position, rho_);
    rho_norm_ = 0;
    for (const Index row : rho_.index) rho_norm_ += rho_.value[row] * rho_.value[row];
    if (pricing_.mode() != DualPricingMode::kSteepestEdge || attempt >= kMaxWeightCorrections) return true;
    const Real stored = core_.weight[position];
    core_.weight[position] = std::max(rho_norm_, KernelTolerances<Real>::kMinWeight);
    if (stored >= Real(kWeightDistrust) * rho_norm_) return true;
  }
}

template <class Real>
double DualSimplex<Real>::patience() const {
  const double size = static_cast<double>(core_.num_vars());
  return options_.trust_updates ? kWarmPatience + kWarmPatienceShare * size : kPatience + kPatienceShare * size;
}

template <class Real>
void DualSimplex<Real>::count_degeneracy(bool degenerate) {
  degenerate_in_a_row_ = degenerate ? degenerate_in_a_row_ + 1 : 0;
  if (degenerate) ++degenerate_steps_;
}

template <class Real>
bool DualSimplex<Real>::stalls() const {
  if (degenerate_in_a_row_ > kStallLength) return true;
  return from_slacks_ && degenerate_steps_ >= kDegenerateSteps &&
         static_cast<double>(degenerate_steps_) > kDegenerateShare * run_iterations_;
}

template <class Real>
typename DualSimplex<Real>::Step DualSimplex<Real>::iterate() {
  if (core_.needs_refactor()) return Step::kRebuild;
  if (core_.poll() != SolveStatus::kLoaded || core_.iterations + core_.iteration_offset >= core_.iteration_limit) {
    return Step::kStopped;
  }
  // Ties that neither count as degenerate steps nor move the objective for good show by the length of the run alone.
  ++run_iterations_;
  if (run_iterations_ > patience()) return Step::kGivenUp;
  const bool late = !perturbed_late_ && run_iterations_ > patience() / 2;
  if (late || (may_perturb_ && stalls())) {
    perturbed_late_ = perturbed_late_ || late;
    perturb_costs();
    core_.compute_duals();
    return Step::kRebuild;
  }
  if (core_.log->due(core_.iterations + core_.iteration_offset)) {
    core_.log->iteration(core_.iterations + core_.iteration_offset, static_cast<double>(dual_objective_),
                         static_cast<double>(core_.sum_primal_infeasibility()),
                         static_cast<double>(core_.sum_dual_infeasibility()), false);
  }
  Index position = -1;
  if (!select_pivot_row(position)) return Step::kNoLeaving;
  leaving_above_ = core_.basic_value[position] > core_.basic_upper[position];
  const double row_work_before = core_.work;
  core_.price(rho_, alpha_row_);

  const bool aged = core_.lu.num_updates() > 20;
  const Real min_pivot = aged ? KernelTolerances<Real>::kRatioPivotAged : KernelTolerances<Real>::kRatioPivot;
  // Without slope the first group of breakpoints ends the test.
  const Real slope = options_.bound_flipping ? core_.primal_infeasibility(position) : Real(0);
  const auto choice = [&] {
    const OperationStatistics::Timer timer(core_.statistics, Operation::kRatioTest);
    return ratio_test_.choose(core_, alpha_row_, rho_, leaving_above_, slope, min_pivot);
  }();
  if (choice.entering < 0) {
    failed_position_ = position;
    return Step::kNoEntering;
  }
  using std::abs;
  if (abs(choice.alpha) < 10 * core_.pivot_tol) {
    core_.log->sink().diagnose("small pivot %g\n", static_cast<double>(-abs(choice.alpha)));
    failed_position_ = position;
    if (core_.fresh && choice.best_alpha < 10 * core_.pivot_tol) return Step::kNoEntering;
    pricing_.reject(position);
    return ++small_pivots_ > kMaxSmallPivots && !core_.fresh ? Step::kRebuild : Step::kContinue;
  }
  const bool weighing = pricing_.mode() == DualPricingMode::kSteepestEdge;
  const bool flipping = !ratio_test_.flips().empty();
  if (weighing) load_tau();
  if (weighing && !flipping) {
    core_.ftran_column_and(choice.entering, alpha_col_, tau_);
  } else {
    core_.ftran_column(choice.entering, alpha_col_);
  }
  if (!pivot_is_trustworthy(position, choice.entering, choice.alpha)) {
    if (core_.fresh) {
      pricing_.reject(position);
      return Step::kContinue;
    }
    core_.report_trouble();
    return Step::kRebuild;
  }
  pricing_.count_row_work(static_cast<double>(rho_.index.size()) + core_.work - row_work_before);
  if (flipping) apply_flips(weighing);
  if (weighing) count_tau();
  const Index leaving = core_.head[position];
  const Real bound = leaving_above_ ? core_.basic_upper[position] : core_.basic_lower[position];
  const Real dual_step = core_.reduced_cost[choice.entering] / choice.alpha;
  dual_objective_ += dual_step * (core_.basic_value[position] - bound);
  count_degeneracy(dual_step == 0);
  update_duals(choice.entering, dual_step);
  const Real pivot_value = alpha_col_.value[position];
  const Real primal_step = (core_.basic_value[position] - bound) / pivot_value;
  move_basic(alpha_col_, primal_step);
  pricing_.update_weights(position, alpha_col_, tau_, rho_norm_);
  const Real entering_value = core_.value[choice.entering] + primal_step;
  core_.pivot(position, choice.entering, entering_value, leaving_above_ ? Place::kUpper : Place::kLower, pivot_value);
  core_.reduced_cost[choice.entering] = 0;
  core_.reduced_cost[leaving] = -dual_step;
  refresh_pricing(flipping);
  if (!cutoff_reached()) return Step::kContinue;
  return options_.trust_updates && core_.factor_valid ? Step::kCutoff : Step::kRebuild;
}

template <class Real>
bool DualSimplex<Real>::pivot_is_trustworthy(Index position, Index entering, Real row_alpha) {
  using std::abs;
  const Real column_alpha = alpha_col_.value[position];
  const Real difference = abs(column_alpha - row_alpha);
  const bool ok = difference <= KernelTolerances<Real>::kPivotMismatch * (1 + abs(column_alpha)) &&
                  abs(column_alpha) > core_.pivot_tol && column_alpha * row_alpha > 0;
  if (ok) {
    // A reduced cost on the wrong side would make the step go backwards: shift it to zero.
    const Place place = core_.place[entering];
    Real& d = core_.reduced_cost[entering];
    const bool wrong = place == Place::kFree ? d != 0 : place == Place::kLower ? d < 0 : d > 0;
    if (wrong) {
      core_.work_cost[entering] -= d;
      d = 0;
      costs_changed_ = true;
    }
  }
  return ok;
}

// The update of the edge weights needs tau = B^-1 rho; the solve is paired with that of another vector.
template <class Real>
void DualSimplex<Real>::load_tau() {
  tau_.clear();
  for (const Index row : rho_.index) tau_.value[row] = rho_.value[row];
  tau_.index = rho_.index;
}

template <class Real>
void DualSimplex<Real>::count_tau() {
  const double count = tau_.dense ? core_.m : static_cast<double>(tau_.index.size());
  core_.work += count;
  pricing_.count_norm_work(count);
}

template <class Real>
void DualSimplex<Real>::apply_flips(bool weighing) {
  OperationStatistics::Timer timer(core_.statistics, Operation::kFlips);
  flip_column_.clear();
  for (const Index var : ratio_test_.flips()) {
    const bool to_upper = core_.place[var] == Place::kLower;
    const Real target = to_upper ? core_.work_upper[var] : core_.work_lower[var];
    const Real change = target - core_.value[var];
    core_.place[var] = to_upper ? Place::kUpper : Place::kLower;
    core_.value[var] = target;
    dual_objective_ += core_.reduced_cost[var] * change;
    core_.scatter_column(var, change, flip_column_);
  }
  if (weighing) {
    core_.lu.ftran_pair(flip_column_, false, tau_);
  } else {
    core_.lu.ftran(flip_column_);
  }
  const double count = flip_column_.dense ? core_.m : static_cast<double>(flip_column_.index.size());
  timer.count(count / std::max<double>(1, core_.m));
  flip_column_.pack(0);
  move_basic(flip_column_, Real(1));
}

template <class Real>
void DualSimplex<Real>::update_duals(Index entering, Real dual_step) {
  if (dual_step != 0) {
    for (const Index col : alpha_row_.index) core_.reduced_cost[col] -= dual_step * alpha_row_.value[col];
    for (const Index row : rho_.index) {
      const Index logical = core_.n + row;
      if (!core_.is_basic(logical)) core_.reduced_cost[logical] -= dual_step * rho_.value[row];
    }
  }
  shift_group(entering);
}

// Breakpoints passed within the tolerance of the last group: their reduced costs are put back to zero.
template <class Real>
void DualSimplex<Real>::shift_group(Index entering) {
  for (const Index var : ratio_test_.group()) {
    if (var == entering) continue;
    const Place place = core_.place[var];
    Real& d = core_.reduced_cost[var];
    if (place == Place::kFree ? d == 0 : place == Place::kLower ? d >= 0 : d <= 0) continue;
    core_.work_cost[var] -= d;
    d = 0;
    costs_changed_ = true;
  }
}

// x_B -= step * column
template <class Real>
void DualSimplex<Real>::move_basic(const Scattered<Real>& column, Real step) {
  Real* value = core_.basic_value.data();
  const Real* entry = column.value.data();
  for_each_entry(column, [=](Index k) { value[k] -= step * entry[k]; });
}

// Where the flips and the pivot have changed basic values; the position of the pivot is among them.
template <class Real>
void DualSimplex<Real>::refresh_pricing(bool flipped) {
  if (alpha_col_.crowded() || (flipped && flip_column_.crowded())) return pricing_.refresh_all();
  if (flipped) pricing_.refresh(flip_column_.index);
  pricing_.refresh(alpha_col_.index);
}

// The box problem is solved: its optimum is zero exactly when the basis is dual feasible for the true bounds.
template <class Real>
SimplexOutcome DualSimplex<Real>::finish_phase1(bool& stopped) {
  stopped = false;
  core_.use_true_bounds();
  core_.settle_nonbasic();
  Real rest = flip_to_dual_feasibility();
  if (rest > 0 && costs_changed_) {
    remove_cost_changes();
    rest = flip_to_dual_feasibility();
  }
  if (rest > 0) {
    stopped = true;
    return SimplexOutcome::kOtherAlgorithm;
  }
  enter_phase2();
  return SimplexOutcome::kOptimal;
}

// Without the perturbation some reduced costs may have the wrong sign. The basis is primal feasible, so a few primal
// iterations settle them; flipping boxed variables instead would give up primal feasibility.
template <class Real>
SimplexOutcome DualSimplex<Real>::finish_phase2(bool& stopped) {
  stopped = true;
  if (costs_changed_) remove_cost_changes();
  return core_.sum_dual_infeasibility() > 0 ? SimplexOutcome::kOtherAlgorithm : SimplexOutcome::kOptimal;
}

// Row `failed_position_` cannot be made feasible by any nonbasic variable: with y = rho the row y'(A x + s) = 0
// excludes every point within the bounds, provided that the entries too small to pivot on cannot make up the
// difference.
template <class Real>
bool DualSimplex<Real>::proves_infeasibility() {
  const bool above = leaving_above_;
  std::vector<Real> dense(static_cast<std::size_t>(core_.m), Real(0));
  for (const Index row : rho_.index) dense[row] = rho_.value[row];
  // Extreme of the basic variable over the nonbasic box: it must stay on the infeasible side.
  Real extreme = 0;
  Real scale = 1;
  using std::abs;
  for (Index var = 0; var < core_.num_vars(); ++var) {
    if (core_.is_basic(var)) continue;
    const Real alpha = core_.column_dot(var, dense.data());
    if (abs(alpha) <= KernelTolerances<Real>::kRatioPivot && !std::isfinite(core_.lower[var] - core_.upper[var]))
      continue;
    if (alpha == 0) continue;
    // x_p = -sum alpha_j x_j: the smallest value for `above`, the largest otherwise.
    const bool at_upper = (alpha > 0) == above;
    const Real bound = at_upper ? core_.upper[var] : core_.lower[var];
    extreme -= alpha * bound;
    scale = std::max<Real>(scale, abs(alpha * bound));
  }
  const Index var = core_.head[failed_position_];
  const Real gap = above ? extreme - core_.upper[var] : core_.lower[var] - extreme;
  if (!(gap > core_.primal_tol) || !(gap > KernelTolerances<Real>::kDrop * scale * 100)) return false;
  keep_proof();
  return true;
}

template <class Real>
void DualSimplex<Real>::keep_proof() {
  core_.proof.assign(static_cast<std::size_t>(core_.m), Real(0));
  for (const Index row : rho_.index) core_.proof[row] = leaving_above_ ? rho_.value[row] : -rho_.value[row];
}

template <class Real>
SimplexOutcome DualSimplex<Real>::finish_infeasible(bool& stopped) {
  stopped = true;
  if (phase1_) return SimplexOutcome::kOtherAlgorithm;  // the box problem is never infeasible: numerical trouble
  if (proves_infeasibility()) return SimplexOutcome::kInfeasible;
  core_.log->sink().write("switch to primal because the chance of primal infeasibility\n");
  return SimplexOutcome::kOtherAlgorithm;
}

template class DualSimplex<double>;
template class DualSimplex<Extended>;

}  // namespace zorvex
