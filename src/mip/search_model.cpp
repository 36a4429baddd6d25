#include "mip/search_model.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "mip/grids.hpp"
#include "mip/mip_tolerances.hpp"

namespace zorvex {

namespace {

bool integral_type(VarType type) {
  return type == VarType::kBinary || type == VarType::kInteger || type == VarType::kSemiInteger;
}

bool semi_type(VarType type) { return type == VarType::kSemiContinuous || type == VarType::kSemiInteger; }

SosSet sorted_set(const SosSet& set) {
  std::vector<std::size_t> order(set.member.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    const double wa = a < set.weight.size() ? set.weight[a] : static_cast<double>(a);
    const double wb = b < set.weight.size() ? set.weight[b] : static_cast<double>(b);
    return wa < wb;
  });
  SosSet result;
  result.type = set.type;
  for (const std::size_t k : order) {
    const Index col = set.member[k];
    if (std::find(result.member.begin(), result.member.end(), col) != result.member.end()) continue;
    result.member.push_back(col);
    result.weight.push_back(static_cast<double>(result.member.size()));
  }
  return result;
}

void set_column_kinds(const MipProblem& problem, SearchModel& model) {
  const Index n = model.num_cols();
  model.integer.assign(static_cast<std::size_t>(n), 0);
  model.gap_lower.assign(static_cast<std::size_t>(n), 0);
  model.gap_upper.assign(static_cast<std::size_t>(n), 0);
  for (Index col = 0; col < n; ++col) {
    double& lower = model.lp.col_lower[col];
    double& upper = model.lp.col_upper[col];
    if (integral_type(problem.type[col])) {
      model.integer[col] = 1;
      model.integer_cols.push_back(col);
      lower = std::ceil(lower - mip_tol::kIntegerRounding);
      upper = std::floor(upper + mip_tol::kIntegerRounding);
      if (problem.type[col] == VarType::kBinary) {
        lower = std::max(lower, 0.0);
        upper = std::min(upper, 1.0);
      }
    }
    if (!semi_type(problem.type[col])) continue;
    if (lower > upper) {  // no nonzero branch
      lower = upper = 0;
    } else if (lower > 0) {
      model.gap_upper[col] = lower;
      lower = 0;
    } else if (upper < 0) {
      model.gap_lower[col] = upper;
      upper = 0;
    }
    if (model.has_gap(col)) model.gap_cols.push_back(col);
  }
}

void set_sos(const MipProblem& problem, SearchModel& model) {
  const Index n = model.num_cols();
  for (const SosSet& set : problem.sos) {
    SosSet sorted = sorted_set(set);
    if (sorted.member.size() > static_cast<std::size_t>(sorted.type)) model.sos.push_back(std::move(sorted));
  }
  model.sos_start.assign(static_cast<std::size_t>(n) + 1, 0);
  for (const SosSet& set : model.sos) {
    for (const Index col : set.member) ++model.sos_start[col + 1];
  }
  for (Index col = 0; col < n; ++col) model.sos_start[col + 1] += model.sos_start[col];
  model.sos_list.resize(static_cast<std::size_t>(model.sos_start[n]));
  std::vector<Index> next(model.sos_start.begin(), model.sos_start.end() - 1);
  for (std::size_t s = 0; s < model.sos.size(); ++s) {
    for (const Index col : model.sos[s].member) model.sos_list[next[col]++] = static_cast<Index>(s);
  }
}

}  // namespace

void count_locks(SearchModel& model) {
  const auto n = static_cast<std::size_t>(model.num_cols());
  model.up_locks.assign(n, 0);
  model.down_locks.assign(n, 0);
  const SparseMatrix& cols = model.lp.matrix;
  for (Index col = 0; col < model.num_cols(); ++col) {
    for (Offset k = cols.begin(col); k < cols.end(col); ++k) {
      const bool positive = cols.value[k] > 0;
      if (model.lp.row_upper[cols.index[k]] < kInf) ++(positive ? model.up_locks : model.down_locks)[col];
      if (model.lp.row_lower[cols.index[k]] > -kInf) ++(positive ? model.down_locks : model.up_locks)[col];
    }
  }
}

SearchModel make_search_model(const MipProblem& problem, bool keep_all_solutions) {
  SearchModel model;
  model.lp = problem.lp;
  model.priority = problem.priority;
  set_column_kinds(problem, model);
  set_sos(problem, model);
  model.branchable = model.integer;
  for (const Index col : model.gap_cols) model.branchable[col] = 1;
  for (const SosSet& set : model.sos) {
    for (const Index col : set.member) model.branchable[col] = 1;
  }
  model.rows = model.lp.matrix.transpose();
  find_grids(model, keep_all_solutions);
  count_locks(model);
  return model;
}

}  // namespace zorvex
