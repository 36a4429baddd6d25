#include "barrier/convexity.hpp"

#include <algorithm>
#include <cmath>

#include "base/tolerances.hpp"
#include "base/worker_pool.hpp"
#include "linalg/elimination_tree.hpp"
#include "linalg/ordering.hpp"
#include "linalg/supernodal_factor.hpp"

namespace zorvex {

namespace {

// With every diagonal entry, first in its column.
SparseMatrix with_full_diagonal(const SparseMatrix& lower) {
  SparseMatrix result;
  result.num_rows = lower.num_rows;
  std::vector<Index> rows;
  std::vector<double> values;
  for (Index col = 0; col < lower.num_cols; ++col) {
    rows.assign(1, col);
    values.assign(1, 0.0);
    for (Offset k = lower.begin(col); k < lower.end(col); ++k) {
      if (lower.index[k] == col) {
        values[0] += lower.value[k];
      } else {
        rows.push_back(lower.index[k]);
        values.push_back(lower.value[k]);
      }
    }
    result.append_col(rows.data(), values.data(), static_cast<Index>(rows.size()));
  }
  return result;
}

// Diagonal entries scaled to one, so that what counts as rounding is the same everywhere.
std::vector<double> unit_diagonal_scale(const SparseMatrix& q) {
  std::vector<double> scale(static_cast<std::size_t>(q.num_cols), 1);
  for (Index col = 0; col < q.num_cols; ++col) {
    const double diagonal = q.value[q.begin(col)];
    if (diagonal > 0) scale[col] = 1 / std::sqrt(diagonal);
  }
  return scale;
}

// The common case in one supernodal factorization: a shift of the size of rounding makes every pivot positive.
bool is_clearly_convex(const SparseMatrix& q, const EliminationTree& tree, const StopToken& stop,
                       SolveStatus& stopped) {
  SparseMatrix shifted = q;
  const std::vector<double> scale = unit_diagonal_scale(q);
  for (Index col = 0; col < q.num_cols; ++col) {
    if (q.col_length(col) == 1 && q.value[q.begin(col)] == 0) continue;
    for (Offset k = q.begin(col); k < q.end(col); ++k) shifted.value[k] *= scale[col] * scale[q.index[k]];
  }
  for (Index col = 0; col < q.num_cols; ++col) {
    const double diagonal = q.value[q.begin(col)];
    if (diagonal < 0) return false;
    shifted.value[q.begin(col)] += BarrierTolerances::kConvexityNoise;
  }
  const std::vector<std::int8_t> sign(scale.size(), 1);
  const std::vector<double> smallest(scale.size(), 0);
  WorkerPool alone(1);
  SupernodalFactor factor(analyze_factor(shifted, tree), alone);
  stopped = factor.factor(shifted.value, sign, smallest, stop);
  return stopped == SolveStatus::kLoaded && factor.replaced_pivots() == 0;
}

// Column-by-column elimination that repairs each pivot as it comes.
class RepairingFactor {
 public:
  RepairingFactor(const SparseMatrix& q, const EliminationTree& tree);
  ConvexityCheck run(const StopToken& stop);

 private:
  struct Column {
    std::vector<Index> rows;  // positions
    std::vector<double> values;
    std::size_t next = 0;  // first entry not yet applied
  };
  void load(Index position);
  void apply_earlier(Index position);
  double repair(Index position, double& pivot) const;

