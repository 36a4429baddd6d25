// reduce_free_column.cpp: a column whose bounds the rows imply is eliminated by an equation it is in. Also the undo of
// every other elimination through Changes::substitute.
//   Source   E. Andersen, K. Andersen, Math. Program. 71 (1995) 221-245, section 3.3; the fill bound is ours.
#include <algorithm>
#include <cmath>

#include "base/tolerances.hpp"
#include "presolve/changes.hpp"
#include "presolve/reduction.hpp"

namespace zorvex {

constexpr Index kMaxColumnLength = 6;

// Largest number of entries that may be more after eliminating a column of `col_length` by a row of `row_length`.
static Index worst_fill(Index row_length, Index col_length) {
  return (row_length - 1) * (col_length - 1) - (row_length + col_length - 1);
}

// Node of the equation to eliminate by, or -1: the sparsest one with a pivot that is large in its row and column.
static Index choose_equation(const PresolveModel& model, Index col) {
  double col_magnitude = 0;
  bool lower_implied = false;
  bool upper_implied = false;
  for (const auto& entry : model.matrix.col(col)) {
    col_magnitude = std::max(col_magnitude, std::abs(entry.value));
    lower_implied = lower_implied || model.lower_is_implied(entry);
    upper_implied = upper_implied || model.upper_is_implied(entry);
  }
  if (!lower_implied || !upper_implied) return -1;
  Index best = -1;
  const auto range = model.matrix.col(col);
  for (auto it = range.begin(); it != range.end(); ++it) {
    const auto& entry = *it;
    if (!model.is_equation(entry.row)) continue;
    const double least =
        PresolveTolerances::kPivotShare * std::max(col_magnitude, model.matrix.row_magnitude(entry.row));
    if (std::abs(entry.value) < least) continue;
    const Index length = model.matrix.row_length(entry.row);
    if (worst_fill(length, model.matrix.col_length(col)) > model.options.aggregation_fill) continue;
    if (best < 0 || length < model.matrix.row_length(model.matrix.entry(best).row)) best = it.node();
  }
  return best;
}

static Outcome find(const PresolveModel& model, Index col, Changes& changes) {
  const Index length = model.matrix.col_length(col);
  if (length < 2 || length > kMaxColumnLength) return Outcome::kNone;
  changes.work().add(length);
  const Index node = choose_equation(model, col);
  if (node < 0) return Outcome::kNone;
  changes.substitute(model.matrix.entry(node).row, col);
  return Outcome::kChanged;
}

// The equation gives the column its value; that the column's reduced cost is zero gives the row its multiplier. Reduced
// costs of the others stay: they lost their share of the row's multiplier with the objective's substitution.
static void undo(UndoReader& record, PostsolvePoint& point) {
  const Index row = record.index();
  const Index col = record.index();
  const double pivot = record.real();
  const double side = record.real();
  const double cost = record.real();
  const RecordedEntries other_rows = record.entries();
  const RecordedEntries other_cols = record.entries();
  point.x[col] = static_cast<double>((side - other_cols.dot(point.x)) / pivot);
  point.reduced_cost[col] = 0;
  point.col_status[col] = BasisStatus::kBasic;
  point.pi[row] = static_cast<double>((point.cost(cost) - other_rows.dot(point.pi)) / pivot);
  point.row_status[row] = side_of_sign(point.pi[row]);
  point.activity[row] = side;
  for (std::size_t k = 0; k < other_rows.index.size(); ++k) {
    point.activity[other_rows.index[k]] += Extended(other_rows.value[k]) / pivot * side;
  }
}

const Reduction kFreeColumn{"free_column", Trigger::kColumn, false, find, undo};

}  // namespace zorvex
