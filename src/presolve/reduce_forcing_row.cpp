// reduce_forcing_row.cpp: a row that only its columns' extreme bounds can satisfy fixes all of them there.
//   Source   E. Andersen, K. Andersen, Math. Program. 71 (1995) 221-245, section 3.2.
#include <algorithm>
#include <cmath>

#include "base/tolerances.hpp"
#include "presolve/changes.hpp"
#include "presolve/reduction.hpp"

namespace zorvex {
extern const Reduction kForcingRow;

// 1: the largest activity only just reaches the lower side; -1: the smallest only just the upper side; else 0. `slack`
// is a matter of rounding: a wider one would move the columns by slack / |a_ij|.
static int forcing_direction(const PresolveModel& model, Index row, const Activity& activity) {
  const auto meets = [](double reach, double side) {
    return std::isfinite(side) && std::abs(reach - side) <= PresolveTolerances::kSame * std::max(1.0, std::abs(side));
  };
  if (std::isfinite(activity.max()) && meets(activity.max(), model.row_lower[row])) return 1;
  if (std::isfinite(activity.min()) && meets(activity.min(), model.row_upper[row])) return -1;
  return 0;
}

static Outcome find(const PresolveModel& model, Index row, Changes& changes) {
  const Activity& running = model.activity[row];
  const bool candidate = running.max() <= model.row_lower[row] + conclusion_slack(model.row_lower[row]) ||
                         running.min() >= model.row_upper[row] - conclusion_slack(model.row_upper[row]);
  if (!candidate || model.matrix.row_length(row) < 2) return Outcome::kNone;
  changes.work().add(model.matrix.row_length(row));
  const int direction = forcing_direction(model, row, model.fresh_activity(row));
  if (direction == 0) return Outcome::kNone;
  changes.record(kForcingRow).index(row).index(direction).entries(model.matrix.row(row), &PresolveMatrix::Entry::col);
  std::vector<std::pair<Index, BasisStatus>> fixed;
  for (const auto& entry : model.matrix.row(row)) {
    fixed.emplace_back(entry.col, side_of_sign(-direction * entry.value));
  }
  changes.remove_row(row);
  for (const auto& [col, side] : fixed) {
    const bool both = model.col_lower[col] == model.col_upper[col];
    changes.fix_column(col, side == BasisStatus::kAtLower ? model.col_lower[col] : model.col_upper[col],
                       both ? BasisStatus::kBasic : side);
  }
  return Outcome::kChanged;
}

// The columns are back, fixed, with reduced costs as if the row were not there. The row's multiplier is the smallest
// that gives all of them the sign of their bound; the column that asks for it becomes basic.
static void undo(UndoReader& record, PostsolvePoint& point) {
  const Index row = record.index();
  const int direction = record.index();
  const RecordedEntries entries = record.entries();
  point.activity[row] = entries.dot(point.x);
  point.pi[row] = 0;
  point.row_status[row] = BasisStatus::kBasic;
  Index binding = -1;
  double multiplier = 0;
  for (std::size_t k = 0; k < entries.index.size(); ++k) {
    const double d = point.reduced_cost[entries.index[k]];
    if (std::abs(d) <= PresolveTolerances::kCostNoise) continue;
    const double wanted = d / entries.value[k];
    if (wanted * direction > multiplier * direction) {
      multiplier = wanted;
      binding = entries.index[k];
    }
  }
  if (binding < 0) return;
  for (std::size_t k = 0; k < entries.index.size(); ++k) {
    double& d = point.reduced_cost[entries.index[k]];
    d = static_cast<double>(d - Extended(entries.value[k]) * multiplier);
    point.col_status[entries.index[k]] = side_of_sign(-direction * entries.value[k]);
  }
  point.reduced_cost[binding] = 0;
  point.col_status[binding] = BasisStatus::kBasic;
  point.pi[row] = multiplier;
  point.row_status[row] = direction > 0 ? BasisStatus::kAtLower : BasisStatus::kAtUpper;
}

const Reduction kForcingRow{"forcing_row", Trigger::kRow, false, find, undo};

}  // namespace zorvex
