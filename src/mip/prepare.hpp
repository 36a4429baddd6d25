// Root preparation of a search model, by reductions that need no way back: all columns stay, integer bounds shrink,
// coefficients and right-hand sides of rows are tightened, rows that cannot be violated disappear, binaries are probed.
//   Source   M. Savelsbergh, "Preprocessing and probing techniques for mixed integer programming problems",
//            ORSA J. Computing 6 (1994) 445-454, sections 1.2 and 1.3.
#pragma once

#include "base/stop_token.hpp"
#include "mip/search_model.hpp"

namespace zorvex {

struct PrepareOptions {
  int probing_rounds = 3;  // at most; 0 for none
  bool cancel_with_equations = true;
  bool keep_all_solutions = false;  // see MipOptions
};

PrepareOptions prepare_options(const MipOptions& options);

struct Preparation {
  bool infeasible = false;  // no point satisfies rows, bounds and integrality
  Index fixed = 0;          // columns fixed that were not fixed before
};

Preparation prepare(SearchModel& model, const PrepareOptions& options, const StopToken& stop);

}  // namespace zorvex
