// Fill-reducing orderings of symmetric matrices.
//   Source   P. Amestoy, T. Davis, I. Duff, ACM Trans. Math. Softw. 30 (2004) 381-388 (approximate minimum degree);
//            G. Karypis, V. Kumar, SIAM J. Sci. Comput. 20 (1998) 359-392 (multilevel nested dissection).
#pragma once

#include <functional>
#include <vector>

#include "base/types.hpp"
#include "linalg/sparse_matrix.hpp"

namespace zorvex {

// Adjacency of a symmetric matrix: the neighbours of k are index[start[k] .. start[k + 1]), increasing, without k.
struct SymmetricPattern {
  std::vector<Offset> start{0};
  std::vector<Index> index;

  [[nodiscard]] Index size() const { return static_cast<Index>(start.size()) - 1; }
};

// From the lower triangle of a square matrix, diagonal entries allowed and ignored. Cost O(nnz).
SymmetricPattern pattern_of_lower(const SparseMatrix& lower);

// A permutation: order[k] is the variable eliminated k-th. Throws std::bad_alloc when there is no memory.
std::vector<Index> order_minimum_degree(const SymmetricPattern& pattern);

// As above, by separators down to small pieces, which minimum degree orders. `go_on` is asked between the separators;
// false when it said no or when the graph is too large for the partitioner's index type. The result depends on nothing
// but the pattern; the C library's random numbers of the calling program are left as they were.
bool order_nested_dissection(const SymmetricPattern& pattern, const std::function<bool()>& go_on,
                             std::vector<Index>& order);

}  // namespace zorvex
