// Primal heuristics: one heur_*.cpp and one line in heuristics.inc each. A heuristic reads the state, may use the node
// LP and the domain (on a level of its own, backtracked before it returns), and submits points.
#pragma once

#include <span>

#include "mip/brancher.hpp"
#include "mip/search_state.hpp"

namespace zorvex {

enum class HeuristicTiming {
  kBeforeRoot,  // no relaxation known yet
  kRelaxation,  // cheap: after every node relaxation that is fractional
  kDive,        // spends simplex iterations: at the root and now and then in the tree, within the effort share
  kSubMip,      // solves a smaller problem: root and rarely
};

struct HeuristicContext {
  SearchState& state;
  const NodeRelaxation* relaxation;  // null before the root
  const Node* node;                  // null before the root
  bool lp_used = false;              // set by a heuristic that solved the node LP
};

struct Heuristic {
  const char* name;
  HeuristicTiming timing;
  void (*run)(HeuristicContext& context);
};

std::span<const Heuristic* const> heuristics();

// Runs those of the registry whose turn it is at this node.
void run_heuristics(HeuristicContext& context);
void run_start_heuristics(SearchState& state);

}  // namespace zorvex
