// Rounds to the side the root relaxation or the pseudocosts favour, the clearest case first.
#include <cmath>

#include "mip/diving.hpp"

namespace zorvex {

namespace {

constexpr double kDrift = 0.4;  // from the root's value that decides the side

bool choose_side(const SearchState& state, Index col, double value) {
  const double drift = value - state.root_x[col];
  if (drift <= -kDrift) return false;
  if (drift >= kDrift) return true;
  const double fraction = value - std::floor(value);
  if (fraction < 0.3) return false;
  if (fraction > 0.7) return true;
  return state.pseudocosts.rate(col, true) < state.pseudocosts.rate(col, false);
}

DiveStep choose(const SearchState& state, const std::vector<double>& x, const std::vector<Index>& candidates) {
  DiveStep best;
  double best_score = -1;
  for (const Index col : candidates) {
    const bool up = choose_side(state, col, x[col]);
    const double fraction = x[col] - std::floor(x[col]);
    const double with = state.pseudocosts.rate(col, up) + mip_tol::kScoreEps;
    const double against = state.pseudocosts.rate(col, !up) + mip_tol::kScoreEps;
    const double score = std::sqrt(up ? fraction : 1 - fraction) * (1 + against) / (1 + with);
    if (score > best_score) {
      best_score = score;
      best = {col, up};
    }
  }
  return best;
}

void run(HeuristicContext& context) { dive(context, choose); }

}  // namespace

extern const Heuristic kPseudocostDive;
const Heuristic kPseudocostDive{"pseudocost_dive", HeuristicTiming::kDive, run};

}  // namespace zorvex
