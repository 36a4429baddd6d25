// Neighbourhood searches: a smaller problem in which the integer columns that seem settled are fixed.
//   RENS  settled: integral in the relaxation.   RINS  settled: equal in the relaxation and the incumbent.
//   Source   E. Danna, E. Rothberg, C. Le Pape, "Exploring relaxation induced neighborhoods to improve MIP solutions",
//            Math. Program. 102 (2005) 71-90; T. Berthold, "RENS", Math. Program. Comp. 6 (2014) 33-54.
#include <algorithm>
#include <cmath>

#include "mip/heuristic.hpp"
#include "mip/sub_search.hpp"

namespace zorvex {

namespace {

constexpr double kMinFixed = 0.4;  // share of the integer columns, or the sub-problem is as hard as the problem
constexpr double kNodes = 300;
constexpr double kMinIterations = 4000;   // effort of one sub-search
constexpr double kIterationShare = 0.25;  // or this share of all iterations so far

bool settled(const SearchState& state, const std::vector<double>& x, Index col, bool use_incumbent) {
  const double value = std::round(x[col]);
  if (std::abs(x[col] - value) > state.options.integrality_tol) return false;
  return !use_incumbent || state.incumbents.best().x[col] == value;
}

void search_around(HeuristicContext& context, bool use_incumbent) {
  SearchState& state = context.state;
  const SearchModel& model = state.checker.model();
  SubSearch search;
  search.lower = model.lp.col_lower;
  search.upper = model.lp.col_upper;
  std::size_t fixed = 0;
  for (const Index col : model.integer_cols) {
    if (!settled(state, context.relaxation->x, col, use_incumbent)) continue;
    const double value = std::clamp(std::round(context.relaxation->x[col]), search.lower[col], search.upper[col]);
    search.lower[col] = search.upper[col] = value;
    ++fixed;
  }
  const auto total = model.integer_cols.size();
  if (total == 0 || fixed == total || static_cast<double>(fixed) < kMinFixed * static_cast<double>(total)) return;
  search.node_limit = kNodes;
  search.iteration_limit = std::max(kMinIterations, kIterationShare * state.total_iterations());
  search.cutoff = state.incumbents.pruning_cutoff();
  const SubSearchResult found = run_sub_search(state, search);
  if (!found.x.empty()) state.submit_heuristic(found.x, false);
}

void run_rens(HeuristicContext& context) {
  if (context.state.explored == 0) search_around(context, false);
}

void run_rins(HeuristicContext& context) {
  if (!context.state.incumbents.empty()) search_around(context, true);
}

}  // namespace

extern const Heuristic kRens;
extern const Heuristic kRins;
const Heuristic kRens{"rens", HeuristicTiming::kSubMip, run_rens};
const Heuristic kRins{"rins", HeuristicTiming::kSubMip, run_rins};

}  // namespace zorvex
