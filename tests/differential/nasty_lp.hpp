// Small linear programs that hurt: those of support/random_lp.hpp, made worse.
#pragma once

#include "base/random_stream.hpp"
#include "linalg/lp_data.hpp"

namespace zorvex::differential {

// Adds, each to some of the models: rows and columns scaled so that coefficients span 1e-8 .. 1e8, empty rows and
// columns, nearly parallel rows, bounds and sides of size 1e6, crossed bounds, sides moved past each other.
LpData nasty_lp(RandomStream& random);

}  // namespace zorvex::differential
