// Fractional integer columns: reliability branching. Columns without a reliable pseudocost are tried by a few dual
// simplex iterations on both children, best candidates first, until a run of tries brings nothing better.
//   Source   T. Achterberg, T. Koch, A. Martin, "Branching rules revisited", Oper. Res. Letters 33 (2005) 42-54.
#include <algorithm>
#include <cmath>

#include "mip/brancher.hpp"

namespace zorvex {

namespace {

constexpr double kHistoryWeight = 1e-3;            // of inferences and of cutoffs beside the gains
constexpr int kReliable = 8;                       // observations on both sides that make a pseudocost trusted
constexpr int kLookahead = 8;                      // tries without improvement that end the search
constexpr int kMaxTries = 100;                     // per node
constexpr double kFreeIterations = 10000;          // strong branching iterations not counted against the tree
constexpr double kShare = 0.5;                     // of the tree's simplex iterations
constexpr double kMinLimit = 10, kMaxLimit = 500;  // iterations of one try

struct Candidate {
  Index col = -1;
  double value = 0;
  double down_gain = 0, up_gain = 0;
  double gain_score = 0;
  double score = 0;
  double down_bound = -mip_tol::kNone, up_bound = -mip_tol::kNone;  // proven by strong branching
};

struct Probe {
  bool infeasible = false;  // nothing better than the cutoff on this side
  bool valid = false;       // gain is known
  double gain = 0;
  double bound = -mip_tol::kNone;
};

class StrongBranching {
 public:
  StrongBranching(BranchContext& context, double iteration_limit)
      : context_(context), state_(context.state), iteration_limit_(iteration_limit) {}

  // Propagates the child of `candidate` on one side and solves it for a few iterations.
  Probe probe(const Candidate& candidate, bool up);
  [[nodiscard]] bool used() const { return used_; }

 private:
  Probe solve_child(const Candidate& candidate, bool up);

  BranchContext& context_;
  SearchState& state_;
  double iteration_limit_;
  bool used_ = false;
};

Probe StrongBranching::probe(const Candidate& candidate, bool up) {
  Domain& domain = state_.domain;
  const int level = domain.level();
  const std::size_t changes = domain.num_changes();
  domain.push_level();
  Probe result;
  const bool ok = up ? domain.tighten_lower(candidate.col, std::ceil(candidate.value), Reason::kBranch)
                     : domain.tighten_upper(candidate.col, std::floor(candidate.value), Reason::kBranch);
  if (ok && domain.propagate()) {
    const double moved = static_cast<double>(domain.num_changes() - changes);
    state_.pseudocosts.update_inferences(candidate.col, up, moved);
    result = solve_child(candidate, up);
  } else {
    result.infeasible = true;
  }
  domain.backtrack(level);
  return result;
}

Probe StrongBranching::solve_child(const Candidate& candidate, bool up) {
  used_ = true;
  LpRelaxation& lp = *state_.lp;
  const Index col = candidate.col;
  lp.sync_bounds(state_.domain);
  lp.load_basis(*context_.relaxation.basis);
  const double limit = std::min(iteration_limit_, state_.remaining_iterations());
  const SolveStatus status = lp.solve({limit, state_.objective_limit(), true}, state_.stop);
  state_.strong_iterations += lp.iterations();
  Probe result;
  result.infeasible = status == SolveStatus::kInfeasible || status == SolveStatus::kCutoff;
  // A quadratic relaxation stopped early stands above its optimum, not below it.
  const bool usable = status == SolveStatus::kIterationLimit && !state_.model.lp.is_quadratic();
  if (status == SolveStatus::kOptimal || usable) {
    result.gain = std::max(0.0, lp.objective() - context_.relaxation.objective);
    // A stopped dual simplex may still be in its first phase: only its optimum proves a bound.
    result.valid = status == SolveStatus::kOptimal || std::isfinite(lp.objective());
    if (status == SolveStatus::kOptimal) {
      result.bound = lp.objective();
      if (state_.incumbents.prunes(result.bound)) result.infeasible = true;
      const double distance =
          up ? std::ceil(candidate.value) - candidate.value : candidate.value - std::floor(candidate.value);
      state_.pseudocosts.update(col, up, result.gain, distance);
    }
  }
  return result;
}

// Sum of the gains' score and small shares of those of inferences and cutoffs, each relative to its average over the
// candidates: where no branching moves the objective, the column that settles most is taken.
class Scores {
 public:
  Scores(const SearchState& state, const std::vector<Candidate>& candidates) : pseudocosts_(state.pseudocosts) {
    const double share = 1.0 / static_cast<double>(std::max<std::size_t>(1, candidates.size()));
    for (const Candidate& candidate : candidates) {
      gain_ += share * candidate.gain_score;
      inference_ += share * pseudocosts_.inference_score(candidate.col);
      cutoff_ += share * pseudocosts_.cutoff_score(candidate.col);
    }
  }
  [[nodiscard]] double total(const Candidate& candidate) const {
    return relative(candidate.gain_score, gain_) +
           kHistoryWeight * (relative(pseudocosts_.inference_score(candidate.col), inference_) +
                             relative(pseudocosts_.cutoff_score(candidate.col), cutoff_));
  }

 private:
  static double relative(double value, double average) { return value > 0 ? value / (value + average) : 0; }

