#include "simplex/primal_simplex.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zorvex {

namespace {
// Sum of infeasibilities of an optimal basis, once its bounds are the true ones, up to which the dual simplex is the
// one to mend them: brazil3, with 2.3, takes over 15000 dual iterations and 2400 primal ones.
constexpr double kMaxDualRepair = 1;
constexpr int kMaxInfeasibleEnds = 3;  // phase 1 with changed bounds
constexpr double kReducedCostMismatch = 1e-6;
constexpr double kPatience = 2000, kPatienceShare = 20;  // steps, and per row and column, of one run
}  // namespace

template <class Real>
PrimalSimplex<Real>::PrimalSimplex(SimplexCore<Real>& core) : core_(core), ratio_test_(core) {}

template <class Real>
void PrimalSimplex<Real>::begin(const PrimalOptions& options) {
  options_ = options;
  if (alpha_.size() != core_.m || alpha_row_.size() != core_.n) {
    alpha_.resize(core_.m);
    rho_.resize(core_.m);
    alpha_row_.resize(core_.n);
    cost_change_.resize(core_.m);
    tau_.resize(core_.m);
  }
  weight_.assign(static_cast<std::size_t>(core_.num_vars()), Real(1));
  phase1_gradient_.assign(static_cast<std::size_t>(core_.m), Real(0));
  listed_.assign(static_cast<std::size_t>(core_.num_vars()), 0);
  candidates_.clear();
  rejected_.clear();
  phase1_ = bounds_changed_ = perturbed_ = was_feasible_ = false;
  steepest_edge_ = options.pricing == 1 || options.pricing == 3;
  weights_started_ = false;
  section_ = 0;
  degenerate_steps_ = infeasible_ends_ = 0;
  run_steps_ = 0;
}

template <class Real>
SimplexOutcome PrimalSimplex<Real>::run(const PrimalOptions& options) {
  begin(options);
  const SimplexOutcome outcome = solve();
  core_.warm = outcome == SimplexOutcome::kOptimal && core_.fresh;
  return outcome;
}

template <class Real>
SimplexOutcome PrimalSimplex<Real>::solve() {
  core_.warm = false;
  core_.changed_bounds.clear();
  core_.use_true_bounds();
  core_.use_true_costs();
  core_.settle_nonbasic();
  for (;;) {
    bool stopped = false;
    SimplexOutcome outcome = rebuild(stopped);
    if (stopped) return outcome;
    Step step = Step::kContinue;
    while (step == Step::kContinue) step = iterate();
    switch (step) {
      case Step::kStopped:
        if (bounds_changed_ && core_.factor_valid) {
          restore_bounds();
          core_.compute_primal();
        }
        return core_.stop_reason();
      case Step::kNoEntering:
        if (!core_.fresh) break;
        outcome = finish(stopped);
        break;
      case Step::kUnbounded:
        if (!core_.fresh) break;
        if (!bounds_changed_) return SimplexOutcome::kUnbounded;
        restore_bounds();  // the point that the ray begins at has to be feasible
        options_.may_perturb = false;
        break;
      case Step::kGivenUp:
        return SimplexOutcome::kOtherAlgorithm;
      default:
        break;
    }
    if (stopped) return outcome;
  }
}

template <class Real>
Real PrimalSimplex<Real>::phase1_cost(Index position) const {
  const Real x = core_.basic_value[position];
  if (x < core_.basic_lower[position] - core_.primal_tol) return -1;
  if (x > core_.basic_upper[position] + core_.primal_tol) return 1;
  return 0;
}

