// Points of the kind an interior method ends with, made from optimal vertices: averages over the optimal faces of the
// primal and of the dual.
#pragma once

#include "barrier/crossover.hpp"
#include "base/random_stream.hpp"

namespace zorvex::oracle {

// Average of `count` optimal vertices for random objectives over the optimal face, with duals averaged over slightly
// different right-hand sides as far as these stay optimal. Complementary to working accuracy. Empty when `lp` has no
// optimum.
InteriorPoint average_over_faces(const LpData& lp, RandomStream& random, int count);

// Relative noise of the given size on all four vectors.
void add_noise(InteriorPoint& point, RandomStream& random, double size);

// Transportation problem with small integer costs and many ties: sources times sinks columns.
LpData transportation(Index sources, Index sinks, RandomStream& random);

}  // namespace zorvex::oracle
