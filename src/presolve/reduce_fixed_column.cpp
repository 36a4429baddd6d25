// reduce_fixed_column.cpp: a column whose bounds meet is a constant. Also the undo of every column that another
// reduction fixed at a bound.
#include <algorithm>
#include <cmath>

#include "base/tolerances.hpp"
#include "presolve/changes.hpp"
#include "presolve/reduction.hpp"

namespace zorvex {

static Outcome find(const PresolveModel& model, Index col, Changes& changes) {
  const double lower = model.col_lower[col];
  const double width = model.col_upper[col] - lower;
  if (!std::isfinite(lower) || !(width <= PresolveTolerances::kSame * std::max(1.0, std::abs(lower))))
    return Outcome::kNone;
  changes.fix_column(col, lower, BasisStatus::kBasic);
  return Outcome::kChanged;
}

static void undo(UndoReader& record, PostsolvePoint& point) {
  const Index col = record.index();
  const auto status = static_cast<BasisStatus>(record.index());
  const double value = record.real();
  const double cost = record.real();
  const RecordedEntries entries = record.entries();
  point.x[col] = value;
  const double d = static_cast<double>(point.gradient(col, cost) - entries.dot(point.pi));
  point.reduced_cost[col] = d;
  point.col_status[col] = status;
  if (status == BasisStatus::kBasic || (point.farkas && d != 0)) point.col_status[col] = side_of_sign(d);
  for (std::size_t k = 0; k < entries.index.size(); ++k) {
    point.activity[entries.index[k]] += Extended(entries.value[k]) * value;
  }
}

const Reduction kFixedColumn{"fixed_column", Trigger::kColumn, false, find, undo};

}  // namespace zorvex
