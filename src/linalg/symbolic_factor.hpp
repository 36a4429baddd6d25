// Symbolic phase of the multifrontal factorization of a symmetric matrix: supernodes, their rows, the assembly tree and
// where each entry of the matrix goes.
//   Source   C. Ashcraft, R. Grimes, ACM Trans. Math. Softw. 15 (1989) 291-309 (relaxed supernodes); J. Liu, SIAM Rev.
//            34 (1992) 82-109 (multifrontal method).
#pragma once

#include <vector>

#include "base/types.hpp"
#include "linalg/elimination_tree.hpp"
#include "linalg/sparse_matrix.hpp"

namespace zorvex {

// Supernode s eliminates the positions [first_col[s], first_col[s + 1]). Its panel is stored column-wise with leading
// dimension num_rows(s) at panel_start[s]; row k of the panel is position rows[row_start[s] + k], the supernode's own
// positions first, increasing. Supernodes are numbered in postorder of the assembly tree.
struct SymbolicFactor {
  std::vector<Index> order;     // variable at each position
  std::vector<Index> position;  // of each variable
  std::vector<Index> first_col;
  std::vector<Index> parent;  // of each supernode, -1 at a root
  std::vector<Offset> row_start;
  std::vector<Index> rows;
  std::vector<Index> in_parent;  // as `rows`: row of the parent's panel, for the rows below the supernode's own
  std::vector<Offset> panel_start;
  // Children of s in increasing order: child[child_start[s] .. child_start[s + 1]).
  std::vector<Index> child_start, child;
  // Entry k of the matrix's value array belongs into the panel at panel_start + target; grouped by supernode, in each
  // by increasing column.
  std::vector<Offset> entry_start;  // num_supernodes + 1
  std::vector<Offset> entry_source;
  std::vector<Offset> entry_target;  // relative to the panel
  double operations = 0;             // multiplications and additions, with the explicit zeros
  double exact_nonzeros = 0;         // of the factor, without the zeros that relaxed supernodes add
  double stack_peak = 0;  // doubles for update matrices in a sequential run: on two stacks, by parity of depth

  [[nodiscard]] Index size() const { return static_cast<Index>(order.size()); }
  [[nodiscard]] Index num_supernodes() const { return static_cast<Index>(first_col.size()) - 1; }
  [[nodiscard]] Index num_cols(Index s) const { return first_col[s + 1] - first_col[s]; }
  [[nodiscard]] Index num_rows(Index s) const { return static_cast<Index>(row_start[s + 1] - row_start[s]); }
  [[nodiscard]] Offset factor_size() const { return panel_start.back(); }
  [[nodiscard]] double bytes() const { return 8 * (static_cast<double>(factor_size()) + stack_peak); }
};

// `lower` is the lower triangle with every diagonal entry present; `tree` belongs to its pattern. `dense` merges
// supernodes whatever that costs in the triangular solves. Cost about O(rows of
// all supernodes + nnz log nnz).
SymbolicFactor analyze_factor(const SparseMatrix& lower, const EliminationTree& tree, bool dense = false);

}  // namespace zorvex
