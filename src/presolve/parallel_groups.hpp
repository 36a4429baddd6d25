// Finds rows, or columns, that are multiples of one another.
//   Cost     O(nonzeros + k log k) for k rows or columns; comparisons only inside groups of equal hash.
#pragma once

#include <functional>

#include "base/types.hpp"
#include "presolve/presolve_model.hpp"

namespace zorvex {

enum class Axis { kRows, kColumns };

// Calls visit(first, second, factor) for vectors with second = factor * first; vectors of fewer than `min_length`
// entries are left out. `visit` returns which of the two goes on as the group's representative, or -1 to stop the
// search. It may remove rows or columns and change bounds, costs and sides, but no entry of those that stay.
void for_each_parallel(const PresolveModel& model, Axis axis, Index min_length,
                       const std::function<Index(Index first, Index second, double factor)>& visit);

}  // namespace zorvex
