// A convex objective for the relaxations of a quadratic mixed-integer problem.
#pragma once

#include "base/log_sink.hpp"
#include "base/stop_token.hpp"
#include "mip/mip_problem.hpp"

namespace zorvex {

struct Convexity {
  SolveStatus stopped = SolveStatus::kLoaded;  // another value: ended before it was known
  int error = 0;                               // kErrorQNotPsd
};

// Where Q is not positive semi-definite, the diagonal entries of binary columns are raised and their costs lowered by
// half as much: x^2 = x leaves every integral point its objective (P. Hammer, A. Rubin, RAIRO 4 (1970) 67-79). What
// other columns lack is added when it is no more than `psd_tol`, else there is no convex objective. Tells `log` as the
// barrier does.
Convexity make_problem_convex(MipProblem& problem, double psd_tol, const StopToken& stop, LogSink& log);

}  // namespace zorvex
