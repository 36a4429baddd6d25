// Innermost loops of the dense factorization, for the vector instructions that the processor has. Matrices are
// column-wise with leading dimension ld...; both versions of a kernel add in the same order, but only one of them with
// fused multiplications.
//   Source   F. Van Zee, R. van de Geijn, ACM Trans. Math. Softw. 41 (2015) 14:1-14:33 (packed panels, tiles of
//            registers).
#pragma once

#include "base/types.hpp"

namespace zorvex {

inline constexpr Index kTileRows = 8;
inline constexpr Index kTileCols = 6;

struct ProductKernels {
  // C := C - A B', or -A B' if `overwrite`, with C kTileRows x kTileCols. Column p of A is at a + p * lda, row p of B'
  // at b + p * kTileCols.
  void (*subtract_tile)(Index depth, const double* a, Index lda, const double* b, bool overwrite, double* c, Index ldc);
  // B := B L^-T D^-1 with B rows x order, order <= kTileCols, L unit lower triangular (its diagonal is not read) and
  // inverse[k] = 1 / D[k].
  void (*solve_rows)(Index rows, Index order, const double* l, Index ldl, const double* inverse, double* b, Index ldb);
  // y := y - A x, and x := x - A' y, with A rows x cols.
  void (*subtract_columns)(Index rows, Index cols, const double* a, Index lda, const double* x, double* y);
  void (*subtract_dots)(Index rows, Index cols, const double* a, Index lda, const double* y, double* x);
};

// The fastest that this processor can run.
const ProductKernels& product_kernels();

// Plain C++, on every processor.
extern const ProductKernels kPortableKernels;

}  // namespace zorvex
