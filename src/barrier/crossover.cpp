#include "barrier/crossover.hpp"

#include <algorithm>
#include <cmath>

#include "barrier/crossover_push.hpp"

namespace zorvex {

namespace {

// Infeasible variables, relative to the rows, up to which the primal simplex ends it even when some are basic: it goes
// on from near feasibility, where the dual would have to begin with its first phase.
constexpr double kAlmostDone = 0.05;

// How the parameter Crossover orders the phases.
bool duals_first(int crossover) { return crossover <= 2; }

// One call of run_crossover: its inputs and the result it is building.
class Crossover {
 public:
  Crossover(const LpData& lp, const InteriorPoint& point, const CrossoverOptions& options, const SimplexLimits& limits,
            const StopToken& stop, LogSink& log)
      : lp_(lp), point_(point), options_(options), limits_(limits), stop_(stop), log_(log) {
    if (options_.simplex.log_start_time <= 0) options_.simplex.log_start_time = now_seconds();
    options_.simplex.root_log = options_.root_log;
  }

  CrossoverResult run();

 private:
  template <class Real>
  SolveStatus push_to_basis();
  template <class Real>
  SolveStatus push(LpKernel<Real>& kernel, SimplexLog& log, CrossoverSides<Real> sides);
  template <class Real>
  SolveStatus push_phases(CrossoverPush<Real>& phases);
  [[nodiscard]] SimplexAlgorithm last_simplex() const;
  [[nodiscard]] SimplexLog make_log() const;
  void clean_up();
  void solve_from(const Basis& basis, SimplexAlgorithm algorithm);

