// Where a run of the dual simplex starts: edge weights, cost perturbation, and the way into phase 1 or 2.
#include <algorithm>
#include <cmath>

#include "base/random_stream.hpp"
#include "simplex/dual_simplex.hpp"

namespace zorvex {

namespace {
constexpr double kPerturbationUnit = 2.5e-3;  // perturbation = PerturbValue times this, relative to the cost scale
constexpr double kMinScale = 50, kZeroCostScale = 100;  // cost scales of perturb_costs
constexpr double kExactWeightWork = 2e6;  // rows times nonzeros up to which weights of a foreign basis are exact
}  // namespace

template <class Real>
void DualSimplex<Real>::begin(const DualOptions& options) {
  options_ = options;
  if (rho_.size() != core_.m || alpha_row_.size() != core_.n) {
    rho_.resize(core_.m);
    alpha_row_.resize(core_.n);
    alpha_col_.resize(core_.m);
    tau_.resize(core_.m);
    flip_column_.resize(core_.m);
  }
  pricing_.begin(options.pricing);
  ratio_test_.prefer_nondegenerate(options.nondegenerate_flips);
  if (options.norm_adjust >= 2) core_.weights_valid = false;
  phase1_ = costs_changed_ = false;
  may_perturb_ = options.perturb_value > 0;
  failed_position_ = -1;
  small_pivots_ = degenerate_in_a_row_ = degenerate_steps_ = 0;
  from_slacks_ = false;
  run_iterations_ = 0;
  perturbed_late_ = options.perturb_value <= 0;
}

// The values of the last solve, moved along with the bounds that changed.
template <class Real>
bool DualSimplex<Real>::start_warm() {
  if (!core_.warm || !core_.factor_valid) return false;
  core_.warm = false;
  if (!core_.absorb_bound_changes()) return false;
  ensure_weights();
  core_.fresh = false;
  start_iterating();
  return true;
}

// Everything but the factors, where these are good, from scratch. False: the basis could not be factored, and `outcome`
// tells why.
template <class Real>
bool DualSimplex<Real>::start_cold(SimplexOutcome& outcome) {
  core_.warm = false;
  core_.changed_bounds.clear();
  core_.use_true_bounds();
  core_.use_true_costs();
  core_.settle_nonbasic();
  if (!core_.factor_valid && !core_.factorize(outcome)) return false;
  ensure_weights();
  from_slacks_ = !core_.has_basic_columns();
  core_.compute_duals();
  if (flip_to_dual_feasibility() > 0) enter_phase1();
  return true;
}

// Candidates and dual objective for the present values.
template <class Real>
void DualSimplex<Real>::start_iterating() {
  pricing_.recompute();
  small_pivots_ = 0;
  const bool wanted = options_.objective_limit < kInf || core_.log->sink().enabled();
  dual_objective_ = wanted ? core_.objective(core_.work_cost) : Real(0);
  cutoff_check_at_ = options_.objective_limit;
}

template <class Real>
void DualSimplex<Real>::ensure_weights() {
  if (core_.weights_valid) return;
  core_.weights_valid = true;
  pricing_.reset_weights();
  if (!core_.has_basic_columns() || pricing_.mode() != DualPricingMode::kSteepestEdge) return;
  const double cost = static_cast<double>(core_.m) * static_cast<double>(core_.lu.factor_nonzeros() + core_.m);
  const bool wanted = options_.norm_adjust == 1 || options_.norm_adjust == 2;
  const bool refused = options_.norm_adjust == 0 || options_.norm_adjust == 3 || options_.pricing == 3;
  if (refused || (!wanted && cost > kExactWeightWork)) return;
  for (Index position = 0; position < core_.m; ++position) {
    core_.btran_unit(position, rho_);
    Real norm = 0;
    for (const Index row : rho_.index) norm += rho_.value[row] * rho_.value[row];
    core_.weight[position] = std::max(norm, KernelTolerances<Real>::kMinWeight);
  }
}

// Costs move away from zero reduced cost on the side that keeps the variable dual feasible, by random amounts relative
// to the size of the cost: ties of the dual ratio test disappear. A run perturbs when it stalls: where steps are long
// anyway the repair at the end is for nothing (neos-655508: 5400 iterations for 120, graph20-80-1rand without presolve
// 28 600 for 11 800). Basic variables keep their costs, so that the duals stay.
// Amounts near the tolerance of the ratio test are lost in it, hence the least scale (neos-565815, all costs 1: 1700
// iterations for 47000); where few columns are boxed the repair at the end costs more than that brings. Without any
// costs all steps are ties and no repair is due, whatever the amounts were (ns1116954: 3200 iterations for over 16000).
template <class Real>
void DualSimplex<Real>::perturb_costs() {
  double largest = 0;
  for (Index var = 0; var < core_.n; ++var) largest = std::max(largest, std::abs(static_cast<double>(core_.cost[var])));
  if (largest > 100) largest = std::sqrt(std::sqrt(largest));
  Index boxed = 0;
  for (Index var = 0; var < core_.n; ++var) {
    if (std::isfinite(core_.lower[var]) && std::isfinite(core_.upper[var])) ++boxed;
  }
  const double boxed_share = core_.n > 0 ? static_cast<double>(boxed) / core_.n : 0;
  const double scale = largest == 0         ? kZeroCostScale
                       : boxed_share < 0.01 ? std::clamp(largest, 1e-3, 1.0)
                                            : std::max(largest, kMinScale);
  const double base = options_.perturb_value * kPerturbationUnit * scale;
  RandomStream random(options_.seed, "dual cost perturbation");
  for (Index var = 0; var < core_.n; ++var) {
    const double draw = 1 + random.uniform();
    const Real low = core_.lower[var];
    const Real up = core_.upper[var];
    const double c = std::abs(static_cast<double>(core_.cost[var]));
    const Real amount = Real((c + 1) * base * draw);
    if (low == up || (!std::isfinite(low) && !std::isfinite(up)) || core_.is_basic(var)) continue;
    if (!std::isfinite(up)) {
      core_.work_cost[var] += amount;
    } else if (!std::isfinite(low)) {
      core_.work_cost[var] -= amount;
    } else {
      core_.work_cost[var] += core_.cost[var] >= 0 ? amount : -amount;
    }
  }
  costs_changed_ = true;
  may_perturb_ = false;
}

template <class Real>
void DualSimplex<Real>::remove_cost_changes() {
  core_.use_true_costs();
  costs_changed_ = false;
  may_perturb_ = false;
  core_.compute_duals();
}

template <class Real>
Real DualSimplex<Real>::flip_to_dual_feasibility() {
  Real rest = 0;
  for (Index var = 0; var < core_.num_vars(); ++var) {
    if (core_.is_basic(var)) continue;
    const Real infeasibility = core_.dual_infeasibility(var);
    if (infeasibility == 0) continue;
    if (core_.place[var] == Place::kLower && std::isfinite(core_.work_upper[var])) {
      core_.place[var] = Place::kUpper;
      core_.value[var] = core_.work_upper[var];
    } else if (core_.place[var] == Place::kUpper && std::isfinite(core_.work_lower[var])) {
      core_.place[var] = Place::kLower;
      core_.value[var] = core_.work_lower[var];
    } else {
      rest += infeasibility;
    }
  }
  return rest;
}

template <class Real>
void DualSimplex<Real>::enter_phase1() {
  phase1_ = true;
  for (Index var = 0; var < core_.num_vars(); ++var) {
    const bool has_lower = std::isfinite(core_.lower[var]);
    const bool has_upper = std::isfinite(core_.upper[var]);
    Real low = 0;
    Real up = 0;
    if (!has_lower && !has_upper) {
      low = Real(-options_.free_box);
      up = Real(options_.free_box);
    } else if (!has_upper) {
      up = 1;
    } else if (!has_lower) {
      low = -1;
    }
    core_.work_lower[var] = low;
    core_.work_upper[var] = up;
  }
  core_.settle_nonbasic();
  flip_to_dual_feasibility();
}

template <class Real>
void DualSimplex<Real>::enter_phase2() {
  phase1_ = false;
  core_.use_true_bounds();
  core_.settle_nonbasic();
  flip_to_dual_feasibility();
}

template class DualSimplex<double>;
template class DualSimplex<Extended>;

}  // namespace zorvex
