#include "simplex/lp_driver.hpp"

#include <algorithm>
#include <cmath>
#include <new>
#include <optional>
#include <utility>

#include "presolve/dual_form.hpp"
#include "simplex/answer_check.hpp"

namespace zorvex {

namespace {

constexpr double kUndecidedObjective = 1e100;
// One call of solve_lp: its inputs and the result it is building.
class LpDriver {
 public:
  LpDriver(const LpData& lp, const LpDriverOptions& options, const Basis* warm_start, const StopToken& stop,
           LogSink& log)
      : lp_(lp), options_(options), warm_start_(warm_start), stop_(stop), log_(log), start_(now_seconds()) {
    if (options_.simplex.log_start_time <= 0) options_.simplex.log_start_time = start_;
    options_.simplex.sense = options.sense;
    options_.simplex.algorithm = options.method == 0 ? SimplexAlgorithm::kPrimal : SimplexAlgorithm::kDual;
  }

  LpDriverResult run();

 private:
  [[nodiscard]] bool presolve_wanted() const {
    const bool has_start = warm_start_ != nullptr && !warm_start_->empty();
    const bool starts_afresh =
        lp_.is_quadratic() ? options_.engine != nullptr && !has_start : options_.engine != nullptr || !has_start;
    return options_.presolve.level != 0 && starts_afresh;
  }
  bool solve_presolved();
  void report_presolve(const LpData& reduced, PresolveOutcome outcome, double seconds);
  EngineAnswer solve_reduced(const Presolve& presolve);
  EngineAnswer solve_dual(const DualForm& dual);
  EngineAnswer solve_as_chosen(const LpData& lp);
  void take_form(int sense, bool dual_form);
  void finish_reduced(const Presolve& presolve, const EngineAnswer& answer);
  void finish_without_basis(SolveStatus status);
  EngineAnswer solve_with_engine(const LpData& lp);
  bool solve_given();
  bool finish_from(const Presolve& presolve, const PresolvePoint& reduced_point);
  bool lift_proof(const Presolve& presolve, const EngineAnswer& answer);
  void solve_original(const Basis* basis);
  void solve_without_presolve(const Basis* basis);
  [[nodiscard]] bool there_is_a_point() const;
  void take(const LpSolver& solver);
  [[nodiscard]] bool is_exact_optimum() const;
  [[nodiscard]] SimplexLimits remaining_limits() const {
    return {options_.iteration_limit - result_.iterations, options_.cutoff};
  }
  void report_end();
  void warn_of_violations();

