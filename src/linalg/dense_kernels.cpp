#include "linalg/dense_kernels.hpp"

#include <algorithm>
#include <array>
#include <cassert>

#include "linalg/product_kernel.hpp"

namespace zorvex {

namespace {

constexpr Offset kSmallWork = 2048;  // multiplications; up to here a loop beats packing
constexpr Index kSolveCols = 8;      // columns that a triangular solve takes together
// A tile of both packed factors stays in the first-level cache, the packed block of the left one in the second-level.
constexpr Index kDepth = 192;
constexpr Index kBlockRows = 96;
constexpr double kDeadPivot = 0x1p200;  // stands for infinity: its unknown comes out as zero, nothing overflows

double* column(double* a, Index ld, Index col) { return a + static_cast<Offset>(ld) * col; }
const double* column(const double* a, Index ld, Index col) { return a + static_cast<Offset>(ld) * col; }

Index rounded_up(Index n, Index unit) { return (n + unit - 1) / unit * unit; }

// C := C - A D A1' on and below the diagonal, where A is m x k, A1 its first n rows and C m x n; `overwrite` forgets
// what C held.
struct SymmetricProduct {
  Index m, n, k;
  const double* a;
  Index lda;
  const double* d;
  bool overwrite;
  double* c;
  Index ldc;
};

// Rows in groups of kTileRows, zeros behind the last of them.
void pack_left(const SymmetricProduct& product, Index row, Index rows, Index first, Index depth, double* packed) {
  for (Index i = 0; i < rows; i += kTileRows) {
    const Index count = std::min(kTileRows, rows - i);
    const double* from = column(product.a, product.lda, first) + row + i;
    for (Index p = 0; p < depth; ++p, from += product.lda, packed += kTileRows) {
      if (count == kTileRows) {
        std::copy_n(from, kTileRows, packed);
      } else {
        std::fill_n(std::copy_n(from, count, packed), kTileRows - count, 0.0);
      }
    }
  }
}

// The first n rows times D, in groups of kTileCols.
void pack_right(const SymmetricProduct& product, Index first, Index depth, double* packed) {
  for (Index j = 0; j < product.n; j += kTileCols) {
    const Index count = std::min(kTileCols, product.n - j);
    const double* from = column(product.a, product.lda, first) + j;
    for (Index p = 0; p < depth; ++p, from += product.lda, packed += kTileCols) {
      const double d = product.d[first + p];
      for (Index e = 0; e < count; ++e) packed[e] = from[e] * d;
      for (Index e = count; e < kTileCols; ++e) packed[e] = 0;
    }
  }
}

// One tile of C from a tile of rows `left` and one of columns `right`.
void subtract_tile(const SymmetricProduct& product, const ProductKernels& kernels, Index row, Index col, Index depth,
                   const double* left, Index ld, const double* right, bool overwrite) {
  double* const c = column(product.c, product.ldc, col) + row;
  const Index rows = std::min(kTileRows, product.m - row), cols = std::min(kTileCols, product.n - col);
  if (rows == kTileRows && cols == kTileCols) {
    kernels.subtract_tile(depth, left, ld, right, overwrite, c, product.ldc);
    return;
  }
  std::array<double, std::size_t{kTileRows} * kTileCols> tile;
  kernels.subtract_tile(depth, left, ld, right, true, tile.data(), kTileRows);
  for (Index j = 0; j < cols; ++j) {
    double* const to = column(c, product.ldc, j);
    const double* const from = tile.data() + j * kTileRows;
    for (Index i = 0; i < rows; ++i) to[i] = (overwrite ? 0 : to[i]) + from[i];
  }
}

void subtract(const SymmetricProduct& product, DenseWorkspace& work) {
  const ProductKernels& kernels = product_kernels();
  const Index most = std::min(kDepth, product.k);
  work.left.resize(static_cast<std::size_t>(rounded_up(std::min(kBlockRows, product.m), kTileRows) * most));
  work.right.resize(static_cast<std::size_t>(rounded_up(product.n, kTileCols) * most));
  for (Index first = 0; first < product.k; first += kDepth) {
    const Index depth = std::min(kDepth, product.k - first);
    const bool overwrite = product.overwrite && first == 0;
    pack_right(product, first, depth, work.right.data());
    for (Index row = 0; row < product.m; row += kBlockRows) {
      const Index rows = std::min(kBlockRows, product.m - row);
      pack_left(product, row, rows, first, depth, work.left.data());
      for (Index col = 0; col < product.n; col += kTileCols) {
        const Index diagonal = std::max(0, col - row) / kTileRows * kTileRows;
        for (Index i = diagonal; i < rows; i += kTileRows) {
          subtract_tile(product, kernels, row + i, col, depth, work.left.data() + static_cast<Offset>(i) * depth,
                        kTileRows, work.right.data() + static_cast<Offset>(col) * depth, overwrite);
        }
      }
    }
  }
}

// The same for n <= kTileCols, k <= kPanelWidth: packing all rows would cost as much as the product.
void subtract_narrow(const SymmetricProduct& product, DenseWorkspace& work) {
  const ProductKernels& kernels = product_kernels();
  work.left.resize(std::size_t{kTileRows} * kPanelWidth);
  work.right.resize(std::size_t{kTileCols} * kPanelWidth);
  pack_right(product, 0, product.k, work.right.data());
  Index row = 0;
  for (; row + kTileRows <= product.m; row += kTileRows) {
    subtract_tile(product, kernels, row, 0, product.k, product.a + row, product.lda, work.right.data(), false);
  }
  if (row == product.m) return;
  pack_left(product, row, product.m - row, 0, product.k, work.left.data());
  subtract_tile(product, kernels, row, 0, product.k, work.left.data(), kTileRows, work.right.data(), false);
}

// Eliminates `cols` columns in their own rows.
int factor_triangle(double* a, Index ld, Index cols, const PivotRule& rule, Index first, double* pivot) {
  int replaced = 0;
  for (Index k = 0; k < cols; ++k) {
    double* const source = column(a, ld, k);
    const double sign = rule.sign[first + k];
    double d = source[k];
    if (!(sign * d > rule.smallest[first + k])) {
      d = sign * kDeadPivot;
      ++replaced;
    }
    pivot[k] = d;
    const double inverse = 1 / d;
    for (Index j = k + 1; j < cols; ++j) {
      double* const target = column(a, ld, j);
      const double factor = source[j] * inverse;
      for (Index i = j; i < cols; ++i) target[i] -= factor * source[i];
    }
    for (Index i = k + 1; i < cols; ++i) source[i] *= inverse;
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

// Left-looking over groups of kTileCols columns, so that each is read and written once.
int eliminate_step(double* panel, Index rows, Index cols, Index first, const PivotRule& rule, double* pivot,
                   DenseWorkspace& work) {
  const Index end = std::min(cols, first + kPanelWidth);
  int replaced = 0;
  for (Index begin = first; begin < end; begin += kTileCols) {
    const Index width = std::min(kTileCols, end - begin);
    double* const group = column(panel, rows, begin) + begin;
    if (begin > first) {
      subtract_narrow({rows - begin, width, begin - first, column(panel, rows, first) + begin, rows, pivot + first,
                       false, group, rows},
                      work);
    }
    replaced += factor_triangle(group, rows, width, rule, begin, pivot + begin);
    std::array<double, kTileCols> inverse;
    for (Index k = 0; k < width; ++k) inverse[k] = 1 / pivot[begin + k];
    product_kernels().solve_rows(rows - begin - width, width, group, rows, inverse.data(), group + width, rows);
  }
  return replaced;
}

Index num_trailing_blocks(Index cols, Index first) {
  const Index trailing = cols - first - kPanelWidth;
  return trailing > 0 ? (trailing + kUpdateWidth - 1) / kUpdateWidth : 0;
}

void update_trailing(double* panel, Index rows, Index cols, Index first, Index block, const double* pivot,
                     DenseWorkspace& work) {
  const Index j = first + kPanelWidth + block * kUpdateWidth;
  subtract({rows - j, std::min(kUpdateWidth, cols - j), kPanelWidth, column(panel, rows, first) + j, rows,
            pivot + first, false, column(panel, rows, j) + j, rows},
           work);
}

void update_block(const double* panel, Index rows, Index cols, const double* pivot, Index block, double* update,
                  DenseWorkspace& work) {
  const Index size = rows - cols;
  if (static_cast<Offset>(size) * size * cols <= kSmallWork) {
    update_small(panel, rows, cols, pivot, update);
    return;
  }
  const Index j = block * kUpdateWidth;
  subtract({size - j, std::min(kUpdateWidth, size - j), cols, panel + cols + j, rows, pivot, true,
            column(update, size, j) + j, size},
           work);
}

void forward_panel(const double* panel, Index rows, Index cols, double* x, double* below) {
  const Index rest = rows - cols;
  for (Index first = 0; first < cols; first += kSolveCols) {
    const Index end = std::min(cols, first + kSolveCols);
    for (Index k = first; k < end; ++k) {
      const double* const source = column(panel, rows, k);
      for (Index i = k + 1; i < end; ++i) x[i] -= source[i] * x[k];
    }
    const double* const block = column(panel, rows, first);
    if (end < cols) {
      product_kernels().subtract_columns(cols - end, end - first, block + end, rows, x + first, x + end);
    }
    product_kernels().subtract_columns(rest, end - first, block + cols, rows, x + first, below);
  }
}

void backward_panel(const double* panel, Index rows, Index cols, double* x, const double* below) {
  const Index rest = rows - cols;
  for (Index end = cols; end > 0;) {
    const Index first = (end - 1) / kSolveCols * kSolveCols;
    const double* const block = column(panel, rows, first);
    product_kernels().subtract_dots(rest, end - first, block + cols, rows, below, x + first);
    if (end < cols) {
      product_kernels().subtract_dots(cols - end, end - first, block + end, rows, x + end, x + first);
    }
    for (Index k = end; k-- > first;) {
      const double* const source = column(panel, rows, k);
      for (Index i = k + 1; i < end; ++i) x[k] -= source[i] * x[i];
    }
    end = first;
  }
}

}  // namespace zorvex
