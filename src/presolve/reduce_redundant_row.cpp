// reduce_redundant_row.cpp: what the column bounds say about a row's activity. A row whose sides can never bind goes, a
// side that never binds becomes infinite, a row that can never hold proves infeasibility. Also the undo of every other
// row that goes through Changes::drop_row.
//   Source   E. Andersen, K. Andersen, Math. Program. 71 (1995) 221-245, section 3.2.
#include "base/tolerances.hpp"
#include "presolve/changes.hpp"
#include "presolve/reduction.hpp"

namespace zorvex {

// Beyond what any point within the feasibility tolerance of all bounds could reach.
static bool is_infeasible(const PresolveModel& model, const Activity& activity, double magnitude, Index row) {
  const double margin = model.options.primal_feasibility_tol * (1 + magnitude);
  const double lower = model.row_lower[row];
  const double upper = model.row_upper[row];
  return (upper < kInf && activity.min() > upper + conclusion_slack(upper) + margin) ||
         (lower > -kInf && activity.max() < lower - conclusion_slack(lower) - margin);
}

static Outcome find(const PresolveModel& model, Index row, Changes& changes) {
  const double lower = model.row_lower[row];
  const double upper = model.row_upper[row];
  const Activity& running = model.activity[row];
  const double low_side = lower - conclusion_slack(lower);
  const double high_side = upper + conclusion_slack(upper);
  const bool candidate = (lower > -kInf && running.min() >= low_side) || (upper < kInf && running.max() <= high_side) ||
                         (lower == -kInf && upper == kInf) || running.min() > upper || running.max() < lower;
  if (!candidate || model.matrix.row_length(row) == 0) return Outcome::kNone;

  double magnitude = 0;
  const Activity activity = model.fresh_activity(row, &magnitude);
  changes.work().add(model.matrix.row_length(row));
  if (is_infeasible(model, activity, magnitude, row)) {
    changes.prove(row, activity.max() < lower ? 1 : -1);
    return Outcome::kInfeasible;
  }
  const bool lower_holds = lower == -kInf || activity.min() >= low_side;
  const bool upper_holds = upper == kInf || activity.max() <= high_side;
  if (lower_holds && upper_holds) {
    changes.drop_row(row);
    return Outcome::kChanged;
  }
  // An equation with one idle side is a forcing row in the making: dropping the side would hide it.
  if (lower == upper || !((lower_holds && lower > -kInf) || (upper_holds && upper < kInf))) return Outcome::kNone;
  changes.set_row_sides(row, lower_holds ? -kInf : lower, upper_holds ? kInf : upper);
  return Outcome::kChanged;
}

static void undo(UndoReader& record, PostsolvePoint& point) {
  const Index row = record.index();
  point.activity[row] = record.entries().dot(point.x);
  point.pi[row] = 0;
  point.row_status[row] = BasisStatus::kBasic;
}

const Reduction kRedundantRow{"redundant_row", Trigger::kRow, false, find, undo};

}  // namespace zorvex
