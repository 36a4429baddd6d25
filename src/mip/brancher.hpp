// How a node is split. A brancher is one branch_*.cpp and one line in branchers.inc; the first in the list that finds
// something to branch on decides.
#pragma once

#include <span>
#include <vector>

#include "mip/search_state.hpp"

namespace zorvex {

// The solved relaxation of the node in process, copied before anything else uses the LP.
struct NodeRelaxation {
  std::vector<double> x;
  std::vector<double> reduced_cost;
  double objective = 0;
  std::shared_ptr<const PackedBasis> basis;
};

struct BranchContext {
  SearchState& state;
  const NodeRelaxation& relaxation;
  double tolerance;  // distance from integrality that counts as a violation
};

enum class BranchOutcome {
  kNone,        // nothing violated that this brancher knows about
  kBranched,    // the decision is filled in
  kTightened,   // the node's domain got tighter: solve it again
  kInfeasible,  // neither side of some disjunction holds anything better than the incumbent
  kStopped,     // a limit was hit
};

struct Branch {
  std::vector<BoundChange> changes;
  double bound = -mip_tol::kNone;  // proven for the child
  double gain = 0;                 // estimated rise of the relaxation
  double distance = 0;             // move of the branching column, for pseudocosts; 0: nothing to learn
};

struct BranchDecision {
  Index col = -1;  // branching column, -1 for sets
  Branch down, up;
  bool up_first = false;
};

struct Brancher {
  const char* name;
  BranchOutcome (*branch)(BranchContext& context, BranchDecision& decision);
};

std::span<const Brancher* const> branchers();

// Integer columns whose value is farther than `tolerance` from an integer, and not fixed in the domain.
std::vector<Index> fractional_columns(const SearchState& state, const std::vector<double>& x, double tolerance);
int count_violated_sets(const SearchModel& model, const std::vector<double>& x, double tolerance);
int count_violated_gaps(const SearchModel& model, const std::vector<double>& x, double tolerance);

// Splits the domain of some column, gap or set that is not decided yet, with no relaxation to go by or where the one at
// hand is integral: `x` may be null. False when all is decided.
bool branch_undecided(const SearchState& state, const std::vector<double>* x, BranchDecision& decision);
// The same for gaps and sets only.
bool branch_undecided_structure(const SearchState& state, BranchDecision& decision);

}  // namespace zorvex
