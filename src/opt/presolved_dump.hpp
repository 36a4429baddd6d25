// The presolved model as a file, for studying presolve.
#pragma once

#include "linalg/lp_data.hpp"
#include "zorvex.h"

namespace zorvex {

inline constexpr const char* kPresolvedDump = "junk.mps";

// Writes `lp`, turned back into the sense of the user's model, under generic names. Returns the writer's code. Throws
// std::bad_alloc.
int dump_presolved(ZLPenv& env, const LpData& lp, int sense);

}  // namespace zorvex
