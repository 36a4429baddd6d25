// The dense operations that BLAS does best. The library is loaded when the first of them is called: programs that never
// need one pay neither its start-up time nor its memory, and without one plain loops do the same, only slower. All
// matrices are column-wise with leading dimension ld...; L is unit lower triangular, its diagonal is not read.
#pragma once

#include <mutex>

#include "base/types.hpp"

namespace zorvex {

// Entry points of a BLAS library with 32-bit integers, as Fortran compilers see them; the last three only of OpenBLAS.
struct BlasLibrary {
  void (*gemm)(const char* trans_a, const char* trans_b, const int* m, const int* n, const int* k, const double* alpha,
               const double* a, const int* lda, const double* b, const int* ldb, const double* beta, double* c,
               const int* ldc);
  void (*gemv)(const char* trans, const int* m, const int* n, const double* alpha, const double* a, const int* lda,
               const double* x, const int* incx, const double* beta, double* y, const int* incy);
  void (*trsm)(const char* side, const char* uplo, const char* trans, const char* diag, const int* m, const int* n,
               const double* alpha, const double* a, const int* lda, double* b, const int* ldb);
  void (*trsv)(const char* uplo, const char* trans, const char* diag, const int* n, const double* a, const int* lda,
               double* x, const int* incx);
  int (*get_parallel)();
  int (*get_num_threads)();
  void (*set_num_threads)(int count);
};

// The library of this process, null when there is none. ZORVEX_BLAS names its file; an empty name means none.
const BlasLibrary* blas_library();

// C := beta C - A B' with C m x n, A m x k, B n x k.
void subtract_product(const BlasLibrary* library, Index m, Index n, Index k, const double* a, Index lda,
                      const double* b, Index ldb, double beta, double* c, Index ldc);

// B := B L^-T with B rows x order.
void solve_from_right(const BlasLibrary* library, Index rows, Index order, const double* l, Index ldl, double* b,
                      Index ldb);

// x := L^-1 x, then y := y - A x with A rows x order; `rows` may be 0.
void solve_forward(const BlasLibrary* library, Index order, const double* l, Index ldl, double* x, Index rows,
                   const double* a, Index lda, double* y);

// x := L^-T (x - A' y) with A rows x order; `rows` may be 0.
void solve_backward(const BlasLibrary* library, Index order, const double* l, Index ldl, double* x, Index rows,
                    const double* a, Index lda, const double* y);

}  // namespace zorvex
