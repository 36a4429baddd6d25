// Dense kernels of the multifrontal factorization, on top of BLAS. All matrices are column-wise; of symmetric ones only
// the lower triangle counts.
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
  std::vector<double> scaled;
};

// A panel has `rows` x `cols` entries (rows >= cols) and leading dimension rows. It is factored in steps of kPanelWidth
// columns: step k eliminates its columns, then its trailing columns are brought up to date block by block. At the end
// it holds L, unit lower triangular with the unit diagonal not stored, and `pivot` (length cols) D: A = L D L'.
inline constexpr Index kPanelWidth = 64;
// Width of the column blocks of update_trailing and update_block.
inline constexpr Index kUpdateWidth = 128;

// Eliminates columns [first, first + kPanelWidth) or to the end. Returns the number of replaced pivots. work.scaled is
// what update_trailing wants as `scaled`.
int eliminate_step(double* panel, Index rows, Index cols, Index first, const PivotRule& rule, double* pivot,
                   DenseWorkspace& work);

// Number of column blocks behind the step that began at `first`, and the update of one of them by that step.
Index num_trailing_blocks(Index cols, Index first);
void update_trailing(double* panel, Index rows, Index cols, Index first, Index block, const double* scaled);

// Column block `block` of the update matrix C = -L2 D L2', where L2 is the part of the panel below its first `cols`
// rows and C has order rows - cols (also its leading dimension). Above the diagonal C is left unset or arbitrary.
void update_block(const double* panel, Index rows, Index cols, const double* pivot, Index block, double* update,
                  DenseWorkspace& work);

// x := L11^-1 x on the panel's own rows, below := below - L21 x.
void forward_panel(const double* panel, Index rows, Index cols, double* x, double* below);

// x := L11^-T (x - L21' below).
void backward_panel(const double* panel, Index rows, Index cols, double* x, const double* below);

}  // namespace zorvex