  const SparseMatrix& q_;
  const EliminationTree& tree_;
  std::vector<Index> position_;
  SparseMatrix q_rows_;
  std::vector<Column> factor_;               // entries of L below the diagonal
  std::vector<std::vector<Index>> waiting_;  // columns whose next entry is in this row
  std::vector<double> pivots_, sum_;
  std::vector<char> in_sum_;
  std::vector<Index> touched_;
};

RepairingFactor::RepairingFactor(const SparseMatrix& q, const EliminationTree& tree)
    : q_(q), tree_(tree), q_rows_(q.transpose()) {
  const auto n = static_cast<std::size_t>(q.num_cols);
  position_.resize(n);
  for (std::size_t k = 0; k < n; ++k) position_[tree.order[k]] = static_cast<Index>(k);
  factor_.resize(n);
  waiting_.resize(n);
  pivots_.assign(n, 0);
  sum_.assign(n, 0);
  in_sum_.assign(n, 0);
}

// The column of Q below and on the diagonal, in elimination order, into sum_.
void RepairingFactor::load(Index position) {
  touched_.clear();
  const Index variable = tree_.order[position];
  const auto take = [&](const SparseMatrix& part) {
    for (Offset k = part.begin(variable); k < part.end(variable); ++k) {
      const Index row = position_[part.index[k]];
      if (row < position || in_sum_[row]) continue;
      in_sum_[row] = 1;
      touched_.push_back(row);
      sum_[row] = part.value[k];
    }
  };
  take(q_);
  take(q_rows_);
}

void RepairingFactor::apply_earlier(Index position) {
  for (const Index earlier : waiting_[position]) {
    Column& column = factor_[earlier];
    const double factor = column.values[column.next] * pivots_[earlier];
    for (std::size_t k = column.next; k < column.rows.size(); ++k) {
      const Index row = column.rows[k];
      if (!in_sum_[row]) {
        in_sum_[row] = 1;
        touched_.push_back(row);
        sum_[row] = 0;
      }
      sum_[row] -= factor * column.values[k];
    }
    if (++column.next < column.rows.size()) waiting_[column.rows[column.next]].push_back(earlier);
  }
  waiting_[position].clear();
}

// What the pivot lacks: the largest entry of its column, so that the column's multipliers stay at most one; nothing
// when pivot and column are both what rounding leaves of zero.
double RepairingFactor::repair(Index position, double& pivot) const {
  const double diagonal = std::abs(q_.value[q_.begin(tree_.order[position])]);
  double largest = 0, noise = BarrierTolerances::kConvexityNoise * diagonal;
  for (const Index row : touched_) {
    if (row == position) continue;
    const double other = std::abs(q_.value[q_.begin(tree_.order[row])]);
    const double rounding = BarrierTolerances::kConvexityNoise * std::sqrt(diagonal * other);
    if (std::abs(sum_[row]) > rounding) largest = std::max(largest, std::abs(sum_[row]));
  }
  // A positive pivot is fine as long as it is more than rounding, or there is no column to divide by it.
  if (pivot > noise || (std::abs(pivot) <= noise && largest == 0)) return 0;
  const double adjustment = std::max(largest, 0.0) - pivot;
  pivot += adjustment;
  return adjustment;
}

ConvexityCheck RepairingFactor::run(const StopToken& stop) {
  ConvexityCheck check;
  check.adjustment.assign(pivots_.size(), 0);
  const Index n = tree_.size();
  for (Index position = 0; position < n; ++position) {
    if (position % 64 == 0) {
      check.stopped = stop.poll();
      if (check.stopped != SolveStatus::kLoaded) return check;
    }
    load(position);
    apply_earlier(position);
    double pivot = sum_[position];
    const double adjustment = repair(position, pivot);
    check.adjustment[tree_.order[position]] = adjustment;
    check.largest = std::max(check.largest, adjustment);
    if (adjustment > BarrierTolerances::kCountedAdjustment) ++check.count;
    pivots_[position] = pivot;
    Column& column = factor_[position];
    std::sort(touched_.begin(), touched_.end());
    const double diagonal = std::abs(q_.value[q_.begin(tree_.order[position])]);
    const bool empty = !(pivot > BarrierTolerances::kConvexityNoise * diagonal);
    for (const Index row : touched_) {
      if (row != position && !empty && sum_[row] != 0) {
        column.rows.push_back(row);
        column.values.push_back(sum_[row] / pivot);
      }
      in_sum_[row] = 0;
    }
    if (!column.rows.empty()) waiting_[column.rows[0]].push_back(position);
  }
  return check;
}

bool is_nonnegative_diagonal(const SparseMatrix& lower) {
  for (Index col = 0; col < lower.num_cols; ++col) {
    for (Offset k = lower.begin(col); k < lower.end(col); ++k) {
      if (lower.index[k] != col || !(lower.value[k] >= 0)) return false;
    }
  }
  return true;
}

}  // namespace

ConvexityCheck check_convexity(const SparseMatrix& lower, const StopToken& stop) {
  if (is_nonnegative_diagonal(lower)) return {};
  const SparseMatrix q = with_full_diagonal(lower);
  const SymmetricPattern pattern = pattern_of_lower(q);
  const EliminationTree tree = make_elimination_tree(pattern, order_minimum_degree(pattern));
  ConvexityCheck check;
  const bool convex = is_clearly_convex(q, tree, stop, check.stopped);
  if (convex || check.stopped != SolveStatus::kLoaded) return check;
  return RepairingFactor(q, tree).run(stop);
}

bool is_convex(const LpData& lp, const StopToken& stop) {
  if (!lp.is_quadratic()) return true;
  const ConvexityCheck check = check_convexity(lp.quadratic, stop);
  return check.stopped == SolveStatus::kLoaded && check.largest == 0;
}

void add_to_diagonal(SparseMatrix& lower, const std::vector<double>& amount) {
  lower = with_full_diagonal(lower);
  for (Index col = 0; col < lower.num_cols; ++col) lower.value[lower.begin(col)] += amount[col];
}

void make_convex(const LpData& lp, double psd_tol, const StopToken& stop, LogSink& log, ConvexModel& result) {
  result.lp = &lp;
  if (!lp.is_quadratic()) return;
  const ConvexityCheck check = check_convexity(lp.quadratic, stop);
  result.stopped = check.stopped;
  if (check.stopped != SolveStatus::kLoaded) {
    result.lp = nullptr;
  } else if (check.largest > psd_tol) {
    log.print("Q matrix not PSD (diagonal adjustment of %.1e would be required)\n", check.largest);
    result.error = kErrorQNotPsd;
    result.lp = nullptr;
  } else if (check.largest > 0) {
    log.print("Warning: diagonal adjustment of %.1e performed to make Q PSD\n", check.largest);
    log.diagnose("Modified %d Q diagonals\n", check.count);
    result.mended = lp;
    add_to_diagonal(result.mended.quadratic, check.adjustment);
    result.lp = &result.mended;
  }
}

}  // namespace zorvex
