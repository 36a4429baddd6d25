#include "opt/problem_data.hpp"

#include <algorithm>
#include <cmath>

namespace zorvex {

namespace {

SparseMatrix user_matrix(const ModelData& data) {
  SparseMatrix matrix;
  matrix.num_rows = data.num_rows();
  matrix.num_cols = data.num_cols();
  matrix.start = data.matrix.start;
  matrix.index = data.matrix.index;
  matrix.value = data.matrix.value;
  for (std::size_t k = 0; k < matrix.value.size(); ++k) matrix.value[k] *= data.row_sign(matrix.index[k]);
  return matrix;
}

// Lower triangle of the symmetric part of the terms, times `sense`; entries that cancel are left out.
SparseMatrix quadratic_matrix(const ModelData& data) {
  struct Entry {
    Index row, col;
    double value;
  };
  std::vector<Entry> entries;
  entries.reserve(data.quadratic.size());
  for (const QuadraticTerm& term : data.quadratic) {
    const double share = term.first == term.second ? 1.0 : 0.5;
    entries.push_back(
        {std::max(term.first, term.second), std::min(term.first, term.second), data.sense * share * term.value});
  }
  std::stable_sort(entries.begin(), entries.end(),
                   [](const Entry& a, const Entry& b) { return a.col != b.col ? a.col < b.col : a.row < b.row; });
  SparseMatrix q;
  q.num_rows = q.num_cols = data.num_cols();
  q.start.assign(static_cast<std::size_t>(q.num_cols) + 1, 0);
  for (std::size_t k = 0; k < entries.size();) {
    const Entry& first = entries[k];
    Extended sum = 0;
    for (; k < entries.size() && entries[k].row == first.row && entries[k].col == first.col; ++k) {
      sum += entries[k].value;
    }
    if (sum == 0) continue;
    q.index.push_back(first.row);
    q.value.push_back(static_cast<double>(sum));
    q.start[first.col + 1] = static_cast<Offset>(q.index.size());
  }
  for (Index col = 0; col < q.num_cols; ++col) q.start[col + 1] = std::max(q.start[col + 1], q.start[col]);
  return q.index.empty() ? SparseMatrix() : q;
}

std::vector<BasisStatus> basis_statuses(const std::vector<int>& codes) {
  std::vector<BasisStatus> statuses;
  statuses.reserve(codes.size());
  for (const int code : codes) statuses.push_back(static_cast<BasisStatus>(code));
  return statuses;
}

}  // namespace

LpData make_lp_data(const ModelData& data) {
  LpData lp;
  lp.matrix = user_matrix(data);
  if (!data.quadratic.empty()) lp.quadratic = quadratic_matrix(data);
  lp.offset = data.sense < 0 ? -data.obj_con : data.obj_con;
  lp.cost.resize(data.obj.size());
  lp.col_lower.resize(data.obj.size());
  lp.col_upper.resize(data.obj.size());
  for (Index col = 0; col < data.num_cols(); ++col) {
    const Interval bounds = data.column_bounds(col);
    lp.cost[col] = data.min_cost(col);
    lp.col_lower[col] = bounds.lower;
    lp.col_upper[col] = bounds.upper;
  }
  lp.row_lower.resize(data.rhs.size());
  lp.row_upper.resize(data.rhs.size());
  for (Index row = 0; row < data.num_rows(); ++row) {
    const Interval sides = data.row_sides(row);
    lp.row_lower[row] = sides.lower;
    lp.row_upper[row] = sides.upper;
  }
  return lp;
}

void clean_lp_data(LpData& lp, double infinite, double zero) {
  const auto widen = [&](double& lower, double& upper) {
    if (lower == upper) return;
    if (lower <= -infinite) lower = -kInf;
    if (upper >= infinite) upper = kInf;
  };
  for (Index col = 0; col < lp.num_cols(); ++col) widen(lp.col_lower[col], lp.col_upper[col]);
  for (Index row = 0; row < lp.num_rows(); ++row) widen(lp.row_lower[row], lp.row_upper[row]);
  SparseMatrix& matrix = lp.matrix;
  Offset kept = 0;
  Offset next = 0;
  for (Index col = 0; col < matrix.num_cols; ++col) {
    const Offset end = matrix.end(col);
    for (; next < end; ++next) {
      if (std::abs(matrix.value[next]) < zero) continue;
      matrix.index[kept] = matrix.index[next];
      matrix.value[kept++] = matrix.value[next];
    }
    matrix.start[col + 1] = kept;
  }
  matrix.index.resize(static_cast<std::size_t>(kept));
  matrix.value.resize(static_cast<std::size_t>(kept));
}

MipProblem make_mip_problem(const ZLPmodel& model) {
  const ModelData& data = model.data;
  MipProblem problem;
  problem.lp = make_lp_data(data);
  problem.type.reserve(data.vtype.size());
  for (const char type : data.vtype) problem.type.push_back(static_cast<VarType>(type));
  problem.sos.reserve(data.sos.size());
  for (const SosConstraint& set : data.sos) problem.sos.push_back({set.type, set.member, set.weight});
  problem.priority.assign(model.branch_priority.begin(), model.branch_priority.end());
  const std::vector<double>& start = model.warm.start;
  if (std::any_of(start.begin(), start.end(), [](double value) { return value != kUndefinedStart; })) {
    problem.start = start;
  }
  problem.sense = data.sense;
  return problem;
}

Basis make_start_basis(const ZLPmodel& model) {
  const WarmStart& warm = model.warm;
  Basis basis;
  if (!warm.has_basis() || !warm.basis_fits(model.data)) return basis;
  basis.col = basis_statuses(warm.vbasis);
  basis.row = basis_statuses(warm.cbasis);
  if (!warm.has_norms()) return basis;
  const Index num_cols = model.data.num_cols();
  for (Index col = 0; col < num_cols; ++col) {
    if (basis.col[col] != BasisStatus::kBasic) continue;
    basis.head.push_back(col);
    basis.norm.push_back(warm.vnorm[col]);
  }
  for (Index row = 0; row < model.data.num_rows(); ++row) {
    if (basis.row[row] != BasisStatus::kBasic) continue;
    basis.head.push_back(num_cols + row);
    basis.norm.push_back(warm.cnorm[row]);
  }
  return basis;
}

}  // namespace zorvex
