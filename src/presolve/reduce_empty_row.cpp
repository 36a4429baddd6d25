// reduce_empty_row.cpp: a row without entries holds or not, whatever the columns do.
#include "presolve/changes.hpp"
#include "presolve/reduction.hpp"

namespace zorvex {
extern const Reduction kEmptyRow;

static Outcome find(const PresolveModel& model, Index row, Changes& changes) {
  if (model.matrix.row_length(row) > 0) return Outcome::kNone;
  const double tolerance = model.options.primal_feasibility_tol;
  if (model.row_lower[row] > tolerance || model.row_upper[row] < -tolerance) {
    changes.prove(row, model.row_lower[row] > tolerance ? 1 : -1);
    return Outcome::kInfeasible;
  }
  changes.record(kEmptyRow).index(row);
  changes.remove_row(row);
  return Outcome::kChanged;
}

static void undo(UndoReader& record, PostsolvePoint& point) {
  const Index row = record.index();
  point.activity[row] = 0;
  point.pi[row] = 0;
  point.row_status[row] = BasisStatus::kBasic;
}

const Reduction kEmptyRow{"empty_row", Trigger::kRow, false, find, undo};

}  // namespace zorvex
