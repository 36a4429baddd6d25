// reduce_singleton_column.cpp: a column in one row only is a slack: its range widens the row's sides. With a cost, the
// row must be an equation, or be known to bind at the side from which the cost holds the column: then the row gives the
// column's value and the cost moves to the other columns.
//   Source   E. Andersen, K. Andersen, Math. Program. 71 (1995) 221-245, section 3.3.
#include <algorithm>
#include <cmath>

#include "base/tolerances.hpp"
#include "presolve/changes.hpp"
#include "presolve/reduction.hpp"

namespace zorvex {
extern const Reduction kSingletonColumn;

// How the row stands once the column is gone.
enum Form : Index { kSlack, kEquation, kBindsAtLower, kBindsAtUpper };

// t = a x_j and the range of t that has to be kept; infinite where the row itself implies it.
struct Slack {
  Form form;
  double low, high;
};

// Decides whether and how; false if the column has to stay. A cost that wants t small (multiplier > 0) makes the row
// bind at its lower side if nothing else can stop t there.
static bool classify(const PresolveModel& model, const PresolveMatrix::Entry& entry, Slack& slack) {
  const Index row = entry.row;
  const double cost = model.cost[entry.col];
  slack.low = entry.value * (entry.value > 0 ? model.col_lower[entry.col] : model.col_upper[entry.col]);
  slack.high = entry.value * (entry.value > 0 ? model.col_upper[entry.col] : model.col_lower[entry.col]);
  if (model.is_equation(row) || cost == 0) {
    slack.form = model.is_equation(row) ? kEquation : kSlack;
    return true;
  }
  if (!model.options.dual_reductions) return false;
  const bool low_implied = entry.value > 0 ? model.lower_is_implied(entry) : model.upper_is_implied(entry);
  const bool high_implied = entry.value > 0 ? model.upper_is_implied(entry) : model.lower_is_implied(entry);
  if ((cost > 0) == (entry.value > 0)) {
    if (model.row_lower[row] == -kInf || !low_implied) return false;
    slack.form = kBindsAtLower;
    slack.low = -kInf;
  } else {
    if (model.row_upper[row] == kInf || !high_implied) return false;
    slack.form = kBindsAtUpper;
    slack.high = kInf;
  }
  return true;
}

// Exact conversions only: t at a bound must give the row side back.
static bool too_coarse(double side, double range) {
  return std::isfinite(side) && std::isfinite(range) && std::abs(range) >= PresolveTolerances::kHugeBound;
}

static Outcome find(const PresolveModel& model, Index col, Changes& changes) {
  if (model.matrix.col_length(col) != 1) return Outcome::kNone;
  const auto entry = model.matrix.entry(model.matrix.first_in_col(col));
  const Index row = entry.row;
  if (model.matrix.row_length(row) < 2) return Outcome::kNone;  // a singleton row: bounds are simpler
  if (std::abs(entry.value) < PresolveTolerances::kPivotShare * model.matrix.row_magnitude(row)) return Outcome::kNone;
  Slack slack{};
  if (!classify(model, entry, slack)) return Outcome::kNone;
  const double lower = slack.form == kBindsAtUpper ? model.row_upper[row] : model.row_lower[row];
  const double upper = slack.form == kBindsAtLower ? model.row_lower[row] : model.row_upper[row];
  if (too_coarse(lower, slack.high) || too_coarse(upper, slack.low)) return Outcome::kNone;
  const double multiplier = slack.form == kSlack ? 0 : model.cost[col] / entry.value;
  changes.record(kSingletonColumn)
      .index(row)
      .index(col)
      .index(slack.form)
      .real(entry.value)
      .real(multiplier)
      .real(lower)
      .real(upper)
      .real(slack.low)
      .real(slack.high)
      .real(model.col_lower[col])
      .real(model.col_upper[col]);
  changes.remove_column(col);
  if (multiplier != 0) {
    for (const auto& other : model.matrix.row(row)) changes.shift_cost(other.col, -multiplier * other.value);
    changes.work().add(model.matrix.row_length(row));
    changes.shift_offset(Extended(multiplier) * lower);
  }
  changes.set_row_sides(row, lower - slack.high, upper - slack.low);
  return Outcome::kChanged;
}

struct Restored {
  Extended t;
  BasisStatus col, row;  // col: side of t, not yet of x_j
};

// The reduced row is basic: its multiplier is zero, and t is free to be anything that fits. A resting t is preferred.
static Restored fit_slack(Extended rest, double lower, double upper, double low, double high) {
  const auto fits = [&](double t) {
    return std::isfinite(t) && rest + t >= lower - conclusion_slack(lower) &&
           rest + t <= upper + conclusion_slack(upper);
  };
  if (fits(low)) return {low, BasisStatus::kAtLower, BasisStatus::kBasic};
  if (fits(high)) return {high, BasisStatus::kAtUpper, BasisStatus::kBasic};
  const bool stretched_low = std::isfinite(low) && rest + low > upper;  // within the solver's tolerance only
  const bool stretched_high = std::isfinite(high) && rest + high < lower;
  if (stretched_low) return {low, BasisStatus::kAtLower, BasisStatus::kBasic};
  if (stretched_high) return {high, BasisStatus::kAtUpper, BasisStatus::kBasic};
  if (std::isfinite(lower)) return {lower - rest, BasisStatus::kBasic, BasisStatus::kAtLower};
  if (std::isfinite(upper)) return {upper - rest, BasisStatus::kBasic, BasisStatus::kAtUpper};
  return {0, BasisStatus::kNonbasicFree, BasisStatus::kBasic};
}

static void undo(UndoReader& record, PostsolvePoint& point) {
  const Index row = record.index();
  const Index col = record.index();
  const auto form = static_cast<Form>(record.index());
  const double a = record.real();
  const double multiplier = point.cost(record.real());
  const double lower = record.real();
  const double upper = record.real();
  const double low = record.real();
  const double high = record.real();
  const double col_lower = record.real();
  const double col_upper = record.real();
  const double reduced_pi = point.pi[row];
  const Extended rest = point.activity[row];
  point.pi[row] = reduced_pi + multiplier;
  point.reduced_cost[col] = -a * reduced_pi;

  Restored restored{};
  if (point.row_status[row] == BasisStatus::kBasic) {
    restored = form == kSlack ? fit_slack(rest, lower, upper, low, high)
                              : Restored{lower - rest, BasisStatus::kBasic, BasisStatus::kAtLower};
  } else {
    // At its reduced lower side lower - high the row has used up the slack: t = high; likewise above.
    const BasisStatus side = point.side(point.row_status[row], reduced_pi, lower - high == upper - low);
    restored = {side == BasisStatus::kAtLower ? high : low, opposite(side), side};
    if (point.interior)
      restored.t = std::min(std::max(restored.t, lower - rest), form == kSlack ? upper - rest : lower - rest);
  }
  if (restored.row != BasisStatus::kBasic) {
    if (form == kEquation) restored.row = side_of_sign(point.pi[row]);
    if (form == kBindsAtLower) restored.row = BasisStatus::kAtLower;
    if (form == kBindsAtUpper) restored.row = BasisStatus::kAtUpper;
  }
  point.row_status[row] = restored.row;
  point.col_status[col] = at_bound(restored.col) && a < 0 ? opposite(restored.col) : restored.col;
  const double value = static_cast<double>(restored.t / a);
  point.x[col] = std::min(std::max(value, col_lower), col_upper);
  if (point.col_status[col] == BasisStatus::kBasic && !point.interior) point.reduced_cost[col] = 0;
  if (at_bound(point.col_status[col]) && !point.farkas && !point.interior) {
    point.x[col] = point.col_status[col] == BasisStatus::kAtLower ? col_lower : col_upper;
  }
  point.activity[row] = rest + Extended(a) * point.x[col];
}

const Reduction kSingletonColumn{"singleton_column", Trigger::kColumn, false, find, undo};

}  // namespace zorvex
