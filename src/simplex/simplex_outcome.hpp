// How a run of one simplex algorithm ended.
#pragma once

namespace zorvex {

enum class SimplexOutcome {
  kOptimal,         // primal and dual feasible for the true bounds and costs
  kInfeasible,      // core.proof holds Farkas multipliers over the rows (scaled)
  kUnbounded,       // core.proof holds a ray over all variables (scaled); the point is primal feasible
  kOtherAlgorithm,  // the other algorithm should go on from this basis
  kCutoff,          // the dual objective passed the limit
  kIterationLimit,
  kTimeLimit,
  kInterrupted,
  kNumeric,   // no progress at this precision
  kTooLarge,  // would take more memory than a simplex method should, at any precision
};

}  // namespace zorvex
