#include "simplex/quadratic_simplex.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zorvex {

namespace {
constexpr int kStallLength = 100;                        // degenerate steps in a row that count as stalling
constexpr double kPatience = 2000, kPatienceShare = 10;  // steps, and per row and column, of one run
}  // namespace

template <class Real>
QuadraticSimplex<Real>::QuadraticSimplex(SimplexCore<Real>& core)
    : core_(core), space_(core, form_), ratio_test_(core) {}

template <class Real>
void QuadraticSimplex<Real>::load(const SparseMatrix& lower, const std::vector<double>& scale, double factor) {
  form_.load(lower, scale, factor);
  if (form_.empty()) return;
  space_.reset();
  gradient_.assign(static_cast<std::size_t>(core_.n), Real(0));
  curved_.assign(static_cast<std::size_t>(core_.n), Real(0));
  for (Scattered<Real>* vector : {&alpha_, &rho_, &multipliers_, &column_}) vector->resize(core_.m);
}

template <class Real>
bool QuadraticSimplex<Real>::has_superbasics() const {
  for (Index col = 0; col < core_.n; ++col) {
    if (form_.touches(col) && core_.place[col] == Place::kFree) return true;
  }
  return false;
}

template <class Real>
void QuadraticSimplex<Real>::begin(const QuadraticSimplexOptions& options) {
  options_ = options;
  rejected_.clear();
  is_rejected_.assign(static_cast<std::size_t>(core_.num_vars()), 0);
  phase1_ = bounds_changed_ = false;
  predicted_ = !options.may_predict;
  may_perturb_ = true;
  degenerate_steps_ = poor_steps_ = troubles_ = confirmations_ = 0;
  confirming_ = false;
  last_gradient_ = 0;
  run_steps_ = 0;
  core_.warm = core_.weights_valid = false;
  core_.changed_bounds.clear();
  core_.use_true_bounds();
  core_.use_true_costs();
  if (!core_.rows_valid) core_.rebuild_rows();
  settle();
}

template <class Real>
void QuadraticSimplex<Real>::start_from_interior() {
  core_.slack_basis();
  space_.invalidate();
  for (Index col = 0; col < core_.n; ++col) {
    if (!form_.touches(col)) continue;
    const Real low = core_.lower[col];
    const Real up = core_.upper[col];
    core_.place[col] = Place::kFree;
    core_.value[col] = std::isfinite(low) && std::isfinite(up) ? low + (up - low) / 2
                       : std::isfinite(low)                    ? std::max<Real>(low + 1, 0)
                       : std::isfinite(up)                     ? std::min<Real>(up - 1, 0)
                                                               : Real(0);
  }
}

// Nonbasic variables to the bound of their place; free ones stay where they are as far as the bounds allow it.
template <class Real>
void QuadraticSimplex<Real>::settle() {
  core_.values_maintained = false;
  for (Index var = 0; var < core_.num_vars(); ++var) {
    const Real low = core_.work_lower[var];
    const Real up = core_.work_upper[var];
    if (core_.is_basic(var)) {
      core_.place[var] = Place::kBasic;
      core_.basic_lower[core_.where[var]] = low;
      core_.basic_upper[core_.where[var]] = up;
    } else if (core_.place[var] != Place::kFree || !(core_.value[var] > low && core_.value[var] < up)) {
      const bool above = core_.place[var] == Place::kFree ? core_.value[var] >= up : core_.place[var] == Place::kUpper;
      core_.put_nonbasic(var, above ? Place::kUpper : Place::kLower);
    } else if (var < core_.n) {
      core_.rows.set_active(var, true);
    }
  }
}

// Before the factor is built: what stands off its bounds may become part of it.
template <class Real>
bool QuadraticSimplex<Real>::is_too_large() const {
  Index off = 0;
  for (Index col = 0; col < core_.n; ++col) {
    off += form_.touches(col) && !core_.is_basic(col) && core_.place[col] == Place::kFree ? 1 : 0;
  }
  return off > ReducedSpace<Real>::kMostVariables;
}

template <class Real>
SimplexOutcome QuadraticSimplex<Real>::run(const QuadraticSimplexOptions& options) {
  begin(options);
  const SimplexOutcome outcome = solve();
  if (bounds_changed_) {
    core_.use_true_bounds();
    settle();
  }
  // What is basic now may be made superbasic by a later basis: its value is remembered.
  for (Index k = 0; k < core_.m; ++k) core_.value[core_.head[k]] = core_.basic_value[k];
  return outcome;
}

