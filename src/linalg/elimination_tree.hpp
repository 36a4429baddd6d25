// The elimination tree of a symmetric matrix and the column counts of its factor.
//   Source   J. Liu, SIAM J. Matrix Anal. Appl. 11 (1990) 134-172; J. Gilbert, E. Ng, B. Peyton, SIAM J. Matrix Anal.
//            Appl. 15 (1994) 1075-1091.
#pragma once

#include <vector>

#include "base/types.hpp"
#include "linalg/ordering.hpp"

namespace zorvex {

// Positions are in elimination order, which is a postorder of the tree: the descendants of a column are the columns
// right before it.
struct EliminationTree {
  std::vector<Index> order;    // variable eliminated at each position
  std::vector<Index> parent;   // position, -1 at a root; parent[k] > k
  std::vector<Offset> counts;  // entries of each column of the factor with the diagonal

  [[nodiscard]] Index size() const { return static_cast<Index>(order.size()); }
  [[nodiscard]] double factor_nonzeros() const;    // with the diagonal
  [[nodiscard]] double factor_operations() const;  // sum of squared counts
};

// `order` as of ordering.hpp; the tree's own order differs from it by a postorder, which leaves the fill unchanged.
// Cost nearly O(nnz).
EliminationTree make_elimination_tree(const SymmetricPattern& pattern, const std::vector<Index>& order);

// A postorder of the forest `parent` (parents anywhere): result[k] is the node visited k-th; children of a node in
// increasing order.
std::vector<Index> postorder_of(const std::vector<Index>& parent);

}  // namespace zorvex
