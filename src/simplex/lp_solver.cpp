#include "simplex/lp_solver.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "simplex/answer_check.hpp"
#include "simplex/lp_kernel.hpp"
#include "simplex/warm_check.hpp"

namespace zorvex {

namespace {

// Ways to try again when the answer of a run does not stand up to the check, in order.
struct Attempt {
  double share;  // of the user's tolerances
  bool scaled;
  bool extended;
};
constexpr Attempt kTighter{0.001, true, false};
constexpr Attempt kAttempts[] = {
    {kToleranceShare, true, false}, kTighter, {0.01, false, false}, {0.01, true, true}, {0.001, false, true}};
constexpr int kMaxBackoff = 64;  // solves, after which updated values are trusted again at the latest

}  // namespace

struct LpSolver::State {
  State(const LpData& lp, const SimplexOptions& o, LogSink& l) : data(lp), options(o), log(l) {}

  LpData data;
  SimplexOptions options;
  LogSink& log;
  LpKernel<double> fast;
  LpKernel<Extended> exact;
  bool scaled = true;      // scaling of the loaded fast kernel
  Scaling kept;            // of the fast kernel when it was unloaded, in step with the rows since; empty: none
  bool use_exact = false;  // the last solve ended in the extended kernel
  Basis pending;           // set by the user, not yet in a kernel
  bool has_pending = false;

  SolveStatus status = SolveStatus::kLoaded;
  double objective = 0, iterations = 0, total_iterations = 0, work = 0;
  LpPoint point;
  std::vector<double> farkas, ray;
  double farkas_gap = 0;
  bool nearly_optimal = false;
  bool too_large = false;

  // Solves that go on from the last one's values end without recomputing them, as long as the check bears it out. After
  // a failed optimum the next `backoff` solves recompute; each further failure doubles that.
  WarmCheck warm_check;
  bool solved_before = false;  // the loaded fast kernel has come through a solve
  int backoff = 1, recomputing = 0;
  std::vector<Index> unchecked;  // variables (rows behind the columns) whose bounds may cross
  bool all_unchecked = true;

  template <class Real>
  LpKernel<Real>& kernel() {
    if constexpr (std::is_same_v<Real, double>) {
      return fast;
    } else {
      return exact;
    }
  }

