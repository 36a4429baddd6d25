// reduce_dual_bounds.cpp: a column with an infinite bound has a one-sided reduced cost (0 <= d_j = c_j - a_j'pi where
// there is no upper bound, and so on), which with the signs of the other multipliers bounds each multiplier it touches.
// The multipliers bound all reduced costs. A reduced cost that is never zero fixes its column, a multiplier that is
// never zero makes its row an equation.
//   Source   E. Andersen, K. Andersen, Math. Program. 71 (1995) 221-245, section 3.4;
//            J. Gondzio, INFORMS J. Computing 9 (1997) 73-91, section 2.
// Every step drops a dual constraint that the remaining ones imply. What a step leans on is therefore locked until the
// next round: steps that justify each other would make an unbounded model look as if it had an optimum.
#include <algorithm>
#include <cmath>

#include "base/tolerances.hpp"
#include "presolve/changes.hpp"
#include "presolve/reduction.hpp"

namespace zorvex {
extern const Reduction kDualBounds;

// Range of one multiplier: from its row's sides, and tighter from one column's reduced cost.
struct MultiplierRange {
  double lower, upper;                         // the best known
  double sign_lower, sign_upper;               // by the sides alone
  Index lower_source = -1, upper_source = -1;  // column that gave `lower`, `upper`; -1: the sides
};

class DualBounds {
 public:
  DualBounds(const PresolveModel& model, Changes& changes);
  void propagate();
  Outcome settle();

 private:
  Outcome settle_column(Index col);
  Outcome settle_row(Index row);
  void tighten(Index col, int direction);
  // Range of a_j'pi without what column j itself has said.
  [[nodiscard]] Activity product(Index col) const;
  void lock_source(Index col);

