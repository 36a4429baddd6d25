// Semi-continuous columns: a value inside the forbidden gap is pushed to one of its ends.
#include <algorithm>
#include <cmath>

#include "mip/brancher.hpp"

namespace zorvex {

namespace {

BranchOutcome branch(BranchContext& context, BranchDecision& decision) {
  const SearchModel& model = context.state.model;
  const std::vector<double>& x = context.relaxation.x;
  Index best = -1;
  double best_depth = context.tolerance;
  for (const Index col : model.gap_cols) {
    const double depth = std::min(x[col] - model.gap_lower[col], model.gap_upper[col] - x[col]);
    if (depth > best_depth) {
      best_depth = depth;
      best = col;
    }
  }
  if (best < 0) return BranchOutcome::kNone;
  const double low = model.gap_lower[best];
  const double high = model.gap_upper[best];
  const Pseudocosts& costs = context.state.pseudocosts;
  decision.col = best;
  decision.down.changes = {{best, true, low}};
  decision.up.changes = {{best, false, high}};
  decision.down.distance = x[best] - low;
  decision.up.distance = high - x[best];
  decision.down.gain = costs.rate(best, false) * decision.down.distance;
  decision.up.gain = costs.rate(best, true) * decision.up.distance;
  decision.up_first = decision.up.distance < decision.down.distance;
  return BranchOutcome::kBranched;
}

}  // namespace

extern const Brancher kGapBrancher;
const Brancher kGapBrancher{"semi_continuous", branch};

}  // namespace zorvex
