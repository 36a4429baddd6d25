#include "simplex/reduced_hessian.hpp"

#include <algorithm>
#include <cmath>

namespace zorvex {

namespace {

// The rows turn by the rotation; `count` entries of each.
template <class Real>
void rotate(Real cosine, Real sine, Real* upper, Real* lower, std::size_t count) {
  for (std::size_t j = 0; j < count; ++j) {
    const Real u = upper[j];
    const Real l = lower[j];
    upper[j] = cosine * u + sine * l;
    lower[j] = cosine * l - sine * u;
  }
}

// Several sums side by side: one alone waits for each addition to end.
template <class Real>
Real dot(const Real* a, const Real* b, std::size_t count) {
  constexpr std::size_t kLanes = 8;
  Real sum[kLanes] = {};
  std::size_t j = 0;
  for (; j + kLanes <= count; j += kLanes) {
    for (std::size_t lane = 0; lane < kLanes; ++lane) sum[lane] += a[j + lane] * b[j + lane];
  }
  for (; j < count; ++j) sum[0] += a[j] * b[j];
  return ((sum[0] + sum[4]) + (sum[1] + sum[5])) + ((sum[2] + sum[6]) + (sum[3] + sum[7]));
}

}  // namespace

template <class Real>
void ReducedHessian<Real>::solve_transposed(std::vector<Real>& x) const {
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    const std::vector<Real>& row = rows_[i];
    if (x[i] == 0) continue;
    x[i] /= row[0];
    const Real xi = x[i];
    for (std::size_t j = 1; j < row.size(); ++j) x[i + j] -= row[j] * xi;
  }
}

template <class Real>
void ReducedHessian<Real>::solve(std::vector<Real>& x) const {
  for (std::size_t i = rows_.size(); i-- > 0;) {
    const std::vector<Real>& row = rows_[i];
    x[i] = (x[i] - dot(row.data() + 1, x.data() + i + 1, row.size() - 1)) / row[0];
  }
}

template <class Real>
void ReducedHessian<Real>::append(const std::vector<Real>& r, Real excess) {
  using std::sqrt;
  for (std::size_t i = 0; i < rows_.size(); ++i) rows_[i].push_back(r[i]);
  rows_.push_back({sqrt(excess)});
}

template <class Real>
typename ReducedHessian<Real>::Rotation ReducedHessian<Real>::rotation_to(Real kept, Real zeroed) {
  if (zeroed == 0) return {1, 0};
  const Real length = std::hypot(kept, zeroed);
  return {kept / length, zeroed / length};
}

// below[i] is the entry left of the diagonal of row i; rows from `from` + 1 have one.
template <class Real>
void ReducedHessian<Real>::triangularize(Index from, std::vector<Real>& below) {
  for (std::size_t i = static_cast<std::size_t>(from); i + 1 < rows_.size(); ++i) {
    std::vector<Real>& upper = rows_[i];
    std::vector<Real>& lower = rows_[i + 1];
    const Rotation turn = rotation_to(upper[0], below[i + 1]);
    upper[0] = turn.cosine * upper[0] + turn.sine * below[i + 1];
    rotate(turn.cosine, turn.sine, upper.data() + 1, lower.data(), lower.size());
  }
  rows_.pop_back();
}

template <class Real>
void ReducedHessian<Real>::remove(Index slot) {
  const auto gone = static_cast<std::size_t>(slot);
  for (std::size_t i = 0; i < gone; ++i) rows_[i].erase(rows_[i].begin() + static_cast<std::ptrdiff_t>(gone - i));
  std::vector<Real> below(rows_.size(), Real(0));
  rows_[gone].erase(rows_[gone].begin());
  for (std::size_t i = gone + 1; i < rows_.size(); ++i) {
    below[i] = rows_[i][0];
    rows_[i].erase(rows_[i].begin());
  }
  triangularize(slot, below);
}

// Rotations from below turn the column that leaves into a multiple of the first unit vector; what it adds to the others
// then stands in the first row alone, and a Hessenberg matrix is left to be made triangular.
template <class Real>
void ReducedHessian<Real>::exchange(Index slot, const std::vector<Real>& weight) {
  const auto gone = static_cast<std::size_t>(slot);
  std::vector<Real> below(rows_.size(), Real(0));
  for (std::size_t i = gone; i-- > 0;) {
    std::vector<Real>& upper = rows_[i];
    std::vector<Real>& lower = rows_[i + 1];
    const Rotation turn = rotation_to(upper[gone - i], lower[gone - i - 1]);
    below[i + 1] = -turn.sine * upper[0];
    upper[0] *= turn.cosine;
    rotate(turn.cosine, turn.sine, upper.data() + 1, lower.data(), lower.size());
    lower[gone - i - 1] = 0;
  }
  std::vector<Real>& first = rows_[0];
  const Real leaving = first[gone];
  for (std::size_t j = 0; j < first.size(); ++j) first[j] += weight[j] * leaving;
  for (std::size_t i = 0; i <= gone; ++i) rows_[i].erase(rows_[i].begin() + static_cast<std::ptrdiff_t>(gone - i));
  for (std::size_t i = gone + 1; i < rows_.size(); ++i) {
    below[i] = rows_[i][0];
    rows_[i].erase(rows_[i].begin());
  }
  triangularize(0, below);
}

template <class Real>
Real ReducedHessian<Real>::diagonal_ratio() const {
  using std::abs;
  if (rows_.empty()) return 1;
  Real smallest = abs(rows_[0][0]);
  Real largest = smallest;
  for (const std::vector<Real>& row : rows_) {
    smallest = std::min<Real>(smallest, abs(row[0]));
    largest = std::max<Real>(largest, abs(row[0]));
  }
  return largest > 0 ? smallest / largest : Real(0);
}

template class ReducedHessian<double>;
template class ReducedHessian<Extended>;

}  // namespace zorvex