  const PresolveModel& model_;
  Changes& changes_;
  std::vector<MultiplierRange> pi_;
  std::vector<char> row_locked_, col_locked_;
};

DualBounds::DualBounds(const PresolveModel& model, Changes& changes)
    : model_(model),
      changes_(changes),
      row_locked_(static_cast<std::size_t>(model.num_rows()), 0),
      col_locked_(static_cast<std::size_t>(model.num_cols()), 0) {
  for (Index row = 0; row < model.num_rows(); ++row) {
    const double lower = model.row_upper[row] < kInf ? -kInf : 0;
    const double upper = model.row_lower[row] > -kInf ? kInf : 0;
    pi_.push_back({lower, upper, lower, upper});
  }
}

void DualBounds::propagate() {
  for (Index col = 0; col < model_.num_cols(); ++col) {
    if (!model_.col_alive[col]) continue;
    if (model_.col_upper[col] == kInf) tighten(col, 1);
    if (model_.col_lower[col] == -kInf) tighten(col, -1);
  }
}

// By a_j'pi <= c_j (direction 1) or a_j'pi >= c_j (direction -1), with the signs of the multipliers.
void DualBounds::tighten(Index col, int direction) {
  Activity sum;
  for (const auto& entry : model_.matrix.col(col)) {
    sum.add(entry.value, pi_[entry.row].sign_lower, pi_[entry.row].sign_upper, 1);
  }
  changes_.work().add(model_.matrix.col_length(col));
  if ((direction > 0 ? sum.infinite_min : sum.infinite_max) > 1) return;
  for (const auto& entry : model_.matrix.col(col)) {
    MultiplierRange& range = pi_[entry.row];
    Activity rest = sum;
    rest.add(entry.value, range.sign_lower, range.sign_upper, -1);
    const double others = direction > 0 ? rest.min() : rest.max();
    const double bound = (model_.cost[col] - others) / entry.value;
    if (!(std::abs(bound) < PresolveTolerances::kHugeBound)) continue;
    if ((entry.value > 0) == (direction > 0)) {
      if (bound < range.upper) range.upper_source = col;
      range.upper = std::min(range.upper, bound);
    } else {
      if (bound > range.lower) range.lower_source = col;
      range.lower = std::max(range.lower, bound);
    }
  }
}

Activity DualBounds::product(Index col) const {
  Activity sum;
  for (const auto& entry : model_.matrix.col(col)) {
    const MultiplierRange& range = pi_[entry.row];
    sum.add(entry.value, range.lower_source == col ? range.sign_lower : range.lower,
            range.upper_source == col ? range.sign_upper : range.upper, 1);
  }
  return sum;
}

// The column's reduced cost and the signs of its rows' multipliers are leaned on.
void DualBounds::lock_source(Index col) {
  col_locked_[col] = 1;
  for (const auto& entry : model_.matrix.col(col)) row_locked_[entry.row] = 1;
}

// Smallest distance from zero at which a sign is certain although the solver's duals hold within its tolerance only.
static double certain(const PresolveModel& model, double magnitude) {
  return model.options.dual_feasibility_tol * (1 + magnitude);
}

Outcome DualBounds::settle_column(Index col) {
  if (col_locked_[col]) return Outcome::kNone;
  changes_.work().add(model_.matrix.col_length(col));
  const Activity sum = product(col);
  const double least = model_.cost[col] - sum.max();  // reduced cost
  const double most = model_.cost[col] - sum.min();
  if (!(least > 0) && !(most < 0)) return Outcome::kNone;
  double magnitude = 0;
  for (const auto& entry : model_.matrix.col(col)) {
    const MultiplierRange& range = pi_[entry.row];
    magnitude += std::abs(entry.value);
    for (const Index source : {range.lower_source, range.upper_source}) {
      if (source >= 0 && source != col && !model_.col_alive[source]) return Outcome::kNone;
    }
  }
  const double margin = certain(model_, magnitude);
  if (!(least > margin) && !(most < -margin)) return Outcome::kNone;
  const double bound = least > 0 ? model_.col_lower[col] : model_.col_upper[col];
  if (!std::isfinite(bound)) return Outcome::kUnbounded;
  for (const auto& entry : model_.matrix.col(col)) {
    const MultiplierRange& range = pi_[entry.row];
    row_locked_[entry.row] = 1;
    if (range.lower_source >= 0 && range.lower_source != col) lock_source(range.lower_source);
    if (range.upper_source >= 0 && range.upper_source != col) lock_source(range.upper_source);
  }
  changes_.fix_column(col, bound, least > 0 ? BasisStatus::kAtLower : BasisStatus::kAtUpper);
  return Outcome::kChanged;
}

Outcome DualBounds::settle_row(Index row) {
  if (row_locked_[row] || model_.is_equation(row)) return Outcome::kNone;
  const MultiplierRange& range = pi_[row];
  const double margin = certain(model_, 0);
  const bool at_lower = range.lower > margin && std::isfinite(model_.row_lower[row]);
  const bool at_upper = range.upper < -margin && std::isfinite(model_.row_upper[row]);
  if (at_lower == at_upper) return Outcome::kNone;
  const Index source = at_lower ? range.lower_source : range.upper_source;
  if (source < 0 || !model_.col_alive[source]) return Outcome::kNone;
  lock_source(source);
  const double side = at_lower ? model_.row_lower[row] : model_.row_upper[row];
  const BasisStatus status = at_lower ? BasisStatus::kAtLower : BasisStatus::kAtUpper;
  changes_.record(kDualBounds).index(row).index(static_cast<Index>(status));
  changes_.set_row_sides(row, side, side);
  return Outcome::kChanged;
}

Outcome DualBounds::settle() {
  Outcome result = Outcome::kNone;
  for (Index col = 0; col < model_.num_cols(); ++col) {
    if (!model_.col_alive[col]) continue;
    const Outcome outcome = settle_column(col);
    if (outcome == Outcome::kUnbounded) return outcome;
    if (outcome == Outcome::kChanged) result = outcome;
  }
  for (Index row = 0; row < model_.num_rows(); ++row) {
    if (model_.row_alive[row] && settle_row(row) == Outcome::kChanged) result = Outcome::kChanged;
  }
  return result;
}

static Outcome find(const PresolveModel& model, Index, Changes& changes) {
  DualBounds bounds(model, changes);
  bounds.propagate();
  return bounds.settle();
}

// Columns have records of their own; a row that became an equation only has to say on which side it rests.
static void undo(UndoReader& record, PostsolvePoint& point) {
  const Index row = record.index();
  const auto side = static_cast<BasisStatus>(record.index());
  if (at_bound(point.row_status[row])) point.row_status[row] = side;
}

const Reduction kDualBounds{"dual_bounds", Trigger::kRound, true, 1, find, undo};

}  // namespace zorvex
