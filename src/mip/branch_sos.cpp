// SOS sets: the nonzero members are split at the weighted middle; one child zeroes the members behind it, the other
// those before it.
//   Source   E. Beale, J. Tomlin, "Special facilities in a general mathematical programming system for non-convex
//            problems using ordered sets of variables", Proc. 5th Int. Conf. on Operational Research (1970) 447-454.
#include <cmath>

#include "mip/brancher.hpp"

namespace zorvex {

namespace {

struct Violation {
  double excess = 0;  // sum of |x| outside the best window
  double centre = 0;  // mean position of the nonzero members
  std::size_t first = 0, last = 0;
};

Violation measure(const SosSet& set, const std::vector<double>& x, double tolerance) {
  Violation result;
  double total = 0;
  bool any = false;
  for (std::size_t p = 0; p < set.member.size(); ++p) {
    const double size = std::abs(x[set.member[p]]);
    if (size <= tolerance) continue;
    if (!any) result.first = p;
    any = true;
    result.last = p;
    total += size;
    result.centre += size * static_cast<double>(p);
  }
  if (!any || result.last - result.first < static_cast<std::size_t>(set.type)) return {};
  result.centre /= total;
  double best_window = 0;
  for (std::size_t p = result.first; p <= result.last; ++p) {
    double window = 0;
    for (std::size_t q = p; q < p + static_cast<std::size_t>(set.type) && q <= result.last; ++q) {
      window += std::abs(x[set.member[q]]);
    }
    best_window = std::max(best_window, window);
  }
  result.excess = total - best_window;
  return result;
}

void zero(const SosSet& set, std::size_t first, std::size_t last, std::vector<BoundChange>& changes) {
  for (std::size_t p = first; p < last; ++p) {
    changes.push_back({set.member[p], false, 0});
    changes.push_back({set.member[p], true, 0});
  }
}

BranchOutcome branch(BranchContext& context, BranchDecision& decision) {
  const std::vector<double>& x = context.relaxation.x;
  const SosSet* best = nullptr;
  Violation most;
  for (const SosSet& set : context.state.model.sos) {
    const Violation violation = measure(set, x, context.tolerance);
    if (violation.last == 0 || (best != nullptr && violation.excess <= most.excess)) continue;
    best = &set;
    most = violation;
  }
  if (best == nullptr) return BranchOutcome::kNone;
  auto pivot = static_cast<std::size_t>(most.centre);
  // Type 1: members up to the pivot against those behind it. Type 2: the pivot itself belongs to both sides.
  if (best->type == 1) {
    pivot = std::min(std::max(pivot, most.first), most.last - 1);
    zero(*best, pivot + 1, best->member.size(), decision.down.changes);
    zero(*best, 0, pivot + 1, decision.up.changes);
  } else {
    pivot = std::min(std::max(pivot, most.first + 1), most.last - 1);
    zero(*best, pivot + 1, best->member.size(), decision.down.changes);
    zero(*best, 0, pivot, decision.up.changes);
  }
  return BranchOutcome::kBranched;
}

}  // namespace

extern const Brancher kSosBrancher;
const Brancher kSosBrancher{"sos", branch};

}  // namespace zorvex