  const Pseudocosts& pseudocosts_;
  double gain_ = 0, inference_ = 0, cutoff_ = 0;
};

std::vector<Candidate> collect(const BranchContext& context) {
  const SearchState& state = context.state;
  std::vector<Candidate> result;
  Index top_priority = 0;
  for (const Index col : fractional_columns(state, context.relaxation.x, context.tolerance)) {
    if (!state.model.priority.empty()) {
      const Index priority = state.model.priority[col];
      if (!result.empty() && priority < top_priority) continue;
      if (!result.empty() && priority > top_priority) result.clear();
      top_priority = priority;
    }
    Candidate candidate;
    candidate.col = col;
    candidate.value = context.relaxation.x[col];
    candidate.down_gain = state.pseudocosts.rate(col, false) * (candidate.value - std::floor(candidate.value));
    candidate.up_gain = state.pseudocosts.rate(col, true) * (std::ceil(candidate.value) - candidate.value);
    candidate.gain_score = Pseudocosts::score(candidate.down_gain, candidate.up_gain);
    result.push_back(candidate);
  }
  const Scores scores(state, result);
  for (Candidate& candidate : result) candidate.score = scores.total(candidate);
  std::stable_sort(result.begin(), result.end(),
                   [](const Candidate& a, const Candidate& b) { return a.score > b.score; });
  return result;
}

double try_limit(const SearchState& state) {
  const double nodes = std::max(1.0, state.explored);
  const double tree = state.total_iterations() - state.strong_iterations - state.heuristic_iterations;
  return std::clamp(2 * tree / nodes, kMinLimit, kMaxLimit);
}

bool budget_left(const SearchState& state) {
  const double tree = state.total_iterations() - state.strong_iterations;
  return state.strong_iterations < kFreeIterations + kShare * tree;
}

// Applies what two probes proved about one candidate to the node's domain.
BranchOutcome conclude(SearchState& state, const Candidate& candidate, const Probe& down, const Probe& up) {
  if (down.infeasible && up.infeasible) return BranchOutcome::kInfeasible;
  if (down.infeasible || up.infeasible) {
    const bool ok = down.infeasible
                        ? state.domain.tighten_lower(candidate.col, std::ceil(candidate.value), Reason::kRelaxation)
                        : state.domain.tighten_upper(candidate.col, std::floor(candidate.value), Reason::kRelaxation);
    return ok ? BranchOutcome::kTightened : BranchOutcome::kInfeasible;
  }
  return BranchOutcome::kBranched;
}

bool choose_up(const SearchState& state, const Candidate& candidate) {
  if (state.options.branch_dir != 0) return state.options.branch_dir > 0;
  if (!state.root_x.empty()) {
    const double drift = candidate.value - state.root_x[candidate.col];
    if (drift >= 0.4) return true;
    if (drift <= -0.4) return false;
  }
  if (candidate.up_gain != candidate.down_gain) return candidate.up_gain < candidate.down_gain;
  return candidate.value - std::floor(candidate.value) >= 0.5;
}

void decide(const SearchState& state, const Candidate& candidate, BranchDecision& decision) {
  const Index col = candidate.col;
  decision.col = col;
  decision.down.changes = {{col, true, std::floor(candidate.value)}};
  decision.up.changes = {{col, false, std::ceil(candidate.value)}};
  decision.down.distance = candidate.value - std::floor(candidate.value);
  decision.up.distance = std::ceil(candidate.value) - candidate.value;
  decision.down.gain = candidate.down_gain;
  decision.up.gain = candidate.up_gain;
  decision.down.bound = candidate.down_bound;
  decision.up.bound = candidate.up_bound;
  decision.up_first = choose_up(state, candidate);
}

BranchOutcome branch(BranchContext& context, BranchDecision& decision) {
  SearchState& state = context.state;
  std::vector<Candidate> candidates = collect(context);
  if (candidates.empty()) return BranchOutcome::kNone;
  if (candidates.size() == 1 && state.explored > 0) {
    decide(state, candidates[0], decision);
    return BranchOutcome::kBranched;
  }
  StrongBranching strong(context, try_limit(state));
  const Scores scores(state, candidates);
  std::size_t best = 0;
  double best_score = -1;
  int tries = 0;
  int since_best = 0;
  for (std::size_t k = 0; k < candidates.size(); ++k) {
    Candidate& candidate = candidates[k];
    const bool try_it = state.pseudocosts.reliability(candidate.col) < kReliable && tries < kMaxTries &&
                        since_best < kLookahead && budget_left(state);
    if (try_it) {
      ++tries;
      const Probe down = strong.probe(candidate, false);
      const Probe up = strong.probe(candidate, true);
      if (state.must_stop()) return BranchOutcome::kStopped;
      const BranchOutcome outcome = conclude(state, candidate, down, up);
      if (outcome != BranchOutcome::kBranched) return outcome;
      if (down.valid) candidate.down_gain = down.gain;
      if (up.valid) candidate.up_gain = up.gain;
      candidate.down_bound = down.bound;
      candidate.up_bound = up.bound;
      candidate.gain_score = Pseudocosts::score(candidate.down_gain, candidate.up_gain);
      candidate.score = scores.total(candidate);
    }
    if (candidate.score > best_score) {
      best_score = candidate.score;
      best = k;
      since_best = 0;
    } else {
      ++since_best;
    }
  }
  decide(state, candidates[best], decision);
  return BranchOutcome::kBranched;
}

}  // namespace

extern const Brancher kIntegerBrancher;
const Brancher kIntegerBrancher{"integer", branch};

}  // namespace zorvex
