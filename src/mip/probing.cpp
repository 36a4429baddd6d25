#include "mip/probing.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "mip/domain.hpp"
#include "mip/mip_tolerances.hpp"

namespace zorvex {

namespace {

constexpr std::size_t kMaxPairs = 300000;       // of literals
constexpr std::size_t kMaxImpliedPerCol = 10;   // times the columns: bounds of continuous columns
constexpr int kBarren = 200;                    // probes in a row without any finding that end the work
constexpr std::int64_t kRewardPerFixing = 100;  // effort granted for a fixing, in multiples of the column's share

// What propagation said about one side of a probe.
struct Side {
  bool feasible = false;
  std::vector<BoundChange> changes;
  std::vector<double> max_rest;  // per entry of the probed column: largest activity of row times sign without it
};

class Prober {
 public:
  Prober(SearchModel& model, std::int64_t effort, const StopToken& stop);

  ProbingResult run();

 private:
  struct Pair {
    Literal a, b;
  };

  [[nodiscard]] std::vector<Index> candidates() const;
  bool probe(Index col);
  void try_side(Index col, bool one, Side& side);
  void measure_rows(Index col, Side& side) const;
  bool agree(const Side& zero, const Side& one);
  void learn(Index col, bool one, const Side& side);
  void learn_bound(Index col, bool one, const BoundChange& change, const Side& other);
  bool strengthen(Index col, const Side& zero, const Side& one);
  bool strengthen_entry(Index col, Offset entry, double max_rest_zero, double max_rest_one);
  [[nodiscard]] double max_rest(Index row, Index col, double sign) const;
  void store_pairs();
  [[nodiscard]] bool is_packing(Index row) const;
  void complete_packings();

