#include "opt/publish.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/quality.hpp"
#include "env/environment.hpp"
#include "opt/final_basis.hpp"

namespace zorvex {

namespace {

// Entries of a sum of rows below this share of its terms are what rounding leaves of zero.
constexpr double kProofNoise = 1e-9;

// rhs - a'x of every row in the user's signs; range rows count from their upper side.
std::vector<double> row_slacks(const ModelData& data, const std::vector<double>& x) {
  std::vector<double> slack(data.rhs.size());
  for (Index row = 0; row < data.num_rows(); ++row) slack[row] = data.user_rhs(row);
  for (Index col = 0; col < data.num_cols(); ++col) {
    if (x[col] == 0) continue;
    for (Offset k = data.matrix.begin(col); k < data.matrix.end(col); ++k) {
      const Index row = data.matrix.index[k];
      slack[row] -= data.row_sign(row) * data.matrix.value[k] * x[col];
    }
  }
  return slack;
}

bool all_finite(const std::vector<double>& values) {
  return std::all_of(values.begin(), values.end(), [](double value) { return std::isfinite(value); });
}

std::vector<double> times(double factor, std::vector<double> values) {
  // Adding zero turns the -0 of a negated zero into 0.
  for (double& value : values) value = factor * value + 0.0;
  return values;
}

bool is_feasible(const LpData& lp, const std::vector<double>& x, double tolerance) {
  const SparseMatrix& matrix = lp.matrix;
  const ProblemView view{lp.num_rows(),       lp.num_cols(),      matrix.start.data(), matrix.index.data(),
                         matrix.value.data(), lp.cost.data(),     lp.col_lower.data(), lp.col_upper.data(),
                         lp.row_lower.data(), lp.row_upper.data()};
  const PrimalQuality quality = measure_primal(view, x, {});
  return quality.bound.max <= tolerance && quality.row.max <= tolerance;
}

// Objective values of magnitude 1e100 mean that there is none.
void set_objective(SolutionStore& solution, double value) {
  solution.has_objective = std::abs(value) < kParameterInfinity;
  if (solution.has_objective) solution.obj_val = value;
}

void set_bound(SolutionStore& solution, double value) {
  solution.has_bound = std::abs(value) < kParameterInfinity;
  if (solution.has_bound) solution.obj_bound = value;
}

void publish_point(ZLPmodel& model, LpDriverResult& result) {
  SolutionStore& solution = model.solution;
  const double sense = model.data.sense;
  LpPoint& point = result.point;
  if (!all_finite(point.x) || !std::isfinite(result.objective)) return;
  solution.x = std::move(point.x);
  solution.slack = row_slacks(model.data, solution.x);
  set_objective(solution, sense * result.objective);
  if (result.status == SolveStatus::kOptimal) set_bound(solution, sense * result.objective);
  const bool has_duals = point.pi.size() == model.data.rhs.size() && point.reduced_cost.size() == solution.x.size();
  if (!has_duals || !all_finite(point.pi) || !all_finite(point.reduced_cost)) return;
  solution.pi = times(sense, std::move(point.pi));
  solution.rc = times(sense, std::move(point.reduced_cost));
}

void publish_basis(ZLPmodel& model, const Basis& basis) {
  WarmStart& warm = model.warm;
  warm.drop_basis();
  for (const BasisStatus status : basis.col) warm.vbasis.push_back(static_cast<int>(status));
  for (const BasisStatus status : basis.row) warm.cbasis.push_back(static_cast<int>(status));
  if (basis.head.empty() || basis.norm.size() != basis.head.size()) return;
  const Index num_cols = model.data.num_cols();
  warm.vnorm.assign(static_cast<std::size_t>(num_cols), 1.0);
  warm.cnorm.assign(static_cast<std::size_t>(model.data.num_rows()), 1.0);
  for (std::size_t k = 0; k < basis.head.size(); ++k) {
    const Index variable = basis.head[k];
    (variable < num_cols ? warm.vnorm[variable] : warm.cnorm[variable - num_cols]) = basis.norm[k];
  }
}

Index crossed_column(const LpData& lp) {
  for (Index col = 0; col < lp.num_cols(); ++col) {
    if (lp.col_lower[col] > lp.col_upper[col]) return col;
  }
  return -1;
}

// Where the entry of largest magnitude stands, -1 when all are zero.
Index largest_entry(const std::vector<double>& values) {
  const auto smaller = [](double a, double b) { return std::abs(a) < std::abs(b); };
  const auto largest = std::max_element(values.begin(), values.end(), smaller);
  return largest == values.end() || *largest == 0 ? -1 : static_cast<Index>(largest - values.begin());
}

// Coefficients of the sum of the rows, each times its multiplier.
std::vector<double> combined_row(const LpData& lp, const std::vector<double>& y) {
  std::vector<double> row(lp.cost.size());
  for (Index col = 0; col < lp.num_cols(); ++col) {
    Extended sum = 0;
    Extended magnitude = 0;
    for (Offset k = lp.matrix.begin(col); k < lp.matrix.end(col); ++k) {
      const Extended term = Extended(lp.matrix.value[k]) * y[lp.matrix.index[k]];
      sum += term;
      magnitude += std::abs(term);
    }
    row[col] = std::abs(sum) <= kProofNoise * magnitude ? 0 : static_cast<double>(sum);
  }
  return row;
}

void publish_proof(ZLPmodel& model, const LpData& lp, LpDriverResult& result, bool in_full) {
  SolutionStore& solution = model.solution;
  if (result.status == SolveStatus::kInfeasible) {
    solution.infeas_var = crossed_column(lp);
    if (result.farkas.size() != lp.row_lower.size()) return;
    if (solution.infeas_var < 0) solution.infeas_var = largest_entry(combined_row(lp, result.farkas));
    double largest = 0;
    for (const double y : result.farkas) largest = std::max(largest, std::abs(y));
    solution.farkas_proof = largest * result.farkas_violation;
    if (in_full && largest > 0) solution.farkas_dual = times(-1, std::move(result.farkas));
  }
  if (result.status == SolveStatus::kUnbounded) {
    solution.unbd_var = largest_entry(result.ray);
    if (in_full) solution.unbd_ray = std::move(result.ray);
  }
}

bool holds_result_point(const LpData& lp, const LpDriverResult& result, double feasibility_tol) {
  if (!result.has_point || result.point.x.size() != lp.cost.size()) return false;
  switch (result.status) {
    case SolveStatus::kOptimal:
      return true;
    case SolveStatus::kLoaded:
    case SolveStatus::kInfeasible:
    case SolveStatus::kInfOrUnbd:
    case SolveStatus::kUnbounded:
    case SolveStatus::kCutoff:
      return false;
    default:
      return result.nearly_optimal || is_feasible(lp, result.point.x, feasibility_tol);
  }
}

}  // namespace

void publish_lp(ZLPmodel& model, const LpData& lp, LpDriverResult&& result, double feasibility_tol) {
  SolutionStore& solution = model.solution;
  solution.status = result.status;
  solution.solved = true;
  solution.iter_count = result.iterations;
  solution.bar_iter_count = result.barrier_iterations;
  if (holds_result_point(lp, result, feasibility_tol)) publish_point(model, result);
  if (result.has_basis && result.basis.col.size() == lp.cost.size()) {
    publish_basis(model, result.basis);
    model.warm.precision = result.extended_precision ? BasisPrecision::kExtended : BasisPrecision::kDouble;
    result.basis.norm.clear();
    solution.analysis = std::make_shared<FinalBasis>(model, std::move(result.basis), result.extended_precision);
  }
  publish_proof(model, lp, result, param<Param::InfUnbdInfo>(*model.env) != 0);
}

void publish_mip(ZLPmodel& model, const MipResult& result) {
  SolutionStore& solution = model.solution;
  const double sense = model.data.sense;
  solution.status = result.status;
  solution.solved = true;
  solution.iter_count = result.iterations;
  solution.node_count = result.nodes;
  solution.bar_iter_count = result.barrier_iterations;
  set_bound(solution, sense * result.bound);
  model.warm.drop_basis();  // a tree search ends at no particular basis
  for (std::size_t k = 0; k < result.solutions.size(); ++k) {
    solution.pool.push_back({sense * result.solution_objectives[k], result.solutions[k]});
  }
  if (solution.pool.empty()) return;
  solution.x = solution.pool.front().x;
  solution.slack = row_slacks(model.data, solution.x);
  set_objective(solution, solution.pool.front().objective);
}

}  // namespace zorvex
