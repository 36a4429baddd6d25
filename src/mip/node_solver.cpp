#include "mip/node_solver.hpp"

#include <algorithm>
#include <cmath>

#include "mip/heuristic.hpp"
#include "mip/mip_start.hpp"
#include "mip/prepare.hpp"
#include "mip/separator.hpp"
#include "mip/side_rows.hpp"
#include "mip/sub_search.hpp"

namespace zorvex {

namespace {

constexpr int kResolveRounds = 5;  // LP solves of a node because reduced costs moved bounds past its optimum
constexpr int kStallRounds = 12;   // cut rounds without progress that end separation
constexpr double kSeparationIterations = 10000;  // simplex iterations between cut rounds once they stall
constexpr double kSeparationShare = 3;           // and so many times those of the root relaxation
constexpr double kStallGain = 1.0 / (1 << 13);   // relative rise of the bound that counts as progress
constexpr int kMaxCutAge = 2;                    // rounds a cut may stay in the LP without being tight
constexpr double kUnboundedNodes = 1000;         // of the search for a feasible point when a relaxation is unbounded
constexpr int kRootListenRounds = 80;            // times a listener may cut off the root's relaxation ...
constexpr int kListenRounds = 20;                // ... or another node's
constexpr int kMaxRootRestarts = 2;              // before the first branching
constexpr double kRestartShare = 0.2;            // of the integer columns fixed since the model was prepared
constexpr int kMaxRestarts = 6;                  // in all
constexpr double kRestartNodes = 2000;           // explored nodes that a restart may throw away
constexpr double kCheapRoot = 1e6;   // iterations times rows of a root relaxation that may be solved again lightly
constexpr int kMaxTightenings = 50;  // new starts of a node because strong branching tightened it

int cut_rounds(const MipOptions& options) {
  if (options.cuts == 0) return 0;
  if (options.cuts > 0) return 20 * options.cuts;
  return options.sub_mip ? 5 : 80;
}

}  // namespace

bool NodeSolver::enter(const Node& node) {
  state_.sync_cutoff();
  const bool feasible = move_to(node);
  if (node.branch_col >= 0) {
    const double moved = static_cast<double>(state_.domain.num_changes() - changes_before_);
    if (feasible) state_.pseudocosts.update_inferences(node.branch_col, node.branch_up, moved);
    if (!feasible) state_.pseudocosts.update_cutoffs(node.branch_col, node.branch_up, true);
  }
  return feasible;
}

// Moves the domain to the node along the longest common part of the paths.
bool NodeSolver::move_to(const Node& node) {
  std::vector<std::shared_ptr<const PathStep>> path;
  for (std::shared_ptr<const PathStep> step = node.path; step; step = step->parent) path.push_back(step);
  std::reverse(path.begin(), path.end());
  std::size_t common = 0;
  if (state_.pending_global.empty()) {
    while (common < path.size() && common < active_path_.size() && path[common] == active_path_[common]) ++common;
  }
  Domain& domain = state_.domain;
  domain.backtrack(static_cast<int>(common));
  active_path_.resize(common);
  if (!state_.pending_global.empty()) {
    for (const BoundChange& change : state_.pending_global) domain.apply(change, Reason::kRelaxation);
    state_.pending_global.clear();
    // With nothing left at the root no open node holds anything better than the incumbent.
    if (!domain.propagate()) return false;
  }
  for (std::size_t k = common; k < path.size(); ++k) {
    domain.push_level();
    active_path_.push_back(path[k]);
    changes_before_ = domain.num_changes();
    for (const BoundChange& change : path[k]->changes) {
      if (!domain.apply(change, Reason::kBranch)) return false;
    }
  }
  return domain.propagate();
}

void NodeSolver::set_active_bound(const Node& node) {
  (node.root() ? state_.root_bound : state_.active_bound) = node.bound;
}

void NodeSolver::keep_relaxation() {
  const LpPoint& point = state_.lp->point();
  relaxation_.x = point.x;
  relaxation_.reduced_cost = point.reduced_cost;
  relaxation_.objective = state_.lp->objective();
  save_basis();
}

void NodeSolver::save_basis() {
  relaxation_.basis = state_.lp->save_basis();
  lp_basis_ = relaxation_.basis;
  lp_moved_ = false;
}

void NodeSolver::restore_lp() {
  if (!lp_moved_) return;
  state_.lp->sync_bounds(state_.domain);
  state_.lp->load_basis(*relaxation_.basis);
  lp_basis_ = relaxation_.basis;
  lp_moved_ = false;
}

// Constraints that came up since the last relaxation.
void NodeSolver::add_side_cuts() {
  if (state_.side_cuts_in_lp == state_.side_cuts.size()) return;
  const auto first = state_.side_cuts.begin() + static_cast<std::ptrdiff_t>(state_.side_cuts_in_lp);
  state_.lp->add_cuts(state_.cuts, {first, state_.side_cuts.end()});
  state_.side_cuts_in_lp = state_.side_cuts.size();
}

SolveStatus NodeSolver::optimize_lp(const Node& node) {
  LpEngine* engine = state_.root_solved() ? state_.options.node_engine.get() : state_.options.root_engine.get();
  const SimplexLimits limits{state_.remaining_iterations(), state_.objective_limit()};
  if (engine == nullptr && !node.root() && state_.options.node_method == 0) {
    // Elsewhere the objective of a solve that was stopped early has to be a bound; and where the root is cut, bases are
    // dual feasible, from which the primal simplex ends at vertices that give poorer cuts.
    state_.lp->set_algorithm(SimplexAlgorithm::kPrimal);
    const SolveStatus status = state_.lp->solve(limits, state_.stop);
    state_.lp->set_algorithm(SimplexAlgorithm::kDual);
    return status;
  }
  if (engine == nullptr) return state_.lp->solve(limits, state_.stop);
  QuietLog quiet;
  LogSink& log = state_.root_solved() ? static_cast<LogSink&>(quiet) : state_.root_log;
  return state_.lp->solve_by(*engine, limits, state_.stop, log);
}

NodeSolver::Step NodeSolver::solve_lp(Node& node) {
  add_side_cuts();
  restore_lp();
  LpRelaxation& lp = *state_.lp;
  lp.sync_bounds(state_.domain);
  if (lp_basis_ != node.basis && node.basis && !learnt_) lp.load_basis(*node.basis);
  const double started = now_seconds();
  lp_basis_.reset();
  lp_status_ = optimize_lp(node);
  if (node.root() && !state_.root_solved()) after_root_lp(node, lp_status_, now_seconds() - started);
  switch (lp_status_) {
    case SolveStatus::kOptimal:
      return Step::kGoOn;
    case SolveStatus::kInfeasible:
      return Step::kInfeasible;
    case SolveStatus::kCutoff:
      return Step::kCutoff;
    case SolveStatus::kIterationLimit:
    case SolveStatus::kTimeLimit:
    case SolveStatus::kInterrupted:
      return Step::kStopped;
    default:
      return Step::kTrouble;
  }
}

void NodeSolver::after_root_lp(Node& node, SolveStatus status, double seconds) {
  LpRelaxation& lp = *state_.lp;
  const double objective = status == SolveStatus::kOptimal ? lp.objective() : node.bound;
  state_.log.root_relaxation(status, objective, lp.total_iterations(), seconds, state_.elapsed());
  const bool stopped = status == SolveStatus::kIterationLimit || status == SolveStatus::kTimeLimit ||
                       status == SolveStatus::kInterrupted;
  if (stopped) return;
  state_.root_log.close();
  state_.root_iterations = lp.total_iterations();
  lp.set_algorithm(SimplexAlgorithm::kDual);
}

NodeSolver::Step NodeSolver::relax(Node& node) {
  Domain& domain = state_.domain;
  for (int round = 0;; ++round) {
    if (!domain.propagate()) return Step::kInfeasible;
    const Step step = solve_lp(node);
    if (step != Step::kGoOn) return step;
    keep_relaxation();
    if (!learnt_ && node.branch_col >= 0) {
      state_.pseudocosts.update(node.branch_col, node.branch_up,
                                std::max(0.0, relaxation_.objective - node.parent_objective), node.branch_distance);
    }
    learnt_ = true;
    node.bound = std::max(node.bound, relaxation_.objective);
    set_active_bound(node);
    if (state_.incumbents.prunes(node.bound)) return Step::kCutoff;
    // The last solve moves no bounds, so that the optimum handed on lies in the domain.
    if (round == kResolveRounds) return Step::kGoOn;
    if (!fix_by_reduced_cost()) return Step::kCutoff;
    if (relaxation_in_domain()) return Step::kGoOn;
  }
}

// Every argument here rests on the cutoff: an empty domain means nothing better is left.
bool NodeSolver::fix_by_reduced_cost() {
  const ReducedCostArgument argument{relaxation_.x, relaxation_.reduced_cost, relaxation_.objective,
                                     state_.incumbents.pruning_cutoff()};
  Domain& domain = state_.domain;
  for (const BoundChange& change : reduced_cost_bounds(state_.model, domain.lower(), domain.upper(), argument)) {
    if (!domain.apply(change, Reason::kRelaxation)) return false;
  }
  return domain.propagate();
}

bool NodeSolver::relaxation_in_domain() const {
  const double tolerance = state_.options.integrality_tol;
  for (Index col = 0; col < state_.model.num_cols(); ++col) {
    if (!state_.model.branchable[col]) continue;
    if (relaxation_.x[col] < state_.domain.lower(col) - tolerance) return false;
    if (relaxation_.x[col] > state_.domain.upper(col) + tolerance) return false;
  }
  return true;
}

void NodeSolver::describe(const Node& node, NodeLine& line) const {
  const double tolerance = state_.options.integrality_tol;
  line.display = NodeDisplay::kSolved;
  line.objective = node.bound;
  line.fractional = static_cast<int>(fractional_columns(state_, relaxation_.x, tolerance).size()) +
                    count_violated_gaps(state_.model, relaxation_.x, tolerance);
  line.violated_sets = count_violated_sets(state_.model, relaxation_.x, tolerance);
}

NodeResult NodeSolver::process(Node& node) {
  NodeResult result;
  result.line.root = node.root();
  result.line.depth = node.depth;
  result.line.objective = node.bound;
  learnt_ = false;
  lp_moved_ = false;
  set_active_bound(node);
  changes_before_ = 0;
  const bool entered = enter(node);
  const Step step = entered ? work_on(node, result) : Step::kInfeasible;
  if (entered && node.branch_col >= 0 && step != Step::kStopped) {
    state_.pseudocosts.update_cutoffs(node.branch_col, node.branch_up,
                                      step == Step::kInfeasible || step == Step::kCutoff);
  }
  result.root_status = lp_status_;
  switch (step) {
    case Step::kInfeasible:
      result.line.display = NodeDisplay::kInfeasible;
      break;
    case Step::kCutoff:
      if (result.line.display != NodeDisplay::kIncumbent) result.line.display = NodeDisplay::kCutoff;
      break;
    case Step::kStopped:
      result.line.display = NodeDisplay::kPostponed;
      result.unfinished = true;
      break;
    case Step::kTrouble:
      result.line.display = NodeDisplay::kExploded;
      result.lost = true;
      break;
    default:
      break;
  }
  if (lp_moved_) lp_basis_.reset();
  state_.active_bound = mip_tol::kNone;
  return result;
}

NodeSolver::Step NodeSolver::work_on(Node& node, NodeResult& result) {
  bool fresh = true;
  for (int tightenings = 0;;) {
    Step step = relax(node);
    BranchDecision decision;
    if (step == Step::kTrouble) return work_blind(node, result);
    if (step != Step::kGoOn) return step;
    if (node.root()) {
      state_.root_reduced_cost = relaxation_.reduced_cost;
      state_.root_x = relaxation_.x;
      state_.root_objective = relaxation_.objective;
    }
    describe(node, result.line);
    if (result.line.fractional + result.line.violated_sets == 0) {
      const std::size_t known = state_.side_cuts.size();
      step = settle_integral(node, result, decision);
      if (state_.side_cuts.size() > known) continue;  // another optimum under the new constraints
      if (step != Step::kGoOn) return step;
      return split(node, decision, result);
    }
    if (fresh) {
      fresh = false;
      step = separate(node);
      if (step == Step::kGoOn) step = listen(node);
      if (step != Step::kGoOn) return step;
      describe(node, result.line);
      if (result.line.fractional + result.line.violated_sets == 0) continue;
    }
    step = run_node_heuristics(node);
    if (step != Step::kGoOn) return step;
    if (node.root() && restarts_ < kMaxRootRestarts && may_restart()) {
      bool restarted = false;
      step = restart(node, restarted);
      if (step != Step::kGoOn) return step;
      fresh = restarted;
      if (restarted || !relaxation_in_domain()) continue;
    }
    BranchContext context{state_, relaxation_, state_.options.integrality_tol};
    BranchOutcome outcome = BranchOutcome::kNone;
    restore_lp();
    for (const Brancher* brancher : branchers()) {
      outcome = brancher->branch(context, decision);
      if (outcome != BranchOutcome::kNone) break;
    }
    lp_moved_ = true;
    switch (outcome) {
      case BranchOutcome::kBranched:
        return split(node, decision, result);
      case BranchOutcome::kInfeasible:
        return Step::kCutoff;
      case BranchOutcome::kStopped:
        return Step::kStopped;
      case BranchOutcome::kNone:
        return Step::kTrouble;
      case BranchOutcome::kTightened:
        break;
    }
    if (++tightenings > kMaxTightenings && branch_undecided(state_, &relaxation_.x, decision)) {
      return split(node, decision, result);
    }
  }
}

// Cut rounds at the root, until nothing is found or the bound stalls.
NodeSolver::Step NodeSolver::separate(Node& node) {
  if (!node.root()) return Step::kGoOn;
  LpRelaxation& lp = *state_.lp;
  NodeLine line;
  line.root = true;
  describe(node, line);
  state_.log.node(line, state_.progress());
  const int rounds = cut_rounds(state_.options);
  int stalled = 0;
  const double budget = lp.total_iterations() + kSeparationIterations + kSeparationShare * state_.root_iterations;
  for (int round = 0; round < rounds && stalled < kStallRounds; ++round) {
    if (stalled > 0 && lp.total_iterations() > budget) break;
    const std::vector<std::int64_t> ids = separate_round(state_, relaxation_);
    if (ids.empty()) break;
    const double before = relaxation_.objective;
    lp.add_cuts(state_.cuts, ids);
    Step step = relax(node);
    if (step == Step::kTrouble) {
      lp.drop_cuts(state_.cuts);
      return relax(node);
    }
    if (step != Step::kGoOn) return step;
    const double gain = relaxation_.objective - before;
    stalled = gain > kStallGain * std::max(1.0, std::abs(relaxation_.objective)) ? 0 : stalled + 1;
    if (lp.remove_slack_cuts(state_.cuts, kMaxCutAge) > 0) {
      // The basis stays optimal; solving brings back the factors that the next round reads its tableau from.
      save_basis();
      step = relax(node);
      if (step != Step::kGoOn) return step;
    }
    describe(node, line);
    state_.log.node(line, state_.progress());
    if (line.fractional + line.violated_sets == 0 || state_.must_stop()) break;
  }
  if (lp.remove_slack_cuts(state_.cuts, 0) > 0) save_basis();
  return state_.must_stop() ? Step::kStopped : Step::kGoOn;
}

// Lets a listener cut off the relaxation, round by round.
NodeSolver::Step NodeSolver::listen(Node& node) {
  if (state_.options.hooks == nullptr) return Step::kGoOn;
  LpRelaxation& lp = *state_.lp;
  const int rounds = node.root() ? kRootListenRounds : kListenRounds;
  for (int round = 0; round < rounds; ++round) {
    NodeLine line;
    describe(node, line);
    if (line.fractional + line.violated_sets == 0) break;
    std::vector<SideRow> rows;
    state_.options.hooks->node(state_.search_progress(), node.depth, relaxation_.x, relaxation_.objective, rows);
    accept_offered_points(state_);
    if (state_.must_stop()) return Step::kStopped;
    if (state_.incumbents.prunes(node.bound)) return Step::kCutoff;
    const std::vector<std::int64_t> ids = add_listener_cuts(state_, rows, relaxation_.x);
    if (ids.empty()) break;
    lp.add_cuts(state_.cuts, ids);
    const Step step = relax(node);
    if (step == Step::kTrouble) {
      lp.drop_cuts(state_.cuts);
      return relax(node);
    }
    if (step != Step::kGoOn) return step;
    if (lp.remove_slack_cuts(state_.cuts, kMaxCutAge) > 0) save_basis();
  }
  return Step::kGoOn;
}

// Without a usable relaxation the node is split by bounds alone, sets and gaps first when the relaxation is unbounded:
// once they are decided, one feasible point settles the matter.
NodeSolver::Step NodeSolver::work_blind(Node& node, NodeResult& result) {
  BranchDecision decision;
  const bool unbounded = lp_status_ == SolveStatus::kUnbounded;
  if (unbounded ? !branch_undecided_structure(state_, decision) : !branch_undecided(state_, nullptr, decision)) {
    return unbounded ? judge_unbounded() : Step::kTrouble;
  }
  relaxation_ = {};
  relaxation_.objective = node.bound;
  make_children(node, decision, result);
  return Step::kDone;
}

// With rational data an unbounded relaxation and a feasible integer point make the node unbounded: the integer hull has
// the recession cone of the relaxation (R. Meyer, Math. Program. 7 (1974) 223-235).
NodeSolver::Step NodeSolver::judge_unbounded() {
  SubSearch search;
  search.lower.assign(state_.domain.lower().begin(), state_.domain.lower().end());
  search.upper.assign(state_.domain.upper().begin(), state_.domain.upper().end());
  search.node_limit = kUnboundedNodes;
  search.solution_limit = 1;
  search.feasibility_only = true;
  const SubSearchResult found = run_sub_search(state_, search);
  if (found.status == SolveStatus::kInfeasible) return Step::kInfeasible;
  if (found.x.empty() && state_.must_stop()) return Step::kStopped;
  // Constraints still to come may bound it.
  const bool open = found.x.empty() || (state_.options.hooks != nullptr && state_.options.keep_all_solutions);
  state_.unbounded = open ? SolveStatus::kInfOrUnbd : SolveStatus::kUnbounded;
  return Step::kTrouble;
}

NodeSolver::Step NodeSolver::run_node_heuristics(Node& node) {
  HeuristicContext context{state_, &relaxation_, &node};
  run_heuristics(context);
  lp_moved_ = lp_moved_ || context.lp_used;
  if (state_.must_stop()) return Step::kStopped;
  return state_.incumbents.prunes(node.bound) ? Step::kCutoff : Step::kGoOn;
}

bool NodeSolver::may_restart() const {
  // Rows that came up during the search live in the cut pool, which a restart empties.
  return !state_.options.keep_all_solutions && state_.side_cuts.empty();
}

// Counts what a new start would find settled: fixed integer columns, and bounds of the few columns that carry the
// objective.
bool NodeSolver::worth_restarting() const {
  const SearchModel& model = state_.model;
  const Domain& domain = state_.domain;
  double fixed = 0;
  double open = 0;
  bool objective_moved = false;
  for (Index col = 0; col < model.num_cols(); ++col) {
    const double lower = model.lp.col_lower[col];
    const double upper = model.lp.col_upper[col];
    if (!model.integral(col) || lower == upper) continue;
    ++open;
    fixed += domain.fixed(col);
    const bool moved = domain.lower(col) > lower || domain.upper(col) < upper;
    objective_moved = objective_moved || (moved && model.lp.cost[col] != 0 && !model.binary(col));
  }
  const bool cheap = state_.root_iterations * model.num_rows() <= kCheapRoot;
  return fixed > kRestartShare * open || (objective_moved && cheap);
}

// Brings the domain, at its lowest level, up to date with what holds everywhere; false when nothing is left.
bool NodeSolver::absorb_global_bounds() {
  Domain& domain = state_.domain;
  state_.sync_cutoff();
  for (const BoundChange& change : state_.pending_global) domain.apply(change, Reason::kRelaxation);
  state_.pending_global.clear();
  return domain.propagate();
}

// Builds everything learnt so far into the search model; false when nothing is left.
bool NodeSolver::rebuild_root() {
  adopt_bounds(state_.model, state_.domain);
  const Preparation preparation = prepare(state_.model, prepare_options(state_.options), state_.stop);
  if (preparation.infeasible) return false;
  state_.cutoff_built_in = true;
  state_.restart_root();
  active_path_.clear();
  lp_basis_.reset();
  lp_moved_ = false;
  ++restarts_;
  return true;
}

// Starts the root again before the first branching.
NodeSolver::Step NodeSolver::restart(Node& node, bool& restarted) {
  if (!absorb_global_bounds()) return Step::kCutoff;
  if (!worth_restarting()) return Step::kGoOn;
  if (!rebuild_root()) return Step::kCutoff;
  restarted = true;
  return relax(node);
}

NodeSolver::Review NodeSolver::review() {
  if (state_.incumbents.found() == reviewed_solutions_) return Review::kGoOn;
  reviewed_solutions_ = state_.incumbents.found();
  if (restarts_ >= kMaxRestarts || state_.explored > kRestartNodes || !may_restart()) return Review::kGoOn;
  state_.domain.backtrack(0);
  active_path_.clear();
  if (!absorb_global_bounds()) return Review::kDone;
  if (!worth_restarting()) return Review::kGoOn;
  return rebuild_root() ? Review::kRestart : Review::kDone;
}

// The relaxation is integral within the tolerance. Either that settles the node, or a decision to branch further is
// made: on a column that is off by more than noise, then on anything undecided.
NodeSolver::Step NodeSolver::settle_integral(Node& node, NodeResult& result, BranchDecision& decision) {
  const Submission submission = state_.submit(relaxation_.x, false);
  const bool feasible = submission == Submission::kImproved || submission == Submission::kNotBetter;
  if (submission == Submission::kImproved) result.line.display = NodeDisplay::kIncumbent;
  if (state_.incumbents.prunes(node.bound)) return Step::kCutoff;
  if (state_.stop.stop_requested() && !feasible) return Step::kStopped;
  for (const Index col : fractional_columns(state_, relaxation_.x, mip_tol::kExactlyIntegral)) {
    // A value beyond its bound by the noise of the LP is not branched on.
    const double value = std::clamp(relaxation_.x[col], state_.domain.lower(col), state_.domain.upper(col));
    if (std::abs(value - std::round(value)) <= mip_tol::kExactlyIntegral) continue;
    decision.down.changes = {{col, true, std::floor(value)}};
    decision.up.changes = {{col, false, std::ceil(value)}};
    decision.up_first = value - std::floor(value) > 0.5;
    return Step::kGoOn;
  }
  if (feasible) return result.line.display == NodeDisplay::kIncumbent ? Step::kDone : Step::kCutoff;
  if (branch_undecided(state_, &relaxation_.x, decision)) return Step::kGoOn;
  return submission == Submission::kInfeasible ? Step::kInfeasible : Step::kTrouble;
}

NodeSolver::Step NodeSolver::split(Node& node, BranchDecision& decision, NodeResult& result) {
  make_children(node, decision, result);
  return Step::kDone;
}

double NodeSolver::estimate_gain() const {
  if (relaxation_.x.empty()) return 0;
  double sum = 0;
  for (const Index col : fractional_columns(state_, relaxation_.x, state_.options.integrality_tol)) {
    const double fraction = relaxation_.x[col] - std::floor(relaxation_.x[col]);
    sum +=
        std::min(state_.pseudocosts.rate(col, false) * fraction, state_.pseudocosts.rate(col, true) * (1 - fraction));
  }
  return sum;
}

void NodeSolver::make_children(const Node& node, const BranchDecision& decision, NodeResult& result) {
  std::unique_ptr<Node> down = make_child(node, decision.down, false, decision.col);
  std::unique_ptr<Node> up = make_child(node, decision.up, true, decision.col);
  const double rest = estimate_gain() - std::min(decision.down.gain, decision.up.gain);
  down->estimate = std::max(down->bound, relaxation_.objective + rest + decision.down.gain);
  up->estimate = std::max(up->bound, relaxation_.objective + rest + decision.up.gain);
  result.first = std::move(decision.up_first ? up : down);
  result.second = std::move(decision.up_first ? down : up);
}

std::unique_ptr<Node> NodeSolver::make_child(const Node& node, const Branch& branch, bool up, Index col) {
  auto child = std::make_unique<Node>();
  child->depth = node.depth + 1;
  child->bound = std::max(node.bound, branch.bound);
  child->basis = relaxation_.basis ? relaxation_.basis : node.basis;
  auto step = std::make_shared<PathStep>();
  step->parent = node.path;
  step->depth = child->depth;
  // What the relaxation proved about the parent holds below it; propagation finds its own consequences again.
  if (!node.root()) step->changes = state_.domain.relaxation_changes();
  step->changes.insert(step->changes.end(), branch.changes.begin(), branch.changes.end());
  child->path = std::move(step);
  child->branch_col = branch.distance > 0 ? col : -1;
  child->branch_up = up;
  child->branch_distance = branch.distance;
  child->parent_objective = relaxation_.objective;
  return child;
}

}  // namespace zorvex
