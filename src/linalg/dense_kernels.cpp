#include "linalg/dense_kernels.hpp"

#include <algorithm>

#include "linalg/blas.hpp"

namespace zorvex {

namespace {

constexpr Index kSmallCols = 4;         // up to here a loop beats the call
constexpr Offset kSmallWork = 4096;     // likewise, multiplications
constexpr double kDeadPivot = 0x1p200;  // stands for infinity: its unknown comes out as zero, nothing overflows

double* column(double* a, Index ld, Index col) { return a + static_cast<Offset>(ld) * col; }
const double* column(const double* a, Index ld, Index col) { return a + static_cast<Offset>(ld) * col; }

// Right-looking elimination of `cols` columns among themselves and in all `rows` rows.
int factor_narrow(double* panel, Index rows, Index cols, Index ld, const PivotRule& rule, Index first, double* pivot) {
  int replaced = 0;
  for (Index k = 0; k < cols; ++k) {
    double* const source = column(panel, ld, k);
    const double sign = rule.sign[first + k];
    double d = source[k];
    if (!(sign * d > rule.smallest[first + k])) {
      d = sign * kDeadPivot;
      ++replaced;
    }
    pivot[k] = d;
    const double inverse = 1 / d;
    for (Index j = k + 1; j < cols; ++j) {
      double* const target = column(panel, ld, j);
      const double factor = source[j] * inverse;
      if (factor == 0) continue;
      for (Index i = j; i < rows; ++i) target[i] -= factor * source[i];
    }
    for (Index i = k + 1; i < rows; ++i) source[i] *= inverse;
  }
  return replaced;
}

// The block's own triangle first, then the rows below by BLAS: X = A21 L11^-T, L21 = X D^-1. `scaled` receives the
// first `keep` rows of X.
int factor_wide(double* panel, Index rows, Index cols, Index ld, const PivotRule& rule, Index first, double* pivot,
                Index keep, double* scaled) {
  const int replaced = factor_narrow(panel, cols, cols, ld, rule, first, pivot);
  const Index below = rows - cols;
  if (below == 0) return replaced;
  solve_from_right(blas_library(), below, cols, panel, ld, panel + cols, ld);
  for (Index k = 0; k < cols; ++k) {
    double* const x = column(panel, ld, k) + cols;
    std::copy(x, x + keep, scaled + static_cast<Offset>(keep) * k);
    const double inverse = 1 / pivot[k];
    for (Index i = 0; i < below; ++i) x[i] *= inverse;
  }
  return replaced;
}

// Few multiplications: a loop over the columns of L2.
void update_small(const double* panel, Index rows, Index cols, const double* pivot, double* update) {
  const Index size = rows - cols;
  for (Index j = 0; j < size; ++j) std::fill(column(update, size, j) + j, column(update, size, j) + size, 0.0);
  for (Index k = 0; k < cols; ++k) {
    const double* const source = column(panel, rows, k) + cols;
    for (Index j = 0; j < size; ++j) {
      const double factor = source[j] * pivot[k];
      if (factor == 0) continue;
      double* const target = column(update, size, j);
      for (Index i = j; i < size; ++i) target[i] -= factor * source[i];
    }
  }
}

}  // namespace

int eliminate_step(double* panel, Index rows, Index cols, Index first, const PivotRule& rule, double* pivot,
                   DenseWorkspace& work) {
  if (cols <= kSmallCols) return factor_narrow(panel, rows, cols, rows, rule, 0, pivot);
  const Index width = std::min(kPanelWidth, cols - first);
  const Index keep = cols - first - width;
  work.scaled.resize(static_cast<std::size_t>(keep) * static_cast<std::size_t>(width));
  return factor_wide(column(panel, rows, first) + first, rows - first, width, rows, rule, first, pivot + first, keep,
                     work.scaled.data());
}

Index num_trailing_blocks(Index cols, Index first) {
  const Index trailing = cols - first - kPanelWidth;
  return trailing > 0 ? (trailing + kUpdateWidth - 1) / kUpdateWidth : 0;
}

void update_trailing(double* panel, Index rows, Index cols, Index first, Index block, const double* scaled) {
  const Index right = first + kPanelWidth;
  const Index j = right + block * kUpdateWidth;
  subtract_product(blas_library(), rows - j, std::min(kUpdateWidth, cols - j), kPanelWidth,
                   column(panel, rows, first) + j, rows, scaled + (j - right), cols - right, 1,
                   column(panel, rows, j) + j, rows);
}

void update_block(const double* panel, Index rows, Index cols, const double* pivot, Index block, double* update,
                  DenseWorkspace& work) {
  const Index size = rows - cols;
  if (static_cast<Offset>(size) * size * cols <= kSmallWork) {
    update_small(panel, rows, cols, pivot, update);
    return;
  }
  const Index j = block * kUpdateWidth;
  const Index width = std::min(kUpdateWidth, size - j);
  work.scaled.resize(static_cast<std::size_t>(cols) * static_cast<std::size_t>(width));
  for (Index k = 0; k < cols; ++k) {
    const double* const source = column(panel, rows, k) + cols + j;
    double* const target = column(work.scaled.data(), width, k);
    for (Index i = 0; i < width; ++i) target[i] = source[i] * pivot[k];
  }
  subtract_product(blas_library(), size - j, width, cols, panel + cols + j, rows, work.scaled.data(), width, 0,
                   column(update, size, j) + j, size);
}

void forward_panel(const double* panel, Index rows, Index cols, double* x, double* below) {
  const Index rest = rows - cols;
  if (cols <= kSmallCols) {
    for (Index k = 0; k < cols; ++k) {
      const double* const source = column(panel, rows, k);
      for (Index i = k + 1; i < cols; ++i) x[i] -= source[i] * x[k];
      for (Index i = 0; i < rest; ++i) below[i] -= source[cols + i] * x[k];
    }
    return;
  }
  solve_forward(blas_library(), cols, panel, rows, x, rest, panel + cols, rows, below);
}

void backward_panel(const double* panel, Index rows, Index cols, double* x, const double* below) {
  const Index rest = rows - cols;
  if (cols <= kSmallCols) {
    for (Index k = cols; k-- > 0;) {
      const double* const source = column(panel, rows, k);
      double sum = x[k];
      for (Index i = k + 1; i < cols; ++i) sum -= source[i] * x[i];
      for (Index i = 0; i < rest; ++i) sum -= source[cols + i] * below[i];
      x[k] = sum;
    }
    return;
  }
  solve_backward(blas_library(), cols, panel, rows, x, rest, panel + cols, rows, below);
}

}  // namespace zorvex