template <class Real>
SimplexOutcome QuadraticSimplex<Real>::solve() {
  for (;;) {
    bool stopped = false;
    SimplexOutcome outcome = rebuild(stopped);
    if (stopped) return outcome;
    Step step = Step::kContinue;
    while (step == Step::kContinue) step = iterate();
    switch (step) {
      case Step::kStopped:
        return core_.stop_reason();
      case Step::kFailed:
        return SimplexOutcome::kNumeric;
      case Step::kUnbounded:
        return SimplexOutcome::kUnbounded;
      case Step::kTooLarge:
        return SimplexOutcome::kTooLarge;
      case Step::kNoEntering:
        if (core_.fresh) {
          outcome = finish(stopped);
        } else {
          ++confirmations_;
          confirming_ = true;
        }
        break;
      default:
        break;
    }
    if (stopped) return outcome;
  }
}

template <class Real>
bool QuadraticSimplex<Real>::factorize(SimplexOutcome& outcome) {
  const Index repairs = core_.singular_events;
  if (!core_.factorize(outcome)) return false;
  if (core_.singular_events != repairs) space_.invalidate();
  return true;
}

// Values, phase, gradient and superbasic variables for the present basis, from scratch.
template <class Real>
SimplexOutcome QuadraticSimplex<Real>::rebuild(bool& stopped) {
  stopped = true;
  SimplexOutcome outcome = SimplexOutcome::kOptimal;
  if (core_.needs_refactor() && !factorize(outcome)) return outcome;
  core_.compute_primal();
  phase1_ = core_.sum_primal_infeasibility() > 0;
  if (!phase1_ || !predicted_) {
    if (is_too_large()) return SimplexOutcome::kTooLarge;
    if (!space_.refill()) return core_.stop_reason();
    compute_gradient();
  }
  if (phase1_ && !predicted_) {
    to_space_minimum();
    restore_feasibility();
    predicted_ = true;
    return rebuild(stopped);
  }
  predicted_ = true;
  core_.fresh = true;
  forget_rejected();
  compute_multipliers();
  price();
  if (core_.log->due(core_.iterations + core_.iteration_offset) || core_.log->watched() ||
      (core_.log->sink().enabled() && core_.first_iteration())) {
    report();
  }
  stopped = false;
  return outcome;
}

// One Newton step in the space of the superbasic variables that minds no bounds.
template <class Real>
void QuadraticSimplex<Real>::to_space_minimum() {
  if (space_.variables().empty()) return;
  compute_multipliers();
  row_.clear();
  for (const Index var : space_.variables()) row_.push_back(-reduced_cost_of(var));
  space_.solve(row_);
  for (std::size_t i = 0; i < row_.size(); ++i) core_.value[space_.variables()[i]] += row_[i];
  core_.values_maintained = false;
  core_.compute_primal();
  compute_gradient();
}

template <class Real>
void QuadraticSimplex<Real>::compute_gradient() {
  Offset touched = core_.n;
  std::copy(core_.work_cost.begin(), core_.work_cost.begin() + core_.n, gradient_.begin());
  for (Index col = 0; col < core_.n; ++col) {
    const Real x = core_.is_basic(col) ? core_.basic_value[core_.where[col]] : core_.value[col];
    if (x != 0) touched += form_.add_column(col, x, gradient_);
  }
  core_.work += static_cast<double>(touched);
}

// y with B'y the gradient of the basic variables: of the objective, or in phase 1 of the sum of infeasibilities.
template <class Real>
void QuadraticSimplex<Real>::compute_multipliers() {
  multipliers_.clear();
  multipliers_.dense = true;
  for (Index k = 0; k < core_.m; ++k) {
    if (phase1_ && predicted_) {
      const Real x = core_.basic_value[k];
      multipliers_.value[k] = x < core_.basic_lower[k] - core_.primal_tol   ? Real(-1)
                              : x > core_.basic_upper[k] + core_.primal_tol ? Real(1)
                                                                            : Real(0);
    } else {
      multipliers_.value[k] = core_.head[k] < core_.n ? gradient_[core_.head[k]] : Real(0);
    }
  }
  if (core_.m > 0) core_.lu.btran(multipliers_);
  core_.work += static_cast<double>(core_.m);
}

