// The concurrent engine with more threads than this machine may have: all three solvers, by the clock and by work.
#include "opt/concurrent.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "base/random_stream.hpp"
#include "simplex/answer_check.hpp"
#include "support/claim.hpp"
#include "support/random_lp.hpp"
#include "support/text_log.hpp"
#include "support/wide_lp.hpp"

namespace zorvex {
namespace {

EngineAnswer race(const LpData& lp, int threads, bool by_work, std::string* log_text = nullptr) {
  ConcurrentOptions options;
  options.threads = threads;
  options.by_work = by_work;
  TextLog log;
  EngineAnswer answer = ConcurrentEngine(options).solve(lp, {}, {}, log);
  if (log_text != nullptr) *log_text = log.text();
  return answer;
}

TEST(OptimizeThreadsEngine, AgreesWithTheOracleOnRandomModels) {
  RandomStream random(61, "concurrent");
  const oracle::RandomLpShape shape;
  for (int trial = 0; trial < 60; ++trial) {
    const LpData lp = oracle::random_lp(random, shape);
    const oracle::DenseLpResult expected = oracle::solve_dense_lp(lp);
    const EngineAnswer answer = race(lp, 2 + trial % 3, trial % 2 == 1);
    oracle::expect_right(lp, answer, expected, "trial " + std::to_string(trial));
    if (HasFatalFailure()) return;
    if (answer.status != SolveStatus::kOptimal) continue;
    EXPECT_FALSE(answer.basis.empty()) << trial;
  }
}

TEST(OptimizeThreadsEngine, ByWorkRepeatsWithThreeSolvers) {
  RandomStream random(67, "concurrent repeats");
  const LpData lp = oracle::wide_lp(oracle::WideKind::kBoxed, 60, 400, random);
  std::string log;
  const EngineAnswer first = race(lp, 4, true, &log);
  ASSERT_EQ(first.status, SolveStatus::kOptimal);
  EXPECT_EQ(log.rfind("Concurrent optimizer: dual simplex, barrier and primal simplex\nSolved by ", 0), 0U) << log;
  for (int run = 0; run < 10; ++run) {
    std::string again;
    const EngineAnswer answer = race(lp, 4, true, &again);
    EXPECT_EQ(again, log);
    EXPECT_EQ(answer.point.x, first.point.x);
    EXPECT_EQ(answer.point.pi, first.point.pi);
    EXPECT_EQ(answer.iterations, first.iterations);
    EXPECT_EQ(answer.barrier_iterations, first.barrier_iterations);
  }
}

TEST(OptimizeThreadsEngine, OneThreadIsTheDualSimplex) {
  RandomStream random(71, "concurrent alone");
  const LpData lp = oracle::wide_lp(oracle::WideKind::kCovering, 20, 100, random);
  std::string log;
  EXPECT_EQ(race(lp, 1, false, &log).status, SolveStatus::kOptimal);
  EXPECT_EQ(log.find("Concurrent"), std::string::npos);
  EXPECT_NE(log.find("Iteration "), std::string::npos) << "the log of the simplex: " << log;
}

}  // namespace
}  // namespace zorvex
