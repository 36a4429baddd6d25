// reduce_dual_bounds.cpp: a column without an upper bound has a reduced cost d_j = c_j - a_j'pi >= 0, one without a
// lower bound d_j <= 0; a bound that a row implies is as good as none. These are rows over the multipliers, which have
// bounds by the sides of their rows. Bound propagation on them bounds multipliers and reduced costs: a reduced cost
// that is never zero fixes its column, a multiplier that is never zero makes its row an equation.
//   Source   E. Andersen, K. Andersen, Math. Program. 71 (1995) 221-245, section 3.4;
//            J. Gondzio, INFORMS J. Computing 9 (1997) 73-91, section 2.
// Every step drops a dual constraint that the remaining ones imply. What a step leans on therefore stays until the next
// round: steps that justify each other would make an unbounded model look as if it had an optimum.
#include <cmath>

#include "base/tolerances.hpp"
#include "presolve/bound_propagation.hpp"
#include "presolve/changes.hpp"
#include "presolve/reduction.hpp"

namespace zorvex {
extern const Reduction kDualBounds;

namespace {

using Side = BoundPropagation::Side;

constexpr int kSweeps = 5;
constexpr int kMoreSweeps = 45;  // at full effort

// First entry of a record.
enum Record : Index { kRowMadeEquation, kOpenedColumn };

bool has_bound(const PresolveModel& model, Index col, Side side) {
  return std::isfinite(side == Side::kUpper ? model.col_upper[col] : model.col_lower[col]);
}

// True if the column has no bound on that side, or one that a row implies with a coefficient that does not blow up what
// the row may be violated by.
bool side_is_open(const PresolveModel& model, Index col, Side side, Changes& changes) {
  if (!has_bound(model, col, side)) return true;
  for (const auto& entry : model.matrix.col(col)) {
    changes.work().add(1);
    if (std::abs(entry.value) < PresolveTolerances::kPivotShare * model.matrix.row_magnitude(entry.row)) continue;
    if (side == Side::kUpper ? model.upper_is_implied(entry) : model.lower_is_implied(entry)) return true;
  }
  return false;
}

// Without any, nothing bounds a multiplier but its sign.
bool has_open_column(const PresolveModel& model, Changes& changes) {
  for (Index col = 0; col < model.num_cols(); ++col) {
    if (!model.col_alive[col]) continue;
    if (side_is_open(model, col, Side::kLower, changes) || side_is_open(model, col, Side::kUpper, changes)) return true;
  }
  return false;
}

// The dual constraints: a column for each row's multiplier, a row for each column's reduced cost.
LpData dual_constraints(const PresolveModel& model, Changes& changes) {
  LpData dual;
  dual.matrix.num_rows = model.num_cols();
  std::vector<Index> index;
  std::vector<double> value;
  for (Index row = 0; row < model.num_rows(); ++row) {
    index.clear();
    value.clear();
    for (const auto& entry : model.matrix.row(row)) {
      index.push_back(entry.col);
      value.push_back(entry.value);
    }
    dual.matrix.append_col(index.data(), value.data(), static_cast<Index>(index.size()));
    dual.cost.push_back(0);
    dual.col_lower.push_back(model.row_upper[row] < kInf ? -kInf : 0);
    dual.col_upper.push_back(model.row_lower[row] > -kInf ? kInf : 0);
  }
  for (Index col = 0; col < model.num_cols(); ++col) {
    const bool open = model.col_alive[col] != 0;
    dual.row_lower.push_back(open && side_is_open(model, col, Side::kLower, changes) ? model.cost[col] : -kInf);
    dual.row_upper.push_back(open && side_is_open(model, col, Side::kUpper, changes) ? model.cost[col] : kInf);
  }
  return dual;
}

class DualBounds {
 public:
  DualBounds(const PresolveModel& model, Changes& changes)
      : model_(model),
        changes_(changes),
        dual_(dual_constraints(model, changes), model.options),
        pi_(dual_, changes.work(), true) {}
  Outcome settle();

 private:
  Outcome settle_column(Index col);
  Outcome settle_row(Index row);
  bool open_side(Index col, Side side);
  bool conclude();

