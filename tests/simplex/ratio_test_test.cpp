#include <gtest/gtest.h>

#include <cmath>

#include "base/random_stream.hpp"
#include "simplex/dual_ratio_test.hpp"

namespace zorvex {
namespace {

// Reduced costs so large that the tolerance disappears in them, with pivots whose quotient does not multiply back.
TEST(DualRatioTest, ReducedCostsBeyondTheTolerancesReach) {
  constexpr Index kColumns = 40;
  RandomStream random(3, "ratio test");
  for (int round = 0; round < 200; ++round) {
    SimplexCore<double> core;
    core.n = kColumns;
    core.m = 0;
    core.place.assign(kColumns, Place::kLower);
    core.work_lower.assign(kColumns, 0);
    core.work_upper.assign(kColumns, round % 2 == 0 ? kInf : 1);
    Scattered<double> row, rho;
    row.resize(kColumns);
    double least = kInf;
    for (Index col = 0; col < kColumns; ++col) {
      core.reduced_cost.push_back(1e17 * (1 + 0.5 * random.uniform()));
      row.value[col] = 1 + 0.5 * random.uniform();
      row.index.push_back(col);
      least = std::min(least, core.reduced_cost[col] / row.value[col]);
    }
    DualRatioTest<double> test;
    const auto result = test.choose(core, row, rho, true, 1e-3, 1e-9);
    ASSERT_GE(result.entering, 0);
    if (round % 2 == 0) {
      EXPECT_NEAR(core.reduced_cost[result.entering] / result.alpha, least, 1e-9 * least);
    }
  }
}

}  // namespace
}  // namespace zorvex
