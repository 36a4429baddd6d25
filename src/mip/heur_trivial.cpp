// Before the root relaxation: all integer columns at the bound the objective prefers, then at the bound fewer rows
// object to, each with propagation.
#include <algorithm>
#include <cmath>

#include "mip/fix_and_propagate.hpp"
#include "mip/heuristic.hpp"

namespace zorvex {

namespace {

double nearest_to_zero(const SearchModel& model, Index col) {
  return std::clamp(0.0, model.lp.col_lower[col], model.lp.col_upper[col]);
}

double preferred(const SearchModel& model, Index col, double direction) {
  const double bound = direction > 0 ? model.lp.col_lower[col] : model.lp.col_upper[col];
  return direction == 0 || std::isinf(bound) ? nearest_to_zero(model, col) : bound;
}

void run(HeuristicContext& context) {
  SearchState& state = context.state;
  const SearchModel& model = state.model;
  if (!model.sos.empty()) return;
  std::vector<double> target(static_cast<std::size_t>(model.num_cols()));
  std::vector<double> x;
  for (const bool by_cost : {true, false}) {
    for (Index col = 0; col < model.num_cols(); ++col) {
      const double locks = static_cast<double>(model.up_locks[col] - model.down_locks[col]);
      target[col] = preferred(model, col, by_cost ? model.lp.cost[col] : locks);
    }
    if (fix_and_propagate(state, model.integer_cols, target, x)) state.submit_heuristic(x, true);
    if (state.must_stop()) return;
  }
}

}  // namespace

extern const Heuristic kTrivialHeuristic;
const Heuristic kTrivialHeuristic{"trivial", HeuristicTiming::kBeforeRoot, run};

}  // namespace zorvex
