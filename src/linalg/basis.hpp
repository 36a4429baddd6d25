// A simplex basis in the user's index space, as it is handed between solver layers.
#pragma once

#include <cstdint>
#include <vector>

#include "base/types.hpp"

namespace zorvex {

enum class BasisStatus : std::int8_t {
  kBasic = 0,
  kAtLower = -1,       // column at its lower bound; row activity at its lower side
  kAtUpper = -2,       // column at its upper bound; row activity at its upper side
  kNonbasicFree = -3,  // nonbasic off both bounds: a free variable at zero, or superbasic
};

// `head` and `norm` are optional (both empty, or both of length num_rows): head[k] is the variable that is basic in
// position k (columns first, then num_cols + row for a row's logical), norm[k] its dual steepest edge weight, an
// approximation of || e_k' B^-1 ||^2 in the scaled space of the solver that made it.
struct Basis {
  std::vector<BasisStatus> col;
  std::vector<BasisStatus> row;
  std::vector<Index> head;
  std::vector<double> norm;

  [[nodiscard]] bool empty() const { return col.empty() && row.empty(); }
};

}  // namespace zorvex
