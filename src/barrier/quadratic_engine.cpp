#include "barrier/quadratic_engine.hpp"

#include "barrier/convexity.hpp"

namespace zorvex {

EngineAnswer QuadraticSimplexEngine::solve(const LpData& lp, const SimplexLimits& limits, const StopToken& stop,
                                           LogSink& log) {
  EngineAnswer answer;
  ConvexModel convex;
  make_convex(lp, barrier_.barrier.psd_tol, stop, log, convex);
  if (convex.lp == nullptr) {
    answer.status = convex.stopped;
    answer.error = convex.error;
    return answer;
  }
  LpSolver solver(*convex.lp, simplex_, log);
  if (!start_.empty()) solver.set_basis(start_);
  solver.solve(limits, stop);
  answer = answer_of(solver);
  if (answer.status != SolveStatus::kNumeric) return answer;
  log.write("Warning: quadratic simplex failed, switch to barrier\n");
  const double iterations = answer.iterations;
  answer = BarrierEngine(barrier_).solve(*convex.lp, limits, stop, log);
  answer.iterations += iterations;
  return answer;
}

bool QuadraticSimplexEngine::admits_presolve(const LpData& lp, const StopToken& stop) { return is_convex(lp, stop); }

}  // namespace zorvex
