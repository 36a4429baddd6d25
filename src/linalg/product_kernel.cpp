#include "linalg/product_kernel.hpp"

#include <algorithm>
#include <array>

namespace zorvex {

namespace {

void subtract_tile(Index depth, const double* a, Index lda, const double* b, bool overwrite, double* c, Index ldc) {
  std::array<double, std::size_t{kTileRows} * kTileCols> sum{};
  for (Index p = 0; p < depth; ++p, a += lda, b += kTileCols) {
    for (Index j = 0; j < kTileCols; ++j) {
      for (Index i = 0; i < kTileRows; ++i) sum[j * kTileRows + i] += a[i] * b[j];
    }
  }
  for (Index j = 0; j < kTileCols; ++j, c += ldc) {
    for (Index i = 0; i < kTileRows; ++i) c[i] = (overwrite ? 0 : c[i]) - sum[j * kTileRows + i];
  }
}

void solve_rows(Index rows, Index order, const double* l, Index ldl, const double* inverse, double* b, Index ldb) {
  for (Index j = 0; j < order; ++j) {
    double* const target = b + static_cast<Offset>(ldb) * j;
    for (Index k = 0; k < j; ++k) {
      const double* const source = b + static_cast<Offset>(ldb) * k;
      const double factor = l[static_cast<Offset>(ldl) * k + j];
      for (Index i = 0; i < rows; ++i) target[i] -= factor * source[i];
    }
  }
  for (Index j = 0; j < order; ++j) {
    double* const target = b + static_cast<Offset>(ldb) * j;
    for (Index i = 0; i < rows; ++i) target[i] *= inverse[j];
  }
}

void subtract_columns(Index rows, Index cols, const double* a, Index lda, const double* x, double* y) {
  for (Index j = 0; j < cols; ++j, a += lda) {
    for (Index i = 0; i < rows; ++i) y[i] -= a[i] * x[j];
  }
}

void subtract_dots(Index rows, Index cols, const double* a, Index lda, const double* y, double* x) {
  for (Index j = 0; j < cols; ++j, a += lda) {
    double sum = 0;
    for (Index i = 0; i < rows; ++i) sum += a[i] * y[i];
    x[j] -= sum;
  }
}

}  // namespace

const ProductKernels kPortableKernels{subtract_tile, solve_rows, subtract_columns, subtract_dots};

}  // namespace zorvex
