// Rounds towards the incumbent, the column closest to its value there first.
//   Source   E. Danna, E. Rothberg, C. Le Pape, "Exploring relaxation induced neighborhoods to improve MIP solutions",
//            Math. Program. 102 (2005) 71-90, section 3.
#include <cmath>

#include "mip/diving.hpp"

namespace zorvex {

namespace {

DiveStep choose(const SearchState& state, const std::vector<double>& x, const std::vector<Index>& candidates) {
  const std::vector<double>& guide = state.incumbents.best().x;
  DiveStep best;
  double best_distance = kInf;
  for (const Index col : candidates) {
    const bool up = guide[col] > x[col];
    const double distance = up ? std::ceil(x[col]) - x[col] : x[col] - std::floor(x[col]);
    if (distance < best_distance) {
      best_distance = distance;
      best = {col, up};
    }
  }
  return best;
}

void run(HeuristicContext& context) {
  if (!context.state.incumbents.empty()) dive(context, choose);
}

}  // namespace

extern const Heuristic kGuidedDive;
const Heuristic kGuidedDive{"guided_dive", HeuristicTiming::kDive, run};

}  // namespace zorvex
