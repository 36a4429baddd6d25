// The dual of a model and the way back, held against an answer that never saw the dual.
#include "presolve/dual_form.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "support/dense_lp.hpp"
#include "support/optimal_point.hpp"
#include "support/random_lp.hpp"

namespace zorvex {
namespace {

using oracle::DenseLpResult;

// Random models have every kind of row and bound, and in part neither solution nor bound.
TEST(DualForm, GivesThePrimalsAnswer) {
  for (const DualRows form : {DualRows::kInequalities, DualRows::kEquations}) {
    RandomStream random(23, "dual form");
    int optimal = 0, infeasible = 0, without_dual = 0;
    for (int trial = 0; trial < 3000; ++trial) {
      SCOPED_TRACE(trial);
      const LpData lp = oracle::random_lp(random, {5, 6, 0.5, 0.8});
      const DenseLpResult expected = oracle::solve_dense_lp(lp);
      const DualForm dual(lp, form);
      const DenseLpResult found = oracle::solve_dense_lp(dual.lp());
      switch (found.status) {
        case SolveStatus::kOptimal: {
          ++optimal;
          ASSERT_EQ(SolveStatus::kOptimal, expected.status);
          EXPECT_NEAR(found.objective, -expected.objective, 1e-7 * std::max(1.0, std::abs(expected.objective)));
          oracle::expect_optimal(lp, dual.primal_point(oracle::point_of(found)), expected.objective);
          break;
        }
        case SolveStatus::kUnbounded:
          ++infeasible;
          ASSERT_EQ(SolveStatus::kInfeasible, expected.status);
          break;
        default:
          ++without_dual;
          ASSERT_NE(SolveStatus::kOptimal, expected.status);
      }
      if (HasFailure()) FAIL() << "stopped at the first failing trial";
    }
    EXPECT_GT(optimal, 500);
    EXPECT_GT(infeasible, 100);
    EXPECT_GT(without_dual, 100);
  }
}

// Columns with `length` nonzeros, of which `boxed` have a second bound.
LpData tall_lp(Index rows, Index cols, Index length, Index boxed) {
  LpData lp;
  lp.matrix.num_rows = rows;
  const std::vector<double> value(static_cast<std::size_t>(length), 1.0);
  std::vector<Index> index(value.size());
  for (Index col = 0; col < cols; ++col) {
    for (Index k = 0; k < length; ++k) index[k] = k;
    lp.matrix.append_col(index.data(), value.data(), length);
    lp.cost.push_back(1);
    lp.col_lower.push_back(0);
    lp.col_upper.push_back(col < boxed ? 1 : kInf);
  }
  lp.row_lower.assign(static_cast<std::size_t>(rows), 1);
  lp.row_upper.assign(static_cast<std::size_t>(rows), kInf);
  return lp;
}

TEST(DualForm, PaysForTallModels) {
  const struct {
    const char* fact;
    Index rows, cols, length, boxed;
    bool pays;
  } facts[] = {{"small", 900, 10, 20, 0, false},
               {"flat", 1000, 500, 20, 0, false},
               {"tall", 1001, 500, 3, 0, true},
               {"tall with boxed columns", 1001, 500, 30, 400, false},
               {"taller with long boxed columns", 1501, 500, 20, 400, true},
               {"taller with short boxed columns", 1501, 500, 19, 400, false},
               {"taller with a few short open columns", 1501, 500, 3, 399, true}};
  for (const auto& fact : facts) {
    EXPECT_EQ(fact.pays, dual_pays(tall_lp(fact.rows, fact.cols, fact.length, fact.boxed))) << fact.fact;
  }
}

}  // namespace
}  // namespace zorvex
