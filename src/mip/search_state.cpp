#include "mip/search_state.hpp"

#include <algorithm>
#include <cmath>

#include "mip/side_rows.hpp"

namespace zorvex {

namespace {

constexpr int kOfferRounds = 20;  // constraints against one integer part, one round after the other

}  // namespace

void RootLog::write(const char* text) {
  if (!open_) return;
  sink_.write(text);
  log_.elapsed(now_seconds() - start_time_ + offset_);
}

SearchState::SearchState(const MipProblem& mip_problem, const MipOptions& mip_options, LogSink& log_sink)
    : problem(mip_problem),
      options(mip_options),
      sink(log_sink),
      log(log_sink, mip_problem.sense, mip_options.sub_mip),
      root_log(log_sink, log),
      model(make_search_model(mip_problem, mip_options.keep_all_solutions)),
      checker(mip_problem, mip_options.simplex, mip_options.integrality_tol),
      pseudocosts(mip_problem.lp.num_cols()),
      domain(model),
      random(0, "mip") {
  incumbents.configure(options.cutoff, model.objective_grid);
}

Submission SearchState::submit(std::vector<double> x, bool optimise_rest) {
  if (!checker.snap(x)) return Submission::kUnknown;
  const double violation = checker.violation(x);
  const double tolerance = options.simplex.primal_feasibility_tol;
  const bool has_rest = model.integer_cols.size() < x.size();
  // A point that leans on the tolerances is worth less than it seems: its continuous part is solved anew.
  if (violation > tolerance || (has_rest && (optimise_rest || violation > mip_tol::kCleanFeasibility))) {
    std::vector<double> completed = x;
    const Completion completion = checker.complete(completed, stop);
    if (completion == Completion::kFeasible) {
      x = std::move(completed);
    } else if (violation > tolerance) {
      return completion == Completion::kInfeasible ? Submission::kInfeasible : Submission::kUnknown;
    }
  }
  return offer(std::move(x));
}

Submission SearchState::offer(std::vector<double> x) {
  const bool has_rest = model.integer_cols.size() < x.size();
  for (int round = 0; round < kOfferRounds; ++round) {
    const double objective = checker.objective(x);
    if (!incumbents.improves(objective)) return Submission::kNotBetter;
    std::vector<SideRow> rows;
    if (options.hooks != nullptr && !options.hooks->solution(search_progress(), x, objective, rows)) break;
    add_side_constraints(*this, rows);
    double worst = 0;
    for (const SideRow& row : rows) worst = std::max(worst, violation(row, x));
    bool taken = worst <= (has_rest ? mip_tol::kCleanFeasibility : options.simplex.primal_feasibility_tol);
    if (!taken && !has_rest) return Submission::kInfeasible;
    if (!taken) {
      const Completion completion = checker.complete(x, stop);
      if (completion == Completion::kFeasible) continue;
      taken = worst <= options.simplex.primal_feasibility_tol;
      if (!taken) return completion == Completion::kInfeasible ? Submission::kInfeasible : Submission::kUnknown;
    }
    incumbents.add(std::move(x), objective);
    on_improvement();
    return Submission::kImproved;
  }
  return Submission::kUnknown;
}

bool SearchState::submit_heuristic(const std::vector<double>& x, bool optimise_rest) {
  if (submit(x, optimise_rest) != Submission::kImproved) return false;
  log.heuristic_solution(progress(), root_solved());
  return true;
}

void SearchState::sync_cutoff() {
  const double cutoff = incumbents.pruning_cutoff();
  domain.set_cutoff(cutoff >= mip_tol::kNone ? kInf : cutoff - model.lp.offset);
}

void SearchState::make_lp() {
  SimplexOptions simplex = options.simplex;
  simplex.root_log = true;
  if (root_solved()) simplex.algorithm = SimplexAlgorithm::kDual;
  simplex.log_start_time = start_time - time_offset;
  simplex.display_interval = options.display_interval;
  lp = std::make_unique<LpRelaxation>(model, simplex, root_log);
}

void SearchState::learn_from_probing() {
  for (std::size_t col = 0; col < model.probed_down.size(); ++col) {
    if (model.probed_down[col] == 0 && model.probed_up[col] == 0) continue;
    pseudocosts.update_inferences(static_cast<Index>(col), false, model.probed_down[col]);
    pseudocosts.update_inferences(static_cast<Index>(col), true, model.probed_up[col]);
  }
}

void SearchState::restart_root() {
  sub_iterations += lp->total_iterations();
  barrier_iterations += lp->barrier_iterations();
  cuts = CutPool();
  pending_global.clear();
  domain.reload();
  sync_cutoff();
  make_lp();
}

void SearchState::on_improvement() {
  sync_cutoff();
  nodes.prune(incumbents.pruning_cutoff());
  if (root_reduced_cost.empty()) return;
  const std::vector<BoundChange> found =
      reduced_cost_bounds(model, model.lp.col_lower, model.lp.col_upper,
                          {root_x, root_reduced_cost, root_objective, incumbents.pruning_cutoff()});
  pending_global.insert(pending_global.end(), found.begin(), found.end());
}

double SearchState::total_iterations() const {
  return (lp ? lp->total_iterations() : 0) + checker.iterations() + sub_iterations;
}

double SearchState::node_bound() const {
  double bound = std::min({nodes.best_bound(), active_bound, lost_bound, root_bound});
  if (next) bound = std::min(bound, next->bound);
  return bound;
}

double SearchState::best_bound() const { return std::min(node_bound(), incumbents.best_objective()); }

double SearchState::unexplored() const { return static_cast<double>(nodes.size()) + (next ? 1 : 0); }

Progress SearchState::progress() const {
  Progress result;
  result.explored = explored;
  result.unexplored = unexplored();
  result.incumbent = incumbents.best_objective();
  result.bound = best_bound();
  result.iterations = total_iterations();
  result.root_iterations = std::max(0.0, root_iterations);
  result.elapsed = elapsed();
  return result;
}

SearchProgress SearchState::search_progress() const {
  SearchProgress result;
  result.incumbent = incumbents.best_objective();
  result.bound = std::max(best_bound(), -mip_tol::kNone);
  result.nodes = explored;
  result.open_nodes = unexplored();
  result.iterations = total_iterations();
  result.solutions = incumbents.found();
  result.cuts = static_cast<int>(cuts.size());
  return result;
}

bool SearchState::must_stop() const {
  return stop.stop_requested() || total_iterations() >= options.iteration_limit ||
         incumbents.found() >= options.solution_limit;
}

double SearchState::objective_limit() const {
  const double cutoff = incumbents.pruning_cutoff();
  return cutoff >= mip_tol::kNone ? kInf : cutoff;
}

std::vector<BoundChange> reduced_cost_bounds(const SearchModel& model, std::span<const double> lower,
                                             std::span<const double> upper, const ReducedCostArgument& argument) {
  std::vector<BoundChange> result;
  const double gap = argument.cutoff - argument.objective;
  if (argument.cutoff >= mip_tol::kNone || gap < 0) return result;
  for (const Index col : model.integer_cols) {
    const double d = argument.reduced_cost[col];
    if (std::abs(d) < mip_tol::kReducedCost) continue;
    // A column with a reduced cost sits at a bound of its relaxation; rounding removes the noise of the solve.
    const double at = std::round(argument.x[col]);
    if (std::abs(argument.x[col] - at) > mip_tol::kIntegerRounding) continue;
    const double steps = std::floor(gap / std::abs(d) + mip_tol::kReducedCostRelax);
    if (d > 0 && at + steps < upper[col]) result.push_back({col, true, at + steps});
    if (d < 0 && at - steps > lower[col]) result.push_back({col, false, at - steps});
  }
  return result;
}

}  // namespace zorvex
