#include "linalg/blas.hpp"

#include <gtest/gtest.h>

#include <vector>

#include "base/random_stream.hpp"

namespace zorvex {
namespace {

std::vector<double> random_entries(RandomStream& random, int count) {
  std::vector<double> entries(static_cast<std::size_t>(count));
  for (double& entry : entries) entry = random.uniform() - 0.5;
  return entries;
}

void expect_near(const std::vector<double>& a, const std::vector<double>& b) {
  for (std::size_t i = 0; i < a.size(); ++i) ASSERT_NEAR(a[i], b[i], 1e-12) << "entry " << i;
}

// Both ways to compute must agree, on blocks inside larger matrices, too.
TEST(Blas, PlainLoopsAgreeWithTheLibrary) {
  const BlasLibrary* const library = blas_library();
  if (library == nullptr) GTEST_SKIP() << "no BLAS library on this machine";
  RandomStream random(1, "blas test");
  struct Size {
    int rows, order, depth, pad;
  };
  for (const auto [rows, order, depth, pad] : {Size{1, 1, 1, 0}, {7, 5, 3, 2}, {0, 6, 1, 1}, {40, 70, 33, 0}}) {
    const int ld = rows + pad + 1, ldl = order + pad;
    const auto a = random_entries(random, ld * depth), b = random_entries(random, ldl * depth);
    const auto l = random_entries(random, ldl * order), block = random_entries(random, ld * order);
    for (const double beta : {0.0, 1.0, -2.0}) {
      auto with = block, without = block;
      subtract_product(library, rows, order, depth, a.data(), ld, b.data(), ldl, beta, with.data(), ld);
      subtract_product(nullptr, rows, order, depth, a.data(), ld, b.data(), ldl, beta, without.data(), ld);
      expect_near(with, without);
    }
    std::vector<double> small = l;
    for (double& entry : small) entry /= order;  // keeps the solutions of order one
    auto with = block, without = block;
    solve_from_right(library, rows, order, small.data(), ldl, with.data(), ld);
    solve_from_right(nullptr, rows, order, small.data(), ldl, without.data(), ld);
    expect_near(with, without);
    const auto x = random_entries(random, order), y = random_entries(random, rows);
    auto x_with = x, x_without = x, y_with = y, y_without = y;
    solve_forward(library, order, small.data(), ldl, x_with.data(), rows, block.data(), ld, y_with.data());
    solve_forward(nullptr, order, small.data(), ldl, x_without.data(), rows, block.data(), ld, y_without.data());
    expect_near(x_with, x_without);
    expect_near(y_with, y_without);
    solve_backward(library, order, small.data(), ldl, x_with.data(), rows, block.data(), ld, y_with.data());
    solve_backward(nullptr, order, small.data(), ldl, x_without.data(), rows, block.data(), ld, y_with.data());
    expect_near(x_with, x_without);
  }
}

}  // namespace
}  // namespace zorvex
