// Models made from another one as its last update left it. Each has its own data, environment record and parameters,
// so that the two may be freed in any order; none has results, queued edits or a callback.
#pragma once

#include "model/model.hpp"

namespace zorvex {

// Each returns 0 or an error code with its text recorded on `model`; *derived is null on failure. Names, parameters,
// Start, BranchPriority and a warm-start basis come along.

int copy_model(ZLPmodel& model, ZLPmodel** derived);

// The continuous model that is left when integer columns stay at their values in the best solution: semicontinuous ones
// keep the branch they are in, members of SOS sets that are zero stay zero, and the sets go. 10005 without a solution.
int fixed_model(ZLPmodel& model, ZLPmodel** derived);

// Without integrality and SOS sets: binaries within [0, 1], semicontinuous columns over the interval that holds both
// branches.
int relaxed_model(ZLPmodel& model, ZLPmodel** derived);

}  // namespace zorvex
