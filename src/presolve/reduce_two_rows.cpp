// reduce_two_rows.cpp: a row r that another row p and the column bounds imply. With a multiple of p that cancels
// entries of r, the activity of r is that of the sparser r + f p over the bounds, less f times the activity of p, which
// has its sides for bounds. A row that never binds goes; of a range the side that never binds goes.
//   Source   T. Achterberg, R. Bixby, Z. Gu, E. Rothberg, D. Weninger, INFORMS J. Computing 32 (2020) 473-506, section
//            5.3; there it tightens bounds, which would take the multipliers of both rows apart.
#include <cmath>

#include "base/tolerances.hpp"
#include "presolve/changes.hpp"
#include "presolve/reduction.hpp"
#include "presolve/row_multiples.hpp"

namespace zorvex {
extern const Reduction kTwoRows;

namespace {

constexpr Index kMaxLength = 100;  // of the row that implies others
constexpr double kMaxFactor = 10;  // what the solve leaves of infeasibility grows by it
constexpr std::int64_t kWorkPerNonzero = 20;

class TwoRows {
 public:
  TwoRows(const PresolveModel& model, Changes& changes)
      : model_(model),
        changes_(changes),
        multiples_(model, changes.work(), kMaxFactor),
        value_(static_cast<std::size_t>(model.num_cols()), 0) {}
  Outcome run();

 private:
  Activity range(Index row, const RowMultiple& multiple);
  bool settle(Index row, const RowMultiple& multiple);

  const PresolveModel& model_;
  Changes& changes_;
  RowMultiples multiples_;
  std::vector<double> value_;  // zero between calls
};

// What the activity of the other row may be while `row` and the bounds hold.
Activity TwoRows::range(Index row, const RowMultiple& multiple) {
  changes_.work().add(model_.matrix.row_length(row) + 2 * model_.matrix.row_length(multiple.row));
  for (const auto& entry : model_.matrix.row(multiple.row)) value_[entry.col] = entry.value;
  Activity sum;
  sum.add(-multiple.factor, model_.row_lower[row], model_.row_upper[row], 1);
  const auto add = [&](Index col, double value) {
    if (value != 0) sum.add(value, model_.col_lower[col], model_.col_upper[col], 1);
    value_[col] = 0;
  };
  for (const auto& entry : model_.matrix.row(row)) {
    const double change = multiple.factor * entry.value;
    const double left = value_[entry.col] + change;
    add(entry.col, std::abs(left) <= PresolveTolerances::kCancel * std::abs(change) ? 0 : left);
  }
  for (const auto& entry : model_.matrix.row(multiple.row)) add(entry.col, value_[entry.col]);
  return sum;
}

bool TwoRows::settle(Index row, const RowMultiple& multiple) {
  const Index other = multiple.row;
  if (model_.is_equation(other)) return false;
  const double lower = model_.row_lower[other];
  const double upper = model_.row_upper[other];
  const Activity activity = range(row, multiple);
  const bool lower_idle = lower == -kInf || activity.min() >= lower - conclusion_slack(lower);
  const bool upper_idle = upper == kInf || activity.max() <= upper + conclusion_slack(upper);
  if (lower_idle && upper_idle) {
    changes_.drop_row(other);
    return true;
  }
  if (!(lower_idle && lower > -kInf) && !(upper_idle && upper < kInf)) return false;
  changes_.set_row_sides(other, lower_idle ? -kInf : lower, upper_idle ? kInf : upper);
  return true;
}

Outcome TwoRows::run() {
  std::int64_t nonzeros = 0;
  for (Index row = 0; row < model_.num_rows(); ++row) nonzeros += model_.matrix.row_length(row);
  const std::int64_t limit = changes_.work().total() + kWorkPerNonzero * nonzeros;
  Outcome result = Outcome::kNone;
  for (Index row = 0; row < model_.num_rows() && changes_.work().total() < limit; ++row) {
    if (!model_.row_alive[row] || model_.matrix.row_length(row) > kMaxLength) continue;
    for (const RowMultiple& multiple : multiples_.of(row)) {
      if (settle(row, multiple)) result = Outcome::kChanged;
    }
  }
  return result;
}

}  // namespace

static Outcome find(const PresolveModel& model, Index, Changes& changes) { return TwoRows(model, changes).run(); }

const Reduction kTwoRows{"two_rows", Trigger::kRound, false, find, nullptr};

}  // namespace zorvex
