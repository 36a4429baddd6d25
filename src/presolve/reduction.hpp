// What a reduction is to the engine. Adding one: a reduce_<name>.cpp that defines a `const Reduction`, and its line in
// registry.inc.
#pragma once

#include <span>

#include "base/types.hpp"
#include "presolve/postsolve_point.hpp"
#include "presolve/presolve_model.hpp"
#include "presolve/undo_log.hpp"

namespace zorvex {

class Changes;

enum class Outcome { kNone, kChanged, kInfeasible, kUnbounded };

// What `find` is called on: every dirty row, every dirty column, or once a round the whole model (target -1).
enum class Trigger { kRow, kColumn, kRound };

struct Reduction {
  const char* name;
  Trigger trigger;
  bool dual;  // keeps only some optimal solutions or reasons with costs; off without dual reductions
  // Looks first and then either leaves everything alone or goes all the way; changes take effect at once.
  Outcome (*find)(const PresolveModel& model, Index target, Changes& changes);
  // Restores the rows and columns that one record removed: x, activity, pi, reduced cost, status. Null: writes none.
  void (*undo)(UndoReader& record, PostsolvePoint& point);
  // Takes the costs of many columns for their gradients: not for quadratic objectives. (A reduction of one column is
  // not tried on columns of Q, except to fix them; one of rows has to know what it may do to them.)
  bool linear_only = false;
};

// Owners of the records that Changes::drop_row, Changes::fix_column and Changes::substitute write.
extern const Reduction kRedundantRow;
extern const Reduction kFixedColumn;
extern const Reduction kFreeColumn;

// All reductions in the order in which they are tried.
std::span<const Reduction* const> reduction_registry();

}  // namespace zorvex
