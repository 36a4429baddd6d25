// Rounds the column that is closest to an integer.
#include <cmath>

#include "mip/diving.hpp"

namespace zorvex {

namespace {

DiveStep choose(const SearchState&, const std::vector<double>& x, const std::vector<Index>& candidates) {
  DiveStep best;
  double best_distance = 1;
  for (const Index col : candidates) {
    const double distance = std::abs(x[col] - std::round(x[col]));
    if (distance < best_distance) {
      best_distance = distance;
      best = {col, std::round(x[col]) > x[col]};
    }
  }
  return best;
}

void run(HeuristicContext& context) { dive(context, choose); }

}  // namespace

extern const Heuristic kFractionalDive;
const Heuristic kFractionalDive{"fractional_dive", HeuristicTiming::kDive, run};

}  // namespace zorvex
