// reduce_singleton_row.cpp: L <= a x_j <= U is a bound on x_j; the row goes.
//   Source   E. Andersen, K. Andersen, Math. Program. 71 (1995) 221-245, section 3.1.
#include <algorithm>
#include <cmath>

#include "base/tolerances.hpp"
#include "presolve/changes.hpp"
#include "presolve/reduction.hpp"

namespace zorvex {
extern const Reduction kSingletonRow;

static Outcome find(const PresolveModel& model, Index row, Changes& changes) {
  if (model.matrix.row_length(row) != 1) return Outcome::kNone;
  const auto& entry = model.matrix.entry(model.matrix.first_in_row(row));
  const Index col = entry.col;
  const double a = entry.value;
  double lower = (a > 0 ? model.row_lower[row] : model.row_upper[row]) / a;
  double upper = (a > 0 ? model.row_upper[row] : model.row_lower[row]) / a;
  if (!(lower <= upper)) return Outcome::kNone;
  const double old_lower = model.col_lower[col];
  const double old_upper = model.col_upper[col];
  const double tolerance = model.options.primal_feasibility_tol;
  const bool too_high = lower > old_upper;
  const double crossing = too_high ? lower - old_upper : old_lower - upper;
  if (crossing > tolerance + tolerance / std::abs(a)) {
    changes.prove(row, too_high == (a > 0) ? 1 : -1);
    return Outcome::kInfeasible;
  }
  // Bounds that cross within the tolerance are the solver's to judge; those that cross by rounding meet.
  const double scale = std::max(1.0, std::abs(too_high ? old_upper : old_lower));
  if (crossing > 0 && crossing > PresolveTolerances::kSame * scale) return Outcome::kNone;
  lower = std::max(old_lower, std::min(lower, old_upper));
  upper = std::min(old_upper, std::max(upper, old_lower));
  changes.record(kSingletonRow)
      .index(row)
      .index(col)
      .index(lower > old_lower)
      .index(upper < old_upper)
      .index(lower == upper)
      .real(a);
  changes.set_col_bounds(col, lower, upper);
  changes.remove_row(row);
  return Outcome::kChanged;
}

// A column that rests on a bound which the row gave hands its reduced cost to the row and becomes basic.
static void undo(UndoReader& record, PostsolvePoint& point) {
  const Index row = record.index();
  const Index col = record.index();
  const bool lower_from_row = record.index() != 0;
  const bool upper_from_row = record.index() != 0;
  const bool coincide = record.index() != 0;
  const double a = record.real();
  point.activity[row] = Extended(a) * point.x[col];
  point.pi[row] = 0;
  point.row_status[row] = BasisStatus::kBasic;
  if (!at_bound(point.col_status[col])) return;
  double& d = point.reduced_cost[col];
  const BasisStatus side = point.side(point.col_status[col], d, coincide);
  point.col_status[col] = side;
  if (side == BasisStatus::kAtLower ? !lower_from_row : !upper_from_row) return;
  point.pi[row] = d / a;
  d = 0;
  point.col_status[col] = BasisStatus::kBasic;
  point.row_status[row] = a > 0 ? side : opposite(side);
}

const Reduction kSingletonRow{"singleton_row", Trigger::kRow, false, find, undo};

}  // namespace zorvex
