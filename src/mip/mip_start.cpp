#include "mip/mip_start.hpp"

#include <algorithm>
#include <cmath>

#include "mip/sub_search.hpp"

namespace zorvex {

namespace {

constexpr double kCompletionNodes = 500;

bool defined(double value) { return value < mip_tol::kUndefinedStart && !std::isnan(value); }

// Fixes what is given and solves for the rest.
bool try_start(SearchState& state, const std::vector<double>& start) {
  const SearchModel& model = state.checker.model();
  SubSearch search;
  search.node_limit = kCompletionNodes;
  search.lower = model.lp.col_lower;
  search.upper = model.lp.col_upper;
  bool complete = true;
  bool integers_given = true;
  for (Index col = 0; col < model.num_cols(); ++col) {
    if (!defined(start[col])) {
      complete = false;
      integers_given = integers_given && !model.branchable[col];
      continue;
    }
    const double slack = state.options.simplex.primal_feasibility_tol;
    if (start[col] < search.lower[col] - slack || start[col] > search.upper[col] + slack) return false;
    search.lower[col] = search.upper[col] = std::clamp(start[col], search.lower[col], search.upper[col]);
  }
  std::vector<double> x = search.lower;
  if (!complete && integers_given) {
    if (state.checker.complete_within(search.lower, search.upper, x, state.stop) != Completion::kFeasible) return false;
  } else if (!complete) {
    x = run_sub_search(state, search).x;
    if (x.empty()) return false;
  }
  if (!state.checker.feasible(x)) return false;
  return state.incumbents.add(x, state.checker.objective(x));
}

}  // namespace

std::vector<double> round_start(const MipProblem& problem, bool& changed) {
  std::vector<double> start = problem.start;
  changed = false;
  for (std::size_t col = 0; col < start.size(); ++col) {
    if (!defined(start[col])) continue;
    const VarType type = problem.type[col];
    if (type != VarType::kContinuous && type != VarType::kSemiContinuous) start[col] = std::floor(start[col] + 0.5);
    if (type == VarType::kSemiContinuous || type == VarType::kSemiInteger) {
      const double lower = problem.lp.col_lower[col];
      start[col] = start[col] < lower / 2 ? 0 : std::max(start[col], lower);
    }
    changed = changed || start[col] != problem.start[col];
  }
  return start;
}

void load_mip_start(SearchState& state) {
  if (state.problem.start.empty()) return;
  if (std::none_of(state.problem.start.begin(), state.problem.start.end(), defined)) return;
  bool changed = false;
  const std::vector<double> rounded = round_start(state.problem, changed);
  const bool loaded = try_start(state, rounded) || (changed && try_start(state, state.problem.start));
  if (loaded) {
    state.log.start_loaded(state.incumbents.best_objective());
  } else {
    state.log.start_failed();
  }
}

}  // namespace zorvex
