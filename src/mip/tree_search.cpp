#include "mip/tree_search.hpp"

#include <algorithm>
#include <cmath>

#include "mip/mip_start.hpp"

namespace zorvex {

namespace {

constexpr int kMinPlunge = 4;             // nodes of a dive that are explored whatever their bound
constexpr double kPlungeQuotient = 0.25;  // beyond that, share of the gap a child's bound may use up

}  // namespace

SolveStatus TreeSearch::test() const {
  TerminationInput input;
  input.status = state_.unbounded;
  input.interrupted = state_.stop.terminate_flag() != nullptr && state_.stop.terminate_flag()->load() != 0;
  input.incumbent = state_.incumbents.best_objective();
  input.node_bound = state_.node_bound();
  input.pruning_cutoff = state_.incumbents.pruning_cutoff();
  input.explored = state_.explored;
  input.iterations = state_.total_iterations();
  input.call_seconds = now_seconds() - state_.start_time;
  input.search_seconds = state_.elapsed();
  input.solutions = state_.incumbents.found();
  input.status = termination_test(input, state_.options);
  return improvement_time_test(input, state_.options);
}

void TreeSearch::process_root() {
  auto root = std::make_unique<Node>();
  root->bound = state_.root_bound;
  NodeResult result = solver_.process(*root);
  if (result.unfinished) {
    // Nothing is stored for an unfinished root: a resumed call starts it again from the basis the LP holds.
    state_.root_bound = root->bound;
    return;
  }
  state_.root_bound = mip_tol::kNone;
  root_done_ = true;
  if (result.lost) state_.lost_bound = std::min(state_.lost_bound, root->bound);
  place_children(result);
  const bool silent = !state_.root_solved() || result.line.display == NodeDisplay::kInfeasible ||
                      result.root_status != SolveStatus::kOptimal;
  if (!silent) state_.log.node(result.line, state_.progress());
  if (state_.next || !state_.nodes.empty()) ++state_.explored;
}

SolveStatus TreeSearch::run() {
  bool stopped = false;
  for (;;) {
    if (!root_done_ && !stopped) {
      process_root();
      stopped = !root_done_;
    }
    if (state_.options.hooks != nullptr) {
      state_.options.hooks->search(state_.search_progress());
      accept_offered_points(state_);
    }
    const SolveStatus status = test();
    if (status != SolveStatus::kLoaded) return status;
    std::unique_ptr<Node> node = root_done_ && !stopped ? select() : nullptr;
    if (node) {
      stopped = !explore(std::move(node));
      continue;
    }
    if (root_done_ && !stopped) return SolveStatus::kLoaded;
    // The limit that ended the work inside a node shows first there.
    const SolveStatus polled = state_.stop.poll();
    return polled == SolveStatus::kLoaded ? SolveStatus::kIterationLimit : polled;
  }
}

int TreeSearch::best_bound_period() const {
  const double z = state_.incumbents.best_objective();
  if (z >= mip_tol::kNone) return 20;
  const double gap = std::abs(z - state_.best_bound()) / std::max(std::abs(z), mip_tol::kGapIncumbent);
  if (gap > 0.1) return 10;
  if (gap > 0.01) return 5;
  return 2;
}

std::unique_ptr<Node> TreeSearch::select() {
  state_.nodes.prune(state_.incumbents.pruning_cutoff());
  if (state_.next) {
    if (!state_.incumbents.prunes(state_.next->bound)) return std::move(state_.next);
    state_.next.reset();
  }
  plunge_depth_ = 0;
  ++selections_;
  return selections_ % best_bound_period() == 0 ? state_.nodes.pop_best_bound() : state_.nodes.pop_best_estimate();
}

bool TreeSearch::keep_plunging(const Node& child) const {
  if (plunge_depth_ < kMinPlunge) return true;
  const double cutoff = state_.incumbents.pruning_cutoff();
  const double bound = std::min(state_.nodes.best_bound(), child.bound);
  if (cutoff >= mip_tol::kNone || bound <= -mip_tol::kNone) return true;
  return child.bound <= bound + kPlungeQuotient * (cutoff - bound);
}

void TreeSearch::place_children(NodeResult& result) {
  if (!result.first) return;
  if (keep_plunging(*result.first)) {
    ++plunge_depth_;
    state_.next = std::move(result.first);
  } else {
    state_.nodes.push(std::move(result.first));
  }
  state_.nodes.push(std::move(result.second));
  state_.nodes.prune(state_.incumbents.pruning_cutoff());
}

bool TreeSearch::explore(std::unique_ptr<Node> node) {
  NodeResult result = solver_.process(*node);
  if (result.unfinished) {
    state_.nodes.push(std::move(node));
    state_.log.node(result.line, state_.progress());
    return false;
  }
  if (result.lost) state_.lost_bound = std::min(state_.lost_bound, node->bound);
  place_children(result);
  state_.log.node(result.line, state_.progress());
  ++state_.explored;
  review_tree();
  return true;
}

// Drops the tree when its root is worth more than it.
void TreeSearch::review_tree() {
  const NodeSolver::Review review = solver_.review();
  if (review == NodeSolver::Review::kGoOn) return;
  const double bound = state_.node_bound();
  state_.next.reset();
  state_.nodes.prune(-mip_tol::kNone);
  if (review == NodeSolver::Review::kDone || bound >= mip_tol::kNone) return;
  state_.root_bound = std::min(bound, state_.incumbents.best_objective());
  root_done_ = false;
}

}  // namespace zorvex
