#include "mip/convex_problem.hpp"

#include "barrier/convexity.hpp"

namespace zorvex {

namespace {

bool is_binary(const MipProblem& problem, Index col) {
  const VarType type = problem.type[col];
  if (type == VarType::kBinary) return true;
  return type == VarType::kInteger && problem.lp.col_lower[col] >= 0 && problem.lp.col_upper[col] <= 1;
}

bool only_binaries_lack(const MipProblem& problem, const ConvexityCheck& check) {
  for (Index col = 0; col < problem.lp.num_cols(); ++col) {
    if (check.adjustment[col] > 0 && !is_binary(problem, col)) return false;
  }
  return true;
}

}  // namespace

Convexity make_problem_convex(MipProblem& problem, double psd_tol, const StopToken& stop, LogSink& log) {
  LpData& lp = problem.lp;
  if (!lp.is_quadratic()) return {};
  const ConvexityCheck check = check_convexity(lp.quadratic, stop);
  if (check.stopped != SolveStatus::kLoaded) return {check.stopped, kOk};
  if (check.largest == 0) return {};
  if (only_binaries_lack(problem, check)) {
    add_to_diagonal(lp.quadratic, check.adjustment);
    for (Index col = 0; col < lp.num_cols(); ++col) lp.cost[col] -= check.adjustment[col] / 2;
    return {};
  }
  ConvexModel convex;
  make_convex(lp, psd_tol, stop, log, convex);
  if (convex.lp == &convex.mended) lp = std::move(convex.mended);
  return {convex.stopped, convex.error};
}

}  // namespace zorvex
