#include "linalg/ordering.hpp"

#include <amd.h>

#include <algorithm>
#include <cassert>
#include <new>
#include <numeric>

namespace zorvex {

namespace {

std::vector<Index> identity(Index n) {
  std::vector<Index> order(static_cast<std::size_t>(n));
  std::iota(order.begin(), order.end(), 0);
  return order;
}

}  // namespace

SymmetricPattern pattern_of_lower(const SparseMatrix& lower) {
  assert(lower.num_rows == lower.num_cols);
  SymmetricPattern pattern;
  const Index n = lower.num_cols;
  pattern.start.assign(static_cast<std::size_t>(n) + 1, 0);
  for (Index col = 0; col < n; ++col) {
    for (Offset k = lower.begin(col); k < lower.end(col); ++k) {
      const Index row = lower.index[k];
      if (row == col) continue;
      ++pattern.start[row + 1];
      ++pattern.start[col + 1];
    }
  }
  std::partial_sum(pattern.start.begin(), pattern.start.end(), pattern.start.begin());
  pattern.index.resize(static_cast<std::size_t>(pattern.start.back()));
  std::vector<Offset> next(pattern.start.begin(), pattern.start.end() - 1);
  for (Index col = 0; col < n; ++col) {
    for (Offset k = lower.begin(col); k < lower.end(col); ++k) {
      const Index row = lower.index[k];
      if (row == col) continue;
      pattern.index[next[row]++] = col;
      pattern.index[next[col]++] = row;
    }
  }
  for (Index k = 0; k < n; ++k) {
    std::sort(pattern.index.begin() + pattern.start[k], pattern.index.begin() + pattern.start[k + 1]);
  }
  return pattern;
}

std::vector<Index> order_minimum_degree(const SymmetricPattern& pattern) {
  const Index n = pattern.size();
  if (n == 0) return {};
  std::vector<SuiteSparse_long> start(pattern.start.begin(), pattern.start.end());
  std::vector<SuiteSparse_long> index(pattern.index.begin(), pattern.index.end());
  std::vector<SuiteSparse_long> order(static_cast<std::size_t>(n));
  if (index.empty()) return identity(n);
  const int status = static_cast<int>(amd_l_order(n, start.data(), index.data(), order.data(), nullptr, nullptr));
  if (status == AMD_OUT_OF_MEMORY) throw std::bad_alloc();
  assert(status == AMD_OK);
  return {order.begin(), order.end()};
}

}  // namespace zorvex
