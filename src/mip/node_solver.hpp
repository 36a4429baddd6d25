// Processes one node of the tree: propagation, relaxation, cuts, heuristics, branching.
//   Source   T. Achterberg, "Constraint Integer Programming", PhD thesis, TU Berlin 2007, chapters 5 to 9.
#pragma once

#include <memory>
#include <vector>

#include "mip/brancher.hpp"
#include "mip/search_state.hpp"

namespace zorvex {

struct NodeResult {
  NodeLine line;
  std::unique_ptr<Node> first, second;  // children, the preferred one first; null when the subtree is settled
  bool unfinished = false;              // a limit ended the work: the node must go back to the store
  bool lost = false;                    // the subtree was given up without proof
  SolveStatus root_status = SolveStatus::kOptimal;  // of the root relaxation
};

class NodeSolver {
 public:
  explicit NodeSolver(SearchState& state) : state_(state) {}

  NodeResult process(Node& node);

  // Between nodes, after a better solution came up in a tree that is still small: whether starting over at the root,
  // with everything learnt built into the model, is worth more than the tree. kRestart: the search model is ready for
  // it; kDone: nothing better is left at all.
  enum class Review { kGoOn, kRestart, kDone };
  Review review();

 private:
  // How far work on a node got.
  enum class Step { kGoOn, kInfeasible, kCutoff, kStopped, kTrouble, kDone };

  bool enter(const Node& node);
  bool move_to(const Node& node);
  Step relax(Node& node);
  SolveStatus optimize_lp(const Node& node);
  Step solve_lp(Node& node);
  void after_root_lp(Node& node, SolveStatus status, double seconds);
  void set_active_bound(const Node& node);
  void keep_relaxation();
  void save_basis();
  bool fix_by_reduced_cost();
  [[nodiscard]] bool relaxation_in_domain() const;
  Step separate(Node& node);
  Step listen(Node& node);
  void add_side_cuts();
  Step work_on(Node& node, NodeResult& result);
  Step work_blind(Node& node, NodeResult& result);
  Step judge_unbounded();
  Step settle_integral(Node& node, NodeResult& result, BranchDecision& decision);
  Step split(Node& node, BranchDecision& decision, NodeResult& result);
  void make_children(const Node& node, const BranchDecision& decision, NodeResult& result);
  std::unique_ptr<Node> make_child(const Node& node, const Branch& branch, bool up, Index col);
  Step run_node_heuristics(Node& node);
  Step restart(Node& node, bool& restarted);
  [[nodiscard]] bool may_restart() const;
  [[nodiscard]] bool worth_restarting() const;
  bool absorb_global_bounds();
  bool rebuild_root();
  void describe(const Node& node, NodeLine& line) const;
  [[nodiscard]] double estimate_gain() const;
  void restore_lp();

  SearchState& state_;
  NodeRelaxation relaxation_;
  bool learnt_ = false;                                       // pseudocosts of this node's making were updated
  bool lp_moved_ = false;                                     // the LP no longer holds the node's basis
  std::vector<std::shared_ptr<const PathStep>> active_path_;  // one step per domain level
  std::shared_ptr<const PackedBasis> lp_basis_;               // basis the LP holds, when known
  SolveStatus lp_status_ = SolveStatus::kLoaded;
  int restarts_ = 0;
  int reviewed_solutions_ = 0;      // found when the tree was last looked at
  std::size_t changes_before_ = 0;  // of the domain when the node's own branching was applied
};

}  // namespace zorvex
