#include "mip/diving.hpp"

#include <algorithm>
#include <cmath>

namespace zorvex {

namespace {

constexpr int kMaxDepth = 500;
constexpr int kMaxBacktracks = 8;       // second choices of one dive
constexpr double kMinIterations = 500;  // effort of one dive
constexpr double kRootShare = 2;        // or this share of the root's iterations, whichever is more

constexpr double kFirstSolutionFactor = 8;  // more while there is no solution at all

class Dive {
 public:
  Dive(HeuristicContext& context, DiveRule rule)
      : context_(context), state_(context.state), rule_(rule), x_(context.relaxation->x) {}

  void run();

 private:
  enum class Outcome { kSolved, kDead, kStop };

  // One more bound on its own level; the other side when that fails.
  bool descend();
  bool descend_gap_or_set();
  Outcome attempt(const std::vector<BoundChange>& changes);
  bool either(const std::vector<BoundChange>& first, const std::vector<BoundChange>& second);
  [[nodiscard]] std::vector<BoundChange> outside_best_window(const SosSet& set) const;

  HeuristicContext& context_;
  SearchState& state_;
  DiveRule rule_;
  std::vector<double> x_;
  int backtracks_ = 0;
  double iterations_ = 0;
  double limit_ = 0;
};

void Dive::run() {
  Domain& domain = state_.domain;
  const int level = domain.level();
  limit_ = std::max(kMinIterations, kRootShare * state_.root_iterations);
  if (state_.incumbents.empty()) limit_ *= kFirstSolutionFactor;
  context_.lp_used = true;
  state_.lp->sync_bounds(domain);
  state_.lp->load_basis(*context_.relaxation->basis);
  for (int depth = 0; depth < kMaxDepth; ++depth) {
    if (!descend()) break;
    const double tolerance = state_.options.integrality_tol;
    if (!fractional_columns(state_, x_, tolerance).empty() || count_violated_gaps(state_.model, x_, tolerance) > 0 ||
        count_violated_sets(state_.model, x_, tolerance) > 0) {
      continue;
    }
    state_.submit_heuristic(x_, false);
    break;
  }
  domain.backtrack(level);
}

bool Dive::descend() {
  const std::vector<Index> candidates = fractional_columns(state_, x_, state_.options.integrality_tol);
  if (candidates.empty()) return descend_gap_or_set();
  const DiveStep step = rule_(state_, x_, candidates);
  const BoundChange down{step.col, true, std::floor(x_[step.col])};
  const BoundChange up{step.col, false, std::ceil(x_[step.col])};
  return step.up ? either({up}, {down}) : either({down}, {up});
}

bool Dive::descend_gap_or_set() {
  const SearchModel& model = state_.model;
  const double tolerance = state_.options.integrality_tol;
  for (const Index col : model.gap_cols) {
    const double below = x_[col] - model.gap_lower[col];
    const double above = model.gap_upper[col] - x_[col];
    if (below <= tolerance || above <= tolerance) continue;
    const BoundChange down{col, true, model.gap_lower[col]};
    const BoundChange up{col, false, model.gap_upper[col]};
    return above < below ? either({up}, {down}) : either({down}, {up});
  }
  for (const SosSet& set : model.sos) {
    const std::vector<BoundChange> changes = outside_best_window(set);
    const bool violated = std::any_of(changes.begin(), changes.end(),
                                      [&](const BoundChange& c) { return std::abs(x_[c.col]) > tolerance; });
    if (violated) return attempt(changes) == Outcome::kSolved;
  }
  return false;
}

std::vector<BoundChange> Dive::outside_best_window(const SosSet& set) const {
  const auto width = static_cast<std::size_t>(set.type);
  std::size_t best = 0;
  double best_sum = -1;
  for (std::size_t p = 0; p + width <= set.member.size(); ++p) {
    double sum = 0;
    for (std::size_t q = p; q < p + width; ++q) sum += std::abs(x_[set.member[q]]);
    if (sum > best_sum) {
      best_sum = sum;
      best = p;
    }
  }
  std::vector<BoundChange> changes;
  for (std::size_t p = 0; p < set.member.size(); ++p) {
    if (p >= best && p < best + width) continue;
    changes.push_back({set.member[p], false, 0});
    changes.push_back({set.member[p], true, 0});
  }
  return changes;
}

bool Dive::either(const std::vector<BoundChange>& first, const std::vector<BoundChange>& second) {
  const Outcome outcome = attempt(first);
  if (outcome == Outcome::kSolved) return true;
  if (outcome == Outcome::kStop || ++backtracks_ > kMaxBacktracks) return false;
  return attempt(second) == Outcome::kSolved;
}

Dive::Outcome Dive::attempt(const std::vector<BoundChange>& changes) {
  Domain& domain = state_.domain;
  const int level = domain.level();
  domain.push_level();
  bool ok = true;
  for (const BoundChange& change : changes) ok = ok && domain.apply(change, Reason::kBranch);
  if (!ok || !domain.propagate()) {
    domain.backtrack(level);
    return Outcome::kDead;
  }
  LpRelaxation& lp = *state_.lp;
  lp.sync_bounds(domain);
  const double limit = std::min(limit_ - iterations_, state_.remaining_iterations());
  if (limit <= 0) return Outcome::kStop;
  const SolveStatus status = lp.solve({limit, state_.objective_limit(), true}, state_.stop);
  iterations_ += lp.iterations();
  state_.heuristic_iterations += lp.iterations();
  switch (status) {
    case SolveStatus::kOptimal:
      x_ = lp.point().x;
      return Outcome::kSolved;
    case SolveStatus::kInfeasible:
    case SolveStatus::kCutoff:
      domain.backtrack(level);
      return Outcome::kDead;
    default:
      return Outcome::kStop;
  }
}

}  // namespace

void dive(HeuristicContext& context, DiveRule rule) { Dive(context, rule).run(); }

}  // namespace zorvex
