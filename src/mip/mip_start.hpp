// The user's start vector: rounded, completed into a feasible solution, installed as the first incumbent.
#pragma once

#include <vector>

#include "mip/search_state.hpp"

namespace zorvex {

// Tries problem.start if there is one and logs the outcome.
void load_mip_start(SearchState& state);

// Treats the points that were offered from outside since the last call in the same way.
void accept_offered_points(SearchState& state);

// The start with integers rounded and semi-continuous values moved out of their gap; undefined values stay undefined.
std::vector<double> round_start(const MipProblem& problem, const std::vector<double>& start);

}  // namespace zorvex
