// Zero-half cuts: sums of integer rows, halved, whose coefficients of columns away from their bounds are all even while
// the right-hand side is odd. Such sums are sought by elimination modulo two; the rounding is that of mixed-integer
// rounding on the sum.
//   Source   A. Koster, A. Zymolka, M. Kutschka, "Algorithms to separate {0,1/2}-Chvatal-Gomory cuts", Algorithmica 55
//            (2009) 375-391.
#include <algorithm>
#include <cmath>

#include "mip/mir.hpp"

namespace zorvex {

namespace {

constexpr std::size_t kMaxRows = 3000;
constexpr std::size_t kMaxSources = 60;  // rows in one sum
constexpr std::size_t kMaxCuts = 300;
constexpr std::int64_t kEffortBase = 2000000;  // entries touched
constexpr double kMaxCoefficient = 1e6;        // parities of larger ones are not trusted
constexpr double kAtBound = 1e-6;

// A sum of rows modulo two.
struct ParityRow {
  std::vector<Index> cols;     // with odd coefficient and away from their bounds, increasing
  std::vector<Index> sources;  // LP rows summed, increasing
  double weight = 0;           // of the slacks
  bool odd = false;            // right-hand side
  bool live = true;
};

std::vector<Index> symmetric_difference(const std::vector<Index>& a, const std::vector<Index>& b) {
  std::vector<Index> result;
  std::set_symmetric_difference(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(result));
  return result;
}

class ParitySystem {
 public:
  explicit ParitySystem(SeparationContext& context)
      : context_(context),
        model_(context.state.model),
        x_(context.relaxation.x),
        bounds_(model_),
        row_(model_, context.rows, x_),
        cutter_(model_, context.rows, bounds_, x_) {}

  void run();

 private:
  bool load_row(Index row, ParityRow& parity) const;
  [[nodiscard]] double distance(Index col) const {
    return std::min(x_[col] - model_.lp.col_lower[col], model_.lp.col_upper[col] - x_[col]);
  }
  [[nodiscard]] double violation_weight(const ParityRow& row) const;
  void eliminate(Index col);
  void combine(ParityRow& target, const ParityRow& pivot);
  void consider(const ParityRow& row);
  [[nodiscard]] double multiplier(Index row) const;

