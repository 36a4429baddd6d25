// Whether a point with its basis is an optimum of a model: judged from the model's own numbers and a dense
// factorization.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "base/quality.hpp"
#include "presolve/presolve.hpp"
#include "support/dense_lp.hpp"
#include "support/problem_view.hpp"

namespace zorvex::oracle {

inline PresolvePoint point_of(const DenseLpResult& result) {
  return {result.x, result.row_activity, result.pi, result.reduced_cost, result.basis};
}

// The basis must have one basic variable per row, be regular, and stand for the very point and duals given.
inline void expect_basis_reproduces(const LpData& lp, const PresolvePoint& point) {
  std::vector<double> x, activity, pi;
  ASSERT_TRUE(point_of_basis(lp, point.basis, point.x, x, activity));
  for (std::size_t j = 0; j < x.size(); ++j) EXPECT_NEAR(x[j], point.x[j], 1e-7) << "column " << j;
  ASSERT_TRUE(duals_of_basis(lp, point.basis, pi));
  for (std::size_t i = 0; i < pi.size(); ++i) EXPECT_NEAR(pi[i], point.pi[i], 1e-7) << "row " << i;
}

inline void expect_optimal(const LpData& lp, const PresolvePoint& point, double objective) {
  const PrimalQuality primal = measure_primal(view_of(lp), point.x, point.row_activity);
  EXPECT_LT(primal.bound.max, 1e-8) << "column " << primal.bound.at;
  EXPECT_LT(primal.row.max, 1e-8) << "row " << primal.row.at;
  EXPECT_LT(primal.residual.max, 1e-9) << "row " << primal.residual.at;
  EXPECT_NEAR(primal.objective + lp.offset, objective, 1e-7 * std::max(1.0, std::abs(objective)));
  const DualQuality dual = measure_dual(view_of(lp), point.pi, point.reduced_cost, point.x);
  EXPECT_LT(dual.sign.max, 1e-8) << "at " << dual.sign.at;
  EXPECT_LT(dual.residual.max, 1e-9) << "column " << dual.residual.at;
  EXPECT_LT(dual.complementarity.max, 1e-7) << "at " << dual.complementarity.at;
  if (point.exact_basis) expect_basis_reproduces(lp, point);
}

}  // namespace zorvex::oracle
