#include "mip/termination.hpp"

#include <algorithm>
#include <cmath>

#include "mip/mip_tolerances.hpp"

namespace zorvex {

SolveStatus termination_test(const TerminationInput& input, const MipOptions& options) {
  if (input.status != SolveStatus::kLoaded) return input.status;
  if (input.interrupted) return SolveStatus::kInterrupted;
  const double z = input.incumbent;
  const double b = std::min(input.node_bound, z);
  if (b >= mip_tol::kNone) return SolveStatus::kInfeasible;
  if (b > input.pruning_cutoff) return SolveStatus::kOptimal;
  const double relative_gap = std::abs(z - b) / std::max(std::abs(z), mip_tol::kGapIncumbent);
  if (options.mip_gap > 0 && z < mip_tol::kNone && options.mip_gap > relative_gap) return SolveStatus::kOptimal;
  if (options.mip_gap_abs > 0 && options.mip_gap_abs > z - b) return SolveStatus::kOptimal;
  if (input.explored >= options.node_limit) return SolveStatus::kNodeLimit;
  if (input.iterations >= options.iteration_limit) return SolveStatus::kIterationLimit;
  if (input.call_seconds > options.time_limit) return SolveStatus::kTimeLimit;
  if (input.search_seconds > options.hidden_time_limit) return SolveStatus::kTimeLimit;
  if (input.solutions >= options.solution_limit) return SolveStatus::kSolutionLimit;
  if (options.improve_start_gap > 0 && std::abs(z) < mip_tol::kGapImproveIncumbent &&
      options.improve_start_gap > relative_gap) {
    return kImprovementPhase;
  }
  return SolveStatus::kLoaded;
}

SolveStatus improvement_time_test(const TerminationInput& input, const MipOptions& options) {
  if (input.status != SolveStatus::kLoaded) return input.status;
  if (std::abs(input.incumbent) < mip_tol::kTimeImproveIncumbent && input.call_seconds > options.improve_start_time) {
    return kImprovementPhase;
  }
  return SolveStatus::kLoaded;
}

}  // namespace zorvex
