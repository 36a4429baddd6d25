// reduce_implied_row.cpp: an inequality that other rows imply, by the bounds they put on its columns, goes; of a range
// the side that never binds goes. What a row rests on stays until the next round. On demand a row that can only hold
// with equality becomes an equation.
//   Source   see bound_propagation.hpp.
#include "base/tolerances.hpp"
#include "presolve/bound_propagation.hpp"
#include "presolve/changes.hpp"
#include "presolve/reduction.hpp"

namespace zorvex {
extern const Reduction kImpliedRow;

using Side = BoundPropagation::Side;

constexpr int kSweeps = 5;

// A row whose activity cannot leave one of its sides. What the other rows imply stays with them, so that the new side
// takes nothing away; only a multiplier of the wrong sign has no place in the inequality.
static bool make_equation(const PresolveModel& model, Index row, BoundPropagation& bounds, Changes& changes) {
  const double lower = model.row_lower[row];
  const double upper = model.row_upper[row];
  const auto stays_at_upper = [&](const Activity& range) { return range.min() >= upper - conclusion_slack(upper); };
  const auto stays_at_lower = [&](const Activity& range) { return range.max() <= lower + conclusion_slack(lower); };
  if (!stays_at_upper(bounds.quick_range(row)) && !stays_at_lower(bounds.quick_range(row))) return false;
  const Activity range = bounds.range(row);
  const bool at_upper = stays_at_upper(range);
  if (!at_upper && !stays_at_lower(range)) return false;
  const double side = at_upper ? upper : lower;
  changes.record(kImpliedRow).index(row).index(at_upper ? 1 : 0);
  changes.set_row_sides(row, side, side);
  return true;
}

static Outcome settle(const PresolveModel& model, Index row, BoundPropagation& bounds, Changes& changes) {
  const double lower = model.row_lower[row];
  const double upper = model.row_upper[row];
  const double least = lower - conclusion_slack(lower);
  const double most = upper + conclusion_slack(upper);
  const auto lower_holds = [&](const Activity& range) { return lower > -kInf && range.min() >= least; };
  const auto upper_holds = [&](const Activity& range) { return upper < kInf && range.max() <= most; };
  if (!lower_holds(bounds.quick_range(row)) && !upper_holds(bounds.quick_range(row))) return Outcome::kNone;
  const Activity range = bounds.range(row);
  const bool lower_idle = lower_holds(range);
  const bool upper_idle = upper_holds(range);
  if (!lower_idle && !upper_idle) return Outcome::kNone;
  const bool drop_lower = lower_idle && bounds.argue_range(row, Side::kLower);
  const bool drop_upper = upper_idle && (!lower_idle || drop_lower) && bounds.argue_range(row, Side::kUpper);
  if ((lower_idle && !drop_lower) || (upper_idle && !drop_upper)) {
    bounds.reject();
    return Outcome::kNone;
  }
  bounds.accept();
  bounds.remove_row(row);
  if ((lower == -kInf || drop_lower) && (upper == kInf || drop_upper)) {
    changes.drop_row(row);
  } else {
    changes.set_row_sides(row, drop_lower ? -kInf : lower, drop_upper ? kInf : upper);
  }
  return Outcome::kChanged;
}

static Outcome find(const PresolveModel& model, Index, Changes& changes) {
  BoundPropagation bounds(model, changes.work(), false);
  bounds.run(kSweeps);
  Outcome result = Outcome::kNone;
  for (Index row = 0; row < model.num_rows(); ++row) {
    if (!model.row_alive[row] || model.is_equation(row)) continue;
    const bool becomes_equation = model.options.implied_equations && make_equation(model, row, bounds, changes);
    if (becomes_equation) result = Outcome::kChanged;
    if (becomes_equation || bounds.is_pillar(row)) continue;
    if (settle(model, row, bounds, changes) == Outcome::kChanged) result = Outcome::kChanged;
  }
  return result;
}

// Of a row that became an equation.
static void undo(UndoReader& record, PostsolvePoint& point) {
  const Index row = record.index();
  const BasisStatus side = record.index() != 0 ? BasisStatus::kAtUpper : BasisStatus::kAtLower;
  if (!at_bound(point.row_status[row])) return;
  point.row_status[row] = side;
  if (point.pi[row] != 0 && side_of_sign(point.pi[row]) != side) point.exact_basis = false;
}

const Reduction kImpliedRow{"implied_row", Trigger::kRound, false, find, undo};

}  // namespace zorvex