template <class Real>
SimplexOutcome PrimalSimplex<Real>::rebuild(bool& stopped) {
  stopped = true;
  if (core_.needs_refactor() || core_.lu.num_updates() > 0) {
    SimplexOutcome failure = SimplexOutcome::kNumeric;
    if (!core_.factorize(failure)) return failure;
  }
  core_.compute_primal();
  if (was_feasible_ && options_.may_perturb) absorb_violations();
  phase1_ = core_.sum_primal_infeasibility() > 0;
  was_feasible_ = was_feasible_ || !phase1_;
  if (phase1_) {
    std::vector<Real> gradient(static_cast<std::size_t>(core_.num_vars()), Real(0));
    for (Index position = 0; position < core_.m; ++position) {
      phase1_gradient_[position] = phase1_cost(position);
      gradient[core_.head[position]] = phase1_gradient_[position];
    }
    core_.compute_duals_from(gradient);
  } else {
    core_.compute_duals();
  }
  core_.fresh = true;
  if (!weights_started_) start_weights();
  rejected_.clear();
  list_candidates();
  if (core_.log->due(core_.iterations + core_.iteration_offset) || core_.log->watched() ||
      (core_.log->sink().enabled() && core_.first_iteration())) {
    report();
  }
  stopped = false;
  return SimplexOutcome::kOptimal;
}

template <class Real>
void PrimalSimplex<Real>::report() {
  core_.log->iteration(core_.iterations + core_.iteration_offset, static_cast<double>(core_.objective(core_.cost)),
                       static_cast<double>(core_.sum_primal_infeasibility()),
                       static_cast<double>(core_.sum_dual_infeasibility()), false);
}

template <class Real>
void PrimalSimplex<Real>::note_candidate(Index var) {
  if (!listed_[var] && core_.dual_infeasibility(var) > 0) {
    listed_[var] = 1;
    candidates_.push_back(var);
  }
}

template <class Real>
void PrimalSimplex<Real>::list_candidates() {
  for (const Index var : candidates_) listed_[var] = 0;
  candidates_.clear();
  for (Index var = 0; var < core_.num_vars(); ++var) {
    if (!core_.is_basic(var)) note_candidate(var);
  }
}

template <class Real>
Index PrimalSimplex<Real>::choose_entering() {
  Index best = -1;
  Real best_value = 0;
  Real best_weight = 1;
  std::size_t kept = 0;
  for (const Index var : candidates_) {
    const Real infeasibility = core_.is_basic(var) ? Real(0) : core_.dual_infeasibility(var);
    if (infeasibility == 0) {
      listed_[var] = 0;
      continue;
    }
    candidates_[kept++] = var;
    const Real price = infeasibility * infeasibility;
    if (price * best_weight > best_value * weight_[var]) {
      if (std::find(rejected_.begin(), rejected_.end(), var) != rejected_.end()) continue;
      best = var;
      best_value = price;
      best_weight = weight_[var];
    }
  }
  candidates_.resize(kept);
  return best;
}

// Compares the updated reduced cost with the one that the entering column gives.
template <class Real>
bool PrimalSimplex<Real>::confirm_reduced_cost(Index entering) {
  Real exact = phase1_ ? Real(0) : core_.work_cost[entering];
  for (const Index k : alpha_.index) {
    exact -= alpha_.value[k] * (phase1_ ? phase1_gradient_[k] : core_.work_cost[core_.head[k]]);
  }
  using std::abs;
  const Real difference = abs(exact - core_.reduced_cost[entering]);
  core_.reduced_cost[entering] = exact;
  return difference <= Real(kReducedCostMismatch) * (1 + abs(exact)) && core_.dual_infeasibility(entering) > 0;
}

template <class Real>
void PrimalSimplex<Real>::move_basics(Real step, Real direction) {
  if (step == 0) return;
  for (const Index k : alpha_.index) core_.basic_value[k] -= step * direction * alpha_.value[k];
}

