// The automatic choice for linear models, with budgets so small that every stage is reached.
#include "opt/staged_engine.hpp"

#include <gtest/gtest.h>

#include <atomic>
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

struct Stages {
  const char* name;
  double short_solve, patience;
  bool barrier, back;  // seen on a model that takes more than a few pivots
};

constexpr Stages kStages[] = {
    {"the simplex alone", 1e12, 3, false, false},
    {"the barrier decides", 1, 1e6, true, false},
    {"the barrier runs out of patience", 1, 1e-9, true, true},
};

StagedOptions options_of(const Stages& stages) {
  StagedOptions options;
  options.impatient.effort = options.patient.effort = stages.short_solve;
  options.barrier_patience = stages.patience;
  return options;
}

TEST(StagedEngine, EveryStageAgreesWithTheOracle) {
  RandomStream random(91, "staged");
  for (int trial = 0; trial < 60; ++trial) {
    const LpData lp = oracle::random_lp(random, {});
    const oracle::DenseLpResult expected = oracle::solve_dense_lp(lp);
    for (const Stages& stages : kStages) {
      TextLog log;
      const EngineAnswer answer = StagedEngine(options_of(stages)).solve(lp, {}, {}, log);
      oracle::expect_right(lp, answer, expected, "trial " + std::to_string(trial) + " " + stages.name);
      if (HasFatalFailure()) return;
      if (answer.status != SolveStatus::kOptimal) continue;
      EXPECT_FALSE(answer.basis.empty()) << trial << ' ' << stages.name;
    }
  }
}

TEST(StagedEngine, StagesLimitsAndInterrupts) {
  RandomStream random(93, "staged stages");
  // The prediction is a budget of the simplex, too: rows enough to need more.
  const LpData lp = oracle::wide_lp(oracle::WideKind::kPartitioning, 150, 3000, random);
  std::atomic<int> terminate{1};
  double objective = 0;
  for (const Stages& stages : kStages) {
    TextLog log;
    StagedEngine engine(options_of(stages));
    const EngineAnswer answer = engine.solve(lp, {}, {}, log);
    ASSERT_EQ(answer.status, SolveStatus::kOptimal) << stages.name;
    if (objective == 0) objective = objective_at(lp, answer.point.x);
    EXPECT_NEAR(objective_at(lp, answer.point.x), objective, 1e-6 * std::abs(objective)) << stages.name;
    EXPECT_EQ(log.has("Barrier after"), stages.barrier) << stages.name;
    EXPECT_EQ(log.has("Back to the dual simplex"), stages.back) << stages.name;
    EXPECT_EQ(engine.solve(lp, {}, {&terminate, kInf}, log).status, SolveStatus::kInterrupted) << stages.name;
    EXPECT_EQ(engine.solve(lp, {}, {nullptr, now_seconds() - 1}, log).status, SolveStatus::kTimeLimit) << stages.name;
    EXPECT_EQ(engine.solve(lp, {.iterations = 3}, {}, log).status, SolveStatus::kIterationLimit) << stages.name;
  }
}

// A limit of one calls every share of infeasible rows small, one below nought none.
TEST(StagedEngine, PatienceWithFewInfeasibleRowsAndWithDuals) {
  RandomStream random(93, "staged stages");
  const LpData lp = oracle::wide_lp(oracle::WideKind::kPartitioning, 150, 3000, random);
  struct Case {
    double infeasible;
    bool dual_form, barrier;
  };
  for (const Case& c : {Case{1, false, false}, Case{-1, false, true}, Case{-1, true, false}}) {
    StagedOptions options;
    options.boxed_infeasible = options.unboxed_infeasible = c.infeasible;
    options.impatient = {1, 0};
    options.patient = {1e12, 0};
    StagedEngine engine(options);
    engine.set_dual_form(c.dual_form);
    TextLog log;
    EXPECT_EQ(engine.solve(lp, {}, {}, log).status, SolveStatus::kOptimal);
    EXPECT_EQ(log.has("Barrier after"), c.barrier) << c.infeasible << ' ' << c.dual_form;
  }
}

}  // namespace
}  // namespace zorvex
