// The kernels for processors with 256-bit vectors and fused multiplications (x86-64-v3), and the choice between them
// and the portable ones.
#include <cstring>

#include "linalg/product_kernel.hpp"

#if defined(__x86_64__) && defined(__GNUC__)
#define ZORVEX_VECTORS __attribute__((target("avx2,fma")))
#endif

namespace zorvex {

#ifdef ZORVEX_VECTORS

namespace {

constexpr Index kLanes = 4;
using Vector = double __attribute__((vector_size(kLanes * sizeof(double))));

ZORVEX_VECTORS inline Vector load(const double* from) {
  Vector value;
  std::memcpy(&value, from, sizeof(value));
  return value;
}

ZORVEX_VECTORS inline void store(double* to, Vector value) { std::memcpy(to, &value, sizeof(value)); }

// Two vectors by six columns: twelve sums, two vectors of A and one of B take fifteen of the sixteen registers.
ZORVEX_VECTORS void subtract_tile(Index depth, const double* a, Index lda, const double* b, bool overwrite, double* c,
                                  Index ldc) {
  static_assert(kTileRows == 2 * kLanes && kTileCols == 6);
  Vector sum[2][kTileCols] = {};
  for (Index p = 0; p < depth; ++p, a += lda, b += kTileCols) {
    const Vector top = load(a), bottom = load(a + kLanes);
#pragma GCC unroll 6
    for (Index j = 0; j < kTileCols; ++j) {
      sum[0][j] -= top * b[j];
      sum[1][j] -= bottom * b[j];
    }
  }
#pragma GCC unroll 6
  for (Index j = 0; j < kTileCols; ++j) {
    double* const to = c + static_cast<Offset>(ldc) * j;
    store(to, overwrite ? sum[0][j] : load(to) + sum[0][j]);
    store(to + kLanes, overwrite ? sum[1][j] : load(to + kLanes) + sum[1][j]);
  }
}

// Whole rows stay in registers.
template <Index kOrder>
ZORVEX_VECTORS void solve_rows_of(Index rows, const double* l, Index ldl, const double* inverse, double* b, Index ldb) {
  Index i = 0;
  for (; i + kLanes <= rows; i += kLanes) {
    Vector x[kOrder];
#pragma GCC unroll 6
    for (Index j = 0; j < kOrder; ++j) {
      x[j] = load(b + static_cast<Offset>(ldb) * j + i);
#pragma GCC unroll 6
      for (Index k = 0; k < j; ++k) x[j] -= x[k] * l[static_cast<Offset>(ldl) * k + j];
    }
#pragma GCC unroll 6
    for (Index j = 0; j < kOrder; ++j) store(b + static_cast<Offset>(ldb) * j + i, x[j] * inverse[j]);
  }
  kPortableKernels.solve_rows(rows - i, kOrder, l, ldl, inverse, b + i, ldb);
}

void solve_rows(Index rows, Index order, const double* l, Index ldl, const double* inverse, double* b, Index ldb) {
  static_assert(kTileCols == 6);
  switch (order) {
    case 1:
      return solve_rows_of<1>(rows, l, ldl, inverse, b, ldb);
    case 2:
      return solve_rows_of<2>(rows, l, ldl, inverse, b, ldb);
    case 3:
      return solve_rows_of<3>(rows, l, ldl, inverse, b, ldb);
    case 4:
      return solve_rows_of<4>(rows, l, ldl, inverse, b, ldb);
    case 5:
      return solve_rows_of<5>(rows, l, ldl, inverse, b, ldb);
    default:
      return solve_rows_of<6>(rows, l, ldl, inverse, b, ldb);
  }
}

// Four columns at a time: y is read and written once for all of them.
ZORVEX_VECTORS void subtract_columns(Index rows, Index cols, const double* a, Index lda, const double* x, double* y) {
  constexpr Index kTogether = 4;
  const Offset step = lda;
  Index j = 0;
  for (; j + kTogether <= cols; j += kTogether, a += kTogether * step, x += kTogether) {
    Index i = 0;
    for (; i + kLanes <= rows; i += kLanes) {
      Vector sum = load(y + i);
      sum -= load(a + i) * x[0];
      sum -= load(a + step + i) * x[1];
      sum -= load(a + 2 * step + i) * x[2];
      sum -= load(a + 3 * step + i) * x[3];
      store(y + i, sum);
    }
    for (; i < rows; ++i) y[i] -= a[i] * x[0] + a[step + i] * x[1] + a[2 * step + i] * x[2] + a[3 * step + i] * x[3];
  }
  kPortableKernels.subtract_columns(rows, cols - j, a, lda, x, y);
}

ZORVEX_VECTORS void subtract_dots(Index rows, Index cols, const double* a, Index lda, const double* y, double* x) {
  constexpr Index kTogether = 4;
  const Offset step = lda;
  Index j = 0;
  for (; j + kTogether <= cols; j += kTogether, a += kTogether * step, x += kTogether) {
    Vector sum[kTogether] = {};
    Index i = 0;
    for (; i + kLanes <= rows; i += kLanes) {
      const Vector factor = load(y + i);
#pragma GCC unroll 4
      for (Index k = 0; k < kTogether; ++k) sum[k] += load(a + k * step + i) * factor;
    }
    for (Index k = 0; k < kTogether; ++k) {
      double rest = (sum[k][0] + sum[k][1]) + (sum[k][2] + sum[k][3]);
      for (Index r = i; r < rows; ++r) rest += a[k * step + r] * y[r];
      x[k] -= rest;
    }
  }
  kPortableKernels.subtract_dots(rows, cols - j, a, lda, y, x);
}

constexpr ProductKernels kVectorKernels{subtract_tile, solve_rows, subtract_columns, subtract_dots};

}  // namespace

const ProductKernels& product_kernels() {
  static const bool kAvailable = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
  return kAvailable ? kVectorKernels : kPortableKernels;
}

#else

const ProductKernels& product_kernels() { return kPortableKernels; }

#endif

}  // namespace zorvex