  const PresolveModel& model_;
  Changes& changes_;
  const PresolveModel dual_;
  BoundPropagation pi_;
};

// Drops the bound if it is still implied: the others may have been dropped since. False if it has to stay.
bool DualBounds::open_side(Index col, Side side) {
  if (!model_.col_alive[col] || !side_is_open(model_, col, side, changes_)) return false;
  if (!has_bound(model_, col, side)) return true;
  const double lower = model_.col_lower[col];
  const double upper = model_.col_upper[col];
  changes_.record(kDualBounds).index(kOpenedColumn).index(col).real(lower).real(upper);
  changes_.set_col_bounds(col, side == Side::kLower ? -kInf : lower, side == Side::kUpper ? kInf : upper);
  return true;
}

// Makes sure that the reduced costs argued with have their signs. A bound dropped in vain was implied all the same.
bool DualBounds::conclude() {
  for (const BoundPropagation::RowSide& argued : pi_.argument()) {
    if (open_side(argued.row, argued.side)) continue;
    pi_.reject();
    return false;
  }
  pi_.accept();
  return true;
}

Outcome DualBounds::settle_column(Index col) {
  if (pi_.is_pillar(col)) return Outcome::kNone;
  const double slack = conclusion_slack(model_.cost[col]);
  // The reduced cost is at least, at most this.
  const auto least = [&](const Activity& product) { return model_.cost[col] - product.max(); };
  const auto most = [&](const Activity& product) { return model_.cost[col] - product.min(); };
  const Activity& quick = pi_.quick_range(col);
  if (!(least(quick) >= -slack) && !(most(quick) <= slack)) return Outcome::kNone;
  const Activity product = pi_.range(col);
  const bool to_lower = least(product) >= -slack;
  if (!to_lower && !(most(product) <= slack)) return Outcome::kNone;
  const double bound = to_lower ? model_.col_lower[col] : model_.col_upper[col];
  const bool never_zero = (to_lower ? least(product) : -most(product)) > model_.options.dual_feasibility_tol + slack;
  if (!std::isfinite(bound) && !never_zero) return Outcome::kNone;
  if (!pi_.argue_range(col, to_lower ? Side::kUpper : Side::kLower)) {
    pi_.reject();
    return Outcome::kNone;
  }
  if (!conclude()) return Outcome::kNone;
  if (!std::isfinite(bound)) return Outcome::kUnbounded;
  pi_.remove_row(col);
  changes_.fix_column(col, bound, to_lower ? BasisStatus::kAtLower : BasisStatus::kAtUpper);
  return Outcome::kChanged;
}

Outcome DualBounds::settle_row(Index row) {
  const bool at_lower =
      std::isfinite(model_.row_lower[row]) && pi_.is_derived(row, Side::kLower) && pi_.lower(row) >= 0;
  const bool at_upper =
      std::isfinite(model_.row_upper[row]) && pi_.is_derived(row, Side::kUpper) && pi_.upper(row) <= 0;
  if (at_lower == at_upper || model_.is_equation(row)) return Outcome::kNone;
  const Side sign = at_lower ? Side::kLower : Side::kUpper;
  if (pi_.is_pillar(row, sign)) return Outcome::kNone;
  pi_.remove_bound(row, sign);
  if (!pi_.argue_bound(row, sign)) {
    pi_.reject();
    return Outcome::kNone;
  }
  if (!conclude()) return Outcome::kNone;
  const double side = at_lower ? model_.row_lower[row] : model_.row_upper[row];
  const BasisStatus status = at_lower ? BasisStatus::kAtLower : BasisStatus::kAtUpper;
  changes_.record(kDualBounds).index(kRowMadeEquation).index(row).index(static_cast<Index>(status));
  changes_.set_row_sides(row, side, side);
  return Outcome::kChanged;
}

Outcome DualBounds::settle() {
  pi_.run(kSweeps + static_cast<int>(kMoreSweeps * model_.options.dual_effort));
  Outcome result = Outcome::kNone;
  for (Index col = 0; col < model_.num_cols(); ++col) {
    if (!model_.col_alive[col]) continue;
    const Outcome outcome = settle_column(col);
    if (outcome == Outcome::kUnbounded) return outcome;
    if (outcome == Outcome::kChanged) result = outcome;
  }
  if (!model_.options.make_equations) return result;
  for (Index row = 0; row < model_.num_rows(); ++row) {
    if (model_.row_alive[row] && settle_row(row) == Outcome::kChanged) result = Outcome::kChanged;
  }
  return result;
}

}  // namespace

static Outcome find(const PresolveModel& model, Index, Changes& changes) {
  if (!has_open_column(model, changes)) return Outcome::kNone;
  DualBounds bounds(model, changes);
  return bounds.settle();
}

// A column that lost a bound and came out nonbasic without one rests on the bound if that is where it is.
static void undo_opened(UndoReader& record, PostsolvePoint& point) {
  const Index col = record.index();
  const double lower = record.real();
  const double upper = record.real();
  if (point.col_status[col] != BasisStatus::kNonbasicFree) return;
  if (point.x[col] == lower) point.col_status[col] = BasisStatus::kAtLower;
  if (point.x[col] == upper) point.col_status[col] = BasisStatus::kAtUpper;
}

// Fixed columns have records of their own; a row that became an equation only has to say on which side it rests.
static void undo(UndoReader& record, PostsolvePoint& point) {
  if (record.index() == kOpenedColumn) {
    undo_opened(record, point);
    return;
  }
  const Index row = record.index();
  const auto side = static_cast<BasisStatus>(record.index());
  if (at_bound(point.row_status[row])) point.row_status[row] = side;
}

const Reduction kDualBounds{"dual_bounds", Trigger::kRound, true, find, undo, true};

}  // namespace zorvex
