// Small random mixed-integer problems of all kinds, and their answers by enumeration.
#pragma once

#include "base/random_stream.hpp"
#include "mip/mip_problem.hpp"

namespace zorvex::testing {

struct RandomMipShape {
  Index max_rows = 6;
  Index max_cols = 7;
  double integer_share = 0.7;
  double semi_share = 0;       // of the columns
  double sos_share = 0;        // of the problems have sets
  double unbounded_share = 0;  // of the columns lack an upper bound (continuous only)
  bool quadratic = false;      // a convex Q of any rank ...
  double concave_share = 0;    // ... less a multiple of x^2 for such a share of the binaries
};

MipProblem random_mip(RandomStream& random, const RandomMipShape& shape);

// Rows given densely; all columns integer in [0, col_upper], cost 1.
MipProblem dense_problem(const std::vector<std::vector<double>>& rows, std::vector<double> lower,
                         std::vector<double> upper, double col_upper);

struct EnumeratedMip {
  SolveStatus status = SolveStatus::kInfeasible;  // kOptimal, kInfeasible or kUnbounded
  double objective = 1e100;
  bool doubtful = false;  // some quadratic rest could not be solved
};

// Every assignment of the integer columns (their bounds must be finite), gap branches and SOS windows, the continuous
// rest by the dense oracle, with a quadratic objective by the barrier.
EnumeratedMip enumerate_mip(const MipProblem& problem);

}  // namespace zorvex::testing
