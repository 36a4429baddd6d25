// The test asked between nodes: may the search go on, and if not, how did it end?
#pragma once

#include "base/status.hpp"
#include "mip/mip_problem.hpp"

namespace zorvex {

// Internal reason that never reaches the user: switch to the improvement phase.
inline constexpr auto kImprovementPhase = static_cast<SolveStatus>(-9234);

struct TerminationInput {
  SolveStatus status = SolveStatus::kLoaded;
  bool interrupted = false;
  double incumbent = 1e100;       // 1e100 while the solution pool is empty
  double node_bound = 1e100;      // of the open nodes; 1e100 when there are none
  double pruning_cutoff = 1e100;  // of the solution pool
  double explored = 0;
  double iterations = 0;
  double call_seconds = 0;    // since the optimize call began
  double search_seconds = 0;  // accumulated over all calls and workers
  int solutions = 0;
};

// The order of the checks is part of the contract.
SolveStatus termination_test(const TerminationInput& input, const MipOptions& options);

// The separate time trigger of the improvement phase.
SolveStatus improvement_time_test(const TerminationInput& input, const MipOptions& options);

}  // namespace zorvex
