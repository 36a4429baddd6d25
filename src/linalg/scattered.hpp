// Sparse vector over a dense array, the operand of every simplex solve.
#pragma once

#include <vector>

#include "base/types.hpp"

namespace zorvex {

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
    std::size_t kept = 0;
    for (Index i = 0; i < size(); ++i) {  // without branches: which entries stay is hard to predict
      const bool keep = value[i] > drop || value[i] < -drop;
      value[i] = keep ? value[i] : Real(0);
      index[kept] = i;
      kept += keep ? 1 : 0;
    }
    index.resize(kept);
    dense = false;
  }
};

}  // namespace zorvex
