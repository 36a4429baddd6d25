#include "support/dense_lp.hpp"

#include <algorithm>
#include <cmath>

#include "base/types.hpp"

namespace zorvex::oracle {
namespace {

constexpr Extended kZero = 1e-11L;  // smaller tableau entries, reduced costs and violations are noise

using Matrix = std::vector<std::vector<Extended>>;

// Variables are the columns, then the rows' logicals s with A x - s = 0, then one artificial per row, up to sign.
class Tableau {
 public:
  explicit Tableau(const LpData& lp);
  SolveStatus solve();
  void extract(DenseLpResult& result) const;

 private:
  void start();
  bool minimise(const std::vector<Extended>& cost);  // false: unbounded
  [[nodiscard]] Index entering(const std::vector<Extended>& d, int& direction) const;
  bool step(Index enter, int direction);  // false: no variable blocks
  void pivot(Index row, Index enter);
  void drive_out_artificials();
  [[nodiscard]] std::vector<Extended> duals(const std::vector<Extended>& cost) const;
  [[nodiscard]] std::vector<Extended> reduced(const std::vector<Extended>& cost) const;

  const LpData& lp_;
  Index m_, n_, total_;
  Matrix a_;         // B^-1 [A, -I, +-I]
  Matrix original_;  // [A, -I, +-I]
  std::vector<Extended> lower_, upper_, value_, cost_, phase1_;
  std::vector<Index> head_;  // basic variable of each row
  std::vector<bool> basic_;
  std::vector<double> farkas_;
};

Tableau::Tableau(const LpData& lp) : lp_(lp), m_(lp.num_rows()), n_(lp.num_cols()), total_(n_ + 2 * m_) {
  a_.assign(m_, std::vector<Extended>(total_, 0));
  lower_.assign(total_, 0);
  upper_.assign(total_, kInf);
  cost_.assign(total_, 0);
  phase1_.assign(total_, 0);
  for (Index j = 0; j < n_; ++j) {
    for (Offset k = lp.matrix.begin(j); k < lp.matrix.end(j); ++k) a_[lp.matrix.index[k]][j] += lp.matrix.value[k];
    lower_[j] = lp.col_lower[j];
    upper_[j] = lp.col_upper[j];
    cost_[j] = lp.cost[j];
  }
  for (Index i = 0; i < m_; ++i) {
    a_[i][n_ + i] = -1;
    lower_[n_ + i] = lp.row_lower[i];
    upper_[n_ + i] = lp.row_upper[i];
    phase1_[n_ + m_ + i] = 1;
  }
  start();
}

// Columns sit on a bound; a row whose activity fits gets its logical into the basis, any other an artificial.
void Tableau::start() {
  value_.assign(total_, 0);
  basic_.assign(total_, false);
  head_.resize(m_);
  for (Index j = 0; j < n_; ++j) {
    value_[j] = lower_[j] > -kInf ? lower_[j] : upper_[j] < kInf ? upper_[j] : 0;
  }
  for (Index i = 0; i < m_; ++i) {
    Extended activity = 0;
    for (Index j = 0; j < n_; ++j) activity += a_[i][j] * value_[j];
    const Index logical = n_ + i;
    const Index artificial = n_ + m_ + i;
    value_[logical] = std::min(std::max(activity, lower_[logical]), upper_[logical]);
    const Extended gap = value_[logical] - activity;  // activity + gap - s = 0
    const bool fits = gap == 0;
    a_[i][artificial] = gap >= 0 ? 1 : -1;
    if (fits) upper_[artificial] = 0;
    value_[artificial] = std::abs(gap);
    head_[i] = fits ? logical : artificial;
    basic_[head_[i]] = true;
  }
  original_ = a_;
  for (Index i = 0; i < m_; ++i) {
    const Extended scale = a_[i][head_[i]];
    for (Extended& entry : a_[i]) entry /= scale;
  }
}

std::vector<Extended> Tableau::duals(const std::vector<Extended>& cost) const {
  // The logicals' columns of B^-1 [A, -I, .] are -B^-1.
  std::vector<Extended> pi(m_, 0);
  for (Index i = 0; i < m_; ++i) {
    for (Index r = 0; r < m_; ++r) pi[i] -= cost[head_[r]] * a_[r][n_ + i];
  }
  return pi;
}

std::vector<Extended> Tableau::reduced(const std::vector<Extended>& cost) const {
  const std::vector<Extended> pi = duals(cost);
  std::vector<Extended> d = cost;
  for (Index j = 0; j < total_; ++j) {
    for (Index i = 0; i < m_; ++i) d[j] -= pi[i] * original_[i][j];
    if (basic_[j]) d[j] = 0;
  }
  return d;
}

Index Tableau::entering(const std::vector<Extended>& d, int& direction) const {
  for (Index j = 0; j < total_; ++j) {
    if (basic_[j] || lower_[j] == upper_[j]) continue;
    if (d[j] < -kZero && value_[j] < upper_[j]) {
      direction = 1;
      return j;
    }
    if (d[j] > kZero && value_[j] > lower_[j]) {
      direction = -1;
      return j;
    }
  }
  return -1;
}

void Tableau::pivot(Index row, Index enter) {
  const Extended scale = a_[row][enter];
  for (Extended& entry : a_[row]) entry /= scale;
  for (Index i = 0; i < m_; ++i) {
    const Extended factor = a_[i][enter];
    if (i == row || factor == 0) continue;
    for (Index j = 0; j < total_; ++j) a_[i][j] -= factor * a_[row][j];
    a_[i][enter] = 0;
  }
  basic_[head_[row]] = false;
  head_[row] = enter;
  basic_[enter] = true;
}

bool Tableau::step(Index enter, int direction) {
  Extended length = upper_[enter] - lower_[enter];
  Index leave = -1;
  for (Index i = 0; i < m_; ++i) {
    const Extended rate = -a_[i][enter] * direction;
    if (std::abs(rate) <= kZero) continue;
    const Index out = head_[i];
    const Extended room = rate > 0 ? upper_[out] - value_[out] : value_[out] - lower_[out];
    const Extended ratio = std::max(room, Extended(0)) / std::abs(rate);
    const bool tie = leave >= 0 && std::abs(ratio - length) <= kZero;
    if (tie ? out < head_[leave] : ratio < length) {
      length = std::min(ratio, length);
      leave = i;
    }
  }
  if (length == kInf) return false;
  for (Index i = 0; i < m_; ++i) value_[head_[i]] -= a_[i][enter] * direction * length;
  value_[enter] += direction * length;
  if (leave < 0) {
    value_[enter] = direction > 0 ? upper_[enter] : lower_[enter];
    return true;
  }
  const Index out = head_[leave];
  value_[out] = -a_[leave][enter] * direction > 0 ? upper_[out] : lower_[out];
  pivot(leave, enter);
  return true;
}

bool Tableau::minimise(const std::vector<Extended>& cost) {
  int direction = 0;
  for (;;) {
    const Index enter = entering(reduced(cost), direction);
    if (enter < 0) return true;
    if (!step(enter, direction)) return false;
  }
}

void Tableau::drive_out_artificials() {
  for (Index i = 0; i < m_; ++i) {
    if (head_[i] < n_ + m_) continue;
    Index best = -1;
    for (Index j = 0; j < n_ + m_; ++j) {
      if (basic_[j]) continue;
      if (best < 0 || std::abs(a_[i][j]) > std::abs(a_[i][best])) best = j;
    }
    value_[head_[i]] = 0;
    pivot(i, best);  // [A, -I] has full row rank, so the row has an entry there
  }
  for (Index j = n_ + m_; j < total_; ++j) upper_[j] = 0;
}

SolveStatus Tableau::solve() {
  for (Index j = 0; j < n_ + m_; ++j) {
    if (lower_[j] > upper_[j]) return SolveStatus::kInfeasible;
  }
  minimise(phase1_);
  Extended infeasibility = 0;
  for (Index j = n_ + m_; j < total_; ++j) infeasibility += value_[j];
  if (infeasibility > 1e-9L) {
    for (const Extended y : duals(phase1_)) farkas_.push_back(std::abs(y) <= kZero ? 0 : static_cast<double>(y));
    return SolveStatus::kInfeasible;
  }
  drive_out_artificials();
  return minimise(cost_) ? SolveStatus::kOptimal : SolveStatus::kUnbounded;
}

void Tableau::extract(DenseLpResult& result) const {
  const std::vector<Extended> pi = duals(cost_);
  const std::vector<Extended> d = reduced(cost_);
  Extended objective = lp_.offset;
  const auto status = [&](Index j) {
    if (basic_[j]) return BasisStatus::kBasic;
    if (value_[j] == lower_[j] && (value_[j] != upper_[j] || d[j] >= 0)) return BasisStatus::kAtLower;
    return value_[j] == upper_[j] ? BasisStatus::kAtUpper : BasisStatus::kNonbasicFree;
  };
  for (Index j = 0; j < n_; ++j) {
    result.x.push_back(static_cast<double>(value_[j]));
    result.reduced_cost.push_back(static_cast<double>(d[j]));
    result.basis.col.push_back(status(j));
    objective += cost_[j] * value_[j];
  }
  for (Index i = 0; i < m_; ++i) {
    result.row_activity.push_back(static_cast<double>(value_[n_ + i]));
    result.pi.push_back(static_cast<double>(pi[i]));
    result.basis.row.push_back(status(n_ + i));
  }
  result.objective = static_cast<double>(objective);
  result.farkas = farkas_;
}

// Solves matrix * solution = rhs in place by Gauss-Jordan elimination with full row pivoting; false when singular.
bool solve_dense(Matrix& matrix, std::vector<Extended>& rhs) {
  const Index n = static_cast<Index>(rhs.size());
  for (Index k = 0; k < n; ++k) {
    Index best = k;
    for (Index i = k + 1; i < n; ++i) {
      if (std::abs(matrix[i][k]) > std::abs(matrix[best][k])) best = i;
    }
    if (std::abs(matrix[best][k]) < 1e-10L) return false;
    std::swap(matrix[k], matrix[best]);
    std::swap(rhs[k], rhs[best]);
    for (Index i = 0; i < n; ++i) {
      const Extended factor = matrix[i][k] / matrix[k][k];
      if (i == k || factor == 0) continue;
      for (Index j = k; j < n; ++j) matrix[i][j] -= factor * matrix[k][j];
      rhs[i] -= factor * rhs[k];
    }
  }
  for (Index k = 0; k < n; ++k) rhs[k] /= matrix[k][k];
  return true;
}

// Basic variables in order; empty-handed unless exactly one per row.
bool basic_variables(const LpData& lp, const Basis& basis, std::vector<Index>& head) {
  head.clear();
  if (static_cast<Index>(basis.col.size()) != lp.num_cols()) return false;
  if (static_cast<Index>(basis.row.size()) != lp.num_rows()) return false;
  for (Index j = 0; j < lp.num_cols(); ++j) {
    if (basis.col[j] == BasisStatus::kBasic) head.push_back(j);
  }
  for (Index i = 0; i < lp.num_rows(); ++i) {
    if (basis.row[i] == BasisStatus::kBasic) head.push_back(lp.num_cols() + i);
  }
  return static_cast<Index>(head.size()) == lp.num_rows();
}

// Column of [A, -I].
std::vector<Extended> dense_column(const LpData& lp, Index variable) {
  std::vector<Extended> column(lp.num_rows(), 0);
  if (variable >= lp.num_cols()) {
    column[variable - lp.num_cols()] = -1;
  } else {
    for (Offset k = lp.matrix.begin(variable); k < lp.matrix.end(variable); ++k) {
      column[lp.matrix.index[k]] += lp.matrix.value[k];
    }
  }
  return column;
}

double resting_value(BasisStatus status, double lower, double upper, double free_value) {
  if (status == BasisStatus::kAtLower) return lower;
  return status == BasisStatus::kAtUpper ? upper : free_value;
}

}  // namespace

DenseLpResult solve_dense_lp(const LpData& lp) {
  DenseLpResult result;
  Tableau tableau(lp);
  result.status = tableau.solve();
  tableau.extract(result);
  return result;
}

bool point_of_basis(const LpData& lp, const Basis& basis, const std::vector<double>& free_value, std::vector<double>& x,
                    std::vector<double>& row_activity) {
  std::vector<Index> head;
  if (!basic_variables(lp, basis, head)) return false;
  const Index m = lp.num_rows();
  const Index n = lp.num_cols();
  std::vector<Extended> value(n + m, 0);
  std::vector<Extended> rhs(m, 0);
  for (Index v = 0; v < n + m; ++v) {
    const BasisStatus status = v < n ? basis.col[v] : basis.row[v - n];
    if (status == BasisStatus::kBasic) continue;
    value[v] = v < n ? resting_value(status, lp.col_lower[v], lp.col_upper[v], free_value[v])
                     : resting_value(status, lp.row_lower[v - n], lp.row_upper[v - n], 0);
    if (!std::isfinite(value[v])) return false;
    const std::vector<Extended> column = dense_column(lp, v);
    for (Index i = 0; i < m; ++i) rhs[i] -= column[i] * value[v];
  }
  Matrix matrix(m, std::vector<Extended>(m, 0));
  for (Index k = 0; k < m; ++k) {
    const std::vector<Extended> column = dense_column(lp, head[k]);
    for (Index i = 0; i < m; ++i) matrix[i][k] = column[i];
  }
  if (!solve_dense(matrix, rhs)) return false;
  for (Index k = 0; k < m; ++k) value[head[k]] = rhs[k];
  x.assign(n, 0);
  row_activity.assign(m, 0);
  for (Index j = 0; j < n; ++j) x[j] = static_cast<double>(value[j]);
  for (Index i = 0; i < m; ++i) row_activity[i] = static_cast<double>(value[n + i]);
  return true;
}

bool duals_of_basis(const LpData& lp, const Basis& basis, std::vector<double>& pi) {
  std::vector<Index> head;
  if (!basic_variables(lp, basis, head)) return false;
  const Index m = lp.num_rows();
  Matrix matrix;
  std::vector<Extended> rhs;
  for (const Index variable : head) {
    matrix.push_back(dense_column(lp, variable));
    rhs.push_back(variable < lp.num_cols() ? lp.cost[variable] : 0);
  }
  if (!solve_dense(matrix, rhs)) return false;
  pi.assign(m, 0);
  for (Index i = 0; i < m; ++i) pi[i] = static_cast<double>(rhs[i]);
  return true;
}

}  // namespace zorvex::oracle
