// Requests to stop a running solve: from another thread, from a callback, or from the console by SIGINT.
#pragma once

#include "zorvex.h"

namespace zorvex {

// Sets the terminate request of a model's record. Does nothing on a null or dead record; when the master is gone, says
// so (if output is on). May be called from any thread.
void request_termination(ZLPenv* env);

// From the next SIGINT on, the solve of the model with this record is asked to stop. There is one such model per
// process: a later call replaces it. The handler is async-signal-safe and restores the default action, so that a second
// interrupt ends the process.
void install_interrupt_handler(ZLPenv* env);

// Called before a record goes away.
void forget_interrupt_target(const ZLPenv* env) noexcept;

}  // namespace zorvex
