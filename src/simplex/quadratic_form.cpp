#include "simplex/quadratic_form.hpp"

#include <cmath>

namespace zorvex {

template <class Real>
void QuadraticForm<Real>::load(const SparseMatrix& lower, const std::vector<double>& scale, double factor) {
  const auto n = static_cast<std::size_t>(lower.num_cols);
  start_.assign(n + 1, 0);
  index_.clear();
  value_.clear();
  root_diagonal_.assign(n, Real(0));
  for (Index col = 0; col < lower.num_cols; ++col) {
    for (Offset k = lower.begin(col); k < lower.end(col); ++k) {
      ++start_[col + 1];
      if (lower.index[k] != col) ++start_[lower.index[k] + 1];
    }
  }
  for (std::size_t j = 0; j < n; ++j) start_[j + 1] += start_[j];
  index_.resize(static_cast<std::size_t>(start_[n]));
  value_.resize(index_.size());
  std::vector<Offset> next(start_.begin(), start_.end() - 1);
  const auto put = [&](Index col, Index row, Real value) {
    index_[next[col]] = row;
    value_[next[col]++] = value;
  };
  for (Index col = 0; col < lower.num_cols; ++col) {
    for (Offset k = lower.begin(col); k < lower.end(col); ++k) {
      const Index row = lower.index[k];
      const Real value = Real(factor) * Real(scale[row]) * Real(scale[col]) * Real(lower.value[k]);
      put(col, row, value);
      if (row != col) put(row, col, value);
      using std::sqrt;
      if (row == col && value > 0) root_diagonal_[col] = sqrt(value);
    }
  }
}

template <class Real>
Offset QuadraticForm<Real>::add_column(Index col, Real multiplier, std::vector<Real>& result) const {
  for (Offset k = start_[col]; k < start_[col + 1]; ++k) result[index_[k]] += multiplier * value_[k];
  return start_[col + 1] - start_[col];
}

template class QuadraticForm<double>;
template class QuadraticForm<Extended>;

}  // namespace zorvex
