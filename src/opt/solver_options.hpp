// Solver options read once from a model's parameters at the start of a solve. Objective values are turned into
// minimisation form, infinite limits into IEEE infinities where the solver layers want those.
#pragma once

#include "barrier/barrier_engine.hpp"
#include "env/environment.hpp"
#include "mip/mip_problem.hpp"
#include "simplex/lp_driver.hpp"

namespace zorvex {

// `sense` is the model's, +1 or -1; `start_time` the now_seconds() at which the call began.
LpDriverOptions make_lp_options(const ZLPenv& env, int sense, double start_time);
BarrierEngineOptions make_barrier_options(const ZLPenv& env, int sense, double start_time);
MipOptions make_mip_options(const ZLPenv& env, int sense, double start_time);

// Deadline, interruption and listener (null: none) of a solve that began at `start_time`.
StopToken make_stop_token(const ZLPenv& env, double start_time, SolveHooks* hooks);

}  // namespace zorvex
