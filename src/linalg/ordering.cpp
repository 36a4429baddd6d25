#include "linalg/ordering.hpp"

#include <amd.h>
#include <metis.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <cstdlib>
#include <limits>
#include <mutex>
#include <new>
#include <numeric>

namespace zorvex {

namespace {

std::vector<Index> identity(Index n) {
  std::vector<Index> order(static_cast<std::size_t>(n));
  std::iota(order.begin(), order.end(), 0);
  return order;
}

// The partitioner seeds and draws from the C library's generator, which is the calling program's: it gets a state of
// its own for the time of the call, one call at a time.
class RandomStateGuard {
 public:
  RandomStateGuard() : lock_(mutex()), outer_(initstate(1, state_.data(), state_.size())) {}
  ~RandomStateGuard() { setstate(outer_); }
  RandomStateGuard(const RandomStateGuard&) = delete;
  RandomStateGuard& operator=(const RandomStateGuard&) = delete;

 private:
  static std::mutex& mutex() {
    static std::mutex guard;
    return guard;
  }
  std::lock_guard<std::mutex> lock_;
  std::array<char, 128> state_;
  char* outer_;
};

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

bool order_nested_dissection(const SymmetricPattern& pattern, std::vector<Index>& order) {
  Index n = pattern.size();
  order = identity(n);
  if (n <= 1 || pattern.index.empty()) return true;
  if (pattern.start.back() > std::numeric_limits<idx_t>::max() / 4) return false;
  std::vector<idx_t> start(pattern.start.begin(), pattern.start.end());
  std::vector<idx_t> index(pattern.index.begin(), pattern.index.end());
  std::vector<idx_t> permutation(static_cast<std::size_t>(n)), inverse(static_cast<std::size_t>(n));
  std::array<idx_t, METIS_NOPTIONS> options;
  METIS_SetDefaultOptions(options.data());
  options[METIS_OPTION_NUMBERING] = 0;
  options[METIS_OPTION_SEED] = 1;
  const RandomStateGuard own_random_numbers;
  const int status =
      METIS_NodeND(&n, start.data(), index.data(), nullptr, options.data(), permutation.data(), inverse.data());
  if (status == METIS_ERROR_MEMORY) throw std::bad_alloc();
  if (status != METIS_OK) return false;
  order.assign(permutation.begin(), permutation.end());
  return true;
}

}  // namespace zorvex
