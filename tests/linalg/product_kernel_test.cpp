#include "linalg/product_kernel.hpp"

#include <gtest/gtest.h>

#include <vector>

#include "base/random_stream.hpp"

namespace zorvex {
namespace {

std::vector<double> random_entries(RandomStream& random, Index count) {
  std::vector<double> entries(static_cast<std::size_t>(count));
  for (double& entry : entries) entry = random.uniform() - 0.5;
  return entries;
}

// Both versions of every kernel leave the same in their outputs, and alone what lies around these.
TEST(ProductKernels, VectorsAgreeWithPlainLoops) {
  if (&product_kernels() == &kPortableKernels) GTEST_SKIP() << "this processor has no vector instructions to compare";
  RandomStream random(1, "product kernels");
  const auto compare = [](const std::vector<double>& start, const auto& run) {
    std::vector<double> vectors = start, loops = start;
    run(product_kernels(), vectors.data());
    run(kPortableKernels, loops.data());
    for (std::size_t k = 0; k < start.size(); ++k) ASSERT_NEAR(vectors[k], loops[k], 1e-13) << "entry " << k;
  };
  for (Index rows = 0; rows <= 19; ++rows) {
    for (Index cols = 1; cols <= 11; ++cols) {
      SCOPED_TRACE(testing::Message() << rows << " rows, " << cols << " columns");
      const Index ld = rows + kTileRows;
      const std::vector<double> a = random_entries(random, ld * (cols + 1));
      const std::vector<double> b = random_entries(random, kTileCols * cols), x = random_entries(random, cols + 1);
      const std::vector<double> c = random_entries(random, ld * kTileCols), y = random_entries(random, rows + 1);
      for (const bool overwrite : {false, true}) {
        compare(c, [&](const ProductKernels& kernels, double* to) {
          kernels.subtract_tile(cols, a.data(), ld, b.data(), overwrite, to, ld);
        });
      }
      compare(y, [&](const ProductKernels& kernels, double* to) {
        kernels.subtract_columns(rows, cols, a.data(), ld, x.data(), to);
      });
      compare(x, [&](const ProductKernels& kernels, double* to) {
        kernels.subtract_dots(rows, cols, a.data(), ld, y.data(), to);
      });
      if (cols > kTileCols) continue;
      compare(a, [&](const ProductKernels& kernels, double* to) {
        kernels.solve_rows(rows, cols, c.data(), ld, x.data(), to, ld);
      });
    }
  }
}

}  // namespace
}  // namespace zorvex
