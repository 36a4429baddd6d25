#include "barrier/quadratic_proofs.hpp"

#include <algorithm>
#include <utility>

#include "linalg/symmetric_matrix.hpp"
#include "simplex/answer_check.hpp"

namespace zorvex {

namespace {

bool is_limit(SolveStatus status) { return status == SolveStatus::kTimeLimit || status == SolveStatus::kInterrupted; }

// Rows, and columns of Q, as constraints on a direction within the unit box.
LpData recession_model(const LpData& lp) {
  const auto recede = [](double lower, double upper, std::vector<double>& to_lower, std::vector<double>& to_upper,
                         double reach) {
    to_lower.push_back(lower > -kInf ? 0 : -reach);
    to_upper.push_back(upper < kInf ? 0 : reach);
  };
  LpData cone;
  cone.matrix = lp.matrix;
  cone.cost = lp.cost;
  for (Index col = 0; col < lp.num_cols(); ++col) {
    recede(lp.col_lower[col], lp.col_upper[col], cone.col_lower, cone.col_upper, 1);
  }
  for (Index row = 0; row < lp.num_rows(); ++row) {
    recede(lp.row_lower[row], lp.row_upper[row], cone.row_lower, cone.row_upper, kInf);
  }
  const SparseMatrix symmetric = symmetric_from_lower(lp.quadratic);
  SparseMatrix q;
  q.num_rows = lp.num_cols();
  for (Index row = 0; row < lp.num_cols(); ++row) {
    if (symmetric.col_length(row) == 0) continue;
    const Offset begin = symmetric.begin(row);
    q.append_col(symmetric.index.data() + begin, symmetric.value.data() + begin, symmetric.col_length(row));
    cone.row_lower.push_back(0);
    cone.row_upper.push_back(0);
  }
  cone.matrix.append_rows(q);
  return cone;
}

}  // namespace

EngineAnswer prove_no_solution(const LpData& lp, const SimplexOptions& options, const StopToken& stop, LpPoint last) {
  QuietLog quiet;
  EngineAnswer answer;
  answer.status = SolveStatus::kNumeric;
  answer.reported = true;
  LpData feasibility = lp;
  feasibility.quadratic = {};
  std::fill(feasibility.cost.begin(), feasibility.cost.end(), 0.0);
  LpSolver first(feasibility, options, quiet);
  const SolveStatus feasible = first.solve({}, stop);
  answer.iterations = first.iterations();
  if (feasible == SolveStatus::kInfeasible) {
    answer.status = feasible;
    answer.farkas = first.farkas();
    answer.farkas_violation = first.farkas_violation();
    answer.reported = false;
    return answer;
  }
  if (is_limit(feasible)) {
    answer.status = feasible;
    return answer;
  }
  answer.point = std::move(last);
  if (feasible != SolveStatus::kOptimal) return answer;
  LpSolver second(recession_model(lp), options, quiet);
  const SolveStatus bounded = second.solve({}, stop);
  answer.iterations += second.iterations();
  if (is_limit(bounded)) answer.status = bounded;
  if (bounded != SolveStatus::kOptimal || !is_improving_ray(lp, second.point().x)) return answer;
  answer.status = SolveStatus::kUnbounded;
  answer.ray = second.point().x;
  answer.point = first.point();
  answer.basis = {};
  answer.reported = false;
  return answer;
}

}  // namespace zorvex
