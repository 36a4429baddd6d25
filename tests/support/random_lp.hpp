// Small random linear programs with the features that hurt: degeneracy, ties, equality and range rows, free and fixed
// columns, parallel rows and columns, singletons, doubletons, redundancy, infeasibility and unboundedness.
#pragma once

#include "base/random_stream.hpp"
#include "linalg/lp_data.hpp"

namespace zorvex::oracle {

struct RandomLpShape {
  Index max_rows = 8;
  Index max_cols = 10;
  double density = 0.4;
  double feasible_share = 0.8;  // of the models are built around a point
};

// Coefficients are small integers (many ties) or, in a third of the models, random reals.
LpData random_lp(RandomStream& random, const RandomLpShape& shape);

}  // namespace zorvex::oracle