  const LpData& lp_;
  const InteriorPoint& point_;
  CrossoverOptions options_;
  const SimplexLimits& limits_;
  const StopToken& stop_;
  LogSink& log_;
  CrossoverResult result_;
};

SimplexLog Crossover::make_log() const {
  SimplexLog::Settings settings;
  settings.start_time = options_.simplex.log_start_time;
  settings.display_interval = options_.simplex.display_interval;
  settings.root = options_.root_log;
  settings.crossover = true;
  settings.sense = options_.simplex.sense;
  return SimplexLog(log_, settings);
}

SimplexAlgorithm Crossover::last_simplex() const {
  if (options_.crossover == 1 || options_.crossover == 3) return SimplexAlgorithm::kPrimal;
  if (options_.crossover == 2 || options_.crossover == 4) return SimplexAlgorithm::kDual;
  if (result_.dual_infeasibilities == 0) return SimplexAlgorithm::kDual;
  const double left = result_.primal_infeasibilities + result_.dual_infeasibilities;
  return result_.primal_infeasibilities == 0 || left <= kAlmostDone * lp_.num_rows() ? SimplexAlgorithm::kPrimal
                                                                                     : SimplexAlgorithm::kDual;
}

template <class Real>
SolveStatus Crossover::push_phases(CrossoverPush<Real>& phases) {
  const bool duals = duals_first(options_.crossover);
  SolveStatus status = duals ? phases.push_dual() : phases.push_primal();
  if (status == SolveStatus::kLoaded) status = duals ? phases.push_primal() : phases.push_dual();
  if (status == SolveStatus::kLoaded) status = phases.finish();
  return status;
}

template <class Real>
SolveStatus Crossover::push(LpKernel<Real>& kernel, SimplexLog& log, CrossoverSides<Real> sides) {
  SimplexCore<Real>& core = kernel.core();
  const CrossoverBasis<Real> basis = choose_crossover_basis(core, sides, options_.crossover_basis != 0, stop_);
  if (basis.stopped) return stop_.poll();
  if (basis.dropped > 0) log_.diagnose("%d Columns dropped for crossover initial basis\n", basis.dropped);
  if (!log.settings().root || log.due()) log.crossover(SimplexLog::Kind::kCrossoverBasis, basis.placed, 0, 0);
  QuietLog quiet;  // the factorizations of the pushes have no lines of their own
  SimplexLog factor_log(quiet, {});
  core.stop = &stop_;
  core.log = &factor_log;
  core.primal_tol = Real(options_.simplex.primal_feasibility_tol * kToleranceShare);
  core.dual_tol = Real(options_.simplex.dual_feasibility_tol * kToleranceShare);
  core.iteration_limit = limits_.iterations;
  core.begin_solve(options_.simplex.markowitz_tol, options_.simplex.space_steps);
  CrossoverPush<Real> phases(core, log);
  SolveStatus status = phases.start(basis, std::move(sides));
  if (status == SolveStatus::kLoaded) status = push_phases(phases);
  result_.pushes = phases.pushes();
  result_.push_pivots = result_.iterations = core.iterations;
  if (status == SolveStatus::kLoaded) {
    result_.primal_infeasibilities = phases.primal_infeasibilities();
    result_.dual_infeasibilities = phases.dual_infeasibilities();
    options_.simplex.algorithm = last_simplex();
    result_.basis = kernel.basis();
  }
  return status;
}

// Ends with kLoaded when the simplex is to go on, from the basis of the result if there is one.
template <class Real>
SolveStatus Crossover::push_to_basis() {
  const SimplexOptions& simplex = options_.simplex;
  const Scaling scaling = simplex.scale ? compute_scaling(lp_, simplex.alternative_scaling) : unit_scaling(lp_);
  LpKernel<Real> kernel;
  kernel.load(lp_, scaling, 1);
  SimplexLog log = make_log();
  CrossoverSides<Real> sides = find_sides(kernel, point_);
  Index free = 0;
  for (Index col = 0; col < lp_.num_cols(); ++col) {
    if (std::isinf(lp_.col_lower[col]) && std::isinf(lp_.col_upper[col])) ++free;
  }
  if (free > 0 && (!log.settings().root || log.due())) log.crossover(SimplexLog::Kind::kFreeVariables, free, 0, 0);
  const SolveStatus status = push(kernel, log, std::move(sides));
  return status == SolveStatus::kNumeric ? SolveStatus::kLoaded : status;
}

// From the basis of the result if there is one. A basis from which the simplex gets nowhere is given up.
void Crossover::clean_up() {
  solve_from(result_.basis, options_.simplex.algorithm);
  if (result_.status == SolveStatus::kNumeric) solve_from({}, SimplexAlgorithm::kDual);
}

void Crossover::solve_from(const Basis& basis, SimplexAlgorithm algorithm) {
  SimplexOptions simplex = options_.simplex;
  simplex.algorithm = algorithm;
  simplex.first_iteration = options_.iteration_offset + result_.iterations;
  LpSolver solver(lp_, simplex, log_);
  if (!basis.empty()) solver.set_basis(basis);
  SimplexLimits rest = limits_;
  rest.iterations -= result_.iterations;
  solver.solve(rest, stop_);
  const double iterations_before = result_.iterations;
  static_cast<EngineAnswer&>(result_) = answer_of(solver);
  result_.iterations += iterations_before;
}

CrossoverResult Crossover::run() {
  if (point_.x.size() != static_cast<std::size_t>(lp_.num_cols()) ||
      point_.pi.size() != static_cast<std::size_t>(lp_.num_rows())) {
    report_no_point(log_);
    return std::move(result_);
  }
  log_.print("  Building initial crossover basis %33.0fs\n",
             std::floor(now_seconds() - options_.simplex.log_start_time));
  SolveStatus status = SolveStatus::kLoaded;
  if (lp_.num_rows() > 0) {
    const bool extended = options_.simplex.precision == Precision::kExtended;
    status = extended ? push_to_basis<Extended>() : push_to_basis<double>();
  }
  if (status == SolveStatus::kLoaded) {
    clean_up();
  } else {
    result_.status = status;
    result_.point = {point_.x, point_.row_activity, point_.pi, point_.reduced_cost};
  }
  return std::move(result_);
}

}  // namespace

void report_no_point(LogSink& log) { log.write("Barrier solution isn't available for crossover\n"); }

CrossoverResult run_crossover(const LpData& lp, const InteriorPoint& point, const CrossoverOptions& options,
                              const SimplexLimits& limits, const StopToken& stop, LogSink& log) {
  return Crossover(lp, point, options, limits, stop, log).run();
}

}  // namespace zorvex