  SearchModel& model_;
  const StopToken& stop_;
  Domain domain_;
  std::int64_t budget_;
  ProbingResult result_;
  std::vector<Pair> pairs_;
  std::vector<double> other_lower_, other_upper_;  // bounds on the side compared with, where stamped
  std::vector<Index> lower_stamp_, upper_stamp_;
  Index stamp_ = 0;
};

Prober::Prober(SearchModel& model, std::int64_t effort, const StopToken& stop)
    : model_(model), stop_(stop), domain_(model), budget_(effort) {
  const auto n = static_cast<std::size_t>(model.num_cols());
  other_lower_.resize(n);
  other_upper_.resize(n);
  lower_stamp_.assign(n, 0);
  upper_stamp_.assign(n, 0);
  model.probed_down.resize(n, 0);
  model.probed_up.resize(n, 0);
}

// The columns of most rows first: they move most.
std::vector<Index> Prober::candidates() const {
  std::vector<Index> result;
  for (const Index col : model_.integer_cols) {
    if (model_.binary(col) && !domain_.fixed(col)) result.push_back(col);
  }
  const SparseMatrix& cols = model_.lp.matrix;
  std::stable_sort(result.begin(), result.end(),
                   [&](Index a, Index b) { return cols.col_length(a) > cols.col_length(b); });
  return result;
}

// One side of a row whose other side is free: +1 for an upper side, -1 for a lower one, 0 for neither or both.
double only_side(const SearchModel& model, Index row) {
  const bool upper = model.lp.row_upper[row] < kInf;
  const bool lower = model.lp.row_lower[row] > -kInf;
  return upper == lower ? 0 : upper ? 1 : -1;
}

// Largest activity of sign * row without the column, over the present domain; summed anew, as small differences of
// large numbers decide.
double Prober::max_rest(Index row, Index col, double sign) const {
  double sum = 0;
  for (Offset k = model_.rows.begin(row); k < model_.rows.end(row); ++k) {
    const Index other = model_.rows.index[k];
    if (other == col) continue;
    const double a = sign * model_.rows.value[k];
    const double bound = a > 0 ? domain_.upper(other) : domain_.lower(other);
    if (std::isinf(bound)) return kInf;
    sum += a * bound;
  }
  return sum;
}

void Prober::measure_rows(Index col, Side& side) const {
  const SparseMatrix& cols = model_.lp.matrix;
  side.max_rest.clear();
  for (Offset k = cols.begin(col); k < cols.end(col); ++k) {
    const Index row = cols.index[k];
    const double sign = only_side(model_, row);
    double rest = kInf;
    if (sign != 0) {
      const double room = sign > 0 ? model_.lp.row_upper[row] : -model_.lp.row_lower[row];
      const double activity = sign > 0 ? domain_.max_activity(row) : -domain_.min_activity(row);
      // The maintained activity tells cheaply whether the row is slack on this side.
      if (activity < room - mip_tol::kRowFeasibility) rest = max_rest(row, col, sign);
    }
    side.max_rest.push_back(rest);
  }
}

void Prober::try_side(Index col, bool one, Side& side) {
  domain_.push_level();
  side.feasible = domain_.fix(col, one ? 1 : 0, Reason::kBranch) && domain_.propagate();
  side.changes.clear();
  if (side.feasible) {
    side.changes = domain_.level_changes();
    measure_rows(col, side);
  }
  domain_.backtrack(0);
}

// Moves the bounds on which both sides agree; false when that leaves nothing.
bool Prober::agree(const Side& zero, const Side& one) {
  ++stamp_;
  for (const BoundChange& change : zero.changes) {
    (change.upper ? other_upper_ : other_lower_)[change.col] = change.value;
    (change.upper ? upper_stamp_ : lower_stamp_)[change.col] = stamp_;
  }
  for (const BoundChange& change : one.changes) {
    if ((change.upper ? upper_stamp_ : lower_stamp_)[change.col] != stamp_) continue;
    const double other = (change.upper ? other_upper_ : other_lower_)[change.col];
    const BoundChange common{change.col, change.upper,
                             change.upper ? std::max(change.value, other) : std::min(change.value, other)};
    const double before = change.upper ? domain_.upper(change.col) : domain_.lower(change.col);
    if (!domain_.apply(common, Reason::kPropagation)) return false;
    const double after = change.upper ? domain_.upper(change.col) : domain_.lower(change.col);
    result_.tightened += before != after;
  }
  return domain_.propagate();
}

// x_col = side value implies each change: pairs for binaries, bounds in terms of x_col for continuous columns.
void Prober::learn(Index col, bool one, const Side& side) {
  for (const BoundChange& change : side.changes) {
    if (change.col == col) continue;
    if (model_.binary(change.col)) {
      const Pair pair{literal(col, one), literal(change.col, change.upper)};
      if (pairs_.size() < kMaxPairs && !model_.cliques.conflict(pair.a, pair.b)) pairs_.push_back(pair);
    }
  }
}

// With x = v the bound is change.value, otherwise that of the other side, or the present one.
void Prober::learn_bound(Index col, bool one, const BoundChange& change, const Side& other) {
  double elsewhere = change.upper ? domain_.upper(change.col) : domain_.lower(change.col);
  for (const BoundChange& opposite : other.changes) {
    if (opposite.col == change.col && opposite.upper == change.upper) elsewhere = opposite.value;
  }
  const double difference = change.value - elsewhere;
  const double scale = std::max({1.0, std::abs(elsewhere), std::abs(change.value)});
  if (!std::isfinite(difference) || std::abs(elsewhere) > mip_tol::kHugeBound) return;
  if (std::abs(difference) <= mip_tol::kCoefficientGain * scale) return;
  // value(x) = elsewhere + difference * [x = v]
  const VariableBound bound{col, one ? elsewhere : elsewhere + difference, one ? difference : -difference};
  model_.implied_bounds.push_back({change.col, change.upper, bound});
}

// sign * row: rest + a x <= room. On a side where the row stays slack by delta, shifting room and coefficient so that
// it just binds there leaves the other side as it is.
bool Prober::strengthen_entry(Index col, Offset entry, double max_rest_zero, double max_rest_one) {
  const Index row = model_.lp.matrix.index[entry];
  const double sign = only_side(model_, row);
  if (sign == 0) return false;
  double& side = sign > 0 ? model_.lp.row_upper[row] : model_.lp.row_lower[row];
  const double a = sign * model_.lp.matrix.value[entry];
  const double room = sign * side;
  const double scale = std::max({1.0, std::abs(room), std::abs(a)});
  const double slack_zero = room - max_rest_zero;
  const double slack_one = room - a - max_rest_one;
  const double least = mip_tol::kCoefficientGain * std::max(std::abs(a), mip_tol::kCoefficientGain * scale);
  const bool zero = slack_zero > least;
  const bool one = slack_one > least;
  if (zero == one) return false;  // slack on both sides: redundant, not to be touched
  const double new_room = zero ? max_rest_zero : room;
  const double new_a = zero ? a - slack_zero : room - max_rest_one;
  // A coefficient that grows is a stronger row too, but one that loses its scale is not worth having.
  if (std::abs(new_a) > mip_tol::kCutDynamism * std::max(1.0, std::abs(a))) return false;
  side = sign * new_room;
  model_.lp.matrix.value[entry] = sign * new_a;
  for (Offset k = model_.rows.begin(row); k < model_.rows.end(row); ++k) {
    if (model_.rows.index[k] == col) model_.rows.value[k] = sign * new_a;
  }
  domain_.row_changed(row);
  ++result_.strengthened;
  return true;
}

bool Prober::strengthen(Index col, const Side& zero, const Side& one) {
  const SparseMatrix& cols = model_.lp.matrix;
  bool any = false;
  for (Offset k = cols.begin(col); k < cols.end(col); ++k) {
    const auto at = static_cast<std::size_t>(k - cols.begin(col));
    any = strengthen_entry(col, k, zero.max_rest[at], one.max_rest[at]) || any;
  }
  return any;
}

// Returns whether something was found.
bool Prober::probe(Index col) {
  Side zero;
  Side one;
  try_side(col, false, zero);
  try_side(col, true, one);
  if (!zero.feasible || !one.feasible) {
    const bool ok = (zero.feasible || one.feasible) && domain_.fix(col, one.feasible ? 1 : 0, Reason::kPropagation) &&
                    domain_.propagate();
    result_.infeasible = !ok;
    ++result_.fixed;
    budget_ += kRewardPerFixing * model_.lp.matrix.num_nonzeros() / std::max<std::int64_t>(1, model_.num_cols());
    return true;
  }
  const Index tightened = result_.tightened;
  const std::size_t pairs = pairs_.size();
  const std::size_t implied = model_.implied_bounds.size();
  if (!agree(zero, one)) {
    result_.infeasible = true;
    return true;
  }
  if (domain_.fixed(col)) return true;
  model_.probed_down[col] = static_cast<float>(zero.changes.size());
  model_.probed_up[col] = static_cast<float>(one.changes.size());
  learn(col, false, zero);
  learn(col, true, one);
  const std::size_t room = kMaxImpliedPerCol * static_cast<std::size_t>(model_.num_cols());
  for (const bool side : {false, true}) {
    for (const BoundChange& change : (side ? one : zero).changes) {
      if (model_.integer[change.col] || model_.implied_bounds.size() >= room) continue;
      learn_bound(col, side, change, side ? zero : one);
    }
  }
  const bool strengthened = strengthen(col, zero, one);
  return strengthened || tightened != result_.tightened || pairs != pairs_.size() ||
         implied != model_.implied_bounds.size();
}

void Prober::store_pairs() {
  for (Pair& pair : pairs_) {
    if (pair.a > pair.b) std::swap(pair.a, pair.b);
  }
  const auto key = [](const Pair& pair) { return std::pair(pair.a, pair.b); };
  std::sort(pairs_.begin(), pairs_.end(), [&](const Pair& x, const Pair& y) { return key(x) < key(y); });
  pairs_.erase(
      std::unique(pairs_.begin(), pairs_.end(), [&](const Pair& x, const Pair& y) { return key(x) == key(y); }),
      pairs_.end());
  for (const Pair& pair : pairs_) {
    if (domain_.fixed(column_of(pair.a)) || domain_.fixed(column_of(pair.b))) continue;
    const Literal both[] = {pair.a, pair.b};
    model_.learned.add(both);
    model_.cliques.add(both);
    ++result_.implications;
  }
  model_.learned.index();
  model_.cliques.index();
}

// sum of binaries <= 1.
bool Prober::is_packing(Index row) const {
  if (model_.lp.row_upper[row] != 1 || model_.lp.row_lower[row] == 1) return false;
  for (Offset k = model_.rows.begin(row); k < model_.rows.end(row); ++k) {
    if (model_.rows.value[k] != 1 || !model_.binary(model_.rows.index[k])) return false;
  }
  return true;
}

// A set packing row none of whose members may be missing is a partitioning one.
void Prober::complete_packings() {
  for (Index row = 0; row < model_.num_rows(); ++row) {
    if (!is_packing(row)) continue;
    if (domain_.work().total() > budget_ || stop_.stop_requested()) return;
    domain_.push_level();
    bool feasible = true;
    for (Offset k = model_.rows.begin(row); feasible && k < model_.rows.end(row); ++k) {
      feasible = domain_.fix(model_.rows.index[k], 0, Reason::kBranch);
    }
    feasible = feasible && domain_.propagate();
    domain_.backtrack(0);
    if (feasible) continue;
    model_.lp.row_lower[row] = 1;
    ++result_.strengthened;
  }
}

ProbingResult Prober::run() {
  domain_.queue_all();
  if (!domain_.propagate()) {
    result_.infeasible = true;
    return result_;
  }
  complete_packings();
  int barren = 0;
  for (const Index col : candidates()) {
    if (domain_.work().total() > budget_ || barren > kBarren || stop_.stop_requested()) break;
    if (domain_.fixed(col)) continue;
    barren = probe(col) ? 0 : barren + 1;
    if (result_.infeasible) return result_;
  }
  adopt_bounds(model_, domain_);
  store_pairs();
  return result_;
}

}  // namespace

ProbingResult probe_binaries(SearchModel& model, std::int64_t effort, const StopToken& stop) {
  return Prober(model, effort, stop).run();
}

}  // namespace zorvex