// Reduced costs and weights after `entering` replaced the variable that was basic in `position`; alpha_row_ and
// rho_ hold the pivot row of the basis before the change.
template <class Real>
void PrimalSimplex<Real>::update_duals(Index position, Index entering) {
  const Real pivot = alpha_.value[position];
  const Real dual_step = core_.reduced_cost[entering] / pivot;
  const Real entering_weight = entering_norm_ / (pivot * pivot);
  const auto update = [&](Index var, Real entry) {
    if (core_.is_basic(var) || core_.place[var] == Place::kFixed) return;
    core_.reduced_cost[var] -= dual_step * entry;
    weight_[var] = steepest_edge_ ? updated_weight(var, entry / pivot)
                                  : std::max<Real>(weight_[var], entry * entry * entering_weight);
    note_candidate(var);
  };
  for (const Index col : alpha_row_.index) update(col, alpha_row_.value[col]);
  for (const Index row : rho_.index) update(core_.n + row, rho_.value[row]);
  const Index leaving = core_.head[position];
  core_.reduced_cost[leaving] = -dual_step - (phase1_ ? phase1_gradient_[position] : Real(0));
  core_.reduced_cost[entering] = 0;
  weight_[leaving] = std::max<Real>(entering_weight, Real(1));
}

// Basic variables that became feasible or infeasible change the phase 1 objective; the reduced costs follow by one
// BTRAN of the changes.
template <class Real>
void PrimalSimplex<Real>::refresh_phase1_costs() {
  cost_change_.clear();
  for (const Index k : alpha_.index) {
    const Real now = phase1_cost(k);
    if (now == phase1_gradient_[k]) continue;
    cost_change_.value[k] = now - phase1_gradient_[k];
    cost_change_.index.push_back(k);
    phase1_gradient_[k] = now;
  }
  if (cost_change_.index.empty() || !core_.factor_valid) return;
  core_.lu.btran(cost_change_);
  cost_change_.pack(KernelTolerances<Real>::kDrop);
  core_.price(cost_change_, alpha_row_);
  const auto update = [&](Index var, Real change) {
    if (core_.is_basic(var) || core_.place[var] == Place::kFixed) return;
    core_.reduced_cost[var] -= change;
    note_candidate(var);
  };
  for (const Index col : alpha_row_.index) update(col, alpha_row_.value[col]);
  for (const Index row : cost_change_.index) update(core_.n + row, cost_change_.value[row]);
}

template <class Real>
void PrimalSimplex<Real>::note_step(Real step) {
  degenerate_steps_ = std::max(0, degenerate_steps_ + (step > core_.primal_tol ? -2 : 1));
}

