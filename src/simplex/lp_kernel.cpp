#include "simplex/lp_kernel.hpp"

#include <algorithm>
#include <cmath>

#include "simplex/answer_check.hpp"

namespace zorvex {

namespace {
constexpr int kMaxAlgorithmSwitches = 12;
// Columns by which two bases may differ for updates to beat a factorization: measured break-even of small models, one
// more for every so many rows.
constexpr Index kMinExchanges = 10;
constexpr Index kMaxExchanges = 40;
constexpr Index kRowsPerExchange = 500;
constexpr int kSwitchesWithPerturbation = 4;  // later runs of the primal do without
}  // namespace

template <class Real>
Real LpKernel<Real>::scaled_col_bound(Index col, double bound) const {
  return std::isfinite(bound) ? Real(bound) / Real(scaling_.col[col]) : Real(bound);
}

template <class Real>
Real LpKernel<Real>::scaled_row_bound(Index row, double bound) const {
  return std::isfinite(bound) ? Real(bound) * Real(scaling_.row[row]) : Real(bound);
}

template <class Real>
void LpKernel<Real>::load(const LpData& lp, const Scaling& scaling, double cost_factor) {
  scaling_ = scaling;
  cost_factor_ = cost_factor;
  core_.warm = false;
  core_.m = lp.num_rows();
  core_.n = lp.num_cols();
  const SparseMatrix& matrix = lp.matrix;
  core_.col_start = matrix.start;
  core_.row_index = matrix.index;
  core_.matrix_value.resize(matrix.value.size());
  const std::size_t total = static_cast<std::size_t>(core_.n) + static_cast<std::size_t>(core_.m);
  core_.lower.resize(total);
  core_.upper.resize(total);
  core_.cost.assign(total, Real(0));
  for (Index col = 0; col < core_.n; ++col) {
    for (Offset k = matrix.begin(col); k < matrix.end(col); ++k) {
      core_.matrix_value[k] = Real(matrix.value[k]) * Real(scaling.row[matrix.index[k]]) * Real(scaling.col[col]);
    }
    set_col_bounds(col, lp.col_lower[col], lp.col_upper[col]);
    set_cost(col, lp.cost[col]);
  }
  for (Index row = 0; row < core_.m; ++row) set_row_bounds(row, lp.row_lower[row], lp.row_upper[row]);
  core_.prepare();
  quadratic_.load(lp.quadratic, scaling.col, cost_factor);
  near_optimum_ = false;
  loaded_ = true;
}

template <class Real>
void LpKernel<Real>::set_col_bounds(Index col, double lower, double upper) {
  change_bounds(col, scaled_col_bound(col, lower), scaled_col_bound(col, upper));
}

template <class Real>
void LpKernel<Real>::set_row_bounds(Index row, double lower, double upper) {
  change_bounds(core_.n + row, -scaled_row_bound(row, upper), -scaled_row_bound(row, lower));
}

template <class Real>
void LpKernel<Real>::change_bounds(Index var, Real lower, Real upper) {
  core_.lower[var] = lower;
  core_.upper[var] = upper;
  if (core_.warm) core_.changed_bounds.push_back(var);
}

template <class Real>
void LpKernel<Real>::set_cost(Index col, double cost) {
  core_.cost[col] = Real(cost) * Real(scaling_.col[col]) * Real(cost_factor_);
  core_.warm = false;
}

namespace {

// By status, negated: basic, at lower, at upper, free. A logical is minus its row's activity.
constexpr Place kColPlace[] = {Place::kBasic, Place::kLower, Place::kUpper, Place::kFree};
constexpr Place kRowPlace[] = {Place::kBasic, Place::kUpper, Place::kLower, Place::kFree};

}  // namespace

template <class Real>
void LpKernel<Real>::set_basis(const Basis& basis) {
  basic_work_.resize(static_cast<std::size_t>(core_.num_vars()));
  bool same_set = true;
  const auto take = [&](Index var, Place place) {
    basic_work_[var] = place == Place::kBasic;
    if (core_.is_basic(var) != (place == Place::kBasic)) same_set = false;
    if (core_.place[var] == place) return;
    core_.place[var] = place;
    if (core_.warm) core_.changed_bounds.push_back(var);
  };
  for (Index col = 0; col < core_.n; ++col) take(col, kColPlace[-static_cast<int>(basis.col[col]) & 3]);
  for (Index row = 0; row < core_.m; ++row) take(core_.n + row, kRowPlace[-static_cast<int>(basis.row[row]) & 3]);
  const bool has_norms =
      basis.head.size() == static_cast<std::size_t>(core_.m) && basis.norm.size() == basis.head.size();
  if (!same_set) {
    core_.warm = core_.weights_valid = false;
    quadratic_.invalidate();
    const Index most = std::min(kMaxExchanges, kMinExchanges + core_.m / kRowsPerExchange);
    const bool exchanged = core_.factor_valid && core_.exchange_basis(basic_work_, most);
    core_.factor_valid = exchanged;
    if (!exchanged) take_heads(has_norms ? basis.head : std::vector<Index>());
  }
  if (has_norms) {
    for (std::size_t k = 0; k < basis.head.size(); ++k) core_.weight[core_.where[basis.head[k]]] = Real(basis.norm[k]);
    core_.weights_valid = true;
  }
}

// Heads for the places of the core, in the order given, or else by number.
template <class Real>
void LpKernel<Real>::take_heads(const std::vector<Index>& head) {
  std::fill(core_.where.begin(), core_.where.end(), Index(-1));
  if (!head.empty()) {
    core_.head = head;
  } else {
    Index position = 0;
    for (Index var = 0; var < core_.num_vars(); ++var) {
      if (core_.place[var] == Place::kBasic) core_.head[position++] = var;
    }
  }
  for (Index position = 0; position < core_.m; ++position) core_.where[core_.head[position]] = position;
}

template <class Real>
Basis LpKernel<Real>::basis() const {
  Basis result;
  result.col.resize(static_cast<std::size_t>(core_.n));
  result.row.resize(static_cast<std::size_t>(core_.m));
  for (Index var = 0; var < core_.num_vars(); ++var) {
    BasisStatus status = BasisStatus::kNonbasicFree;
    const bool is_row = var >= core_.n;
    switch (core_.is_basic(var) ? Place::kBasic : core_.place[var]) {
      case Place::kBasic:
        status = BasisStatus::kBasic;
        break;
      case Place::kLower:
        status = is_row ? BasisStatus::kAtUpper : BasisStatus::kAtLower;
        break;
      case Place::kUpper:
        status = is_row ? BasisStatus::kAtLower : BasisStatus::kAtUpper;
        break;
      case Place::kFixed:  // the side that its reduced cost prices
        status = (core_.reduced_cost[var] < 0) != is_row ? BasisStatus::kAtUpper : BasisStatus::kAtLower;
        break;
      case Place::kFree:
        break;
    }
    (is_row ? result.row[var - core_.n] : result.col[var]) = status;
  }
  result.head = core_.head;
  if (core_.weights_valid) result.norm.assign(core_.weight.begin(), core_.weight.end());
  return result;
}

template <class Real>
SimplexOutcome LpKernel<Real>::run(const SimplexOptions& options, const SimplexLimits& limits, double share,
                                   bool trust_updates, const StopToken& stop, SimplexLog& log,
                                   double iteration_offset) {
  core_.stop = &stop;
  core_.log = &log;
  const double aim = share * std::max(options.aspiration, kLeastAspiration);
  core_.primal_tol = Real(options.primal_feasibility_tol * aim);
  core_.dual_tol = Real(options.dual_feasibility_tol * aim);
  core_.pivot_tol = KernelTolerances<Real>::kPivot * Real(options.pivot_tol / KernelTolerances<double>::kPivot);
  core_.iteration_offset = iteration_offset;
  core_.iteration_limit = limits.iterations;
  core_.temporary_fixings = limits.temporary_fixings;
  core_.begin_solve(options.markowitz_tol, options.space_steps);
  const SimplexOutcome outcome =
      quadratic_.is_loaded() ? run_quadratic(options, limits) : run_linear(options, limits, trust_updates);
  if (log.sink().enabled() && (outcome == SimplexOutcome::kOptimal || log.settings().display_interval > 0)) {
    const Real objective = quadratic_.is_loaded() ? quadratic_.objective() : core_.objective(core_.cost);
    log.iteration(core_.iterations + iteration_offset, static_cast<double>(objective),
                  static_cast<double>(core_.sum_primal_infeasibility()),
                  static_cast<double>(core_.sum_dual_infeasibility()), true);
  }
  core_.statistics.report(log.sink());
  return outcome;
}

template <class Real>
SimplexOutcome LpKernel<Real>::run_linear(const SimplexOptions& options, const SimplexLimits& limits,
                                          bool trust_updates) {
  bool dual = options.algorithm == SimplexAlgorithm::kDual;
  SimplexOutcome outcome = SimplexOutcome::kOtherAlgorithm;
  for (int round = 0; round < kMaxAlgorithmSwitches && outcome == SimplexOutcome::kOtherAlgorithm; ++round) {
    if (dual) {
      DualOptions dual_options;
      dual_options.pricing = options.pricing;
      dual_options.norm_adjust = options.norm_adjust;
      dual_options.free_box = options.free_box;
      dual_options.bound_flipping = options.bound_flipping;
      dual_options.nondegenerate_flips = options.nondegenerate_flips;
      dual_options.perturb_value = round == 0 ? options.perturb_value : 0;
      dual_options.objective_limit = limits.objective * cost_factor_;
      dual_options.trust_updates = trust_updates;
      outcome = dual_.run(dual_options);
    } else {
      PrimalOptions primal_options;
      primal_options.perturb_value = options.perturb_value;
      primal_options.may_perturb = round < kSwitchesWithPerturbation;
      primal_options.pricing = options.partial_primal ? 0 : options.pricing;
      primal_options.long_steps = options.bound_flipping;
      outcome = primal_.run(primal_options);
    }
    if (options.switch_algorithm) dual = !dual;
  }
  return outcome == SimplexOutcome::kOtherAlgorithm ? SimplexOutcome::kNumeric : outcome;
}

// From scratch the linear part of the objective comes first: its optimum is feasible and often near, and no point
// of a convex quadratic model lies below it. Where the bases on the way from there are too ill-conditioned, the minimum
// without constraints may be a better place to start.
template <class Real>
SimplexOutcome LpKernel<Real>::run_quadratic(const SimplexOptions& options, const SimplexLimits& limits) {
  bool from_given_point = true;
  if (!near_optimum_ && !core_.has_basic_columns() && !quadratic_.has_superbasics()) {
    const SimplexOutcome first = run_linear(options, limits, false);
    quadratic_.invalidate();
    if (first != SimplexOutcome::kOptimal && first != SimplexOutcome::kUnbounded) return first;
    from_given_point = false;
  }
  SimplexOutcome outcome = quadratic_.run({0, from_given_point, options.perturb_value});
  if (outcome == SimplexOutcome::kNumeric) {
    quadratic_.start_from_interior();
    outcome = quadratic_.run({0, true, options.perturb_value});
  }
  near_optimum_ = outcome == SimplexOutcome::kOptimal;
  return outcome;
}

template <class Real>
void LpKernel<Real>::extract_basic(LpPoint& point) const {
  const auto n = static_cast<std::size_t>(core_.n);
  const auto m = static_cast<std::size_t>(core_.m);
  point.x.resize(n);
  point.pi.resize(m);
  point.reduced_cost.resize(n);
  point.row_activity.resize(m);
  const Real factor = 1 / Real(cost_factor_);
  for (Index row = 0; row < core_.m; ++row) {
    const Real y = core_.is_basic(core_.n + row) ? Real(0) : -core_.reduced_cost[core_.n + row];
    point.pi[row] = static_cast<double>(y * Real(scaling_.row[row]) * factor);
  }
  for (Index col = 0; col < core_.n; ++col) {
    const Index position = core_.where[col];
    const Real x = position >= 0 ? core_.basic_value[position] : core_.value[col];
    point.x[col] = static_cast<double>(x * Real(scaling_.col[col]));
  }
}

template <class Real>
void LpKernel<Real>::extract(const LpData& lp, LpPoint& point) const {
  extract_basic(point);
  std::vector<Extended> activity(static_cast<std::size_t>(core_.m), 0);
  const std::vector<double> gradient = gradient_at(lp, point.x);
  for (Index col = 0; col < core_.n; ++col) {
    Extended d = gradient[col];
    for (Offset k = lp.matrix.begin(col); k < lp.matrix.end(col); ++k) {
      d -= Extended(lp.matrix.value[k]) * point.pi[lp.matrix.index[k]];
      activity[lp.matrix.index[k]] += Extended(lp.matrix.value[k]) * point.x[col];
    }
    point.reduced_cost[col] = static_cast<double>(d);
  }
  point.row_activity.assign(activity.begin(), activity.end());
}

template <class Real>
std::vector<double> LpKernel<Real>::user_farkas() const {
  std::vector<double> y(static_cast<std::size_t>(core_.m), 0.0);
  for (Index row = 0; row < core_.m; ++row) y[row] = static_cast<double>(core_.proof[row] * Real(scaling_.row[row]));
  return y;
}

template <class Real>
std::vector<double> LpKernel<Real>::user_ray() const {
  std::vector<double> ray(static_cast<std::size_t>(core_.n), 0.0);
  for (Index col = 0; col < core_.n; ++col) ray[col] = static_cast<double>(core_.proof[col] * Real(scaling_.col[col]));
  return ray;
}

// With x = C x', the row of position p in user space is the scaled one times the basic variable's factor, divided by
// each column's factor; a logical's factor is the inverse of its row's.
template <class Real>
bool LpKernel<Real>::inverse_row(Index position, std::vector<double>& multipliers) {
  if (!core_.factor_valid || position < 0 || position >= core_.m) return false;
  Scattered<Real> rho;
  rho.resize(core_.m);
  core_.btran_unit(position, rho);
  const Index var = core_.head[position];
  const Real factor = var < core_.n ? Real(scaling_.col[var]) : 1 / Real(scaling_.row[var - core_.n]);
  multipliers.assign(static_cast<std::size_t>(core_.m), 0.0);
  for (const Index row : rho.index) {
    multipliers[row] = static_cast<double>(rho.value[row] * factor * Real(scaling_.row[row]));
  }
  return true;
}

template class LpKernel<double>;
template class LpKernel<Extended>;

}  // namespace zorvex
