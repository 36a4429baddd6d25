// reduce_empty_column.cpp: a column in no row goes to the bound that its cost asks for.
#include <cmath>

#include "base/tolerances.hpp"
#include "presolve/changes.hpp"
#include "presolve/reduction.hpp"

namespace zorvex {

extern const Reduction kEmptyColumn;

static Outcome find(const PresolveModel& model, Index col, Changes& changes) {
  if (model.matrix.col_length(col) > 0) return Outcome::kNone;
  const double lower = model.col_lower[col];
  const double upper = model.col_upper[col];
  const double cost = model.cost[col];
  const double wanted = cost > 0 ? lower : upper;
  if (cost != 0 && std::isfinite(wanted)) {
    const bool both = lower == upper;
    changes.fix_column(col, wanted, both ? BasisStatus::kBasic : side_of_sign(cost));
  } else if (std::abs(cost) > PresolveTolerances::kCostNoise) {
    return model.options.dual_reductions ? Outcome::kUnbounded : Outcome::kNone;
  } else if (std::isfinite(lower)) {
    changes.fix_column(col, lower, BasisStatus::kAtLower);
  } else if (std::isfinite(upper)) {
    changes.fix_column(col, upper, BasisStatus::kAtUpper);
  } else {
    changes.fix_column(col, 0, BasisStatus::kNonbasicFree);
  }
  return Outcome::kChanged;
}

const Reduction kEmptyColumn{"empty_column", Trigger::kColumn, false, find, nullptr};

}  // namespace zorvex
