// Aggregated mixed-integer rounding: rows of the model, joined along continuous columns that lie strictly between their
// bounds, until rounding the sum cuts the relaxation off.
//   Source   H. Marchand, L. Wolsey, "Aggregation and mixed integer rounding to solve MIPs", Oper. Res. 49 (2001)
//            363-371, section 4.
#include <algorithm>
#include <cmath>

#include "mip/mir.hpp"

namespace zorvex {

namespace {

constexpr int kMaxAggregated = 6;
constexpr std::size_t kMaxStarts = 1000;
constexpr std::size_t kMaxSupport = 500;
constexpr double kMaxSlackShare = 0.1;  // rows farther than this from their side, relative to it, start nothing

class Aggregation {
 public:
  explicit Aggregation(SeparationContext& context)
      : context_(context),
        model_(context.state.model),
        x_(context.relaxation.x),
        bounds_(model_),
        row_(model_, context.rows, x_),
        cutter_(model_, context.rows, bounds_, x_),
        used_(static_cast<std::size_t>(model_.num_rows()), 0),
        slack_(used_.size(), 0) {}

  void run();

 private:
  void start_from(Index row);
  [[nodiscard]] double distance(Index col, bool variable) const;
  [[nodiscard]] Index choose_column(bool variable) const;
  [[nodiscard]] Index choose_row(Index col) const;

  SeparationContext& context_;
  const SearchModel& model_;
  const std::vector<double>& x_;
  VariableBounds bounds_;
  AggregatedRow row_;
  MirCutter cutter_;
  std::vector<char> used_;
  std::vector<double> slack_;  // distance of each row from its nearest side
};

void Aggregation::run() {
  std::vector<Index> starts;
  for (Index row = 0; row < model_.num_rows(); ++row) {
    const double activity = context_.rows.activity(row, x_);
    const double lower = model_.lp.row_lower[row];
    const double upper = model_.lp.row_upper[row];
    slack_[row] = std::max(0.0, std::min(upper - activity, activity - lower));
    const double side = upper - activity <= activity - lower ? upper : lower;
    if (slack_[row] <= kMaxSlackShare * std::max(1.0, std::abs(side))) starts.push_back(row);
  }
  std::stable_sort(starts.begin(), starts.end(), [&](Index a, Index b) { return slack_[a] < slack_[b]; });
  if (starts.size() > kMaxStarts) starts.resize(kMaxStarts);
  for (const Index row : starts) {
    if (context_.state.stop.stop_requested()) return;
    start_from(row);
  }
}

void Aggregation::start_from(Index start) {
  row_.clear();
  std::vector<Index> joined = {start};
  used_[start] = 1;
  row_.add(start, 1);
  for (;;) {
    if (cutter_.separate(row_, CutType::kMir, true, context_.found)) break;
    if (joined.size() >= kMaxAggregated || row_.support().size() > kMaxSupport) break;
    // Where variable bounds are tight everywhere, as at the start of a fixed-charge problem, rows are joined along the
    // largest flow instead.
    Index col = choose_column(true);
    if (col < 0) col = choose_column(false);
    const Index next = col < 0 ? -1 : choose_row(col);
    if (next < 0) break;
    const std::span<const Index> cols = context_.rows.index(next);
    const auto at = static_cast<std::size_t>(std::find(cols.begin(), cols.end(), col) - cols.begin());
    row_.add(next, -row_.coef(col) / context_.rows.value(next)[at]);
    used_[next] = 1;
    joined.push_back(next);
  }
  for (const Index row : joined) used_[row] = 0;
}

// Distance of a continuous column from its nearest bound, variable ones included if `variable`.
double Aggregation::distance(Index col, bool variable) const {
  double lower = model_.lp.col_lower[col];
  double upper = model_.lp.col_upper[col];
  if (!variable) return std::min(x_[col] - lower, upper - x_[col]);
  const VariableBound variable_upper = bounds_.tightest(col, true, x_);
  const VariableBound variable_lower = bounds_.tightest(col, false, x_);
  if (variable_upper.of >= 0) upper = std::min(upper, variable_upper.at(x_));
  if (variable_lower.of >= 0) lower = std::max(lower, variable_lower.at(x_));
  return std::min(x_[col] - lower, upper - x_[col]);
}

Index Aggregation::choose_column(bool variable) const {
  Index best = -1;
  double best_distance = mip_tol::kRowFeasibility;
  for (const Index col : row_.support()) {
    if (model_.integral(col) || row_.coef(col) == 0) continue;
    const double d = distance(col, variable);
    if (d <= best_distance) continue;
    if (choose_row(col) < 0) continue;
    best_distance = d;
    best = col;
  }
  return best;
}

Index Aggregation::choose_row(Index col) const {
  Index best = -1;
  const SparseMatrix& cols = model_.lp.matrix;
  for (Offset k = cols.begin(col); k < cols.end(col); ++k) {
    const Index row = cols.index[k];
    if (used_[row]) continue;
    if (best < 0 || slack_[row] < slack_[best] - mip_tol::kRowFeasibility ||
        (slack_[row] <= slack_[best] + mip_tol::kRowFeasibility &&
         model_.rows.col_length(row) < model_.rows.col_length(best))) {
      best = row;
    }
  }
  return best >= 0 && slack_[best] > kMaxSlackShare * std::max(1.0, std::abs(x_[col])) ? -1 : best;
}

void separate(SeparationContext& context) {
  if (context.state.model.integer_cols.empty()) return;
  Aggregation(context).run();
}

}  // namespace

extern const Separator kMirSeparator;
const Separator kMirSeparator{"mir", separate};

}  // namespace zorvex
