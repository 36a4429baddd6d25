#include "support/convex_q.hpp"

namespace zorvex::oracle {

SparseMatrix lower_of(const std::vector<std::vector<double>>& q) {
  SparseMatrix lower;
  const auto n = static_cast<Index>(q.size());
  lower.num_rows = n;
  for (Index col = 0; col < n; ++col) {
    std::vector<Index> rows;
    std::vector<double> values;
    for (Index row = col; row < n; ++row) {
      if (q[row][col] == 0) continue;
      rows.push_back(row);
      values.push_back(q[row][col]);
    }
    lower.append_col(rows.data(), values.data(), static_cast<Index>(rows.size()));
  }
  return lower;
}

void add_convex_q(RandomStream& random, LpData& lp) {
  const Index n = lp.num_cols();
  std::vector<std::vector<double>> q(static_cast<std::size_t>(n), std::vector<double>(static_cast<std::size_t>(n), 0));
  const auto rank = random.below(n + 2);
  for (std::int64_t r = 0; r < rank; ++r) {
    std::vector<double> factor(static_cast<std::size_t>(n), 0);
    for (double& value : factor) value = random.below(3) == 0 ? static_cast<double>(random.below(7) - 3) : 0;
    for (Index i = 0; i < n; ++i) {
      for (Index j = 0; j < n; ++j) q[i][j] += factor[i] * factor[j];
    }
  }
  lp.quadratic = lower_of(q);
}

std::vector<double> gradient_of(const LpData& lp, const std::vector<double>& x) {
  std::vector<Extended> sum(lp.cost.begin(), lp.cost.end());
  for (Index col = 0; col < lp.quadratic.num_cols; ++col) {
    for (Offset k = lp.quadratic.begin(col); k < lp.quadratic.end(col); ++k) {
      const Index row = lp.quadratic.index[k];
      sum[row] += Extended(lp.quadratic.value[k]) * x[col];
      if (row != col) sum[col] += Extended(lp.quadratic.value[k]) * x[row];
    }
  }
  return {sum.begin(), sum.end()};
}

double quadratic_objective(const LpData& lp, const std::vector<double>& x) {
  const std::vector<double> gradient = gradient_of(lp, x);
  Extended sum = lp.offset;
  for (std::size_t j = 0; j < x.size(); ++j) sum += (Extended(lp.cost[j]) + gradient[j]) * x[j] / 2;
  return static_cast<double>(sum);
}

LpData linear_model_at(const LpData& lp, const std::vector<double>& x) {
  LpData linear = lp;
  linear.cost = gradient_of(lp, x);
  linear.quadratic = {};
  Extended offset = quadratic_objective(lp, x);
  for (std::size_t j = 0; j < x.size(); ++j) offset -= Extended(linear.cost[j]) * x[j];
  linear.offset = static_cast<double>(offset);
  return linear;
}

}  // namespace zorvex::oracle
