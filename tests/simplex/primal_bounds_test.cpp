// Runs of the primal simplex whose bounds are widened from the first step on, against an independent dense simplex: no
// claim, and no point a limit leaves behind, may rest on the widened bounds.
#include <gtest/gtest.h>

#include "base/random_stream.hpp"
#include "primal_run.hpp"
#include "simplex/answer_check.hpp"
#include "support/dense_lp.hpp"
#include "support/random_lp.hpp"

namespace zorvex {
namespace {

constexpr double kTolerance = 1e-6;

struct Tally {
  int optimal = 0, infeasible = 0, unbounded = 0, stopped = 0, handed_over = 0;
};

void expect_true_bounds(const SimplexCore<double>& core, const std::string& where) {
  EXPECT_EQ(core.work_lower, core.lower) << where;
  EXPECT_EQ(core.work_upper, core.upper) << where;
  for (Index var = 0; var < core.num_vars(); ++var) {
    if (core.is_basic(var)) continue;
    EXPECT_GE(core.value[var], core.lower[var]) << where;
    EXPECT_LE(core.value[var], core.upper[var]) << where;
  }
}

void expect_right(const LpData& lp, LpKernel<double>& kernel, SimplexOutcome outcome, const std::string& where,
                  Tally& tally) {
  const oracle::DenseLpResult expected = oracle::solve_dense_lp(lp);
  LpPoint point;
  kernel.extract(lp, point);
  switch (outcome) {
    case SimplexOutcome::kOptimal:
      ++tally.optimal;
      EXPECT_EQ(expected.status, SolveStatus::kOptimal) << where;
      EXPECT_NEAR(objective_at(lp, point.x), expected.objective, kTolerance * (1 + std::abs(expected.objective)))
          << where;
      EXPECT_TRUE(is_feasible(lp, point.x, kTolerance)) << where;
      break;
    case SimplexOutcome::kInfeasible:
      ++tally.infeasible;
      EXPECT_EQ(expected.status, SolveStatus::kInfeasible) << where;
      break;
    case SimplexOutcome::kUnbounded:
      ++tally.unbounded;
      EXPECT_EQ(expected.status, SolveStatus::kUnbounded) << where;
      EXPECT_TRUE(is_feasible(lp, point.x, kTolerance)) << where;
      break;
    case SimplexOutcome::kIterationLimit:
      ++tally.stopped;
      break;
    case SimplexOutcome::kOtherAlgorithm:
      ++tally.handed_over;
      break;
    default:
      ADD_FAILURE() << where << ": outcome " << static_cast<int>(outcome);
  }
  expect_true_bounds(kernel.core(), where);
}

TEST(PrimalBounds, WidenedBoundsLeaveNoTrace) {
  RandomStream random(29, "primal bounds");
  Tally tally;
  for (int trial = 0; trial < 1200; ++trial) {
    const LpData lp = oracle::random_lp(random, {14, 20, 0.4, 0.8});
    if (lp.num_rows() == 0) continue;
    PrimalRun run(lp);
    run.core().iteration_limit = trial % 4 == 0 ? trial % 11 : kInf;
    PrimalOptions options;
    options.stall_length = -1;
    options.pricing = trial % 4 - 1;
    if (trial % 5 == 0) options.perturb_value = 0.01;
    expect_right(lp, run.kernel, run.primal.run(options), "trial " + std::to_string(trial), tally);
    if (HasFailure()) return;
  }
  EXPECT_GT(tally.optimal, 200);
  EXPECT_GT(tally.infeasible, 50);
  EXPECT_GT(tally.unbounded, 50);
  EXPECT_GT(tally.stopped, 50);
}

TEST(PrimalBounds, WidenByPerturbValue) {
  const auto iterations = [](double perturb_value, int stall_length) {
    RandomStream random(31, "primal bounds");
    double sum = 0;
    for (int trial = 0; trial < 200; ++trial) {
      PrimalOptions options;
      options.perturb_value = perturb_value;
      options.stall_length = stall_length;
      PrimalRun run(oracle::random_lp(random, {14, 20, 0.4, 0.8}));
      run.primal.run(options);
      sum += run.core().iterations;
    }
    return sum;
  };
  constexpr int kAtOnce = -1, kNever = 1 << 20;
  EXPECT_EQ(iterations(0, kAtOnce), iterations(2e-4, kNever));
  EXPECT_NE(iterations(2e-4, kAtOnce), iterations(2e-4, kNever));
  EXPECT_NE(iterations(0.01, kAtOnce), iterations(2e-4, kAtOnce));
}

}  // namespace
}  // namespace zorvex
