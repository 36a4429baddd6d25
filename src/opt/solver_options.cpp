#include "opt/solver_options.hpp"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <string_view>

#include "env/processors.hpp"

namespace zorvex {

namespace {

constexpr double kFreeBoxShare =
    1e-3;  // of the artificial bound: farther out phase 1 of pilot takes 4% more iterations

constexpr Index kLongestRow = 100;  // where long rows are cut

double limit_or_inf(double value) { return value >= kParameterInfinity ? kInf : value; }

// The parameter is in the user's sense; +-1e100 stands for none whatever the sense.
double minimisation_cutoff(const ZLPenv& env, int sense) {
  const double cutoff = param<Param::Cutoff>(env);
  return std::abs(cutoff) >= kParameterInfinity ? kParameterInfinity : sense * cutoff;
}

Precision precision_of(int quad) {
  switch (quad) {
    case 0:
      return Precision::kDouble;
    case 1:
      return Precision::kExtended;
    default:
      return Precision::kAutomatic;
  }
}

SimplexOptions simplex_options(const ZLPenv& env, double start_time) {
  SimplexOptions options;
  options.primal_feasibility_tol = param<Param::FeasibilityTol>(env);
  options.dual_feasibility_tol = param<Param::OptimalityTol>(env);
  options.markowitz_tol = param<Param::MarkowitzTol>(env);
  options.perturb_value = param<Param::PerturbValue>(env);
  options.objective_scale = param<Param::ObjScale>(env);
  options.pricing = param<Param::SimplexPricing>(env);
  options.norm_adjust = param<Param::NormAdjust>(env);
  if (options.norm_adjust < 0) options.norm_adjust = param<Param::ZORV_PAR_EXACTNORM>(env);  // 0 and 1 mean the same
  options.space_steps = param<Param::ZORV_PAR_SIMPLEXALLOCS>(env);
  options.pivot_tol = param<Param::ZORV_PAR_PIVOTTOL>(env);
  options.free_box = param<Param::ZORV_PAR_BIGM>(env) * kFreeBoxShare;
  options.bound_flipping = param<Param::ZORV_PAR_SIMPLEXPWRATIO>(env) != 0;
  options.nondegenerate_flips = param<Param::ZORV_PAR_NONDEGENFLIP>(env) != 0;
  options.partial_primal = param<Param::ZORV_PAR_PRIMALPARTIAL>(env) > 0;
  options.scale = param<Param::ScaleFlag>(env) != 0;
  options.alternative_scaling = param<Param::ZORV_PAR_ALTSCALE>(env) != 0;
  options.aspiration = param<Param::ZORV_PAR_ASPIRE>(env);
  options.end_factorization = param<Param::ZORV_PAR_SIMPLEXENDFAC>(env) != 0;
  options.switch_algorithm = param<Param::ZORV_PAR_PRIMDUALSWITCH>(env) != 0;
  const int violations = param<Param::ZORV_PAR_UNSCALEDVIO>(env);
  options.repair_unscaled = violations == -2 || violations == 1;
  options.precision = precision_of(param<Param::Quad>(env));
  options.algorithm = param<Param::Method>(env) == 0 ? SimplexAlgorithm::kPrimal : SimplexAlgorithm::kDual;
  options.display_interval = param<Param::DisplayInterval>(env);
  options.display_iterations = param<Param::ZORV_PAR_SDISPINTERVAL>(env);
  options.log_start_time = start_time;
  return options;
}

PresolveOptions presolve_options(const ZLPenv& env) {
  PresolveOptions options;
  options.level = param<Param::Presolve>(env);
  options.max_passes = param<Param::PrePasses>(env);
  options.primal_feasibility_tol = param<Param::FeasibilityTol>(env);
  options.dual_feasibility_tol = param<Param::OptimalityTol>(env);
  options.dualize = param<Param::PreDual>(env);
  options.dual_reductions = param<Param::ZORV_PAR_DUALREDUCTION>(env) != 0;
  // The barrier is better off without dependent equations; the dual simplex needs as many iterations or more: on grid
  // multicommodity flows twice as many.
  options.dependent_rows = param<Param::PreDepRow>(env);
  if (options.dependent_rows < 0 && param<Param::Method>(env) != 2) options.dependent_rows = 0;
  const double equations = param<Param::ZORV_PAR_PREMAKEEQ>(env);
  options.make_equations = equations >= 0;
  const bool conservative = options.level == 1;
  const bool aggressive = options.level == 2;
  const auto wanted = [&](int value) { return value < 0 ? aggressive : value > 0; };
  const bool more_duals = aggressive || param<Param::ZORV_PAR_PREDUALSLACK>(env) != 0;
  options.dual_effort = more_duals ? 1 : std::max(0.0, equations);
  options.implied_equations = wanted(param<Param::ZORV_PAR_IMPLICITEQ>(env));
  options.cancelling = param<Param::PreSparsify>(env) != 0             ? Cancelling::kFull
                       : wanted(param<Param::ZORV_PAR_PRESUBROW>(env)) ? Cancelling::kContained
                                                                       : Cancelling::kOff;
  options.longest_row = param<Param::ZORV_PAR_PRESPLITROWS>(env) > 0 ? kLongestRow : 0;
  options.longest_col = param<Param::ZORV_PAR_SPLIT>(env);
  options.power_scaling = param<Param::ZORV_PAR_PREPOWER>(env) != 0;
  options.aggregation_fill = param<Param::AggFill>(env);
  if (param<Param::ZORV_PAR_PRELIMIT>(env) < kMaxIntParameter) options.max_steps = param<Param::ZORV_PAR_PRELIMIT>(env);
  const auto switch_off = [&](bool off, std::initializer_list<std::string_view> names) {
    if (off) options.off.insert(options.off.end(), names);
  };
  switch_off(param<Param::Aggregate>(env) == 0, {"doubleton_equation", "free_column"});
  switch_off(param<Param::ZORV_PAR_PREBOUND>(env) == 0, {"implied_row"});
  switch_off(!wanted(param<Param::ZORV_PAR_PRETWOROWS>(env)), {"two_rows"});
  switch_off(conservative, {"implied_row", "dual_bounds"});
  switch_off(param<Param::ZORV_PAR_PREPARALLEL>(env) == 0, {"duplicate_rows", "duplicate_columns"});
  switch_off(param<Param::ZORV_PAR_PRESINGLECOL>(env) == 0, {"singleton_column"});
  return options;
}

}  // namespace

LpDriverOptions make_lp_options(const ZLPenv& env, int sense, double start_time) {
  LpDriverOptions options;
  options.simplex = simplex_options(env, start_time);
  options.simplex.relaxed_tol = param<Param::ZORV_PAR_BIGTOL>(env);
  options.presolve = presolve_options(env);
  options.iteration_limit = limit_or_inf(param<Param::IterationLimit>(env));
  options.cutoff = limit_or_inf(minimisation_cutoff(env, sense));
  options.method = param<Param::Method>(env);
  options.sense = sense;
  options.want_proofs = param<Param::InfUnbdInfo>(env) != 0;
  return options;
}

BarrierEngineOptions make_barrier_options(const ZLPenv& env, int sense, double start_time) {
  BarrierEngineOptions options;
  BarrierOptions& barrier = options.barrier;
  barrier.primal_feasibility_tol = param<Param::FeasibilityTol>(env);
  barrier.dual_feasibility_tol = param<Param::OptimalityTol>(env);
  barrier.convergence_tol = param<Param::BarConvTol>(env);
  barrier.iteration_limit = param<Param::BarIterLimit>(env);
  barrier.correctors = param<Param::BarCorrectors>(env);
  barrier.ordering = param<Param::BarOrder>(env);
  barrier.alternative_scaling = param<Param::ZORV_PAR_ALTSCALE>(env) != 0;
  barrier.loose_steps = param<Param::ZORV_PAR_BARLOOSE>(env) != 0;
  barrier.dense_segments = param<Param::ZORV_PAR_BARDENSEGS>(env) != 0;
  barrier.extra_regularization = param<Param::ZORV_PAR_BARSAFE>(env);
  const bool quick = param<Param::ZORV_PAR_BARQUICKSTART>(env) != 0;
  const int start = param<Param::ZORV_PAR_BARSTART>(env);
  barrier.primal_start = !quick && start != 2;
  barrier.dual_start = !quick && start != 1;
  const int threads = param<Param::Threads>(env);
  barrier.threads = threads > 0 ? threads : count_logical_processors();
  barrier.psd_tol = param<Param::PSDTol>(env);
  barrier.sense = sense;
  barrier.log_start_time = start_time;
  options.crossover.crossover = param<Param::Crossover>(env);
  options.crossover.crossover_basis = param<Param::CrossoverBasis>(env);
  options.crossover.simplex = simplex_options(env, start_time);
  options.crossover.simplex.sense = sense;
  options.crossover.simplex.relaxed_tol = param<Param::ZORV_PAR_BIGTOL>(env);
  return options;
}

MipOptions make_mip_options(const ZLPenv& env, int sense, double start_time) {
  MipOptions options;
  options.simplex = simplex_options(env, start_time);
  options.mip_gap = param<Param::MIPGap>(env);
  options.mip_gap_abs = param<Param::MIPGapAbs>(env);
  options.integrality_tol = param<Param::IntFeasTol>(env);
  options.node_limit = param<Param::NodeLimit>(env);
  options.iteration_limit = param<Param::IterationLimit>(env);
  options.time_limit = param<Param::TimeLimit>(env);
  options.solution_limit = param<Param::SolutionLimit>(env);
  options.cutoff = minimisation_cutoff(env, sense);
  options.hidden_time_limit = param<Param::ZORV_PAR_VTIMELIMIT>(env);
  options.heuristics = param<Param::Heuristics>(env);
  options.rins = param<Param::RINS>(env);
  options.branch_dir = param<Param::BranchDir>(env);
  options.var_branch = param<Param::VarBranch>(env);
  options.presolve = param<Param::Presolve>(env);
  options.improve_start_time = param<Param::ImproveStartTime>(env);
  options.improve_start_gap = param<Param::ImproveStartGap>(env);
  options.display_interval = param<Param::DisplayInterval>(env);
  options.nodefile_start = param<Param::NodefileStart>(env);
  options.nodefile_dir = param<Param::NodefileDir>(env);
  options.cuts = param<Param::Cuts>(env);
  options.root_method = param<Param::Method>(env);
  options.node_method = param<Param::NodeMethod>(env);
  options.psd_tol = param<Param::PSDTol>(env);
  options.keep_all_solutions = param<Param::PreCrush>(env) != 0;
  return options;
}

StopToken make_stop_token(const ZLPenv& env, double start_time, SolveHooks* hooks) {
  return {&env.terminate, start_time + limit_or_inf(param<Param::TimeLimit>(env)), hooks};
}

}  // namespace zorvex
