#include "simplex/lu_dense_tail.hpp"

#include <algorithm>
#include <cmath>

#include "simplex/lu_traits.hpp"

namespace zorvex {

// Row of the largest magnitude in the column from row `from` on, -1 if none is acceptable.
template <class Real>
Index LuDenseTail<Real>::largest_in_column(Index n, Index from, Index col) const {
  using std::abs;
  Index best = -1;
  Real largest = 0;
  for (Index i = from; i < n; ++i) {
    const Real magnitude = abs(matrix_[static_cast<std::size_t>(i) * n + col]);
    if (magnitude > largest) {
      largest = magnitude;
      best = i;
    }
  }
  return largest >= LuTraits<Real>::kAbsolutePivot ? best : -1;
}

template <class Real>
void LuDenseTail<Real>::store_pivot_row(const Real* pivot_row, Index col, const std::vector<Index>& positions,
                                        LuPivotRows<Real>& u) {
  using std::abs;
  const auto begin = static_cast<Index>(u.index.size());
  for (Index j = col + 1; j < static_cast<Index>(positions.size()); ++j) {
    if (abs(pivot_row[j]) <= LuTraits<Real>::kTiny) continue;
    u.index.push_back(positions[j]);
    u.value.push_back(pivot_row[j]);
  }
  u.rows.push_back({begin, static_cast<Index>(u.index.size())});
}

// Rows are exchanged so that those with pivot come first; columns are taken in their order. A skipped column has no
// acceptable entry in the remaining rows, so the rows of U made later do not need it.
template <class Real>
LuStatus LuDenseTail<Real>::run(std::vector<Index>& rows, const std::vector<Index>& positions, LuFactors<Real>& factors,
                                LuPivotRows<Real>& u, LuPoll& poll) {
  using std::abs;
  const auto n = static_cast<Index>(rows.size());
  auto& space = factors.space;
  Index done = 0;
  for (Index col = 0; col < n; ++col) {
    const Index best = largest_in_column(n, done, col);
    if (best < 0) continue;
    if (space.available() < static_cast<Offset>(u.index.size()) + 2 * n) return LuStatus::kSpaceTooSmall;
    Real* pivot_row = matrix_.data() + static_cast<std::size_t>(done) * n;
    if (best != done) {
      std::swap_ranges(pivot_row + col, pivot_row + n, matrix_.data() + static_cast<std::size_t>(best) * n + col);
      std::swap(rows[best], rows[done]);
    }
    const Real pivot = pivot_row[col];
    store_pivot_row(pivot_row, col, positions, u);
    factors.add_pivot(rows[done], positions[col], pivot);
    const Index first = space.low();
    for (Index i = done + 1; i < n; ++i) {
      Real* row = matrix_.data() + static_cast<std::size_t>(i) * n;
      const Real multiplier = row[col] / pivot;
      if (abs(multiplier) <= LuTraits<Real>::kTiny) continue;
      const Index slot = space.take_low(1);
      space.index()[slot] = rows[i];
      space.value()[slot] = multiplier;
      for (Index j = col + 1; j < n; ++j) row[j] -= multiplier * pivot_row[j];
    }
    factors.l_col[rows[done]] = {first, space.low()};
    if (space.low() > first) factors.l_order.push_back(rows[done]);
    ++done;
    if (poll.spend(static_cast<Offset>(n - done) * (n - col) / 2)) return LuStatus::kInterrupted;
  }
  return LuStatus::kOk;
}

template class LuDenseTail<double>;
template class LuDenseTail<Extended>;

}  // namespace zorvex
