#include <algorithm>
#include <cmath>
#include <new>

#include "mip/convex_problem.hpp"
#include "mip/heuristic.hpp"
#include "mip/mip_problem.hpp"
#include "mip/mip_start.hpp"
#include "mip/prepare.hpp"
#include "mip/tree_search.hpp"

namespace zorvex {

namespace {

struct Search {
  Search(const MipProblem& problem, const MipOptions& options, LogSink& sink)
      : state(problem, options, sink), tree(state) {}
  SearchState state;
  TreeSearch tree;
  bool prepared = false;
  bool infeasible = false;  // shown by the preparation
};

bool is_limit(SolveStatus status) {
  switch (status) {
    case SolveStatus::kIterationLimit:
    case SolveStatus::kNodeLimit:
    case SolveStatus::kTimeLimit:
    case SolveStatus::kSolutionLimit:
    case SolveStatus::kInterrupted:
      return true;
    default:
      return false;
  }
}

void report_types(SearchState& state) {
  int continuous = 0;
  int binary = 0;
  const auto n = static_cast<int>(state.problem.type.size());
  for (std::size_t col = 0; col < state.problem.type.size(); ++col) {
    const VarType type = state.problem.type[col];
    continuous += type == VarType::kContinuous || type == VarType::kSemiContinuous;
    binary += type == VarType::kBinary || (type == VarType::kInteger && state.problem.lp.col_lower[col] == 0 &&
                                           state.problem.lp.col_upper[col] == 1);
  }
  state.log.variable_types(continuous, n - continuous, binary);
}

void prepare_search(Search& search) {
  SearchState& state = search.state;
  load_mip_start(state);
  if (state.problem.lp.is_quadratic()) {
    state.log.quadratic_methods(state.options.root_method, state.options.node_method);
  }
  report_types(state);
  const Preparation preparation = prepare(state.model, prepare_options(state.options), state.stop);
  search.infeasible = preparation.infeasible;
  search.prepared = true;
  state.log.fixed_variables(preparation.fixed, state.model.num_cols());
  if (state.options.hooks != nullptr) {
    state.options.hooks->presolve({state.problem.lp.num_rows() - state.model.num_rows(), preparation.fixed});
  }
  state.incumbents.configure(state.options.cutoff, state.model.objective_grid);
  state.domain.reload();
  state.sync_cutoff();
  if (search.infeasible) return;
  state.learn_from_probing();
  run_start_heuristics(state);
  state.root_log.open(state.start_time, state.time_offset);
  state.make_lp();
}

MipOptions improvement_options(MipOptions options) {
  options.heuristics = 0.5;
  options.rins = 10;
  options.improve_start_time = mip_tol::kNone;
  options.improve_start_gap = 0;
  return options;
}

// A verdict for a search whose tree ran empty while the status was still open.
SolveStatus settle(SearchState& state, SolveStatus status) {
  if (status == SolveStatus::kLoaded) {
    if (state.unexplored() > 0) {
      state.log.unknown_termination();
    } else if (state.lost_bound < mip_tol::kNone) {
      // Subtrees were given up for numerical reasons: nothing is proven.
      status = state.incumbents.empty() ? SolveStatus::kNumeric : SolveStatus::kSuboptimal;
    } else {
      status = state.incumbents.empty() ? SolveStatus::kInfeasible : SolveStatus::kOptimal;
    }
  }
  const bool final = status == SolveStatus::kOptimal || status == SolveStatus::kInfeasible;
  if (final && state.options.cutoff < mip_tol::kNone && state.incumbents.empty()) status = SolveStatus::kCutoff;
  return status;
}

}  // namespace

struct MipSolver::State {
  State(MipProblem the_problem, LogSink& the_sink) : problem(std::move(the_problem)), sink(the_sink) {}

  bool make_convex(const MipOptions& options, const StopToken& stop);
  void open(const MipOptions& options, const StopToken& stop, double start_time);
  SolveStatus search_tree();
  void publish(SolveStatus status);

