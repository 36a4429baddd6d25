// Rows made shorter by adding multiples of equations. A row that holds most members of a partition "sum of x = 1" with
// one coefficient becomes a row over the few others; its activity bounds, which know nothing of the partition, then say
// far more: propagation, knapsack cuts and coefficient tightening all live on them.
//   Source   T. Achterberg, R. Bixby, Z. Gu, E. Rothberg, D. Weninger, "Presolve reductions in mixed integer
//            programming", INFORMS J. Computing 32 (2020) 473-506, section 5.1.
#pragma once

#include <cstdint>

#include "base/stop_token.hpp"
#include "mip/search_model.hpp"

namespace zorvex {

// Changes rows and sides of `model`, rows and lp.matrix alike; the feasible points stay. `effort` bounds the entries
// looked at. Returns the number of entries that went.
std::int64_t cancel_with_equations(SearchModel& model, std::int64_t effort, const StopToken& stop);

}  // namespace zorvex
