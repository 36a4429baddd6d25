// reduce_unblocked_column.cpp: dual fixing. A column that no row keeps from moving the way its cost likes goes to the
// bound on that side. Where there is no bound, a cost proves unboundedness, and without a cost the column can satisfy
// all of its rows, which go with it.
//   Source   E. Andersen, K. Andersen, Math. Program. 71 (1995) 221-245, section 3.4 (dominated columns);
//            T. Achterberg, PhD thesis, TU Berlin 2007, section 10.3 (locks).
#include <cmath>

#include "base/tolerances.hpp"
#include "presolve/changes.hpp"
#include "presolve/reduction.hpp"

namespace zorvex {
extern const Reduction kUnblockedColumn;

// Takes out the column and its rows: moving far enough in `direction` it satisfies all of them.
static Outcome remove_with_rows(const PresolveModel& model, Index col, int direction, Changes& changes) {
  std::vector<Index> rows;
  UndoLog& log = changes.record(kUnblockedColumn);
  log.index(col).index(direction).real(direction < 0 ? model.col_upper[col] : model.col_lower[col]);
  log.index(model.matrix.col_length(col));
  for (const auto& entry : model.matrix.col(col)) {
    rows.push_back(entry.row);
    log.index(entry.row).real(entry.value);
    log.real((entry.value > 0) == (direction < 0) ? model.row_upper[entry.row] : model.row_lower[entry.row]);
    log.entries(model.matrix.row(entry.row), &PresolveMatrix::Entry::col, col);
  }
  changes.remove_column(col);
  for (const Index row : rows) changes.remove_row(row);
  return Outcome::kChanged;
}

static Outcome find(const PresolveModel& model, Index col, Changes& changes) {
  bool down = model.cost[col] >= 0;
  bool up = model.cost[col] <= 0;
  for (const auto& entry : model.matrix.col(col)) {
    const bool has_lower = model.row_lower[entry.row] > -kInf;
    const bool has_upper = model.row_upper[entry.row] < kInf;
    down = down && !(entry.value > 0 ? has_lower : has_upper);
    up = up && !(entry.value > 0 ? has_upper : has_lower);
    changes.work().add(1);
    if (!down && !up) return Outcome::kNone;
  }
  if (!down && !up) return Outcome::kNone;
  if (down && std::isfinite(model.col_lower[col])) {
    changes.fix_column(col, model.col_lower[col], BasisStatus::kAtLower);
    return Outcome::kChanged;
  }
  if (up && std::isfinite(model.col_upper[col])) {
    changes.fix_column(col, model.col_upper[col], BasisStatus::kAtUpper);
    return Outcome::kChanged;
  }
  if (std::abs(model.cost[col]) > PresolveTolerances::kCostNoise) return Outcome::kUnbounded;
  if (model.cost[col] != 0) return Outcome::kNone;
  return remove_with_rows(model, col, down ? -1 : 1, changes);
}

// The column stops at the first of its far bound and the row sides; a row that stops it is nonbasic with multiplier 0.
static void undo(UndoReader& record, PostsolvePoint& point) {
  const Index col = record.index();
  const int direction = record.index();
  double value = record.real();
  Index binding = -1;
  BasisStatus binding_side = BasisStatus::kBasic;
  const Index count = record.index();
  std::vector<std::pair<Index, double>> own;
  for (Index k = 0; k < count; ++k) {
    const Index row = record.index();
    const double a = record.real();
    const double side = record.real();
    const Extended rest = record.entries().dot(point.x);
    point.activity[row] = rest;
    point.pi[row] = 0;
    point.row_status[row] = BasisStatus::kBasic;
    own.emplace_back(row, a);
    const double limit = static_cast<double>((side - rest) / a);
    if (direction < 0 ? limit < value : limit > value) {
      value = limit;
      binding = row;
      binding_side = (a > 0) == (direction < 0) ? BasisStatus::kAtUpper : BasisStatus::kAtLower;
    }
  }
  const bool stopped = std::isfinite(value);
  if (!stopped) value = 0;
  for (const auto& [row, a] : own) point.activity[row] += Extended(a) * value;
  point.x[col] = value;
  point.reduced_cost[col] = 0;
  point.col_status[col] = direction < 0 ? BasisStatus::kAtUpper : BasisStatus::kAtLower;
  if (!stopped) point.col_status[col] = BasisStatus::kNonbasicFree;
  if (binding >= 0) {
    point.col_status[col] = BasisStatus::kBasic;
    point.row_status[binding] = binding_side;
  }
}

const Reduction kUnblockedColumn{"unblocked_column", Trigger::kColumn, true, find, undo};

}  // namespace zorvex
