// Judges claims about a linear program in long double, and how far two claims may differ before one of them is wrong.
#pragma once

#include <string>

#include "linalg/lp_data.hpp"
#include "simplex/lp_driver.hpp"

namespace zorvex::differential {

inline constexpr double kTolerance = 1e-6;  // of the solves: primal and dual, absolute, unscaled

// Nothing is claimed: numerical trouble, or a point within weaker tolerances.
bool is_undecided(SolveStatus status);

// Empty when the result proves what it claims (optimality, infeasibility, unboundedness), else what is wrong.
std::string faults_of(const LpData& lp, const LpDriverResult& result);

// Empty when both proven claims can be true of a model whose numbers are within the tolerances of this one, else the
// contradiction.
std::string contradiction(const LpData& lp, const LpDriverResult& a, const LpDriverResult& b);

}  // namespace zorvex::differential
