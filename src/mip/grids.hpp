// Which columns, and with them the objective, take only multiples of some step in at least one optimum.
//   demanded  integer columns: step 1.
//   by a row  a column in an equality whose other columns have steps: the row makes it a multiple.
//   by choice a column whose rows hold only columns with steps besides it: once those are fixed, it is left an interval
//             whose ends are multiples, so that some optimum has it at one.
#pragma once

#include "mip/search_model.hpp"

namespace zorvex {

// Sets model.grid and model.objective_grid from the rows and bounds of the model. Columns with equal bounds count as
// constants. `only_demanded` leaves out what follows by choice, for searches that need every feasible point.
void find_grids(SearchModel& model, bool only_demanded = false);

}  // namespace zorvex
