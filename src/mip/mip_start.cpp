#include "mip/mip_start.hpp"

#include <algorithm>
#include <cmath>

#include "mip/sub_search.hpp"

namespace zorvex {

namespace {

constexpr double kCompletionNodes = 500;
constexpr int kCompletionRounds = 20;  // new attempts because constraints came up against the last one

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
  for (int round = 0; round < kCompletionRounds; ++round) {
    std::vector<double> x = search.lower;
    if (!complete && integers_given) {
      const Completion completion = state.checker.complete_within(search.lower, search.upper, x, state.stop);
      if (completion != Completion::kFeasible) return false;
    } else if (!complete) {
      x = run_sub_search(state, search).x;
      if (x.empty()) return false;
    }
    if (!state.checker.feasible(x)) return false;
    const std::size_t known = state.side_cuts.size();
    if (state.offer(std::move(x)) == Submission::kImproved) return true;
    if (complete || state.side_cuts.size() == known) return false;
  }
  return false;
}

// As it is meant first, then, if that is another point, as it was given.
bool try_rounded(SearchState& state, const std::vector<double>& start) {
  const std::vector<double> meant = round_start(state.problem, start);
  return try_start(state, meant) || (meant != start && try_start(state, start));
}

}  // namespace

std::vector<double> round_start(const MipProblem& problem, const std::vector<double>& start) {
  std::vector<double> result = start;
  for (std::size_t col = 0; col < start.size(); ++col) {
    if (!defined(start[col])) continue;
    const VarType type = problem.type[col];
    if (type != VarType::kContinuous && type != VarType::kSemiContinuous) result[col] = std::floor(start[col] + 0.5);
    if (type == VarType::kSemiContinuous || type == VarType::kSemiInteger) {
      const double lower = problem.lp.col_lower[col];
      result[col] = result[col] < lower / 2 ? 0 : std::max(result[col], lower);
    }
  }
  return result;
}

void load_mip_start(SearchState& state) {
  if (state.problem.start.empty()) return;
  if (std::none_of(state.problem.start.begin(), state.problem.start.end(), defined)) return;
  if (try_rounded(state, state.problem.start)) {
    state.log.start_loaded(state.incumbents.best_objective());
  } else {
    state.log.start_failed();
  }
}

void accept_offered_points(SearchState& state) {
  if (state.options.hooks == nullptr) return;
  std::vector<double> x;
  while (!state.must_stop() && state.options.hooks->take_offered(x)) {
    if (try_rounded(state, x)) state.log.heuristic_solution(state.progress(), state.root_solved());
  }
}

}  // namespace zorvex
