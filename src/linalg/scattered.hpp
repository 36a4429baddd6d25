// Sparse vector over a dense array, the operand of every simplex solve.
#pragma once

#include <cmath>
#include <vector>

#include "base/types.hpp"

namespace zorvex {

// Zeroes the entries of magnitude <= drop and writes the positions of the others to `list`, which has room for all
// `length`. Returns their number. Without branches: which entries stay is hard to predict.
template <class Real>
Index list_nonzeros(Real* value, Index length, Real drop, Index* list) {
  using std::abs;
  for (Index i = 0; i < length; ++i) value[i] = abs(value[i]) > drop ? value[i] : Real(0);
  Index count = 0;
  for (Index i = 0; i < length; ++i) {
    list[count] = i;
    count += abs(value[i]) > Real(0) ? 1 : 0;
  }
  return count;
}

// Either `dense` is false and `index` holds, without duplicates, a superset of the positions of the nonzeros of
// `value` (which is exactly zero elsewhere); or `dense` is true, `index` is unspecified and every value counts.
template <class Real>
struct Scattered {
  std::vector<Real> value;  // length n
  std::vector<Index> index;
  bool dense = false;

  void resize(Index n) {
    value.assign(static_cast<std::size_t>(n), Real(0));
    index.clear();
    index.reserve(static_cast<std::size_t>(n));
    dense = false;
  }
  [[nodiscard]] Index size() const { return static_cast<Index>(value.size()); }
  // So many positions count that a loop over all of them, which the compiler can vectorize, is faster than the list.
  [[nodiscard]] bool crowded() const { return dense || index.size() * 2 > value.size(); }

  // All zero again. Cost O(count) when sparse, O(n) when dense.
  void clear() {
    if (dense || index.size() * 4 > value.size()) {
      value.assign(value.size(), Real(0));
    } else {
      for (const Index i : index) value[i] = Real(0);
    }
    index.clear();
    dense = false;
  }

  // Rebuilds `index` from the values and leaves the vector sparse. Entries of magnitude <= drop become exact zeros.
  void pack(Real drop) {
    if (!dense) {
      std::size_t kept = 0;
      for (const Index i : index) {
        if (value[i] > drop || value[i] < -drop) {
          index[kept++] = i;
        } else {
          value[i] = Real(0);
        }
      }
      index.resize(kept);
      return;
    }
    index.resize(value.size());
    index.resize(static_cast<std::size_t>(list_nonzeros(value.data(), size(), drop, index.data())));
    dense = false;
  }
};

// Calls visit(position) once for every position that counts, for some zeros as well. `visit` should not branch.
template <class Real, class Visit>
void for_each_entry(const Scattered<Real>& vector, Visit visit) {
  if (vector.crowded()) {
    const Index size = vector.size();
    for (Index i = 0; i < size; ++i) visit(i);
  } else {
    for (const Index i : vector.index) visit(i);
  }
}

}  // namespace zorvex