template <class Real>
typename PrimalSimplex<Real>::Step PrimalSimplex<Real>::iterate() {
  if (core_.needs_refactor()) return Step::kRebuild;
  if (++run_steps_ > kPatience + kPatienceShare * core_.num_vars()) return Step::kGivenUp;
  if (core_.poll() != SolveStatus::kLoaded || core_.iterations + core_.iteration_offset >= core_.iteration_limit) {
    return Step::kStopped;
  }
  if (options_.may_perturb && options_.perturb_value > 0 && !perturbed_ && (!phase1_ || infeasible_ends_ == 0) &&
      degenerate_steps_ > options_.stall_length) {
    perturb_bounds();
    return Step::kRebuild;
  }
  if (core_.log->due(core_.iterations + core_.iteration_offset)) report();
  const Index entering = options_.pricing == 0 ? choose_from_section() : choose_entering();
  if (entering < 0) return Step::kNoEntering;
  core_.ftran_column(entering, alpha_);
  if (!confirm_reduced_cost(entering)) {
    if (!core_.fresh) return Step::kRebuild;
    note_candidate(entering);
    if (core_.dual_infeasibility(entering) == 0) {
      core_.log->sink().diagnose("Error:FindCbarMax\n");
      return Step::kContinue;
    }
  }
  const Real direction = core_.reduced_cost[entering] < 0 ? Real(1) : Real(-1);
  const Real own_range = core_.work_upper[entering] - core_.work_lower[entering];
  using std::abs;
  // The least slope is spent at the first breakpoint.
  const Real slope = options_.long_steps ? abs(core_.reduced_cost[entering]) : std::numeric_limits<Real>::min();
  const PrimalBlock<Real> block = phase1_ ? ratio_test_.phase1(alpha_, direction, own_range, slope)
                                          : ratio_test_.phase2(alpha_, direction, own_range);
  if (block.unbounded) {
    if (phase1_) {  // impossible in exact arithmetic: the phase 1 objective is bounded
      rejected_.push_back(entering);
      return core_.fresh ? Step::kContinue : Step::kRebuild;
    }
    core_.proof.assign(static_cast<std::size_t>(core_.num_vars()), Real(0));
    core_.proof[entering] = direction;
    for (const Index k : alpha_.index) core_.proof[core_.head[k]] = -direction * alpha_.value[k];
    return Step::kUnbounded;
  }
  note_step(block.step);
  if (block.position < 0) {
    move_basics(block.step, direction);
    core_.put_nonbasic(entering, direction > 0 ? Place::kUpper : Place::kLower);
    core_.fresh = false;
    ++core_.iterations;
    if (phase1_) refresh_phase1_costs();
    return Step::kContinue;
  }
  const Real pivot = alpha_.value[block.position];
  if (abs(pivot) < 10 * core_.pivot_tol) {
    core_.log->sink().diagnose("Numeric Warning: primal small pivot %g\n", static_cast<double>(pivot));
    if (!core_.fresh) return Step::kRebuild;
    rejected_.push_back(entering);
    return Step::kContinue;
  }
  prepare_weight_update(entering);
  core_.btran_unit(block.position, rho_);
  core_.price(rho_, alpha_row_);
  const Real row_pivot = entering < core_.n ? alpha_row_.value[entering] : rho_.value[entering - core_.n];
  if (abs(row_pivot - pivot) > KernelTolerances<Real>::kPivotMismatch * (1 + abs(pivot))) {
    if (core_.fresh) {
      rejected_.push_back(entering);
      return Step::kContinue;
    }
    core_.report_trouble();
    return Step::kRebuild;
  }
  const Real entering_value = core_.value[entering] + direction * block.step;
  move_basics(block.step, direction);
  shift_for_leaving(block.position, block.to_upper);
  if (perturbed_) widen(entering, core_.place[entering] == Place::kUpper);
  update_duals(block.position, entering);
  const Index leaving = core_.head[block.position];
  core_.pivot(block.position, entering, entering_value, block.to_upper ? Place::kUpper : Place::kLower, pivot);
  core_.weights_valid = false;
  if (phase1_) {
    phase1_gradient_[block.position] = 0;
    refresh_phase1_costs();
  }
  note_candidate(leaving);
  return Step::kContinue;
}

template <class Real>
SimplexOutcome PrimalSimplex<Real>::finish(bool& stopped) {
  stopped = true;
  if (!rejected_.empty()) return SimplexOutcome::kNumeric;
  if (phase1_) {
    if (bounds_changed_) {  // widened bounds only make feasibility easier; the proof must hold for the true ones
      restore_bounds();
      if (++infeasible_ends_ > kMaxInfeasibleEnds) options_.may_perturb = false;
      stopped = false;
      return SimplexOutcome::kOptimal;
    }
    // y = B^-T g with g the gradient of the infeasibility proves that it cannot fall further.
    rho_.clear();
    for (Index position = 0; position < core_.m; ++position) {
      if (phase1_gradient_[position] == 0) continue;
      rho_.value[position] = phase1_gradient_[position];
      rho_.index.push_back(position);
    }
    core_.lu.btran(rho_);
    core_.proof.assign(rho_.value.begin(), rho_.value.end());
    return SimplexOutcome::kInfeasible;
  }
  if (bounds_changed_) {
    restore_bounds();
    core_.compute_primal();
    const Real infeasibility = core_.sum_primal_infeasibility();
    if (infeasibility > Real(kMaxDualRepair)) {
      options_.may_perturb = false;
      stopped = false;
    } else if (infeasibility > 0) {
      return SimplexOutcome::kOtherAlgorithm;
    }
  }
  return SimplexOutcome::kOptimal;
}

template class PrimalSimplex<double>;
template class PrimalSimplex<Extended>;

}  // namespace zorvex