// By the multipliers just computed.
template <class Real>
Real QuadraticSimplex<Real>::reduced_cost_of(Index var) const {
  const Real own = var < core_.n && !(phase1_ && predicted_) ? gradient_[var] : Real(0);
  return own - core_.column_dot(var, multipliers_.value.data());
}

template <class Real>
void QuadraticSimplex<Real>::price() {
  for (Index var = 0; var < core_.num_vars(); ++var) {
    core_.reduced_cost[var] = core_.is_basic(var) ? Real(0) : reduced_cost_of(var);
  }
  core_.work += static_cast<double>(core_.col_start[core_.n]);
}

template <class Real>
Real QuadraticSimplex<Real>::objective() const {
  const auto value_of = [this](Index col) {
    return core_.is_basic(col) ? core_.basic_value[core_.where[col]] : core_.value[col];
  };
  std::vector<Real> gradient(core_.cost.begin(), core_.cost.begin() + core_.n);
  for (Index col = 0; col < core_.n; ++col) {
    const Real x = value_of(col);
    if (x != 0) form_.add_column(col, x, gradient);
  }
  Real sum = 0;
  for (Index col = 0; col < core_.n; ++col) sum += (core_.cost[col] + gradient[col]) / 2 * value_of(col);
  return sum;
}

// Changes nothing, work counts included: when lines are due may depend on the clock, the path must not.
template <class Real>
void QuadraticSimplex<Real>::report() const {
  core_.log->iteration(core_.iterations + core_.iteration_offset, static_cast<double>(objective()),
                       static_cast<double>(core_.sum_primal_infeasibility()),
                       static_cast<double>(core_.sum_dual_infeasibility()), false);
}

template <class Real>
typename QuadraticSimplex<Real>::Step QuadraticSimplex<Real>::iterate() {
  if (core_.needs_refactor()) return Step::kRebuild;
  if (++run_steps_ > kPatience + kPatienceShare * core_.num_vars()) return Step::kFailed;
  if (core_.poll() != SolveStatus::kLoaded || core_.iterations + core_.iteration_offset >= core_.iteration_limit) {
    return Step::kStopped;
  }
  if (!phase1_ && may_perturb_ && options_.perturb_value > 0 && !bounds_changed_ && degenerate_steps_ > kStallLength) {
    core_.perturb_bounds(options_.seed, options_.perturb_value);
    bounds_changed_ = true;
    settle();
    return Step::kRebuild;
  }
  if (core_.log->due(core_.iterations + core_.iteration_offset)) report();
  compute_multipliers();
  if (phase1_) return phase1_step();
  if (!is_subspace_optimal()) return newton_step();
  price();
  const Index entering = choose_entering();
  return entering < 0 ? Step::kNoEntering : enter(entering);
}

template <class Real>
void QuadraticSimplex<Real>::reject(Index var) {
  rejected_.push_back(var);
  is_rejected_[var] = 1;
}

template <class Real>
void QuadraticSimplex<Real>::forget_rejected() {
  for (const Index var : rejected_) is_rejected_[var] = 0;
  rejected_.clear();
}

template <class Real>
Index QuadraticSimplex<Real>::choose_entering() {
  Index best = -1;
  Real most = 0;
  for (Index var = 0; var < core_.num_vars(); ++var) {
    if (core_.is_basic(var) || (!phase1_ && space_.contains(var))) continue;
    const Real infeasibility = core_.dual_infeasibility(var);
    if (infeasibility <= most || is_rejected_[var]) continue;
    best = var;
    most = infeasibility;
  }
  return best;
}

template <class Real>
SimplexOutcome QuadraticSimplex<Real>::finish(bool& stopped) {
  stopped = true;
  if (!rejected_.empty()) return SimplexOutcome::kNumeric;
  if (bounds_changed_) {
    core_.use_true_bounds();
    settle();
    bounds_changed_ = may_perturb_ = false;
    stopped = false;
    return SimplexOutcome::kOptimal;
  }
  if (!phase1_) return SimplexOutcome::kOptimal;
  // The gradient of the infeasibility, taken back to the rows, proves that it cannot fall further.
  core_.proof.assign(multipliers_.value.begin(), multipliers_.value.end());
  return SimplexOutcome::kInfeasible;
}

template class QuadraticSimplex<double>;
template class QuadraticSimplex<Extended>;

}  // namespace zorvex
