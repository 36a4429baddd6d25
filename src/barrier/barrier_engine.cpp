#include "barrier/barrier_engine.hpp"

#include <utility>

#include "barrier/barrier_log.hpp"
#include "barrier/convexity.hpp"
#include "barrier/quadratic_proofs.hpp"

namespace zorvex {

namespace {

EngineAnswer solve_by_simplex(const LpData& lp, const SimplexOptions& options, const SimplexLimits& limits,
                              const StopToken& stop, LogSink& log) {
  LpSolver solver(lp, options, log);
  solver.solve(limits, stop);
  return answer_of(solver);
}

// Whether a crossover was asked for that cannot be run. A proof that there is no solution leaves nothing to ask for.
bool lacks_point(SolveStatus status) {
  return status != SolveStatus::kOptimal && status != SolveStatus::kSuboptimal && status != SolveStatus::kInfeasible &&
         status != SolveStatus::kCutoff;
}

EngineAnswer interior_answer(BarrierResult&& result) {
  EngineAnswer answer;
  answer.status = result.status;
  answer.error = result.error;
  answer.point = std::move(result.point);
  answer.farkas = std::move(result.farkas);
  answer.farkas_violation = result.farkas_violation;
  answer.reported = answer.status != SolveStatus::kInfeasible;
  return answer;
}

}  // namespace

EngineAnswer BarrierEngine::solve(const LpData& lp, const SimplexLimits& limits, const StopToken& stop, LogSink& log) {
  BarrierOptions barrier = options_.barrier;
  barrier.cutoff = limits.objective;
  barrier.final_point = lp.is_quadratic() || options_.crossover.crossover == 0;
  BarrierResult result = solve_barrier(lp, barrier, stop, log);
  const int barrier_iterations = result.iterations;
  const bool has_point = result.status == SolveStatus::kOptimal || result.status == SolveStatus::kSuboptimal;
  const bool wants_basis = !lp.is_quadratic() && options_.crossover.crossover != 0;
  if (wants_basis && result.error == kOk && lacks_point(result.status)) report_no_point(log);
  EngineAnswer answer;
  if (result.error != kOk || (!has_point && result.status != SolveStatus::kNumeric)) {
    answer = interior_answer(std::move(result));
  } else if (lp.is_quadratic()) {
    answer = has_point ? interior_answer(std::move(result))
                       : prove_no_solution(lp, options_.crossover.simplex, stop, std::move(result.point));
  } else if (!has_point && !options_.simplex_rescues) {
    answer = interior_answer(std::move(result));
  } else if (!has_point) {
    answer = solve_by_simplex(lp, options_.crossover.simplex, limits, stop, log);
  } else if (options_.crossover.crossover == 0) {
    answer = interior_answer(std::move(result));
  } else {
    const InteriorPoint point{std::move(result.point.x), std::move(result.point.row_activity),
                              std::move(result.point.pi), std::move(result.point.reduced_cost)};
    answer = run_crossover(lp, point, options_.crossover, limits, stop, log);
  }
  answer.barrier_iterations = barrier_iterations;
  return answer;
}

bool BarrierEngine::admits_presolve(const LpData& lp, const StopToken& stop) { return is_convex(lp, stop); }

void BarrierEngine::report_without_solve(SolveStatus status, double objective, double seconds, LogSink& log) {
  print_presolved_away(log, status, objective, seconds);
}

}  // namespace zorvex