  [[nodiscard]] double cost_factor() const;
  template <class Real>
  void load(bool want_scaling);
  [[nodiscard]] Basis current_basis() const;
  void invalidate();
  void solve_without_rows();
  bool bounds_conflict();
  template <class Real>
  SimplexOutcome run(const Attempt& how, bool updates, const SimplexLimits& limits, const StopToken& stop,
                     SimplexLog& simplex_log);
  template <class Real>
  bool attempt(const Attempt& how, const SimplexLimits& limits, const StopToken& stop, SimplexLog& simplex_log);
  bool solve_by_updates(const SimplexLimits& limits, const StopToken& stop, SimplexLog& simplex_log);
  void close_gap(const SimplexLimits& limits, const StopToken& stop, SimplexLog& simplex_log);
  void relax(const SimplexLimits& limits, const StopToken& stop, SimplexLog& simplex_log);
  void solve_anew(const SimplexLimits& limits, const StopToken& stop, SimplexLog& simplex_log);
  bool accept_updated(SimplexOutcome outcome);
  template <class Real>
  bool accept(SimplexOutcome outcome);
  SolveStatus solve(const SimplexLimits& limits, const StopToken& stop);
};

double LpSolver::State::cost_factor() const {
  if (options.objective_scale > 0) return std::exp2(std::round(-std::log2(options.objective_scale)));
  if (options.objective_scale == 0) return 1;
  double largest = 0;
  for (const double c : data.cost) largest = std::max(largest, std::abs(c));
  if (largest > 0) {
    return std::exp2(std::round(options.objective_scale * std::log2(largest)));
  }
  return 1;
}

template <class Real>
void LpSolver::State::load(bool want_scaling) {
  const bool scale = want_scaling && options.scale;
  const bool reuse = scale && std::is_same_v<Real, double> && !kept.row.empty();
  kernel<Real>().load(data,
                      reuse   ? kept
                      : scale ? compute_scaling(data, options.alternative_scaling)
                              : unit_scaling(data),
                      cost_factor());
  report_costs(data, kernel<Real>().scaling(), cost_factor(), log);
}

Basis LpSolver::State::current_basis() const {
  if (has_pending) return pending;
  if (use_exact && exact.loaded()) return exact.basis();
  if (fast.loaded()) return fast.basis();
  Basis slack;
  slack.col.assign(static_cast<std::size_t>(data.num_cols()), BasisStatus::kAtLower);
  slack.row.assign(static_cast<std::size_t>(data.num_rows()), BasisStatus::kBasic);
  return slack;
}

// The matrix has changed: kernels are loaded again at the next solve, from the current basis.
void LpSolver::State::invalidate() {
  pending = current_basis();
  has_pending = true;
  if (fast.loaded() && scaled) kept = fast.scaling();
  fast.unload();
  exact.unload();
  solved_before = false;
  all_unchecked = true;
}

// Columns only: each goes to the bound that its cost prefers.
void LpSolver::State::solve_without_rows() {
  status = SolveStatus::kOptimal;
  const auto n = static_cast<std::size_t>(data.num_cols());
  point = {std::vector<double>(n, 0.0), {}, {}, data.cost};
  ray.assign(n, 0.0);
  pending = current_basis();
  has_pending = true;
  long double sum = data.offset;
  for (Index col = 0; col < data.num_cols(); ++col) {
    const double c = data.cost[col];
    const double low = data.col_lower[col];
    const double up = data.col_upper[col];
    const bool upper = c < 0 || (c == 0 && !std::isfinite(low) && std::isfinite(up));
    const double bound = upper ? up : low;
    if (!std::isfinite(bound) && c != 0 && status == SolveStatus::kOptimal) {
      status = SolveStatus::kUnbounded;
      ray[col] = c < 0 ? 1.0 : -1.0;
    }
    point.x[col] = std::isfinite(bound) ? bound : std::min(std::max(0.0, low), up);
    pending.col[col] = !std::isfinite(bound) ? BasisStatus::kNonbasicFree
                       : upper               ? BasisStatus::kAtUpper
                                             : BasisStatus::kAtLower;
    sum += static_cast<long double>(c) * point.x[col];
  }
  objective = static_cast<double>(sum);
}

// Crossed bounds decide the model before any simplex. Crossings within tolerance are closed at the middle.
bool LpSolver::State::bounds_conflict() {
  const Index n = data.num_cols();
  if (all_unchecked) {
    unchecked.resize(static_cast<std::size_t>(n) + data.row_lower.size());
    std::iota(unchecked.begin(), unchecked.end(), 0);
    all_unchecked = false;
  }
  const auto harmless = [&](Index var) {
    const double low = var < n ? data.col_lower[var] : data.row_lower[var - n];
    const double up = var < n ? data.col_upper[var] : data.row_upper[var - n];
    if (std::isnan(low) || std::isnan(up) || low == kInf || up == -kInf) return false;
    return !(low - up > options.primal_feasibility_tol);
  };
  std::erase_if(unchecked, harmless);
  if (unchecked.empty()) return false;
  const Index var = *std::min_element(unchecked.begin(), unchecked.end());
  if (var >= n) {
    farkas.assign(data.row_lower.size(), 0.0);
    farkas_gap = data.row_lower[var - n] - data.row_upper[var - n];
  }
  return true;
}

// The check of a solve that ended on updated values. False: they have to be computed anew.
bool LpSolver::State::accept_updated(SimplexOutcome outcome) {
  WarmVerdict verdict = WarmVerdict::kHolds;
  switch (outcome) {
    case SimplexOutcome::kOptimal:
      fast.extract_basic(point);
      verdict = warm_check.optimal(data, options, !fast.core().fresh, point, objective);
      if (verdict == WarmVerdict::kOpen && is_optimal(data, point, options)) verdict = WarmVerdict::kHolds;
      status = SolveStatus::kOptimal;
      break;
    case SimplexOutcome::kInfeasible:
      farkas = fast.user_farkas();
      drop_sign_noise(data, farkas);
      verdict = warm_check.infeasible(data, farkas, farkas_gap);
      if (verdict == WarmVerdict::kOpen && proves_infeasible(data, farkas, farkas_gap)) verdict = WarmVerdict::kHolds;
      status = SolveStatus::kInfeasible;
      break;
    case SimplexOutcome::kIterationLimit:
      fast.extract_basic(point);
      (void)warm_check.optimal(data, options, false, point, objective);  // fills in the rest of the point
      status = SolveStatus::kIterationLimit;
      break;
    default:
      return accept<double>(outcome);
  }
  return verdict == WarmVerdict::kHolds;
}

// Checks the outcome of a run against the data as given and sets status and results. False: try harder.
template <class Real>
bool LpSolver::State::accept(SimplexOutcome outcome) {
  LpKernel<Real>& lp_kernel = kernel<Real>();
  switch (outcome) {
    case SimplexOutcome::kOptimal:
      status = SolveStatus::kOptimal;
      lp_kernel.extract(data, point);
      if (!data.is_quadratic() && !(is_optimal(data, point, options) && closes_gap(data, point, options)) &&
          lp_kernel.core().factor_valid) {
        lp_kernel.core().refine();
        lp_kernel.extract(data, point);
      }
      objective = objective_at(data, point.x);
      if (is_optimal(data, point, options) || !options.repair_unscaled) return true;
      nearly_optimal = is_optimal_as_stored(data, point, options);
      return false;
    case SimplexOutcome::kInfeasible:
      farkas = lp_kernel.user_farkas();
      drop_sign_noise(data, farkas);
      status = SolveStatus::kInfeasible;
      return proves_infeasible(data, farkas, farkas_gap);
    case SimplexOutcome::kUnbounded:
      ray = lp_kernel.user_ray();
      lp_kernel.extract(data, point);
      objective = objective_at(data, point.x);
      status = SolveStatus::kUnbounded;
      return is_improving_ray(data, ray) && is_feasible(data, point.x, options.primal_feasibility_tol);
    case SimplexOutcome::kCutoff:
      status = SolveStatus::kCutoff;
      return true;
    case SimplexOutcome::kIterationLimit:
    case SimplexOutcome::kTimeLimit:
    case SimplexOutcome::kInterrupted:
      lp_kernel.extract(data, point);
      objective = objective_at(data, point.x);
      status = outcome == SimplexOutcome::kIterationLimit ? SolveStatus::kIterationLimit
               : outcome == SimplexOutcome::kTimeLimit    ? SolveStatus::kTimeLimit
                                                          : SolveStatus::kInterrupted;
      return true;
    case SimplexOutcome::kTooLarge:
      too_large = true;
      [[fallthrough]];
    default:
      status = SolveStatus::kNumeric;
      return false;
  }
}

template <class Real>
SimplexOutcome LpSolver::State::run(const Attempt& how, bool updates, const SimplexLimits& limits,
                                    const StopToken& stop, SimplexLog& simplex_log) {
  LpKernel<Real>& lp_kernel = kernel<Real>();
  SimplexLimits kernel_limits = limits;  // the kernel does not know the objective's constant
  kernel_limits.objective -= data.offset;
  kernel_limits.iterations += options.first_iteration;
  const double work_before = lp_kernel.core().work;
  const SimplexOutcome outcome = lp_kernel.run(options, kernel_limits, how.share, updates, stop, simplex_log,
                                               options.first_iteration + iterations);
  iterations += lp_kernel.core().iterations;
  work += lp_kernel.core().work - work_before;
  return outcome;
}

template <class Real>
bool LpSolver::State::attempt(const Attempt& how, const SimplexLimits& limits, const StopToken& stop,
                              SimplexLog& simplex_log) {
  LpKernel<Real>& lp_kernel = kernel<Real>();
  const bool switched = use_exact != how.extended;
  const bool reload = !lp_kernel.loaded() || (!how.extended && how.scaled != scaled);
  if (reload || has_pending || switched) {
    const Basis start = has_pending ? std::move(pending) : current_basis();
    if (reload) load<Real>(how.scaled);
    lp_kernel.set_basis(start);
    has_pending = false;
  }
  use_exact = how.extended;
  if (!how.extended) scaled = how.scaled;
  const bool updates = !options.end_factorization && &how == kAttempts;
  return accept<Real>(run<Real>(how, updates, limits, stop, simplex_log));
}

// The usual case of a chain of solves. False: not that case, or the answer did not stand up to the check.
bool LpSolver::State::solve_by_updates(const SimplexLimits& limits, const StopToken& stop, SimplexLog& simplex_log) {
  if (!fast.loaded() || !solved_before || use_exact || options.precision == Precision::kExtended) return false;
  if (options.algorithm != SimplexAlgorithm::kDual || data.is_quadratic()) return false;
  if (recomputing > 0) {
    --recomputing;
    return false;
  }
  if (has_pending) fast.set_basis(pending);
  has_pending = false;
  if (accept_updated(run<double>(kAttempts[0], true, limits, stop, simplex_log))) return true;
  // An unproven infeasibility says little about the values: with fresh factors other pivots may do.
  if (status == SolveStatus::kOptimal) {
    recomputing = backoff;
    backoff = std::min(2 * backoff, kMaxBackoff);
  }
  fast.distrust();
  return false;
}

SolveStatus LpSolver::State::solve(const SimplexLimits& limits, const StopToken& stop) {
  iterations = 0;
  farkas.clear();
  ray.clear();
  farkas_gap = 0;
  nearly_optimal = too_large = false;
  status = SolveStatus::kLoaded;
  if (bounds_conflict()) return status = SolveStatus::kInfeasible;
  if (data.num_rows() == 0 && !data.is_quadratic()) {
    solve_without_rows();
    return status;
  }
  SimplexLog::Settings settings;
  settings.start_time = options.log_start_time > 0 ? options.log_start_time : now_seconds();
  settings.display_interval = options.display_interval;
  settings.display_iterations = options.display_iterations;
  settings.root = options.root_log;
  settings.sense = options.sense;
  settings.cost_factor = cost_factor();
  settings.offset = data.offset;
  settings.hooks = stop.hooks();
  SimplexLog simplex_log(log, settings);
  if (!solve_by_updates(limits, stop, simplex_log)) solve_anew(limits, stop, simplex_log);
  total_iterations += iterations;
  return status;
}

// Reduced costs of the wrong sign within the tolerance, times long ways to the bound they price, make an optimum that
// is off by more than the tolerance. A tighter one mends that in a few iterations; if not, the optimum stands.
void LpSolver::State::close_gap(const SimplexLimits& limits, const StopToken& stop, SimplexLog& simplex_log) {
  const LpPoint kept_point = point;
  const double kept_objective = objective;
  const Basis kept_basis = current_basis();
  if (attempt<double>(kTighter, limits, stop, simplex_log) && status == SolveStatus::kOptimal) return;
  status = SolveStatus::kOptimal;
  point = kept_point;
  objective = kept_objective;
  pending = kept_basis;
  has_pending = true;
}

// Where infeasibilities come and go with the rounding of the iterations, wider tolerances let these end. Their basis is
// often the optimal one, and its refined point within the user's tolerances; if not, the point is the best there is.
// Proofs of infeasibility hold whatever the tolerances were.
void LpSolver::State::relax(const SimplexLimits& limits, const StopToken& stop, SimplexLog& simplex_log) {
  const SimplexOptions strict = options;
  options.primal_feasibility_tol = std::max(options.primal_feasibility_tol, options.relaxed_tol);
  options.dual_feasibility_tol = std::max(options.dual_feasibility_tol, options.relaxed_tol);
  const Attempt how{kToleranceShare, true, options.precision != Precision::kDouble};
  const bool done = how.extended ? attempt<Extended>(how, limits, stop, simplex_log)
                                 : attempt<double>(how, limits, stop, simplex_log);
  options = strict;
  if (done && status != SolveStatus::kOptimal && status != SolveStatus::kUnbounded) return;
  if (done && status == SolveStatus::kOptimal && is_optimal(data, point, options)) return;
  nearly_optimal = done && status == SolveStatus::kOptimal;
  status = SolveStatus::kNumeric;
}

void LpSolver::State::solve_anew(const SimplexLimits& limits, const StopToken& stop, SimplexLog& simplex_log) {
  bool announced = false;
  for (const Attempt& how : kAttempts) {
    if (how.extended && options.precision == Precision::kDouble) break;
    if (!how.extended && options.precision == Precision::kExtended) continue;
    if (!how.scaled && !options.scale) continue;
    if (how.extended && options.precision == Precision::kAutomatic && !announced) {
      log.write("Warning: switch to quad precision\n");
      announced = true;
    }
    const bool done = how.extended ? attempt<Extended>(how, limits, stop, simplex_log)
                                   : attempt<double>(how, limits, stop, simplex_log);
    if (done && status == SolveStatus::kOptimal && &how == kAttempts && options.repair_unscaled &&
        !closes_gap(data, point, options)) {
      close_gap(limits, stop, simplex_log);
    }
    if (done) break;
    status = SolveStatus::kNumeric;
    if (too_large) break;
    if (nearly_optimal) break;  // the other attempts could not store a better point either
    how.extended ? exact.distrust() : fast.distrust();
    if (stop.stop_requested()) {
      status = stop.poll();
      break;
    }
  }
  const bool failed = status == SolveStatus::kNumeric && !too_large && !nearly_optimal;
  if (failed && options.relaxed_tol > 0) relax(limits, stop, simplex_log);
  // A later solve of a changed model should not pay for this one's trouble.
  if (!scaled) {
    pending = current_basis();
    has_pending = true;
    fast.unload();
    kept = {};
    scaled = true;
  }
  solved_before = fast.loaded() && status != SolveStatus::kNumeric;
}

LpSolver::LpSolver(const LpData& lp, const SimplexOptions& options, LogSink& log)
    : state_(std::make_unique<State>(lp, options, log)) {}
LpSolver::~LpSolver() = default;

void LpSolver::set_col_bounds(Index col, double lower, double upper) {
  state_->data.col_lower[col] = lower;
  state_->data.col_upper[col] = upper;
  state_->unchecked.push_back(col);
  if (state_->fast.loaded()) state_->fast.set_col_bounds(col, lower, upper);
  if (state_->exact.loaded()) state_->exact.set_col_bounds(col, lower, upper);
}

void LpSolver::set_row_bounds(Index row, double lower, double upper) {
  state_->data.row_lower[row] = lower;
  state_->data.row_upper[row] = upper;
  state_->unchecked.push_back(state_->data.num_cols() + row);
  if (state_->fast.loaded()) state_->fast.set_row_bounds(row, lower, upper);
  if (state_->exact.loaded()) state_->exact.set_row_bounds(row, lower, upper);
}

void LpSolver::set_cost(Index col, double cost) {
  state_->data.cost[col] = cost;
  if (state_->fast.loaded()) state_->fast.set_cost(col, cost);
  if (state_->exact.loaded()) state_->exact.set_cost(col, cost);
}

void LpSolver::add_rows(const SparseMatrix& rows, std::span<const double> lower, std::span<const double> upper) {
  state_->invalidate();
  const Index old_rows = state_->data.num_rows();
  state_->data.matrix.append_rows(rows);
  if (!state_->kept.row.empty()) extend_scaling(state_->kept, rows);
  state_->data.row_lower.insert(state_->data.row_lower.end(), lower.begin(), lower.end());
  state_->data.row_upper.insert(state_->data.row_upper.end(), upper.begin(), upper.end());
  Basis& basis = state_->pending;
  basis.row.resize(basis.row.size() + lower.size(), BasisStatus::kBasic);
  if (basis.head.size() == static_cast<std::size_t>(old_rows) && basis.norm.size() == basis.head.size()) {
    for (std::size_t i = 0; i < lower.size(); ++i) {
      basis.head.push_back(state_->data.num_cols() + old_rows + static_cast<Index>(i));
      basis.norm.push_back(1);
    }
  }
}

void LpSolver::delete_rows(std::span<const char> remove) {
  state_->invalidate();
  LpData& lp = state_->data;
  std::vector<char> keep(remove.size());
  Basis& basis = state_->pending;
  const Index n = lp.num_cols();
  std::vector<Index> new_row(remove.size(), -1);
  std::size_t kept = 0;
  for (std::size_t i = 0; i < remove.size(); ++i) {
    keep[i] = remove[i] == 0 ? 1 : 0;
    if (!keep[i]) continue;
    new_row[i] = static_cast<Index>(kept);
    lp.row_lower[kept] = lp.row_lower[i];
    lp.row_upper[kept] = lp.row_upper[i];
    if (!state_->kept.row.empty()) state_->kept.row[kept] = state_->kept.row[i];
    basis.row[kept++] = basis.row[i];
  }
  lp.row_lower.resize(kept);
  lp.row_upper.resize(kept);
  if (!state_->kept.row.empty()) state_->kept.row.resize(kept);
  basis.row.resize(kept);
  lp.matrix.compress(keep.data(), nullptr);
  std::size_t positions = 0;
  for (std::size_t k = 0; k < basis.head.size(); ++k) {
    const Index var = basis.head[k];
    if (var >= n && new_row[var - n] < 0) continue;
    basis.head[positions] = var < n ? var : n + new_row[var - n];
    if (k < basis.norm.size()) basis.norm[positions] = basis.norm[k];
    ++positions;
  }
  basis.head.resize(positions);
  basis.norm.resize(std::min(positions, basis.norm.size()));
  set_basis(Basis(basis));
}

void LpSolver::set_options(const SimplexOptions& options) {
  if (options.scale != state_->options.scale || options.objective_scale != state_->options.objective_scale) {
    state_->invalidate();
    state_->kept = {};
  }
  state_->options = options;
}

void LpSolver::set_basis(const Basis& basis) {
  State& state = *state_;
  state.pending = basis;
  state.has_pending = true;
  Index excess = -state.data.num_rows();
  for (const BasisStatus status : basis.col) excess += status == BasisStatus::kBasic;
  for (const BasisStatus status : basis.row) excess += status == BasisStatus::kBasic;
  if (excess == 0) return;
  Basis& repaired = state.pending;
  repaired.head.clear();
  repaired.norm.clear();
  for (std::size_t row = 0; row < repaired.row.size() && excess < 0; ++row) {
    if (repaired.row[row] == BasisStatus::kBasic) continue;
    repaired.row[row] = BasisStatus::kBasic;
    ++excess;
  }
  for (std::size_t col = repaired.col.size(); col-- > 0 && excess > 0;) {
    if (repaired.col[col] != BasisStatus::kBasic) continue;
    repaired.col[col] = BasisStatus::kAtLower;
    --excess;
  }
}

Basis LpSolver::basis() const { return state_->current_basis(); }

void LpSolver::reset_to_slack_basis() {
  Basis slack;
  slack.col.assign(static_cast<std::size_t>(state_->data.num_cols()), BasisStatus::kAtLower);
  slack.row.assign(static_cast<std::size_t>(state_->data.num_rows()), BasisStatus::kBasic);
  set_basis(slack);
}

SolveStatus LpSolver::solve(const SimplexLimits& limits, const StopToken& stop) { return state_->solve(limits, stop); }

SolveStatus LpSolver::status() const { return state_->status; }
double LpSolver::objective() const { return state_->objective; }
double LpSolver::iterations() const { return state_->iterations; }
double LpSolver::total_iterations() const { return state_->total_iterations; }
const LpPoint& LpSolver::point() const { return state_->point; }
const std::vector<double>& LpSolver::farkas() const { return state_->farkas; }
double LpSolver::farkas_violation() const { return state_->farkas_gap; }
const std::vector<double>& LpSolver::ray() const { return state_->ray; }
bool LpSolver::nearly_optimal() const { return state_->nearly_optimal; }
bool LpSolver::extended_precision() const { return state_->use_exact; }
bool LpSolver::inverse_row(Index position, std::vector<double>& multipliers) {
  if (state_->use_exact) return state_->exact.inverse_row(position, multipliers);
  return state_->fast.loaded() && state_->fast.inverse_row(position, multipliers);
}
double LpSolver::infeasible_share() const {
  return state_->use_exact ? state_->exact.infeasible_share() : state_->fast.infeasible_share();
}
const std::vector<Index>& LpSolver::basis_head() const {
  return state_->use_exact ? state_->exact.core().head : state_->fast.core().head;
}
Index LpSolver::num_rows() const { return state_->data.num_rows(); }
Index LpSolver::num_cols() const { return state_->data.num_cols(); }
const LpData& LpSolver::data() const { return state_->data; }
double LpSolver::work() const { return state_->work; }

}  // namespace zorvex
