// The tree search: root, then node after node in best-estimate order with plunging, until the termination test ends it.
//   Source   T. Achterberg, "Constraint Integer Programming", PhD thesis, TU Berlin 2007, chapter 6 (node selection).
#pragma once

#include <memory>

#include "mip/node_solver.hpp"
#include "mip/search_state.hpp"
#include "mip/termination.hpp"

namespace zorvex {

class TreeSearch {
 public:
  explicit TreeSearch(SearchState& state) : state_(state), solver_(state) {}

  // Goes on where the last call stopped. Returns a final status, kImprovementPhase, or kLoaded when the tree ran empty
  // without a verdict of the termination test.
  SolveStatus run();

  [[nodiscard]] bool root_done() const { return root_done_; }

 private:
  void process_root();
  [[nodiscard]] SolveStatus test() const;
  std::unique_ptr<Node> select();
  // False when a limit ended the work on the node.
  bool explore(std::unique_ptr<Node> node);
  void place_children(NodeResult& result);
  void review_tree();
  [[nodiscard]] bool keep_plunging(const Node& child) const;
  [[nodiscard]] int best_bound_period() const;

  SearchState& state_;
  NodeSolver solver_;
  bool root_done_ = false;
  int plunge_depth_ = 0;
  std::int64_t selections_ = 0;
};

}  // namespace zorvex
