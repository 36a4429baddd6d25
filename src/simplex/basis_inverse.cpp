#include "simplex/basis_inverse.hpp"

#include <algorithm>

#include "simplex/kernel_tolerances.hpp"
#include "simplex/scaling.hpp"

namespace zorvex {

namespace {
constexpr double kMarkowitz = 0.1;  // one factorization, many questions: accuracy before sparsity
}  // namespace

template <class Real>
void BasisInverse<Real>::take_head(const Basis& basis) {
  const Index n = lp_->num_cols();
  const auto m = static_cast<std::size_t>(lp_->num_rows());
  const auto is_basic = [&](Index var) {
    return (var < n ? basis.col[var] : basis.row[var - n]) == BasisStatus::kBasic;
  };
  head_.clear();
  if (basis.head.size() == m && std::all_of(basis.head.begin(), basis.head.end(), is_basic)) {
    head_ = basis.head;
  } else {
    for (Index var = 0; var < n + lp_->num_rows(); ++var) {
      if (is_basic(var)) head_.push_back(var);
    }
  }
  where_.assign(static_cast<std::size_t>(n) + m, -1);
  for (std::size_t position = 0; position < head_.size(); ++position) {
    where_[head_[position]] = static_cast<Index>(position);
  }
}

template <class Real>
void BasisInverse<Real>::copy_columns() {
  const Scaling scaling = compute_scaling(*lp_);
  const SparseMatrix& matrix = lp_->matrix;
  row_scale_ = scaling.row;
  position_scale_.clear();
  local_head_.clear();
  start_.assign(1, 0);
  index_.clear();
  value_.clear();
  Index columns = 0;
  for (const Index var : head_) columns += var < lp_->num_cols() ? 1 : 0;
  for (const Index var : head_) {
    if (var >= lp_->num_cols()) {
      const Index row = var - lp_->num_cols();
      local_head_.push_back(columns + row);
      position_scale_.push_back(1 / row_scale_[row]);
      continue;
    }
    local_head_.push_back(static_cast<Index>(start_.size()) - 1);
    position_scale_.push_back(scaling.col[var]);
    for (Offset k = matrix.begin(var); k < matrix.end(var); ++k) {
      index_.push_back(matrix.index[k]);
      value_.push_back(Real(matrix.value[k]) * Real(row_scale_[matrix.index[k]]) * Real(scaling.col[var]));
    }
    start_.push_back(static_cast<Offset>(index_.size()));
  }
}

template <class Real>
bool BasisInverse<Real>::factor(const LpData& lp, const Basis& basis) {
  lp_ = &lp;
  const Index m = lp.num_rows();
  if (static_cast<Index>(basis.col.size()) != lp.num_cols() || static_cast<Index>(basis.row.size()) != m) return false;
  take_head(basis);
  if (static_cast<Index>(head_.size()) != m) return false;
  if (m == 0) return true;
  copy_columns();
  lu_.reserve(m, static_cast<Offset>(index_.size()) + m);
  const ColumnView<Real> view{m, static_cast<Index>(start_.size()) - 1, start_.data(), index_.data(), value_.data()};
  for (;;) {
    switch (lu_.factor(view, local_head_, kMarkowitz, StopToken())) {
      case LuStatus::kOk:
        return true;
      case LuStatus::kSpaceTooSmall:
        lu_.grow_space();
        break;
      default:
        return false;
    }
  }
}

template <class Real>
template <class Factor>
void BasisInverse<Real>::scale(Scattered<Real>& vector, Factor factor) const {
  if (vector.dense) {
    for (Index i = 0; i < vector.size(); ++i) vector.value[i] *= Real(factor(i));
  } else {
    for (const Index i : vector.index) vector.value[i] *= Real(factor(i));
  }
}

// With B' = R B C scaled: B^-1 = C B'^-1 R.
template <class Real>
void BasisInverse<Real>::ftran(Scattered<Real>& x) {
  if (head_.empty()) return;
  scale(x, [&](Index row) { return row_scale_[row]; });
  lu_.ftran(x);
  scale(x, [&](Index position) { return position_scale_[position]; });
}

template <class Real>
void BasisInverse<Real>::btran(Scattered<Real>& y) {
  if (head_.empty()) return;
  scale(y, [&](Index position) { return position_scale_[position]; });
  lu_.btran(y);
  scale(y, [&](Index row) { return row_scale_[row]; });
}

template <class Real>
void BasisInverse<Real>::add_column(Index var, Real factor, Scattered<Real>& vector) const {
  const auto add = [&](Index row, Real amount) {
    if (vector.value[row] == 0 && !vector.dense) vector.index.push_back(row);
    vector.value[row] += amount;
    if (vector.value[row] == 0) vector.value[row] = KernelTolerances<Real>::kTinyCancel;
  };
  const Index n = lp_->num_cols();
  if (var >= n) {
    add(var - n, factor);
    return;
  }
  const SparseMatrix& matrix = lp_->matrix;
  for (Offset k = matrix.begin(var); k < matrix.end(var); ++k) add(matrix.index[k], factor * Real(matrix.value[k]));
}

template <class Real>
Real BasisInverse<Real>::column_dot(Index var, const Scattered<Real>& vector) const {
  const Index n = lp_->num_cols();
  if (var >= n) return vector.value[var - n];
  Real sum = 0;
  const SparseMatrix& matrix = lp_->matrix;
  for (Offset k = matrix.begin(var); k < matrix.end(var); ++k)
    sum += Real(matrix.value[k]) * vector.value[matrix.index[k]];
  return sum;
}

template class BasisInverse<double>;
template class BasisInverse<Extended>;

}  // namespace zorvex
