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

// A good pivot with the step zero, and behind it, since the first column is boxed, a poorer one that moves.
TEST(DualRatioTest, PoorerPivotsThatMoveWherePreferred) {
  for (const bool preferred : {false, true}) {
    for (const double second_pivot : {0.05, 0.001}) {
      SimplexCore<double> core;
      core.n = 2;
      core.m = 0;
      core.dual_tol = 1e-7;
      core.place.assign(2, Place::kLower);
      core.work_lower.assign(2, 0);
      core.work_upper = {1, kInf};
      core.reduced_cost = {0, 1};
      Scattered<double> row, rho;
      row.resize(2);
      row.value = {1, second_pivot};
      row.index = {0, 1};
      DualRatioTest<double> test;
      test.prefer_nondegenerate(preferred);
      const auto result = test.choose(core, row, rho, true, 10, 1e-9);
      const bool moves = preferred && second_pivot > 0.01;
      EXPECT_EQ(result.entering, moves ? 1 : 0) << preferred << ' ' << second_pivot;
      EXPECT_EQ(test.flips().size(), moves ? 1U : 0U);
    }
  }
}

}  // namespace
}  // namespace zorvex
