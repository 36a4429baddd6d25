// Feasibility pump: alternates between rounding and the relaxation point nearest to the rounded one, the true objective
// fading out, until both agree. Runs at the root while there is no solution.
//   Source   M. Fischetti, F. Glover, A. Lodi, "The feasibility pump", Math. Program. 104 (2005) 91-104; T. Achterberg,
//            T. Berthold, "Improving the feasibility pump", Discrete Optimization 4 (2007) 77-86.
#include <algorithm>
#include <cmath>

#include "mip/fix_and_propagate.hpp"
#include "mip/heuristic.hpp"

namespace zorvex {

namespace {

constexpr int kMaxRounds = 60;
constexpr double kFade = 0.9;            // of the objective's share, per round
constexpr double kMinIterations = 2000;  // effort of one run
constexpr double kRootShare = 8;         // or this share of the root's iterations
constexpr int kMinFlips = 8, kFlipSpread = 16;

class Pump {
 public:
  explicit Pump(HeuristicContext& context)
      : context_(context), state_(context.state), x_(context.relaxation->x), rounded_(x_.size(), 0) {}

  void run();

 private:
  bool round();  // false when the rounded point did not move
  void propagate_rounded();
  void flip();
  void set_costs(double share);
  void restore_costs();
  bool project();
  [[nodiscard]] bool agrees() const;

  HeuristicContext& context_;
  SearchState& state_;
  std::vector<double> x_, rounded_;
  double iterations_ = 0;
};

void Pump::run() {
  context_.lp_used = true;
  state_.lp->sync_bounds(state_.domain);
  state_.lp->load_basis(*context_.relaxation->basis);
  const double limit = std::max(kMinIterations, kRootShare * state_.root_iterations);
  round();
  double share = 1;
  for (int step = 0; step < kMaxRounds && iterations_ < limit && !state_.must_stop(); ++step) {
    share *= kFade;
    set_costs(share);
    if (!project()) break;
    if (agrees()) {
      if (state_.submit_heuristic(rounded_, true)) break;
    }
    if (!round()) flip();
    if (step % 5 == 4) propagate_rounded();
    if (!state_.incumbents.empty()) break;
  }
  restore_costs();
}

bool Pump::round() {
  bool moved = false;
  for (const Index col : state_.model.integer_cols) {
    const double value = std::clamp(std::round(x_[col]), state_.domain.lower(col), state_.domain.upper(col));
    moved = moved || value != rounded_[col];
    rounded_[col] = value;
  }
  for (std::size_t col = 0; col < x_.size(); ++col) {
    if (!state_.model.integer[static_cast<Index>(col)]) rounded_[col] = x_[col];
  }
  return moved;
}

// A complete integral point out of the current one, if propagation finds one.
void Pump::propagate_rounded() {
  std::vector<Index> order = state_.model.integer_cols;
  const auto distance = [&](Index col) { return std::abs(x_[col] - std::round(x_[col])); };
  std::stable_sort(order.begin(), order.end(), [&](Index a, Index b) { return distance(a) < distance(b); });
  std::vector<double> point;
  if (fix_and_propagate(state_, order, x_, point)) state_.submit_heuristic(point, true);
}

// Against cycles: the columns farthest from agreement, and a few at random, go to their other side.
void Pump::flip() {
  std::vector<Index> order = state_.model.integer_cols;
  const auto distance = [&](Index col) { return std::abs(x_[col] - rounded_[col]); };
  std::stable_sort(order.begin(), order.end(), [&](Index a, Index b) { return distance(a) > distance(b); });
  auto count = static_cast<std::size_t>(kMinFlips + state_.random.below(kFlipSpread));
  count = std::min(count, order.size());
  for (std::size_t k = 0; k < order.size(); ++k) {
    const Index col = order[k];
    const bool far = k < count && distance(col) > mip_tol::kIntegerRounding;
    if (!far && distance(col) + std::max(state_.random.uniform() - 0.3, 0.0) <= 0.5) continue;
    const double other =
        rounded_[col] + (x_[col] > rounded_[col] || rounded_[col] == state_.domain.lower(col) ? 1 : -1);
    rounded_[col] = std::clamp(other, state_.domain.lower(col), state_.domain.upper(col));
  }
}

// Distance of the columns whose rounded value is one of their bounds; the others are left free, as the pump for general
// integers does in its first stage.
void Pump::set_costs(double share) {
  const SearchModel& model = state_.model;
  double norm = 0;
  for (const double c : model.lp.cost) norm += c * c;
  const double count = static_cast<double>(model.integer_cols.size());
  const double objective_scale = norm > 0 ? share * std::sqrt(count) / std::sqrt(norm) : 0;
  LpSolver& lp = state_.lp->solver();
  for (Index col = 0; col < model.num_cols(); ++col) {
    double cost = objective_scale * model.lp.cost[col];
    if (model.integer[col] && !state_.domain.fixed(col)) {
      if (rounded_[col] <= state_.domain.lower(col)) cost += 1 - share;
      if (rounded_[col] >= state_.domain.upper(col)) cost -= 1 - share;
    }
    lp.set_cost(col, cost);
  }
}

void Pump::restore_costs() {
  LpSolver& lp = state_.lp->solver();
  for (Index col = 0; col < state_.model.num_cols(); ++col) lp.set_cost(col, state_.model.lp.cost[col]);
}

bool Pump::project() {
  const SolveStatus status = state_.lp->solve({state_.remaining_iterations()}, state_.stop);
  iterations_ += state_.lp->iterations();
  state_.heuristic_iterations += state_.lp->iterations();
  if (status != SolveStatus::kOptimal) return false;
  x_ = state_.lp->point().x;
  return true;
}

bool Pump::agrees() const {
  return std::all_of(state_.model.integer_cols.begin(), state_.model.integer_cols.end(),
                     [&](Index col) { return std::abs(x_[col] - rounded_[col]) <= state_.options.integrality_tol; });
}

void run(HeuristicContext& context) {
  const SearchState& state = context.state;
  if (state.explored > 0 || !state.incumbents.empty() || state.model.integer_cols.empty()) return;
  if (state.model.lp.is_quadratic()) return;  // the distance would have to take the place of Q
  if (!state.model.sos.empty() || !state.model.gap_cols.empty()) return;
  Pump(context).run();
}

}  // namespace

extern const Heuristic kFeasibilityPump;
const Heuristic kFeasibilityPump{"feasibility_pump", HeuristicTiming::kDive, run};

}  // namespace zorvex