  SeparationContext& context_;
  const SearchModel& model_;
  const std::vector<double>& x_;
  VariableBounds bounds_;
  AggregatedRow row_;
  MirCutter cutter_;
  std::vector<ParityRow> rows_;
  std::vector<std::vector<std::size_t>> rows_of_;  // per column: parity rows that may hold it
  std::int64_t work_ = 0;
  std::size_t cuts_ = 0;
};

double nearest_side(const LpRows& rows, Index row, const std::vector<double>& x, double& slack) {
  const double activity = rows.activity(row, x);
  const double lower = rows.lower(row);
  const double upper = rows.upper(row);
  const bool use_upper = upper < kInf && (lower == -kInf || upper - activity <= activity - lower);
  slack = std::max(0.0, use_upper ? upper - activity : activity - lower);
  return use_upper ? upper : lower;
}

bool ParitySystem::load_row(Index row, ParityRow& parity) const {
  double side = nearest_side(context_.rows, row, x_, parity.weight);
  if (!(parity.weight < 1) || side != std::round(side)) return false;
  const std::span<const Index> cols = context_.rows.index(row);
  const std::span<const double> values = context_.rows.value(row);
  for (std::size_t k = 0; k < cols.size(); ++k) {
    const Index col = cols[k];
    const double a = values[k];
    if (!model_.integral(col) || a != std::round(a) || std::abs(a) > kMaxCoefficient) return false;
    const double lower = model_.lp.col_lower[col];
    const double upper = model_.lp.col_upper[col];
    const double bound = x_[col] - lower <= upper - x_[col] ? lower : upper;
    if (std::isinf(bound)) return false;
    side -= a * bound;
    if (std::fmod(a, 2) == 0 || distance(col) <= kAtBound) continue;
    parity.cols.push_back(col);
  }
  if (std::abs(side) > 1e9) return false;
  std::sort(parity.cols.begin(), parity.cols.end());
  parity.odd = std::fmod(std::round(side), 2) != 0;
  parity.sources = {row};
  return true;
}

// The halved sum is violated when this is below one and the right-hand side odd.
double ParitySystem::violation_weight(const ParityRow& row) const {
  double sum = row.weight;
  for (const Index col : row.cols) sum += distance(col);
  return sum;
}

// Slacks enter with nonnegative coefficients.
double ParitySystem::multiplier(Index row) const {
  const double lower = context_.rows.lower(row);
  if (lower == context_.rows.upper(row)) return 0.5;
  double slack = 0;
  const double side = nearest_side(context_.rows, row, x_, slack);
  return side == lower ? -0.5 : 0.5;
}

void ParitySystem::consider(const ParityRow& row) {
  if (!row.odd || row.sources.size() < 2 || cuts_ >= kMaxCuts) return;
  if (violation_weight(row) >= 1 - mip_tol::kCutViolation) return;
  row_.clear();
  for (const Index source : row.sources) row_.add(source, multiplier(source));
  if (cutter_.separate(row_, CutType::kZeroHalf, false, context_.found)) ++cuts_;
}

void ParitySystem::combine(ParityRow& target, const ParityRow& pivot) {
  work_ += static_cast<std::int64_t>(target.cols.size() + pivot.cols.size() + pivot.sources.size());
  target.cols = symmetric_difference(target.cols, pivot.cols);
  target.sources = symmetric_difference(target.sources, pivot.sources);
  target.weight += pivot.weight;
  target.odd = target.odd != pivot.odd;
  if (target.weight >= 1 || target.sources.size() > kMaxSources) target.live = false;
}

// Clears the column from all rows but the one with the least slack, which is used up.
void ParitySystem::eliminate(Index col) {
  std::vector<std::size_t> holders;
  std::size_t pivot = rows_.size();
  for (const std::size_t k : rows_of_[col]) {
    const ParityRow& row = rows_[k];
    if (!row.live || !std::binary_search(row.cols.begin(), row.cols.end(), col)) continue;
    holders.push_back(k);
    if (pivot == rows_.size() || row.weight < rows_[pivot].weight ||
        (row.weight == rows_[pivot].weight && row.cols.size() < rows_[pivot].cols.size())) {
      pivot = k;
    }
  }
  std::sort(holders.begin(), holders.end());
  holders.erase(std::unique(holders.begin(), holders.end()), holders.end());
  if (pivot == rows_.size()) return;
  for (const std::size_t k : holders) {
    if (k == pivot) continue;
    combine(rows_[k], rows_[pivot]);
    if (!rows_[k].live) continue;
    consider(rows_[k]);
    for (const Index other : rows_[pivot].cols) {
      if (other != col) rows_of_[other].push_back(k);
    }
  }
  rows_[pivot].live = false;
}

void ParitySystem::run() {
  for (Index row = 0; row < context_.rows.count() && rows_.size() < kMaxRows; ++row) {
    ParityRow parity;
    if (load_row(row, parity)) rows_.push_back(std::move(parity));
  }
  rows_of_.resize(static_cast<std::size_t>(model_.num_cols()));
  std::vector<Index> order;
  for (std::size_t k = 0; k < rows_.size(); ++k) {
    for (const Index col : rows_[k].cols) {
      if (rows_of_[col].empty()) order.push_back(col);
      rows_of_[col].push_back(k);
    }
  }
  // Columns far from their bounds hurt most where they stay.
  std::stable_sort(order.begin(), order.end(), [&](Index a, Index b) { return distance(a) > distance(b); });
  for (const Index col : order) {
    if (work_ > kEffortBase || context_.state.stop.stop_requested()) return;
    eliminate(col);
  }
}

void separate(SeparationContext& context) {
  if (!context.state.model.integer_cols.empty()) ParitySystem(context).run();
}

}  // namespace

extern const Separator kZeroHalfSeparator;
const Separator kZeroHalfSeparator{"zero-half", separate};

}  // namespace zorvex