  const LpData& lp_;
  LpDriverOptions options_;
  const Basis* warm_start_;
  const StopToken& stop_;
  LogSink& log_;
  double start_;
  LpDriverResult result_;
  bool reported_ = false;         // the engine has printed the closing lines
  std::optional<DualForm> dual_;  // of the presolved model, when that is what gets solved
};

PresolvePoint presolve_point(const EngineAnswer& answer) {
  const LpPoint& point = answer.point;
  return {point.x, point.row_activity, point.pi, point.reduced_cost, answer.basis};
}

// Without costs every right-hand side of the dual is zero, and the primal simplex finds no step to make (ns1116954: 5 s
// on the model itself, beyond 60 on its dual).
bool dual_is_degenerate(const LpData& reduced) {
  return std::all_of(reduced.cost.begin(), reduced.cost.end(), [](double cost) { return cost == 0; });
}

bool dual_is_wanted(const LpDriverOptions& options, const LpData& reduced) {
  if (options.presolve.dualize >= 0) return options.presolve.dualize > 0;
  return dual_pays(reduced) && !(options.method == 0 && dual_is_degenerate(reduced));
}

LpDriverResult LpDriver::run() {
  try {
    if (options_.method > 1 && options_.engine == nullptr) {
      log_.write("Warning: barrier is not available, using dual simplex\n");
    }
    const bool presolved =
        presolve_wanted() && (options_.engine == nullptr || options_.engine->admits_presolve(lp_, stop_));
    if (presolved && !solve_presolved()) solve_without_presolve(warm_start_);
    if (!presolved && !solve_given()) solve_original(warm_start_);
  } catch (const std::bad_alloc&) {
    result_ = {};
    result_.error = kErrorOutOfMemory;
    result_.status = SolveStatus::kLoaded;
  }
  // The dual simplex may stop at the cutoff; what is solved to the end says the same of its optimum.
  if (result_.status == SolveStatus::kOptimal && result_.objective >= options_.cutoff) {
    result_.status = SolveStatus::kCutoff;
  }
  if (!result_.has_point) result_.objective = kUndecidedObjective;
  result_.seconds = now_seconds() - start_;
  report_end();
  return std::move(result_);
}

// `reduced` is what will be solved.
void LpDriver::report_presolve(const LpData& reduced, PresolveOutcome outcome, double seconds) {
  log_.print("Presolve time: %.2fs\n", seconds);
  if (outcome == PresolveOutcome::kAllRemoved) {
    log_.write("Presolve: All rows and columns removed\n");
  } else if (outcome == PresolveOutcome::kReduced) {
    if (options_.dump_presolved) options_.dump_presolved(reduced);
    log_.print("Presolved: %d rows, %d columns, %lld nonzeros\n", reduced.num_rows(), reduced.num_cols(),
               static_cast<long long>(reduced.matrix.num_nonzeros()));
    if (reduced.is_quadratic()) {
      log_.print("Presolved model has %d quadratic terms\n", static_cast<int>(reduced.quadratic.num_nonzeros()));
    }
    log_.write("\n");
  }
}

// False when the model has to be solved as it is: presolve's claim could not be confirmed, or says too little.
bool LpDriver::solve_presolved() {
  Presolve presolve(lp_, options_.presolve);
  const PresolveOutcome outcome = presolve.run(stop_);
  if (outcome == PresolveOutcome::kReduced && !presolve.reduced().is_quadratic() &&
      dual_is_wanted(options_, presolve.reduced())) {
    dual_.emplace(presolve.reduced(), options_.presolve.dualize == 2 ? DualRows::kEquations : DualRows::kInequalities);
  }
  report_presolve(dual_ ? dual_->lp() : presolve.reduced(), outcome, now_seconds() - start_);
  switch (outcome) {
    case PresolveOutcome::kStopped:
      result_.status = stop_.poll();
      return true;
    case PresolveOutcome::kInfeasible:
      result_.farkas = presolve.farkas();
      if (result_.farkas.empty()) return false;
      result_.status = SolveStatus::kInfeasible;
      return proves_infeasible(lp_, result_.farkas, result_.farkas_violation);
    case PresolveOutcome::kUnbounded:
      return false;  // feasibility is still open
    case PresolveOutcome::kAllRemoved:
      finish_from(presolve, {});
      if (options_.engine != nullptr && options_.engine->has_own_report() && log_.enabled() &&
          result_.iterations == 0) {
        options_.engine->report_without_solve(result_.status, options_.sense * result_.objective,
                                              now_seconds() - start_, log_);
        reported_ = true;
      }
      return true;
    case PresolveOutcome::kReduced:
      finish_reduced(presolve, solve_reduced(presolve));
      return true;
  }
  return false;
}

EngineAnswer LpDriver::solve_reduced(const Presolve& presolve) {
  if (!dual_) return solve_as_chosen(presolve.reduced());
  EngineAnswer answer = solve_dual(*dual_);
  if (answer.status != SolveStatus::kInfOrUnbd) return answer;
  // The dual has no solution: an unbounded or an infeasible model, which only a look at the model itself can tell.
  return solve_as_chosen(presolve.reduced());
}

// By way of the dual; the answer speaks of the primal. kInfOrUnbd if the dual proves infeasible.
EngineAnswer LpDriver::solve_dual(const DualForm& dual) {
  const double cutoff = std::exchange(options_.cutoff, kInf);  // says nothing about the dual's bounds
  take_form(-options_.sense, true);
  EngineAnswer answer = solve_as_chosen(dual.lp());
  take_form(options_.sense, false);
  options_.cutoff = cutoff;
  switch (answer.status) {
    case SolveStatus::kInfeasible:
      answer.status = SolveStatus::kInfOrUnbd;
      break;
    case SolveStatus::kUnbounded:
      answer.status = SolveStatus::kInfeasible;
      answer.farkas = dual.primal_proof(answer.ray);
      break;
    default:
      break;
  }
  if (answer.point.x.empty() || answer.point.pi.empty()) {
    answer.point = {};
    return answer;
  }
  PresolvePoint point = dual.primal_point(presolve_point(answer));
  answer.point = {std::move(point.x), std::move(point.row_activity), std::move(point.pi),
                  std::move(point.reduced_cost)};
  answer.basis = std::move(point.basis);
  return answer;
}

void LpDriver::take_form(int sense, bool dual_form) {
  options_.simplex.sense = sense;
  if (options_.engine == nullptr) return;
  options_.engine->set_sense(sense);
  options_.engine->set_dual_form(dual_form);
}

EngineAnswer LpDriver::solve_as_chosen(const LpData& lp) {
  if (options_.engine != nullptr) return solve_with_engine(lp);
  LpSolver solver(lp, options_.simplex, log_);
  solver.solve(remaining_limits(), stop_);
  result_.iterations += solver.iterations();
  result_.extended_precision = solver.extended_precision();
  return answer_of(solver);
}

EngineAnswer LpDriver::solve_with_engine(const LpData& lp) {
  EngineAnswer answer = options_.engine->solve(lp, remaining_limits(), stop_, log_);
  result_.iterations += answer.iterations;
  result_.barrier_iterations += answer.barrier_iterations;
  result_.extended_precision = answer.extended_precision;
  result_.nearly_optimal = answer.nearly_optimal;
  result_.error = answer.error;
  reported_ = answer.reported;
  return answer;
}

void LpDriver::finish_reduced(const Presolve& presolve, const EngineAnswer& answer) {
  result_.status = answer.status;
  if (answer.error != kOk) return;
  switch (answer.status) {
    case SolveStatus::kOptimal:
    case SolveStatus::kSuboptimal:
      if (!answer.basis.empty()) {
        finish_from(presolve, presolve_point(answer));
        return;
      }
      break;
    case SolveStatus::kInfeasible:
    case SolveStatus::kUnbounded:
      if (!lift_proof(presolve, answer)) solve_without_presolve(nullptr);
      return;
    case SolveStatus::kNumeric:
      if (!solve_given()) solve_original(nullptr);
      return;
    default:  // limits and interrupts: the best information there is
      break;
  }
  if (answer.point.x.empty()) return;
  PresolvePoint full = presolve.postsolve(presolve_point(answer));
  result_.point = {std::move(full.x), std::move(full.row_activity), std::move(full.pi), std::move(full.reduced_cost)};
  if (answer.basis.empty()) {
    finish_without_basis(answer.status);
    // The absolute tolerances can be missed by a hair on the way back.
    if (lp_.is_quadratic() && answer.status == SolveStatus::kOptimal && result_.status != answer.status) solve_given();
    return;
  }
  result_.basis = std::move(full.basis);
  result_.has_point = result_.has_basis = true;
  result_.objective = objective_at(lp_, result_.point.x);
}

// A point that no basis belongs to, in the original space: optimal when it passes the same tests as any other.
void LpDriver::finish_without_basis(SolveStatus status) {
  result_.has_point = true;
  result_.objective = objective_at(lp_, result_.point.x);
  const bool claims = status == SolveStatus::kOptimal || status == SolveStatus::kSuboptimal;
  result_.status = !claims ? status : is_exact_optimum() ? SolveStatus::kOptimal : SolveStatus::kSuboptimal;
  if (result_.status != status) reported_ = false;  // the engine's closing lines do not say so
}

// The model as given, by the engine. False when there is none.
bool LpDriver::solve_given() {
  if (options_.engine == nullptr) return false;
  EngineAnswer answer = solve_with_engine(lp_);
  result_.status = answer.status;
  if (answer.error != kOk) return true;
  result_.point = std::move(answer.point);
  result_.farkas = std::move(answer.farkas);
  result_.farkas_violation = answer.farkas_violation;
  result_.ray = std::move(answer.ray);
  result_.basis = std::move(answer.basis);
  result_.has_basis = !result_.basis.empty();
  result_.has_point = there_is_a_point();
  if (!result_.has_point) return true;
  if (result_.has_basis || lp_.num_cols() == 0) {
    result_.objective = objective_at(lp_, result_.point.x);
  } else {
    finish_without_basis(result_.status);
  }
  return true;
}

// Maps an optimal point back; when something is off in the original space, simplex goes on there from the mapped basis.
bool LpDriver::finish_from(const Presolve& presolve, const PresolvePoint& reduced_point) {
  PresolvePoint full = presolve.postsolve(reduced_point);
  result_.point = {std::move(full.x), std::move(full.row_activity), std::move(full.pi), std::move(full.reduced_cost)};
  result_.basis = std::move(full.basis);
  if (!full.exact_basis || !is_exact_optimum()) {
    const Basis start = result_.basis;
    const double iterations = result_.iterations;
    solve_without_presolve(&start);
    log_.diagnose("Cleanup after postsolve: %.0f iterations\n", result_.iterations - iterations);
    return true;
  }
  result_.status = SolveStatus::kOptimal;
  result_.has_point = result_.has_basis = true;
  result_.objective = objective_at(lp_, result_.point.x);
  return true;
}

// Carries a proof over the presolved model back; a ray often holds with zeros where columns were removed.
bool LpDriver::lift_proof(const Presolve& presolve, const EngineAnswer& answer) {
  if (answer.status == SolveStatus::kInfeasible) {
    result_.farkas = presolve.postsolve_farkas(answer.farkas);
    return proves_infeasible(lp_, result_.farkas, result_.farkas_violation);
  }
  result_.ray.assign(static_cast<std::size_t>(lp_.num_cols()), 0.0);
  const std::vector<Index>& cols = presolve.original_cols();
  for (std::size_t j = 0; j < cols.size(); ++j) result_.ray[cols[j]] = answer.ray[j];
  if (!is_improving_ray(lp_, result_.ray)) return false;
  PresolvePoint full = presolve.postsolve(presolve_point(answer));
  result_.point = {std::move(full.x), std::move(full.row_activity), std::move(full.pi), std::move(full.reduced_cost)};
  return is_feasible(lp_, result_.point.x, options_.simplex.primal_feasibility_tol);
}

// Only the engine knows what to do about a quadratic objective that is not quite convex.
void LpDriver::solve_without_presolve(const Basis* basis) {
  if (!lp_.is_quadratic() || !solve_given()) solve_original(basis);
}

void LpDriver::solve_original(const Basis* basis) {
  reported_ = false;
  LpSolver solver(lp_, options_.simplex, log_);
  if (basis != nullptr && !basis->empty()) solver.set_basis(*basis);
  solver.solve(remaining_limits(), stop_);
  result_.iterations += solver.iterations();
  result_.extended_precision = solver.extended_precision();
  take(solver);
}

// In the result so far. Without columns the empty point is one.
bool LpDriver::there_is_a_point() const {
  if (lp_.num_cols() == 0) return result_.status == SolveStatus::kOptimal;
  return !result_.point.x.empty() && result_.status != SolveStatus::kInfeasible;
}

void LpDriver::take(const LpSolver& solver) {
  result_.nearly_optimal = solver.nearly_optimal();
  result_.status = result_.nearly_optimal ? SolveStatus::kSuboptimal : solver.status();
  result_.farkas = solver.farkas();
  result_.farkas_violation = solver.farkas_violation();
  result_.ray = solver.ray();
  result_.point = solver.point();
  result_.has_point = there_is_a_point();
  result_.objective = solver.objective();
  result_.basis = solver.basis();
  result_.has_basis = !result_.basis.empty();
}

// Stricter than is_optimal: what postsolve recovered must also close the duality gap.
bool LpDriver::is_exact_optimum() const {
  if (!options_.simplex.repair_unscaled) return true;
  return is_optimal(lp_, result_.point, options_.simplex) && closes_gap(lp_, result_.point, options_.simplex);
}

void LpDriver::warn_of_violations() {
  const PrimalQuality primal = measure_primal(view_of(lp_), result_.point.x, result_.point.row_activity);
  const double violation = std::max(primal.bound.max, primal.row.max);
  if (violation > options_.simplex.primal_feasibility_tol) {
    log_.print("Warning: unscaled primal violation = %g and residual = %g\n", violation, primal.residual.max);
  }
  const DualQuality dual = dual_quality_of(lp_, result_.point, false);
  if (dual.sign.max > options_.simplex.dual_feasibility_tol) {
    log_.print("Warning: unscaled dual violation = %g and residual = %g\n", dual.sign.max, dual.residual.max);
  }
}

void LpDriver::report_end() {
  if (!log_.enabled() || reported_) return;
  log_.diagnose("result=%d\n", static_cast<int>(result_.status));
  const int code = static_cast<int>(result_.status);
  log_.print("\n%s in %d iterations and %.2f seconds\n", code >= 2 && code <= 5 ? "Solved" : "Stopped",
             static_cast<int>(result_.iterations), result_.seconds);
  if (result_.error == kErrorOutOfMemory) {
    log_.write("Out of memory\n");
    return;
  }
  switch (result_.status) {
    case SolveStatus::kOptimal:
      log_.print("Optimal objective %16.9e\n", options_.sense * result_.objective);
      if (options_.check_solution) warn_of_violations();
      break;
    case SolveStatus::kSuboptimal:
      log_.print("Sub-optimal termination - objective %.8e\n", options_.sense * result_.objective);
      if (options_.check_solution) warn_of_violations();
      break;
    case SolveStatus::kInfeasible:
      log_.write("Infeasible model\n");
      break;
    case SolveStatus::kInfOrUnbd:
      log_.write("Infeasible or unbounded model\n");
      break;
    case SolveStatus::kUnbounded:
      log_.write("Unbounded model\n");
      break;
    case SolveStatus::kIterationLimit:
      log_.write("Iteration limit exceeded\n");
      break;
    case SolveStatus::kTimeLimit:
      log_.write("Time limit exceeded\n");
      break;
    case SolveStatus::kInterrupted:
      log_.write("Solve interrupted\n");
      break;
    case SolveStatus::kNumeric:
      log_.write("Numeric error\n");
      break;
    default:
      break;
  }
}

}  // namespace

LpDriverResult solve_lp(const LpData& lp, const LpDriverOptions& options, const Basis* warm_start,
                        const StopToken& stop, LogSink& log) {
  return LpDriver(lp, options, warm_start, stop, log).run();
}

}  // namespace zorvex
