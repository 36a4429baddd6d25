// reduce_duplicate_columns.cpp: of two parallel columns, also in cost, one remains and stands for both; if the costs
// differ, the dearer way of doing the same thing goes to its bound when the cheaper one is unlimited.
//   Source   E. Andersen, K. Andersen, Math. Program. 71 (1995) 221-245, section 3.5.
#include <algorithm>
#include <cmath>

#include "base/tolerances.hpp"
#include "presolve/changes.hpp"
#include "presolve/parallel_groups.hpp"
#include "presolve/reduction.hpp"

namespace zorvex {
extern const Reduction kDuplicateColumns;

// a_other = factor * a_col, `gap` = c_other - factor * c_col, so d_other = gap + factor * d_col. Fixes `other` when the
// sign of d_col, known from an infinite bound, settles that of d_other.
static Outcome dominate(const PresolveModel& model, Index col, Index other, double factor, double gap,
                        Changes& changes) {
  const bool never_negative = model.col_upper[col] == kInf;  // d_col
  const bool never_positive = model.col_lower[col] == -kInf;
  const bool to_lower = gap > 0 && (factor > 0 ? never_negative : never_positive);
  const bool to_upper = gap < 0 && (factor > 0 ? never_positive : never_negative);
  if (!to_lower && !to_upper) return Outcome::kNone;
  const double bound = to_lower ? model.col_lower[other] : model.col_upper[other];
  if (!std::isfinite(bound)) return Outcome::kUnbounded;
  changes.fix_column(other, bound, to_lower ? BasisStatus::kAtLower : BasisStatus::kAtUpper);
  return Outcome::kChanged;
}

static Outcome merge(const PresolveModel& model, Index kept, Index gone, double factor, Changes& changes) {
  const double low = factor > 0 ? model.col_lower[gone] : model.col_upper[gone];
  const double high = factor > 0 ? model.col_upper[gone] : model.col_lower[gone];
  const double lower = model.col_lower[kept] + factor * low;
  const double upper = model.col_upper[kept] + factor * high;
  changes.record(kDuplicateColumns)
      .index(kept)
      .index(gone)
      .index(lower == upper)
      .real(factor)
      .real(model.col_lower[kept])
      .real(model.col_upper[kept])
      .real(model.col_lower[gone])
      .real(model.col_upper[gone]);
  changes.remove_column(gone);
  changes.set_col_bounds(kept, lower, upper);
  return Outcome::kChanged;
}

static Outcome find(const PresolveModel& model, Index, Changes& changes) {
  Outcome result = Outcome::kNone;
  changes.work().add(model.num_cols());
  for_each_parallel(model, Axis::kColumns, 1, [&](Index first, Index second, double factor) -> Index {
    if (std::abs(factor) < PresolveTolerances::kPivotShare || std::abs(factor) > 1 / PresolveTolerances::kPivotShare) {
      return first;
    }
    const double scaled = factor * model.cost[first];
    const double gap = model.cost[second] - scaled;
    const double noise = PresolveTolerances::kSame * std::max(std::abs(scaled), std::abs(model.cost[second]));
    Outcome outcome = Outcome::kNone;
    if (std::abs(gap) <= noise) {
      outcome = merge(model, first, second, factor, changes);
    } else if (model.options.dual_reductions && std::abs(gap) > PresolveTolerances::kCostNoise) {
      outcome = dominate(model, first, second, factor, gap, changes);
      if (outcome == Outcome::kNone) outcome = dominate(model, second, first, 1 / factor, -gap / factor, changes);
    }
    if (outcome != Outcome::kNone) result = outcome;
    if (outcome == Outcome::kUnbounded) return -1;
    return model.col_alive[first] ? first : second;
  });
  return result;
}

struct Column {
  double lower, upper;
  [[nodiscard]] bool holds(double x) const {
    return x >= lower - conclusion_slack(x) && x <= upper + conclusion_slack(x);
  }
  [[nodiscard]] double nearest(double x) const { return std::min(std::max(x, lower), upper); }
};

struct Split {
  double kept, gone;
  BasisStatus kept_status, gone_status;
};

// Shares a sum that is not at its bounds: one of the two rests on a bound, the other takes the rest.
static Split split_basic(double sum, double factor, const Column& kept, const Column& gone) {
  for (const double x : {gone.lower, gone.upper}) {
    if (!std::isfinite(x) || !kept.holds(sum - factor * x)) continue;
    return {sum - factor * x, x, BasisStatus::kBasic, x == gone.lower ? BasisStatus::kAtLower : BasisStatus::kAtUpper};
  }
  for (const double x : {kept.lower, kept.upper}) {
    if (!std::isfinite(x) || !gone.holds((sum - x) / factor)) continue;
    return {x, (sum - x) / factor, x == kept.lower ? BasisStatus::kAtLower : BasisStatus::kAtUpper,
            BasisStatus::kBasic};
  }
  // Two free columns, or a sum outside its bounds within the solver's tolerance.
  if (!std::isfinite(gone.lower) && !std::isfinite(gone.upper)) {
    return {sum, 0, BasisStatus::kBasic, BasisStatus::kNonbasicFree};
  }
  const bool low = std::isfinite(gone.lower) &&
                   (!std::isfinite(gone.upper) || (sum < kept.lower + factor * gone.lower) == (factor > 0));
  const double x = low ? gone.lower : gone.upper;
  return {sum - factor * x, x, BasisStatus::kBasic, low ? BasisStatus::kAtLower : BasisStatus::kAtUpper};
}

static void undo(UndoReader& record, PostsolvePoint& point) {
  const Index kept = record.index();
  const Index gone = record.index();
  const bool coincide = record.index() != 0;
  const double factor = record.real();
  Column kept_bounds{};
  Column gone_bounds{};
  kept_bounds.lower = record.real();
  kept_bounds.upper = record.real();
  gone_bounds.lower = record.real();
  gone_bounds.upper = record.real();
  point.reduced_cost[gone] = factor * point.reduced_cost[kept];
  if (at_bound(point.col_status[kept])) {
    const BasisStatus side = point.side(point.col_status[kept], point.reduced_cost[kept], coincide);
    const BasisStatus other = factor > 0 ? side : opposite(side);
    point.col_status[kept] = side;
    point.col_status[gone] = other;
    const double sum = point.x[kept];
    point.x[kept] = side == BasisStatus::kAtLower ? kept_bounds.lower : kept_bounds.upper;
    point.x[gone] = other == BasisStatus::kAtLower ? gone_bounds.lower : gone_bounds.upper;
    if (point.interior) {
      point.x[kept] = kept_bounds.nearest(sum - factor * point.x[gone]);
      point.x[gone] = gone_bounds.nearest((sum - point.x[kept]) / factor);
    }
    return;
  }
  const bool basic = point.col_status[kept] == BasisStatus::kBasic;
  const Split split = split_basic(point.x[kept], factor, kept_bounds, gone_bounds);
  point.x[kept] = split.kept;
  point.x[gone] = split.gone;
  point.col_status[kept] = basic || at_bound(split.kept_status) ? split.kept_status : BasisStatus::kNonbasicFree;
  point.col_status[gone] = basic || at_bound(split.gone_status) ? split.gone_status : BasisStatus::kNonbasicFree;
}

const Reduction kDuplicateColumns{"duplicate_columns", Trigger::kRound, false, find, undo, true};

}  // namespace zorvex
