// Dense kernels of the multifrontal factorization. All matrices are column-wise; of symmetric ones only the lower
// triangle counts, and what lies above the diagonal may be overwritten with anything.
//   Library  none: BLAS knows no product with a diagonal matrix in the middle whose result is symmetric, so half of
//   each
//            diagonal block would be for nothing, and its calls cost too much on the many small fronts.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/types.hpp"

namespace zorvex {

// What a pivot must look like: sign[k] * pivot > smallest[k]. Others carry no information (what is left of the
// diagonal is rounding) and are replaced by a value so large that the unknown they belong to comes out as zero.
struct PivotRule {
  std::span<const std::int8_t> sign;  // +1 or -1
  std::span<const double> smallest;   // non-negative
};

// Scratch memory of one thread.
struct DenseWorkspace {
  std::vector<double> left, right;  // packed factors of a product
};

// A panel has `rows` x `cols` entries (rows >= cols) and leading dimension rows. It is factored in steps of kPanelWidth
// columns: step k eliminates its columns, then its trailing columns are brought up to date block by block. At the end
// it holds L, unit lower triangular with the unit diagonal not stored, and `pivot` (length cols) D: A = L D L'.
inline constexpr Index kPanelWidth = 72;
// Width of the column blocks of update_trailing and update_block.
inline constexpr Index kUpdateWidth = 192;

// Eliminates columns [first, first + kPanelWidth) or to the end. Returns the number of replaced pivots.
int eliminate_step(double* panel, Index rows, Index cols, Index first, const PivotRule& rule, double* pivot,
                   DenseWorkspace& work);

// Number of column blocks behind the step that began at `first`, and the update of one of them by that step.
Index num_trailing_blocks(Index cols, Index first);
void update_trailing(double* panel, Index rows, Index cols, Index first, Index block, const double* pivot,
                     DenseWorkspace& work);

// Column block `block` of the update matrix C = -L2 D L2', where L2 is the part of the panel below its first `cols`
// rows and C has order rows - cols (also its leading dimension).
void update_block(const double* panel, Index rows, Index cols, const double* pivot, Index block, double* update,
                  DenseWorkspace& work);

// x := L11^-1 x on the panel's own rows, below := below - L21 x.
void forward_panel(const double* panel, Index rows, Index cols, double* x, double* below);

// x := L11^-T (x - L21' below).
void backward_panel(const double* panel, Index rows, Index cols, double* x, const double* below);

}  // namespace zorvex
