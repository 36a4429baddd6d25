// reduce_duplicate_rows.cpp: of two parallel rows one remains, with the tighter of their sides.
//   Source   E. Andersen, K. Andersen, Math. Program. 71 (1995) 221-245, section 3.5.
#include <algorithm>
#include <cmath>

#include "base/tolerances.hpp"
#include "presolve/changes.hpp"
#include "presolve/parallel_groups.hpp"
#include "presolve/reduction.hpp"

namespace zorvex {
extern const Reduction kDuplicateRows;

// Removes `gone` = factor * kept.
static Outcome merge(const PresolveModel& model, Index kept, Index gone, double factor, Changes& changes) {
  double lower = (factor > 0 ? model.row_lower[gone] : model.row_upper[gone]) / factor;
  double upper = (factor > 0 ? model.row_upper[gone] : model.row_lower[gone]) / factor;
  const double old_lower = model.row_lower[kept];
  const double old_upper = model.row_upper[kept];
  const double crossing = std::max(lower - old_upper, old_lower - upper);
  if (crossing > 0) {
    const double tolerance = model.options.primal_feasibility_tol;
    if (crossing > tolerance * (1 + 1 / std::abs(factor))) {
      const int direction = lower > old_upper ? -1 : 1;
      changes.prove(kept, direction);
      changes.prove(gone, -direction / factor);
      return Outcome::kInfeasible;
    }
    const double side = std::abs(lower > old_upper ? old_upper : old_lower);
    if (crossing > PresolveTolerances::kSame * std::max(1.0, side)) return Outcome::kNone;
  }
  lower = std::max(old_lower, std::min(lower, old_upper));
  upper = std::min(old_upper, std::max(upper, old_lower));
  changes.record(kDuplicateRows)
      .index(kept)
      .index(gone)
      .index(lower > old_lower)
      .index(upper < old_upper)
      .index(lower == upper)
      .real(factor);
  changes.set_row_sides(kept, lower, upper);
  changes.remove_row(gone);
  return Outcome::kChanged;
}

static Outcome find(const PresolveModel& model, Index, Changes& changes) {
  Outcome result = Outcome::kNone;
  changes.work().add(model.num_rows());
  for_each_parallel(model, Axis::kRows, 2, [&](Index first, Index second, double factor) -> Index {
    // The larger row stays: what the solve leaves of infeasibility does not grow on the way back.
    const bool keep_first = std::abs(factor) <= 1;
    const Outcome outcome =
        keep_first ? merge(model, first, second, factor, changes) : merge(model, second, first, 1 / factor, changes);
    if (outcome != Outcome::kNone) result = outcome;
    if (outcome == Outcome::kInfeasible) return -1;
    return keep_first || outcome == Outcome::kNone ? first : second;
  });
  return result;
}

static void undo(UndoReader& record, PostsolvePoint& point) {
  const Index kept = record.index();
  const Index gone = record.index();
  const bool lower_from_gone = record.index() != 0;
  const bool upper_from_gone = record.index() != 0;
  const bool coincide = record.index() != 0;
  const double factor = record.real();
  point.activity[gone] = factor * point.activity[kept];
  point.pi[gone] = 0;
  point.row_status[gone] = BasisStatus::kBasic;
  if (!at_bound(point.row_status[kept])) return;
  const BasisStatus side = point.side(point.row_status[kept], point.pi[kept], coincide);
  point.row_status[kept] = side;
  if (side == BasisStatus::kAtLower ? !lower_from_gone : !upper_from_gone) return;
  point.pi[gone] = point.pi[kept] / factor;
  point.row_status[gone] = factor > 0 ? side : opposite(side);
  point.pi[kept] = 0;
  point.row_status[kept] = BasisStatus::kBasic;
}

const Reduction kDuplicateRows{"duplicate_rows", Trigger::kRound, false, find, undo};

}  // namespace zorvex
