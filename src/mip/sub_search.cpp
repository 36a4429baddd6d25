#include "mip/sub_search.hpp"

#include <algorithm>
#include <cmath>

namespace zorvex {

namespace {

struct SubProblem {
  MipProblem problem;
  std::vector<Index> original;  // column of the full problem of each column
  bool infeasible = false;
};

// Whether fixing at `value` keeps the promise of the column's type, so that the column can leave the problem.
bool removable(const SearchModel& model, Index col, double value) {
  if (model.integer[col] && value != std::round(value)) return false;
  if (model.sos_begin(col) != model.sos_end(col)) return false;
  return !model.has_gap(col) || value <= model.gap_lower[col] || value >= model.gap_upper[col];
}

// Of the sets that can be violated at all, whose columns are all there; the problem may have others.
void copy_sets(const SearchModel& model, const std::vector<Index>& new_col, MipProblem& sub) {
  for (const SosSet& set : model.sos) {
    SosSet copy = set;
    for (Index& member : copy.member) member = new_col[member];
    sub.sos.push_back(std::move(copy));
  }
}

// The objective's quadratic terms, where fixed columns turn into linear ones and a constant.
void cut_out_quadratic(const LpData& full, const SubSearch& search, const std::vector<char>& keep, SubProblem& result) {
  std::vector<Extended> linear(keep.size(), 0);  // Q times the fixed columns' values
  const SparseMatrix& q = full.quadratic;
  const auto add = [&](Index row, Index col, double value) {
    if (!keep[col]) linear[row] += static_cast<Extended>(value) * search.lower[col];
  };
  for (Index col = 0; col < q.num_cols; ++col) {
    for (Offset k = q.begin(col); k < q.end(col); ++k) {
      add(q.index[k], col, q.value[k]);
      if (q.index[k] != col) add(col, q.index[k], q.value[k]);
    }
  }
  LpData& sub = result.problem.lp;
  Extended constant = 0;
  for (std::size_t col = 0; col < keep.size(); ++col) {
    if (!keep[col]) constant += linear[col] * search.lower[col] / 2;
  }
  sub.offset += static_cast<double>(constant);
  for (std::size_t k = 0; k < result.original.size(); ++k) {
    sub.cost[k] += static_cast<double>(linear[result.original[k]]);
  }
  sub.quadratic = q;
  sub.quadratic.compress(keep.data(), keep.data());
  if (sub.quadratic.num_nonzeros() == 0) sub.quadratic = {};
}

// Columns of SOS sets always stay; semi-continuous columns keep their gap by staying semi-continuous with the nonzero
// branch narrowed, or lose it when the bounds decide the branch.
SubProblem cut_out(const SearchModel& model, const MipProblem& full, const SubSearch& search) {
  SubProblem result;
  const Index n = model.num_cols();
  std::vector<char> keep(static_cast<std::size_t>(n), 1);
  std::vector<Index> new_col(static_cast<std::size_t>(n), -1);
  std::vector<Extended> activity(static_cast<std::size_t>(model.num_rows()), 0);
  Extended offset = full.lp.offset;
  for (Index col = 0; col < n; ++col) {
    if (search.lower[col] > search.upper[col]) result.infeasible = true;
    const double value = search.lower[col];
    keep[col] = !(search.lower[col] == search.upper[col] && removable(model, col, value));
    if (keep[col]) {
      new_col[col] = static_cast<Index>(result.original.size());
      result.original.push_back(col);
      continue;
    }
    offset += static_cast<Extended>(model.lp.cost[col]) * value;
    for (Offset k = model.lp.matrix.begin(col); k < model.lp.matrix.end(col); ++k) {
      activity[model.lp.matrix.index[k]] += static_cast<Extended>(model.lp.matrix.value[k]) * value;
    }
  }
  MipProblem& sub = result.problem;
  sub.lp.matrix = model.lp.matrix;
  sub.lp.matrix.compress(nullptr, keep.data());
  sub.lp.offset = search.feasibility_only ? 0 : static_cast<double>(offset);
  for (Index row = 0; row < model.num_rows(); ++row) {
    sub.lp.row_lower.push_back(static_cast<double>(model.lp.row_lower[row] - activity[row]));
    sub.lp.row_upper.push_back(static_cast<double>(model.lp.row_upper[row] - activity[row]));
  }
  for (const Index col : result.original) {
    sub.lp.cost.push_back(search.feasibility_only ? 0 : model.lp.cost[col]);
    double lower = search.lower[col];
    double upper = search.upper[col];
    VarType type = model.integer[col] ? VarType::kInteger : VarType::kContinuous;
    if (model.has_gap(col) && lower < model.gap_upper[col] && upper > model.gap_lower[col]) {
      type = model.integer[col] ? VarType::kSemiInteger : VarType::kSemiContinuous;
      if (model.gap_lower[col] < 0) {
        upper = model.gap_lower[col];
      } else {
        lower = model.gap_upper[col];
      }
      // With zero excluded the nonzero branch is all there is; with nothing of that branch left, only zero.
      if (search.lower[col] > 0 || search.upper[col] < 0) {
        type = model.integer[col] ? VarType::kInteger : VarType::kContinuous;
      } else if (lower > upper) {
        lower = upper = 0;
      }
    }
    sub.lp.col_lower.push_back(lower);
    sub.lp.col_upper.push_back(upper);
    sub.type.push_back(type);
  }
  copy_sets(model, new_col, sub);
  if (model.lp.is_quadratic() && !search.feasibility_only) cut_out_quadratic(model.lp, search, keep, result);
  return result;
}

}  // namespace

SubSearchResult run_sub_search(SearchState& state, const SubSearch& search) {
  SubSearchResult result;
  SubProblem sub = cut_out(state.checker.model(), state.problem, search);
  if (sub.infeasible) {
    result.status = SolveStatus::kInfeasible;
    return result;
  }
  MipOptions options = state.options;
  options.sub_mip = true;
  options.node_limit = search.node_limit;
  options.iteration_limit = std::min(search.iteration_limit, state.remaining_iterations());
  options.solution_limit = search.solution_limit;
  options.cutoff = search.cutoff;
  options.improve_start_gap = 0;
  options.improve_start_time = mip_tol::kNone;
  options.rins = 0;
  options.simplex.root_log = false;
  options.simplex.algorithm = SimplexAlgorithm::kDual;
  options.root_engine = options.node_engine = nullptr;
  PollingHooks polling(options.hooks);
  options.hooks = &polling;
  const double now = now_seconds();
  options.time_limit = std::isinf(state.stop.deadline()) ? mip_tol::kNone : std::max(0.0, state.stop.deadline() - now);
  std::vector<Index> original = std::move(sub.original);
  QuietLog quiet;
  MipSolver solver(std::move(sub.problem), quiet);
  const MipResult& found = solver.run(options, state.stop.terminate_flag(), now);
  state.sub_iterations += found.iterations;
  state.heuristic_iterations += found.iterations;
  result.status = found.status;
  if (found.solutions.empty()) return result;
  result.x = search.lower;
  for (std::size_t k = 0; k < original.size(); ++k) result.x[original[k]] = found.solutions[0][k];
  return result;
}

}  // namespace zorvex
