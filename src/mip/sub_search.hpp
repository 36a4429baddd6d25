// A smaller problem cut out of the one being solved by fixing columns, searched without a log and within its own
// limits.
#pragma once

#include <vector>

#include "mip/search_state.hpp"

namespace zorvex {

struct SubSearch {
  std::vector<double> lower, upper;  // num_cols, within the semantics of the problem's own bounds
  double node_limit = 500;
  double iteration_limit = 1e100;
  int solution_limit = 2000000000;
  double cutoff = mip_tol::kNone;
  bool feasibility_only = false;  // with a zero objective
};

struct SubSearchResult {
  SolveStatus status = SolveStatus::kLoaded;
  std::vector<double> x;  // over all columns of the problem; empty if none was found
};

// Counts the iterations spent in state.sub_iterations and heuristic_iterations.
SubSearchResult run_sub_search(SearchState& state, const SubSearch& search);

}  // namespace zorvex
