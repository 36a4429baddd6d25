#include "presolve/presolve.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "base/quality.hpp"
#include "support/dense_lp.hpp"
#include "support/optimal_point.hpp"
#include "support/problem_view.hpp"
#include "support/random_lp.hpp"

namespace zorvex {
namespace {

using oracle::DenseLpResult;
using oracle::expect_optimal;
using oracle::point_of;
using oracle::view_of;

struct Tally {
  int inexact = 0;  // points with a basis that does not belong to them
  int optimal = 0, infeasible = 0, proofs = 0, unbounded = 0, all_removed = 0;
  Offset applied = 0;
  Index rows = 0, cols = 0, rows_removed = 0, cols_removed = 0;
};

// Presolves, solves what is left with the oracle, postsolves, and holds the result against the oracle's on the
// original.
void check_against_oracle(const LpData& lp, const PresolveOptions& options, Tally& tally) {
  const DenseLpResult expected = oracle::solve_dense_lp(lp);
  Presolve presolve(lp, options);
  const PresolveOutcome outcome = presolve.run(StopToken());
  for (const ReductionCount& reduction : presolve.statistics().applied) tally.applied += reduction.count;
  if (outcome == PresolveOutcome::kInfeasible) {
    ++tally.infeasible;
    if (presolve.farkas().empty() && options.dual_reductions) {
      EXPECT_NE(expected.status, SolveStatus::kOptimal);
      return;
    }
    ++tally.proofs;
    EXPECT_EQ(expected.status, SolveStatus::kInfeasible);
    EXPECT_GT(farkas_gap(view_of(lp), presolve.farkas(), 1e-9), 0);
    return;
  }
  if (outcome == PresolveOutcome::kUnbounded) {
    ++tally.unbounded;
    EXPECT_NE(expected.status, SolveStatus::kOptimal);
    return;
  }
  const DenseLpResult result = oracle::solve_dense_lp(presolve.reduced());
  if (outcome == PresolveOutcome::kAllRemoved) ++tally.all_removed;
  EXPECT_EQ(outcome == PresolveOutcome::kAllRemoved,
            presolve.reduced().num_rows() + presolve.reduced().num_cols() == 0);
  // Reasoning with costs cannot tell the two apart when there is no optimum.
  const bool same =
      result.status == expected.status ||
      (options.dual_reductions && result.status != SolveStatus::kOptimal && expected.status != SolveStatus::kOptimal);
  ASSERT_TRUE(same) << static_cast<int>(result.status) << " instead of " << static_cast<int>(expected.status);
  if (result.status == SolveStatus::kInfeasible) {
    ++tally.infeasible;
    if (farkas_gap(view_of(lp), presolve.postsolve_farkas(result.farkas), 1e-9) > 0) ++tally.proofs;
  }
  if (result.status != SolveStatus::kOptimal) return;
  ++tally.optimal;
  tally.rows += lp.num_rows();
  tally.cols += lp.num_cols();
  tally.rows_removed += presolve.statistics().rows_removed;
  tally.cols_removed += presolve.statistics().cols_removed;
  EXPECT_NEAR(result.objective, expected.objective, 1e-7 * std::max(1.0, std::abs(expected.objective)));
  const PresolvePoint full = presolve.postsolve(point_of(result));
  if (!full.exact_basis) ++tally.inexact;
  if (!full.exact_basis && options.implied_equations) return;  // a multiplier may have the sign of the equation
  expect_optimal(lp, full, expected.objective);
}

// Every reduction on its own, and again with the others: each must do something, and do it right.
TEST(Presolve, EveryReductionRoundTripsAlone) {
  LpData empty;
  Presolve probe(empty, {});
  ASSERT_EQ(probe.run(StopToken()), PresolveOutcome::kAllRemoved);
  for (const ReductionCount& reduction : probe.statistics().applied) {
    SCOPED_TRACE(reduction.name);
    RandomStream random(11, reduction.name);
    Tally tally;
    PresolveOptions options;
    options.only = reduction.name;
    for (int trial = 0; trial < 1500; ++trial) {
      SCOPED_TRACE(trial);
      check_against_oracle(oracle::random_lp(random, {8, 10, 0.3, 0.9}), options, tally);
      if (HasFailure()) FAIL() << "stopped at the first failing trial";
    }
    EXPECT_GT(tally.applied, 50);
    EXPECT_LE(tally.inexact, options.only == "sparsify" ? tally.optimal / 10 : 0);
  }
}

struct RandomCase {
  const char* name;
  oracle::RandomLpShape shape;
  int trials;
};

class PresolveRandom : public testing::TestWithParam<RandomCase> {};

TEST_P(PresolveRandom, AgreesWithOracle) {
  const RandomCase& parameters = GetParam();
  RandomStream random(7, parameters.name);
  Tally tally;
  for (int trial = 0; trial < parameters.trials; ++trial) {
    SCOPED_TRACE(trial);
    PresolveOptions options;
    options.dual_reductions = trial % 4 != 0;
    options.implied_equations = trial % 3 == 0;
    options.longest_row = trial % 5 == 0 ? 2 : 0;
    options.longest_col = trial % 6 == 1 ? 2 : 0;
    options.power_scaling = trial % 7 == 0;
    check_against_oracle(random_lp(random, parameters.shape), options, tally);
    if (HasFailure()) {
      FAIL() << "stopped at the first failing trial";
    }
  }
  EXPECT_GT(tally.optimal, parameters.trials / 4);
  EXPECT_GT(tally.proofs, 0.9 * tally.infeasible);
  EXPECT_LE(tally.inexact, tally.optimal / 50);
  RecordProperty("rows_removed_percent", 100 * tally.rows_removed / std::max<Index>(1, tally.rows));
  RecordProperty("cols_removed_percent", 100 * tally.cols_removed / std::max<Index>(1, tally.cols));
  if (std::getenv("PRESOLVE_VERBOSE") != nullptr) {
    std::printf("optimal %d infeasible %d proofs %d unbounded %d all removed %d rows %d%% cols %d%%\n", tally.optimal,
                tally.infeasible, tally.proofs, tally.unbounded, tally.all_removed,
                100 * tally.rows_removed / std::max<Index>(1, tally.rows),
                100 * tally.cols_removed / std::max<Index>(1, tally.cols));
  }
}

INSTANTIATE_TEST_SUITE_P(Shapes, PresolveRandom,
                         testing::Values(RandomCase{"tiny", {3, 4, 0.5, 0.8}, 6000},
                                         RandomCase{"small", {8, 10, 0.4, 0.8}, 6000},
                                         RandomCase{"sparse", {12, 12, 0.15, 0.85}, 4000},
                                         RandomCase{"wide", {5, 16, 0.4, 0.9}, 3000},
                                         RandomCase{"dense", {8, 8, 0.8, 0.8}, 2000}),
                         [](const auto& instance) { return instance.param.name; });

}  // namespace
}  // namespace zorvex
