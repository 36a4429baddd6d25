// From an interior solution to an optimal basis: an initial basis, pushes of the variables that are off their bounds
// and of the duals that are off zero, then simplex.
//   Space   everything is in the user space of `lp`, unscaled, minimisation signs as in LpPoint.
//   Errors  the answer has passed the simplex solver's check, whatever the point was: a poor one only costs pivots.
//   Source  N. Megiddo, ORSA J. Comput. 3 (1991) 63-65; R. Bixby, M. Saltzman, Oper. Res. Lett. 15 (1994) 137-143;
//           E. Andersen, Y. Ye, Manage. Sci. 42 (1996) 1719-1731.
#pragma once

#include <vector>

#include "base/log_sink.hpp"
#include "base/status.hpp"
#include "base/stop_token.hpp"
#include "linalg/basis.hpp"
#include "linalg/lp_data.hpp"
#include "simplex/lp_engine.hpp"
#include "simplex/lp_solver.hpp"

namespace zorvex {

struct InteriorPoint {
  std::vector<double> x, row_activity;  // num_cols, num_rows
  std::vector<double> pi;               // num_rows
  std::vector<double> reduced_cost;     // num_cols
};

struct CrossoverOptions {
  // Parameter Crossover: 1 and 2 push duals first, 3 and 4 primal variables first; the primal simplex ends it for 1 and
  // 3, the dual for 2 and 4. -1 pushes duals first and ends with the simplex that has less left to do. The caller does
  // not ask for a crossover when it is 0.
  int crossover = -1;
  // Parameter CrossoverBasis: 1 demands larger pivots of the initial basis than 0, so that columns far from their
  // bounds are preferred more strictly to sparse ones.
  int crossover_basis = 0;
  SimplexOptions simplex;
  bool root_log = false;        // print the log as that of a root relaxation
  double iteration_offset = 0;  // simplex iterations of earlier phases, which the log goes on from
};

// Status as of LpSolver::solve; kLoaded when there was no interior point. The point is the vertex after kOptimal; the
// interior point when a limit or an interruption ended the pushes, and then there is no basis. Iterations are pivots of
// the pushes and of the simplex.
struct CrossoverResult : EngineAnswer {
  double pushes = 0;  // variables pushed, primal and dual
  double push_pivots = 0;
  Index primal_infeasibilities = 0, dual_infeasibilities = 0;  // variables, that the pushes left to the simplex
};

// Logs that there is nothing to start a crossover from.
void report_no_point(LogSink& log);

// limits.iterations counts the pivots of this call. The stop token is polled at every push.
CrossoverResult run_crossover(const LpData& lp, const InteriorPoint& point, const CrossoverOptions& options,
                              const SimplexLimits& limits, const StopToken& stop, LogSink& log);

}  // namespace zorvex
