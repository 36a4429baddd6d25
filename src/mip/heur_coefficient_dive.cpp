// Rounds the column with the fewest locks on one side, to that side.
#include <cmath>

#include "mip/diving.hpp"

namespace zorvex {

namespace {

DiveStep choose(const SearchState& state, const std::vector<double>& x, const std::vector<Index>& candidates) {
  DiveStep best;
  Index best_locks = 0;
  double best_distance = 0;
  for (const Index col : candidates) {
    const Index up_locks = state.model.up_locks[col];
    const Index down_locks = state.model.down_locks[col];
    const double fraction = x[col] - std::floor(x[col]);
    const bool up = up_locks != down_locks ? up_locks < down_locks : fraction >= 0.5;
    const Index locks = up ? up_locks : down_locks;
    const double distance = up ? 1 - fraction : fraction;
    if (best.col < 0 || locks < best_locks || (locks == best_locks && distance < best_distance)) {
      best = {col, up};
      best_locks = locks;
      best_distance = distance;
    }
  }
  return best;
}

void run(HeuristicContext& context) { dive(context, choose); }

}  // namespace

extern const Heuristic kCoefficientDive;
const Heuristic kCoefficientDive{"coefficient_dive", HeuristicTiming::kDive, run};

}  // namespace zorvex
