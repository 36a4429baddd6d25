// Weights of the primal steepest edge pricing against norms of the tableau columns of the final basis.
#include <gtest/gtest.h>

#include "base/random_stream.hpp"
#include "primal_run.hpp"
#include "simplex/basis_inverse.hpp"
#include "support/random_lp.hpp"

namespace zorvex {
namespace {

TEST(PrimalPricing, SteepestEdgeWeightsStayExact) {
  RandomStream random(61, "primal steepest edge");
  int checked = 0, pivots = 0;
  for (int trial = 0; trial < 300; ++trial) {
    const LpData lp = oracle::random_lp(random, {10, 14, 0.4, 0.95});
    PrimalRun run(lp);
    const SimplexCore<double>& core = run.core();
    PrimalOptions options;
    options.may_perturb = false;
    options.pricing = 1;
    if (run.primal.run(options) != SimplexOutcome::kOptimal) continue;
    pivots += static_cast<int>(core.iterations);
    BasisInverse<double> inverse;
    ASSERT_TRUE(inverse.factor(lp, run.kernel.basis()));
    Scattered<double> column;
    column.resize(lp.num_rows());
    for (Index var = 0; var < core.num_vars(); ++var) {
      if (core.is_basic(var) || core.place[var] == Place::kFixed) continue;
      column.clear();
      inverse.add_column(var, 1.0, column);
      inverse.ftran(column);
      column.pack(0);
      double norm = 1;
      for (const Index k : column.index) norm += column.value[k] * column.value[k];
      EXPECT_NEAR(run.primal.weight(var), norm, 1e-8 * norm) << "trial " << trial << " variable " << var;
      ++checked;
    }
  }
  EXPECT_GT(checked, 1000);
  EXPECT_GT(pivots, 500);
}

}  // namespace
}  // namespace zorvex
