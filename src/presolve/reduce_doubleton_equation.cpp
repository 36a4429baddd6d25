// reduce_doubleton_equation.cpp: a x_j + b x_k = r eliminates x_j after its bounds have become bounds on x_k. The
// matrix never gains entries.
//   Source   E. Andersen, K. Andersen, Math. Program. 71 (1995) 221-245, section 3.3 (aggregation).
#include <algorithm>
#include <cmath>

#include "base/tolerances.hpp"
#include "presolve/changes.hpp"
#include "presolve/reduction.hpp"

namespace zorvex {
extern const Reduction kDoubletonEquation;

// True if the column may be eliminated by its entry in a row whose other entry is `other`.
static bool good_pivot(const PresolveModel& model, const PresolveMatrix::Entry& pivot, double other) {
  if (model.is_quadratic(pivot.col)) return false;
  double largest = std::abs(other);
  for (const auto& entry : model.matrix.col(pivot.col)) largest = std::max(largest, std::abs(entry.value));
  return std::abs(pivot.value) >= PresolveTolerances::kPivotShare * largest;
}

struct Bounds {
  double lower, upper;
};

// What the bounds of the eliminated column mean for the other one.
static Bounds transferred(const PresolveModel& model, const PresolveMatrix::Entry& out,
                          const PresolveMatrix::Entry& kept) {
  const double side = model.row_lower[out.row];
  const auto at = [&](double bound) {
    return static_cast<double>((Extended(side) - Extended(out.value) * bound) / kept.value);
  };
  Bounds result{at(model.col_upper[out.col]), at(model.col_lower[out.col])};
  if ((out.value > 0) != (kept.value > 0)) std::swap(result.lower, result.upper);
  return result;
}

static Outcome eliminate(const PresolveModel& model, const PresolveMatrix::Entry& out,
                         const PresolveMatrix::Entry& kept, Changes& changes) {
  const Index row = out.row;
  const Index out_col = out.col;
  const Index kept_col = kept.col;
  const double old_lower = model.col_lower[kept_col];
  const double old_upper = model.col_upper[kept_col];
  const Bounds implied = transferred(model, out, kept);
  const double lower = std::max(old_lower, implied.lower);
  double upper = std::min(old_upper, implied.upper);
  if (lower > upper) {
    // Crossing within the tolerance is the solver's to judge, beyond it the row's activity will tell.
    if (lower - upper > PresolveTolerances::kSame * std::max(1.0, std::abs(lower))) return Outcome::kNone;
    upper = lower;
  }
  const auto too_large = [](double bound, double old) {
    return bound != old && std::abs(bound) >= PresolveTolerances::kHugeBound;
  };
  if (too_large(lower, old_lower) || too_large(upper, old_upper)) return Outcome::kNone;
  changes.record(kDoubletonEquation)
      .index(row)
      .index(out_col)
      .index(kept_col)
      .index(lower > old_lower)
      .index(upper < old_upper)
      .index(lower == upper)
      .real(out.value)
      .real(kept.value)
      .real(model.col_lower[out_col])
      .real(model.col_upper[out_col]);
  changes.set_col_bounds(kept_col, lower, upper);
  changes.substitute(row, out_col);
  return Outcome::kChanged;
}

static Outcome find(const PresolveModel& model, Index row, Changes& changes) {
  if (model.matrix.row_length(row) != 2 || !model.is_equation(row)) return Outcome::kNone;
  const auto& first = model.matrix.entry(model.matrix.first_in_row(row));
  const auto& second = model.matrix.entry(first.next_in_row);
  const Index first_length = model.matrix.col_length(first.col);
  const Index second_length = model.matrix.col_length(second.col);
  changes.work().add(first_length + second_length);
  const bool first_works = good_pivot(model, first, second.value);
  const bool second_works = good_pivot(model, second, first.value);
  if (!first_works && !second_works) return Outcome::kNone;
  const bool take_first = first_works && (!second_works || first_length <= second_length);
  return take_first ? eliminate(model, first, second, changes) : eliminate(model, second, first, changes);
}

// The elimination itself is undone already: x_j is basic. If x_k rests on a bound that came from x_j, the two change
// places: x_j rests on its bound, x_k is basic, and the row takes over x_k's reduced cost.
static void undo(UndoReader& record, PostsolvePoint& point) {
  const Index row = record.index();
  const Index out = record.index();
  const Index kept = record.index();
  const bool lower_from_out = record.index() != 0;
  const bool upper_from_out = record.index() != 0;
  const bool coincide = record.index() != 0;
  const double a = record.real();
  const double b = record.real();
  const double out_lower = record.real();
  const double out_upper = record.real();
  if (!at_bound(point.col_status[kept])) return;
  double& d = point.reduced_cost[kept];
  const BasisStatus side = point.side(point.col_status[kept], d, coincide);
  point.col_status[kept] = side;
  if (side == BasisStatus::kAtLower ? !lower_from_out : !upper_from_out) return;
  const double shift = d / b;
  const BasisStatus out_side = (a > 0) == (b > 0) ? opposite(side) : side;
  point.pi[row] += shift;
  point.row_status[row] = side_of_sign(point.pi[row]);
  point.reduced_cost[out] = -a * shift;
  point.col_status[out] = out_side;
  if (!point.interior) point.x[out] = out_side == BasisStatus::kAtLower ? out_lower : out_upper;
  d = 0;
  point.col_status[kept] = BasisStatus::kBasic;
}

const Reduction kDoubletonEquation{"doubleton_equation", Trigger::kRow, false, find, undo};

}  // namespace zorvex
