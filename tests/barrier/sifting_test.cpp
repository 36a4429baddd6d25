// Sifting against the simplex on the whole model, its log, and the ways in which it gives way.
#include "barrier/sifting.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <string>

#include "barrier/sifting_duals.hpp"
#include "simplex/answer_check.hpp"
#include "support/claim.hpp"
#include "support/random_lp.hpp"
#include "support/text_log.hpp"
#include "support/wide_lp.hpp"

namespace zorvex {
namespace {

using oracle::WideKind;

EngineAnswer sift(const LpData& lp, const SiftingOptions& options = {}, const SimplexLimits& limits = {},
                  const StopToken& stop = {}) {
  QuietLog log;
  return run_sifting(lp, options, limits, stop, log);
}

double simplex_objective(const LpData& lp) {
  QuietLog log;
  LpSolver solver(lp, {}, log);
  EXPECT_EQ(solver.solve({}, {}), SolveStatus::kOptimal);
  return solver.objective();
}

// --- answers ---

struct WideCase {
  const char* name;
  WideKind kind;
  Index rows, cols;
  int sifting, sift_method;
};

void PrintTo(const WideCase& wide, std::ostream* out) { *out << wide.name; }

class WideModels : public testing::TestWithParam<WideCase> {};

TEST_P(WideModels, HaveTheOptimumOfTheSimplex) {
  const WideCase& wide = GetParam();
  RandomStream random(23, "wide models");
  const LpData lp = oracle::wide_lp(wide.kind, wide.rows, wide.cols, random);
  const EngineAnswer answer = sift(lp, {.sifting = wide.sifting, .sift_method = wide.sift_method});
  ASSERT_EQ(answer.status, SolveStatus::kOptimal);
  EXPECT_TRUE(is_optimal(lp, answer.point, {}));
  const double expected = simplex_objective(lp);
  EXPECT_NEAR(objective_at(lp, answer.point.x), expected, 1e-7 * std::abs(expected));
  EXPECT_EQ(answer.basis.col.size(), lp.cost.size());
}

INSTANTIATE_TEST_SUITE_P(Sifting, WideModels,
                         testing::Values(WideCase{"covering", WideKind::kCovering, 60, 4000, 1, -1},
                                         WideCase{"covering_by_dual", WideKind::kCovering, 60, 4000, 2, 1},
                                         WideCase{"partitioning", WideKind::kPartitioning, 60, 4000, 2, 0},
                                         WideCase{"cutting", WideKind::kCutting, 50, 5000, 1, 0},
                                         WideCase{"cutting_by_barrier", WideKind::kCutting, 50, 5000, 1, 2},
                                         WideCase{"covering_by_barrier", WideKind::kCovering, 60, 4000, 2, 2},
                                         WideCase{"partitioning_by_barrier", WideKind::kPartitioning, 60, 4000, 1, 2},
                                         WideCase{"packing", WideKind::kPacking, 50, 3000, 1, -1},
                                         WideCase{"boxed", WideKind::kBoxed, 50, 3000, 1, -1},
                                         WideCase{"few_rows", WideKind::kCovering, 3, 2000, 1, -1}),
                         [](const testing::TestParamInfo<WideCase>& wide) { return wide.param.name; });

// Free and boxed columns, equations, infeasible and unbounded models.
TEST(Sifting, SolvesRandomModelsAsTheOracleDoes) {
  RandomStream random(29, "sifting");
  oracle::RandomLpShape shape;
  shape.max_rows = 6;
  shape.max_cols = 160;
  shape.density = 0.5;
  for (int trial = 0; trial < 300; ++trial) {
    const LpData lp = oracle::random_lp(random, shape);
    if (lp.num_rows() == 0) continue;
    const oracle::DenseLpResult expected = oracle::solve_dense_lp(lp);
    const EngineAnswer answer = sift(lp, {.sifting = 1, .sift_method = trial % 3});
    oracle::expect_right(lp, answer, expected, "trial " + std::to_string(trial));
    if (HasFatalFailure()) return;
  }
}

// A row that only one expensive column far behind can serve.
TEST(Sifting, FindsColumnsThatMakeTheModelFeasible) {
  RandomStream random(31, "sifting feasibility");
  LpData lp = oracle::wide_lp(WideKind::kPartitioning, 40, 3000, random);
  for (Index col = 0; col < 40; ++col) lp.cost[col] = 1e4;
  const EngineAnswer answer = sift(lp);
  ASSERT_EQ(answer.status, SolveStatus::kOptimal);
  const double expected = simplex_objective(lp);
  EXPECT_NEAR(objective_at(lp, answer.point.x), expected, 1e-7 * std::abs(expected));
}

TEST(Sifting, ProvesInfeasibilityOfTheWholeModel) {
  RandomStream random(37, "sifting infeasibility");
  LpData lp = oracle::wide_lp(WideKind::kBoxed, 30, 2000, random);
  lp.row_lower[7] = 1e6;
  lp.col_upper[7] = 1;
  const EngineAnswer answer = sift(lp);
  ASSERT_EQ(answer.status, SolveStatus::kInfeasible);
  double gap = 0;
  EXPECT_TRUE(proves_infeasible(lp, answer.farkas, gap));
}

// --- the bound ---

TEST(SiftingDuals, ProveABoundAtEveryStep) {
  RandomStream random(41, "sifting duals");
  for (const WideKind kind : {WideKind::kCovering, WideKind::kCutting, WideKind::kPacking, WideKind::kBoxed}) {
    const LpData lp = oracle::wide_lp(kind, 20, 400, random);
    const double optimum = simplex_objective(lp);
    SiftingDuals duals(lp, 1e-7);
    ASSERT_TRUE(duals.find_start());
    auto before = static_cast<double>(duals.objective());
    for (int step = 0; step < 50; ++step) {
      std::vector<double> direction(20);
      for (double& v : direction) v = random.uniform() - 0.3;
      duals.set_direction(std::move(direction));
      duals.advance(1);
      const auto bound = static_cast<double>(duals.objective());
      EXPECT_GE(bound, before);
      EXPECT_LE(bound, optimum + 1e-6 * std::abs(optimum));
      const DualQuality judged = measure_dual(view_of(lp), duals.pi(), {}, {});
      EXPECT_LE(judged.sign.max, 1e-7);
      EXPECT_NEAR(judged.objective, bound, 1e-9 * (1 + std::abs(bound)));
      before = bound;
    }
    EXPECT_GT(before, -kInf);
  }
}

TEST(SiftingDuals, NoStartWithoutFeasibleDuals) {
  LpData lp;  // min x - y, x + y free of any row that could price both
  lp.matrix.num_rows = 1;
  const Index row[] = {0};
  const double one[] = {1};
  lp.matrix.append_col(row, one, 1);
  lp.matrix.append_col(row, one, 1);
  lp.cost = {1, -1};
  lp.col_lower = {-kInf, 0};
  lp.col_upper = {kInf, kInf};
  lp.row_lower = {0};
  lp.row_upper = {kInf};
  SiftingDuals duals(lp, 1e-7);
  EXPECT_FALSE(duals.find_start());
  TextLog log;
  EXPECT_EQ(run_sifting(lp, {}, {}, {}, log).status, SolveStatus::kUnbounded);
  EXPECT_NE(log.text().find("\n\nWarning: unable to find a good dual feasible start for sifting\n\n"),
            std::string::npos)
      << log.text();
}

// --- log and limits ---

class Covering : public testing::Test {
 protected:
  Covering() {
    RandomStream random(43, "sifting log");
    lp_ = oracle::wide_lp(WideKind::kCovering, 40, 3000, random);
    options_.simplex.log_start_time = now_seconds();
  }
  LpData lp_;
  SiftingOptions options_;
};

TEST_F(Covering, LogsEverySubProblem) {
  options_.simplex.sense = -1;
  options_.sift_method = 1;
  options_.simplex.first_iteration = 500;
  TextLog log;
  const EngineAnswer answer = run_sifting(lp_, options_, {}, {}, log);
  ASSERT_EQ(answer.status, SolveStatus::kOptimal);
  const std::string start =
      "\nStarting sifting (using dual simplex for sub-problems)...\n\n"
      "    Iter     Pivots    Primal Obj      Dual Obj        Time\n"
      "       0        5";
  EXPECT_EQ(log.text().rfind(start, 0), 0U) << log.text();
  const std::size_t end = log.text().find("\n\nSifting complete\n\n");
  ASSERT_NE(end, std::string::npos) << log.text();
  // The last line shows equal objectives, in the user's sense.
  const double objective = -objective_at(lp_, answer.point.x);
  char figures[100];
  std::snprintf(figures, sizeof figures, "  %14.7e  %14.7e  %5.0fs", objective, objective, 0.0);
  EXPECT_NE(log.text().find(figures), std::string::npos) << log.text();
}

TEST_F(Covering, AnInfeasibleSubProblemHasNoPrimalObjective) {
  lp_ = LpData();
  RandomStream random(47, "sifting infinity");
  lp_ = oracle::wide_lp(WideKind::kPartitioning, 40, 3000, random);
  for (Index col = 0; col < 40; ++col) lp_.cost[col] = 1e6;  // no such column is in the first working set
  for (Index col = 0; col < 20; ++col) lp_.row_lower[col] = lp_.row_upper[col] = 7;
  TextLog log;
  ASSERT_EQ(run_sifting(lp_, options_, {}, {}, log).status, SolveStatus::kOptimal);
  EXPECT_NE(log.text().find("     infinity     "), std::string::npos) << log.text();
}

TEST_F(Covering, LimitsEndTheLoop) {
  const double needed = sift(lp_, options_).iterations;
  const EngineAnswer half = sift(lp_, options_, {.iterations = std::floor(needed / 2)});
  EXPECT_EQ(half.status, SolveStatus::kIterationLimit);
  EXPECT_EQ(half.iterations, std::floor(needed / 2));
  const std::atomic<int> raised{1};
  EXPECT_EQ(sift(lp_, options_, {}, {&raised, kInf}).status, SolveStatus::kInterrupted);
  EXPECT_EQ(sift(lp_, options_, {}, {nullptr, now_seconds() - 1}).status, SolveStatus::kTimeLimit);
}

TEST_F(Covering, NarrowModelsAreLeftAlone) {
  TextLog log;
  EXPECT_TRUE(sifting_is_possible(lp_, log));
  EXPECT_EQ(log.text(), "");
  RandomStream random(1, "narrow");
  EXPECT_FALSE(sifting_is_possible(oracle::wide_lp(WideKind::kCovering, 40, 80, random), log));
  EXPECT_EQ(log.text(), "Warning: sifting step skipped - too few columns\n");
  EXPECT_TRUE(sifting_is_wanted(lp_, 1));
  EXPECT_FALSE(sifting_is_wanted(lp_, 0));
  EXPECT_FALSE(sifting_is_wanted(lp_, -1));
}

// Columns in plenty, and few of them hard to place.
TEST_F(Covering, TheAutomaticRuleWantsWideModelsWhoseColumnsStayDown) {
  RandomStream random(53, "sifting rule");
  LpData wide = oracle::wide_lp(WideKind::kBoxed, 20, 6000, random);
  for (Index col = 0; col < 20; ++col) wide.col_upper[col] = 9;
  EXPECT_TRUE(sifting_is_wanted(wide, -1));
  for (double& c : wide.cost) c = -c;
  EXPECT_FALSE(sifting_is_wanted(wide, -1));
  for (double& u : wide.col_upper) u = kInf;
  EXPECT_TRUE(sifting_is_wanted(wide, -1));
}

// Half of the columns belong at their upper bounds: sifting gives up, and the simplex is none the worse for it.
TEST_F(Covering, AHopelessStartIsGivenUp) {
  RandomStream random(59, "sifting hopeless");
  LpData boxed = oracle::wide_lp(WideKind::kBoxed, 20, 3000, random);
  for (Index row = 0; row < 20; ++row) boxed.row_upper[row] = 900 + 10 * row;
  for (double& u : boxed.col_upper) u = 1;
  for (double& c : boxed.cost) c = -c;
  const EngineAnswer answer = sift(boxed);
  ASSERT_EQ(answer.status, SolveStatus::kOptimal);
  EXPECT_TRUE(is_optimal(boxed, answer.point, {}));
  const double expected = simplex_objective(boxed);
  EXPECT_NEAR(objective_at(boxed, answer.point.x), expected, 1e-7 * std::abs(expected));
}

}  // namespace
}  // namespace zorvex