  MipProblem problem;
  LogSink& sink;
  bool is_convex = false;  // known of the problem, which may have been changed for it
  std::unique_ptr<Search> search;
  MipResult result;
};

MipSolver::MipSolver(MipProblem problem, LogSink& log) : state_(std::make_unique<State>(std::move(problem), log)) {}
MipSolver::~MipSolver() = default;

const MipResult& MipSolver::result() const { return state_->result; }

// False, with the result set: there is nothing to search, or no time to find out.
bool MipSolver::State::make_convex(const MipOptions& options, const StopToken& stop) {
  if (is_convex || options.sub_mip) return true;
  const Convexity convexity = make_problem_convex(problem, options.psd_tol, stop, sink);
  is_convex = convexity.error == kOk && convexity.stopped == SolveStatus::kLoaded;
  result.status = convexity.stopped;
  result.error = convexity.error;
  return is_convex;
}

void MipSolver::State::open(const MipOptions& options, const StopToken& stop, double start_time) {
  // Nodes cut off by a cutoff are gone: a weaker one needs a new search.
  const bool resume = search && search->prepared && options.cutoff <= search->state.options.cutoff;
  if (!resume) search = std::make_unique<Search>(problem, options, sink);
  SearchState& state = search->state;
  state.options = options;
  state.start_time = start_time;
  state.stop = stop;
  state.incumbents.configure(options.cutoff, state.model.objective_grid);
  state.log.begin_call(state.explored, options.display_interval);
  if (resume) {
    state.log.continuing();
  } else {
    prepare_search(*search);
  }
}

SolveStatus MipSolver::State::search_tree() {
  SearchState& state = search->state;
  if (search->infeasible) return SolveStatus::kInfeasible;
  SolveStatus status = search->tree.run();
  if (status == kImprovementPhase) {
    state.log.improvement_phase();
    state.log.begin_call(state.explored, state.options.display_interval);
    const MipOptions saved = state.options;
    state.options = improvement_options(saved);
    state.improvement_focus = true;
    status = search->tree.run();
    state.improvement_focus = false;
    state.options = saved;
  }
  return status;
}

void MipSolver::State::publish(SolveStatus status) {
  const SearchState& state = search->state;
  result.status = status;
  result.objective = state.incumbents.best_objective();
  result.bound = state.best_bound();
  if (status == SolveStatus::kOptimal && state.node_bound() > result.objective) result.bound = result.objective;
  if (status == SolveStatus::kUnbounded || status == SolveStatus::kInfOrUnbd) result.bound = -mip_tol::kNone;
  result.nodes = state.explored;
  result.iterations = state.total_iterations();
  result.barrier_iterations = state.barrier_iterations + (state.lp ? state.lp->barrier_iterations() : 0);
  result.solutions.clear();
  result.solution_objectives.clear();
  for (const Incumbents::Solution& solution : state.incumbents.solutions()) {
    result.solutions.push_back(solution.x);
    result.solution_objectives.push_back(solution.objective);
  }
}

const MipResult& MipSolver::run(const MipOptions& options, const std::atomic<int>* terminate, double start_time) {
  State& self = *state_;
  if (self.search && !is_limit(self.result.status)) return self.result;
  SolveStatus status = SolveStatus::kLoaded;
  self.result.error = kOk;
  const double deadline = options.time_limit >= mip_tol::kNone ? kInf : start_time + options.time_limit;
  const StopToken stop(terminate, deadline, options.hooks);
  try {
    if (!self.make_convex(options, stop)) return self.result;
    self.open(options, stop, start_time);
    status = self.search_tree();
    self.search->state.log.cut_summary(self.search->state.cuts.counts_by_type());
    status = settle(self.search->state, status);
  } catch (const std::bad_alloc&) {
    self.result.error = kErrorOutOfMemory;
    if (status == SolveStatus::kLoaded) status = SolveStatus::kInterrupted;
    if (!self.search) {
      self.result.status = status;
      return self.result;
    }
  }
  self.publish(status);
  SearchState& state = self.search->state;
  state.time_offset += now_seconds() - state.start_time;
  return self.result;
}

}  // namespace zorvex
