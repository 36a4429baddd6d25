// Rounds every fractional column in a direction no row objects to, if each has one: the result violates no row.
//   Source   T. Achterberg, "Constraint Integer Programming", PhD thesis, TU Berlin 2007, section 9.1.2.
#include <cmath>

#include "mip/heuristic.hpp"
#include "simplex/answer_check.hpp"

namespace zorvex {

namespace {

void run(HeuristicContext& context) {
  SearchState& state = context.state;
  const SearchModel& model = state.model;
  if (!model.sos.empty() || !model.gap_cols.empty()) return;
  std::vector<double> x = context.relaxation->x;
  for (const Index col : fractional_columns(state, x, state.options.integrality_tol)) {
    const bool can_down = model.down_locks[col] == 0;
    const bool can_up = model.up_locks[col] == 0;
    if (!can_down && !can_up) return;
    const bool down = can_down && (!can_up || model.lp.cost[col] >= 0);
    const double rounded = down ? std::floor(x[col]) : std::ceil(x[col]);
    x[col] = rounded;
  }
  if (!state.incumbents.prunes(objective_at(model.lp, x))) state.submit_heuristic(x, true);
}

}  // namespace

extern const Heuristic kLockRounding;
const Heuristic kLockRounding{"lock_rounding", HeuristicTiming::kRelaxation, run};

}  // namespace zorvex
