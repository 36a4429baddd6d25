// Which engine solves a continuous model, by the parameters Method and Sifting.
#pragma once

#include <memory>

#include "env/environment.hpp"
#include "simplex/lp_driver.hpp"

namespace zorvex {

// Null: the simplex that `options` names. A start basis (empty: none) keeps sifting away. `start_time` is the
// now_seconds() at which the call began.
std::unique_ptr<LpEngine> choose_engine(const ZLPenv& env, const LpData& lp, const LpDriverOptions& options,
                                        const Basis& start, double start_time);

}  // namespace zorvex
