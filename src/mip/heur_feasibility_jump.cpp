// Feasibility jump: local search on the weighted violation of the rows. Each column knows the value to jump to that
// lowers it most; where no jump helps, the violated rows gain weight.
//   Source   B. Luteberget, G. Sartor, "Feasibility Jump: an LP-free Lagrangian MIP heuristic", Math. Program. Comp. 15
//            (2023) 365-388.
#include <algorithm>
#include <cmath>

#include "mip/heuristic.hpp"

namespace zorvex {

namespace {

constexpr std::int64_t kEffortBase = 20000000;  // entries touched
constexpr std::int64_t kEffortPerNonzero = 200;
constexpr std::size_t kSamples = 25;     // of the columns whose jump helps
constexpr std::size_t kRowSamples = 50;  // columns of a violated row looked at where none helps
constexpr int kStopCheck = 1024;         // moves
constexpr double kLeastScore = 1e-9;
constexpr double kRowTolerance = 1e-7;  // relative to the row's scale

// Members of a subset of 0..n-1 with constant-time changes and draws.
class IndexSet {
 public:
  explicit IndexSet(std::size_t n) : where_(n, kAbsent) {}
  void set(Index i, bool member) {
    if (member == (where_[i] != kAbsent)) return;
    if (member) {
      where_[i] = list_.size();
      list_.push_back(i);
      return;
    }
    const Index last = list_.back();
    list_[where_[i]] = last;
    where_[last] = where_[i];
    where_[i] = kAbsent;
    list_.pop_back();
  }
  [[nodiscard]] const std::vector<Index>& list() const { return list_; }

 private:
  static constexpr std::size_t kAbsent = static_cast<std::size_t>(-1);
  std::vector<Index> list_;
  std::vector<std::size_t> where_;
};

class FeasibilityJump {
 public:
  explicit FeasibilityJump(SearchState& state);

  // Whether x() satisfies all rows.
  bool run();
  [[nodiscard]] const std::vector<double>& x() const { return x_; }

 private:
  struct Jump {
    double value = 0;
    double score = 0;  // fall of the weighted violation
  };

  void start_point();
  [[nodiscard]] double violation(Index row, double activity) const {
    return std::max({0.0, lower_[row] - activity, activity - upper_[row]});
  }
  [[nodiscard]] double gain(Index col, double value) const;
  [[nodiscard]] double best_value(Index col) const;
  void refresh(Index col);
  void move(Index col);
  template <class Share>
  void adjust_scores(Index row, const Share& share);
  void shift_neighbours(Index row, double before, double after);
  void raise_weights();
  [[nodiscard]] Index choose();
  [[nodiscard]] Index best_of_row(Index row);
  [[nodiscard]] bool two_valued(Index col) const { return model_.integer[col] && range_[col] == 1; }

