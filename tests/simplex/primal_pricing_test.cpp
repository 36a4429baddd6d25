// Weights of the primal steepest edge pricing against norms of the tableau columns of the final basis.
#include <gtest/gtest.h>

#include "base/random_stream.hpp"
#include "simplex/basis_inverse.hpp"
#include "simplex/lp_kernel.hpp"
#include "support/random_lp.hpp"

namespace zorvex {
namespace {

TEST(PrimalPricing, SteepestEdgeWeightsStayExact) {
  RandomStream random(61, "primal steepest edge");
  QuietLog quiet;
  SimplexLog log(quiet, {});
  const StopToken stop;
  int checked = 0, pivots = 0;
  for (int trial = 0; trial < 300; ++trial) {
    const LpData lp = oracle::random_lp(random, {10, 14, 0.4, 0.95});
    LpKernel<double> kernel;
    kernel.load(lp, unit_scaling(lp), 1);
    SimplexCore<double>& core = kernel.core();
    core.stop = &stop;
    core.log = &log;
    core.begin_solve(0.1, kUsualSpaceSteps);
    PrimalSimplex<double> primal(core);
    PrimalOptions options;
    options.may_perturb = false;
    options.pricing = 1;
    if (primal.run(options) != SimplexOutcome::kOptimal) continue;
    pivots += static_cast<int>(core.iterations);
    BasisInverse<double> inverse;
    ASSERT_TRUE(inverse.factor(lp, kernel.basis()));
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
      EXPECT_NEAR(primal.weight(var), norm, 1e-8 * norm) << "trial " << trial << " variable " << var;
      ++checked;
    }
  }
  EXPECT_GT(checked, 1000);
  EXPECT_GT(pivots, 500);
}

}  // namespace
}  // namespace zorvex
