// Side files with one "name value" per line: solutions (.sol), MIP starts (.mst), branching priorities (.ord).
//   Written  comment lines "# ..." first, then name, blank, value in the shared number format.
//   Read     '#' in the first place and blank lines are skipped. A name is everything before the last word, trimmed, so
//            names may hold blanks. Names that the model does not have are counted and reported once.
#pragma once

#include <string>

#include "model/model.hpp"

namespace zorvex {

// Status, objective value and all variables of the current solution. kErrorDataNotAvailable without one.
int write_solution(ZLPmodel& model, const std::string& name);

// The integer variables of the current solution, or of the start that was set. kErrorDataNotAvailable without either.
int write_mip_start(ZLPmodel& model, const std::string& name);

// Sets the start values of the variables named, and leaves the others as they were. On failure nothing has changed.
int read_mip_start(ZLPmodel& model, const std::string& name);

// Sets the branching priorities of the variables named (whole numbers). On failure nothing has changed.
int read_priorities(ZLPmodel& model, const std::string& name);

}  // namespace zorvex
