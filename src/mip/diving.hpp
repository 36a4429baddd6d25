// Dives: from a node relaxation, bound one column after another, propagate and resolve, until the relaxation is
// integral or the dive dies. The rules that choose the column make the different heuristics.
//   Source   T. Achterberg, "Constraint Integer Programming", PhD thesis, TU Berlin 2007, section 9.2.
#pragma once

#include <vector>

#include "mip/heuristic.hpp"

namespace zorvex {

struct DiveStep {
  Index col = -1;
  bool up = false;
};

// Chooses among `candidates` (fractional at x, never empty).
using DiveRule = DiveStep (*)(const SearchState& state, const std::vector<double>& x,
                              const std::vector<Index>& candidates);

void dive(HeuristicContext& context, DiveRule rule);

}  // namespace zorvex
