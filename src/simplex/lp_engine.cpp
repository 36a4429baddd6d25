#include "simplex/lp_engine.hpp"

namespace zorvex {

EngineAnswer answer_of(const LpSolver& solver) {
  EngineAnswer answer;
  answer.nearly_optimal = solver.nearly_optimal();
  answer.status = answer.nearly_optimal ? SolveStatus::kSuboptimal : solver.status();
  answer.point = solver.point();
  answer.basis = solver.basis();
  answer.iterations = solver.iterations();
  answer.farkas = solver.farkas();
  answer.farkas_violation = solver.farkas_violation();
  answer.ray = solver.ray();
  answer.extended_precision = solver.extended_precision();
  return answer;
}

}  // namespace zorvex
