// Which engines solve continuous models and relaxations, by the parameters Method, NodeMethod and Sifting.
#pragma once

#include <memory>

#include "env/environment.hpp"
#include "simplex/lp_driver.hpp"

namespace zorvex {

// Null: the simplex that `options` names. A start basis (empty: none) keeps sifting away. `start_time` is the
// now_seconds() at which the call began.
std::unique_ptr<LpEngine> choose_engine(const ZLPenv& env, const LpData& lp, const LpDriverOptions& options,
                                        const Basis& start, double start_time);

// The engines of a linear tree search that find a basis by barrier and crossover or by a race where Method (root) or
// NodeMethod (nodes) ask for it. Null: the simplex.
std::shared_ptr<LpEngine> choose_root_engine(const ZLPenv& env, const LpDriverOptions& options, double start_time);
std::shared_ptr<LpEngine> choose_node_engine(const ZLPenv& env, const LpDriverOptions& options, double start_time);

}  // namespace zorvex