  const SearchModel& model_;
  const Domain& domain_;
  SearchState& state_;
  std::vector<double> lower_, upper_, scale_;  // rows, divided by their largest coefficient
  std::vector<double> activity_, weight_;
  std::vector<double> x_, range_;
  std::vector<Jump> jump_;
  IndexSet good_, violated_;
  std::vector<Index> last_move_;
  Index moves_ = 0;
  std::int64_t work_ = 0;
};

FeasibilityJump::FeasibilityJump(SearchState& state)
    : model_(state.model),
      domain_(state.domain),
      state_(state),
      lower_(static_cast<std::size_t>(model_.num_rows())),
      upper_(lower_),
      scale_(lower_),
      activity_(lower_),
      weight_(lower_.size(), 1),
      x_(static_cast<std::size_t>(model_.num_cols())),
      range_(x_),
      jump_(x_.size()),
      good_(x_.size()),
      violated_(lower_.size()),
      last_move_(x_.size(), 0) {}

void FeasibilityJump::start_point() {
  for (Index col = 0; col < model_.num_cols(); ++col) {
    const double low = domain_.lower(col);
    const double up = domain_.upper(col);
    range_[col] = up - low;
    const double wanted = model_.lp.cost[col] >= 0 ? low : up;
    x_[col] = std::isfinite(wanted) ? wanted : std::clamp(0.0, low, up);
  }
  for (Index row = 0; row < model_.num_rows(); ++row) {
    double largest = 0;
    double sum = 0;
    for (Offset k = model_.rows.begin(row); k < model_.rows.end(row); ++k) {
      largest = std::max(largest, std::abs(model_.rows.value[k]));
      sum += model_.rows.value[k] * x_[model_.rows.index[k]];
    }
    scale_[row] = largest > 0 ? 1 / largest : 1;
    lower_[row] = model_.lp.row_lower[row] * scale_[row];
    upper_[row] = model_.lp.row_upper[row] * scale_[row];
    const double slack = kRowTolerance * scale_[row];
    lower_[row] -= slack;
    upper_[row] += slack;
    activity_[row] = sum * scale_[row];
    violated_.set(row, violation(row, activity_[row]) > 0);
  }
  for (Index col = 0; col < model_.num_cols(); ++col) refresh(col);
}

// Fall of the weighted violation if the column took the value.
double FeasibilityJump::gain(Index col, double value) const {
  const SparseMatrix& cols = model_.lp.matrix;
  const double step = value - x_[col];
  double sum = 0;
  for (Offset k = cols.begin(col); k < cols.end(col); ++k) {
    const Index row = cols.index[k];
    const double after = activity_[row] + cols.value[k] * scale_[row] * step;
    sum += weight_[row] * (violation(row, activity_[row]) - violation(row, after));
  }
  return sum;
}

// Where the weighted violation, a convex piecewise linear function of the column, is least; for two-valued columns the
// other value.
double FeasibilityJump::best_value(Index col) const {
  const double low = domain_.lower(col);
  const double up = domain_.upper(col);
  if (two_valued(col)) return x_[col] == low ? up : low;
  struct Break {
    double at, slope_change;
  };
  std::vector<Break> breaks;
  double slope = 0;  // far to the left
  const SparseMatrix& cols = model_.lp.matrix;
  for (Offset k = cols.begin(col); k < cols.end(col); ++k) {
    const Index row = cols.index[k];
    const double a = cols.value[k] * scale_[row];
    const double w = weight_[row] * std::abs(a);
    for (const double side : {lower_[row], upper_[row]}) {
      if (std::isinf(side)) continue;
      breaks.push_back({x_[col] + (side - activity_[row]) / a, w});
    }
    // Left of all breaks the row is violated on the side that growing a * x mends.
    const double left_side = a > 0 ? lower_[row] : upper_[row];
    if (std::isfinite(left_side)) slope -= w;
  }
  if (breaks.empty()) return x_[col];
  std::sort(breaks.begin(), breaks.end(), [](const Break& a, const Break& b) { return a.at < b.at; });
  double value = breaks.back().at;
  for (const Break& b : breaks) {
    slope += b.slope_change;
    if (slope >= 0) {
      value = b.at;
      break;
    }
  }
  value = std::clamp(value, low, up);
  if (!model_.integer[col]) return value;
  const double floor_value = std::max(low, std::floor(value));
  const double ceil_value = std::min(up, std::ceil(value));
  value = gain(col, floor_value) >= gain(col, ceil_value) ? floor_value : ceil_value;
  if (value != x_[col]) return value;
  if (value + 1 <= up) return value + 1;
  return value - 1 >= low ? value - 1 : value;
}

void FeasibilityJump::refresh(Index col) {
  if (range_[col] == 0) return;
  jump_[col].value = best_value(col);
  jump_[col].score = jump_[col].value == x_[col] ? -kInf : gain(col, jump_[col].value);
  const SparseMatrix& cols = model_.lp.matrix;
  work_ += (two_valued(col) ? 1 : 4) * (cols.end(col) - cols.begin(col));
  good_.set(col, jump_[col].score > kLeastScore);
}

// Adds share(move of the row's activity by the jump) to the score of every two-valued column of the row; the others are
// looked at anew.
template <class Share>
void FeasibilityJump::adjust_scores(Index row, const Share& share) {
  work_ += model_.rows.end(row) - model_.rows.begin(row);
  for (Offset k = model_.rows.begin(row); k < model_.rows.end(row); ++k) {
    const Index col = model_.rows.index[k];
    if (range_[col] == 0) continue;
    if (!two_valued(col)) {
      refresh(col);
      continue;
    }
    Jump& jump = jump_[col];
    jump.score += share(model_.rows.value[k] * scale_[row] * (jump.value - x_[col]));
    good_.set(col, jump.score > kLeastScore);
  }
}

// The row's activity went from `before` to `after`: its share of every score changes.
void FeasibilityJump::shift_neighbours(Index row, double before, double after) {
  adjust_scores(row, [&](double step) {
    const double was = violation(row, before) - violation(row, before + step);
    const double is = violation(row, after) - violation(row, after + step);
    return weight_[row] * (is - was);
  });
}

void FeasibilityJump::move(Index col) {
  const double step = jump_[col].value - x_[col];
  x_[col] = jump_[col].value;
  last_move_[col] = ++moves_;
  const SparseMatrix& cols = model_.lp.matrix;
  for (Offset k = cols.begin(col); k < cols.end(col); ++k) {
    const Index row = cols.index[k];
    const double before = activity_[row];
    const double after = before + cols.value[k] * scale_[row] * step;
    activity_[row] = after;
    violated_.set(row, violation(row, after) > 0);
    shift_neighbours(row, before, after);
  }
  refresh(col);
}

void FeasibilityJump::raise_weights() {
  const std::vector<Index> rows = violated_.list();
  for (const Index row : rows) {
    weight_[row] += 1;
    const double now = violation(row, activity_[row]);
    adjust_scores(row, [&](double step) { return now - violation(row, activity_[row] + step); });
  }
}

Index FeasibilityJump::best_of_row(Index row) {
  const auto length = static_cast<std::size_t>(model_.rows.end(row) - model_.rows.begin(row));
  Index best = -1;
  const std::size_t tries = std::min(length, kRowSamples);
  const std::int64_t first = length > tries ? state_.random.below(static_cast<std::int64_t>(length)) : 0;
  for (std::size_t t = 0; t < tries; ++t) {
    const Offset k = model_.rows.begin(row) + static_cast<Offset>((static_cast<std::size_t>(first) + t) % length);
    const Index col = model_.rows.index[k];
    if (range_[col] == 0 || jump_[col].score == -kInf) continue;
    if (best < 0 || jump_[col].score > jump_[best].score ||
        (jump_[col].score == jump_[best].score && last_move_[col] < last_move_[best])) {
      best = col;
    }
  }
  return best;
}

Index FeasibilityJump::choose() {
  if (good_.list().empty()) {
    raise_weights();
    if (good_.list().empty()) {
      const std::vector<Index>& rows = violated_.list();
      return best_of_row(rows[state_.random.below(static_cast<std::int64_t>(rows.size()))]);
    }
  }
  const std::vector<Index>& list = good_.list();
  Index best = -1;
  const std::size_t tries = std::min(list.size(), kSamples);
  for (std::size_t t = 0; t < tries; ++t) {
    const Index col =
        list.size() <= kSamples ? list[t] : list[state_.random.below(static_cast<std::int64_t>(list.size()))];
    if (best < 0 || jump_[col].score > jump_[best].score ||
        (jump_[col].score == jump_[best].score && last_move_[col] < last_move_[best])) {
      best = col;
    }
  }
  return best;
}

bool FeasibilityJump::run() {
  start_point();
  const std::int64_t limit = kEffortBase + kEffortPerNonzero * model_.lp.matrix.num_nonzeros();
  while (!violated_.list().empty()) {
    if (work_ > limit || (moves_ % kStopCheck == 0 && state_.stop.stop_requested())) return false;
    const Index col = choose();
    if (col < 0) return false;
    move(col);
    work_ += static_cast<std::int64_t>(kSamples);
  }
  return true;
}

void run(HeuristicContext& context) {
  SearchState& state = context.state;
  if (!state.incumbents.empty() || state.options.sub_mip) return;
  if (!state.model.sos.empty() || !state.model.gap_cols.empty()) return;
  FeasibilityJump search(state);
  if (search.run()) state.submit_heuristic(search.x(), true);
}

}  // namespace

extern const Heuristic kFeasibilityJump;
const Heuristic kFeasibilityJump{"feasibility jump", HeuristicTiming::kBeforeRoot, run};

}  // namespace zorvex
