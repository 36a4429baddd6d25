// The optimize driver: one solve of one model from the call to the published result.
#pragma once

#include "zorvex.h"

namespace zorvex {

// Expects a model that passed its check. Applies pending changes, reports the model, picks the solver, publishes the
// result, writes the result file. Returns the error code with its text recorded; never throws.
//
// A tree search that a limit or an interruption stopped stays with the model (solver_state) and goes on at the next
// call, as long as nothing about the model has changed in between.
int optimize_model(ZLPmodel& model) noexcept;

}  // namespace zorvex
