// The user's start vector: rounded, completed into a feasible solution, installed as the first incumbent.
#pragma once

#include <vector>

#include "mip/search_state.hpp"

namespace zorvex {

// Tries problem.start if there is one and logs the outcome.
void load_mip_start(SearchState& state);

// The start with integers rounded and semi-continuous values moved out of their gap; undefined values stay undefined.
// `changed` tells whether rounding moved any defined value.
std::vector<double> round_start(const MipProblem& problem, bool& changed);

}  // namespace zorvex
