#include "support/dense_lp.hpp"

#include <gtest/gtest.h>

#include "base/quality.hpp"
#include "support/problem_view.hpp"
#include "support/random_lp.hpp"

namespace zorvex::oracle {
namespace {

// The oracle proves itself: optimal points by duality, infeasibility by Farkas, all by their basis.
TEST(DenseLp, AnswersCarryProofs) {
  RandomStream random(1, "dense_lp");
  int optimal = 0, infeasible = 0, unbounded = 0;
  for (int trial = 0; trial < 3000; ++trial) {
    SCOPED_TRACE(trial);
    const LpData lp = random_lp(random, {});
    const DenseLpResult result = solve_dense_lp(lp);
    if (result.status == SolveStatus::kInfeasible) {
      ++infeasible;
      EXPECT_GT(farkas_gap(view_of(lp), result.farkas, 1e-9), 1e-9);
      continue;
    }
    const PrimalQuality primal = measure_primal(view_of(lp), result.x, result.row_activity);
    ASSERT_LT(primal.bound.max + primal.row.max + primal.residual.max, 1e-9);
    if (result.status == SolveStatus::kUnbounded) {
      ++unbounded;
      continue;
    }
    ++optimal;
    ASSERT_EQ(result.status, SolveStatus::kOptimal);
    const DualQuality dual = measure_dual(view_of(lp), result.pi, result.reduced_cost, result.x);
    EXPECT_LT(dual.sign.max + dual.residual.max + dual.complementarity.max, 1e-8);
    EXPECT_NEAR(dual.objective + lp.offset, result.objective, 1e-8);
    std::vector<double> x, activity, pi;
    ASSERT_TRUE(point_of_basis(lp, result.basis, result.x, x, activity));
    ASSERT_TRUE(duals_of_basis(lp, result.basis, pi));
    for (std::size_t j = 0; j < x.size(); ++j) EXPECT_NEAR(x[j], result.x[j], 1e-8);
    for (std::size_t i = 0; i < pi.size(); ++i) EXPECT_NEAR(pi[i], result.pi[i], 1e-8);
  }
  EXPECT_GT(optimal, 1000);
  EXPECT_GT(infeasible, 150);
  EXPECT_GT(unbounded, 150);
}

}  // namespace
}  // namespace zorvex::oracle
