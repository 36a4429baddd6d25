// The barrier engine behind the LP driver: linear models against the dense oracle, quadratic ones by their optimality
// conditions in long double, limits, models without a solution, Q that is not convex.
#include "barrier/barrier.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <sstream>
#include <string>

#include "barrier/barrier_engine.hpp"
#include "barrier/convexity.hpp"
#include "barrier/quadratic_engine.hpp"
#include "base/random_stream.hpp"
#include "face_point.hpp"
#include "simplex/answer_check.hpp"
#include "simplex/lp_driver.hpp"
#include "support/claim.hpp"
#include "support/convex_q.hpp"
#include "support/random_lp.hpp"
#include "support/text_log.hpp"

namespace zorvex {
namespace {

LpDriverResult solve(const LpData& lp, int crossover, int presolve, LogSink& log, const StopToken& stop = {}) {
  BarrierEngineOptions engine_options;
  engine_options.crossover.crossover = crossover;
  BarrierEngine engine(engine_options);
  LpDriverOptions options;
  options.method = 2;
  options.presolve.level = presolve;
  options.engine = &engine;
  return solve_lp(lp, options, nullptr, stop, log);
}

TEST(Barrier, LinearModelsAgreeWithTheOracle) {
  RandomStream random(21, "barrier lp");
  QuietLog log;
  int solved = 0;
  for (int trial = 0; trial < 1200; ++trial) {
    const LpData lp = oracle::random_lp(random, {});
    const oracle::DenseLpResult expected = oracle::solve_dense_lp(lp);
    for (const int crossover : {-1, 0}) {
      const int presolve = trial % 2 == 0 ? -1 : 0;
      const std::string where = "trial " + std::to_string(trial) + " crossover " + std::to_string(crossover);
      const LpDriverResult result = solve(lp, crossover, presolve, log);
      if (crossover == 0 && result.status == SolveStatus::kSuboptimal) continue;
      oracle::expect_right(lp, result, expected, where);
      if (HasFatalFailure()) return;
      if (result.status != SolveStatus::kOptimal) continue;
      ++solved;
      if (crossover != 0) {
        EXPECT_TRUE(result.has_basis) << where;
      }
    }
  }
  EXPECT_GT(solved, 1000);
}

// Without presolve and without a simplex: the growing duals themselves must become the proof.
TEST(Barrier, DivergingDualsProveInfeasibility) {
  RandomStream random(29, "infeasible transports");
  int proven = 0;
  for (int trial = 0; trial < 20; ++trial) {
    LpData lp = oracle::transportation(4 + trial % 5, 6, random);
    lp.row_lower.back() = lp.row_upper.back() += static_cast<double>(1 + random.below(9));  // more than is there
    QuietLog log;
    const BarrierResult result = solve_barrier(lp, {}, {}, log);
    double gap = 0;
    if (result.status == SolveStatus::kInfeasible) {
      ++proven;
      EXPECT_TRUE(proves_infeasible(lp, result.farkas, gap)) << "trial " << trial;
    } else {
      EXPECT_EQ(result.status, SolveStatus::kNumeric) << "trial " << trial;
    }
  }
  EXPECT_GE(proven, 15);
}

TEST(Barrier, QuadraticModelsMeetTheirOptimalityConditions) {
  RandomStream random(22, "barrier qp");
  QuietLog log;
  int optimal = 0, undecided = 0;
  for (int trial = 0; trial < 1500; ++trial) {
    LpData lp = oracle::random_lp(random, {});
    oracle::add_convex_q(random, lp);
    const std::string where = "trial " + std::to_string(trial);
    LpData linear = lp;
    linear.quadratic = {};
    std::fill(linear.cost.begin(), linear.cost.end(), 0.0);
    const bool feasible = oracle::solve_dense_lp(linear).status == SolveStatus::kOptimal;
    const LpDriverResult result = solve(lp, -1, -1, log);
    ASSERT_EQ(result.error, 0) << where;
    oracle::expect_proof(lp, result, where);
    if (result.status == SolveStatus::kSuboptimal || result.status == SolveStatus::kNumeric) {
      ++undecided;
      continue;
    }
    EXPECT_EQ(feasible, result.status != SolveStatus::kInfeasible) << where;
    if (result.status != SolveStatus::kOptimal) continue;
    ++optimal;
    EXPECT_TRUE(is_optimal(lp, result.point, {})) << where;
    const DualQuality dual = dual_quality_of(lp, result.point, true);
    const double scale = std::max(1.0, std::abs(result.objective));
    EXPECT_LE(dual.complementarity.sum, 1e-6 * scale) << where;
    EXPECT_LE(dual.residual.max, 1e-9 * scale) << where;
    EXPECT_NEAR(result.objective, objective_at(lp, result.point.x), 1e-12 * scale) << where;
  }
  EXPECT_GT(optimal, 800);
  EXPECT_EQ(undecided, 0);
}

// A separable model of free columns, more than a dense reduced Hessian should have.
TEST(QuadraticEngine, TooManySuperbasicsGoToTheBarrier) {
  constexpr Index kCols = 3200;
  LpData lp;
  lp.matrix.num_rows = 1;
  lp.row_lower = {-kInf};
  lp.row_upper = {kCols};
  lp.quadratic.num_rows = kCols;
  const Index row = 0;
  const double one = 1;
  for (Index col = 0; col < kCols; ++col) {  // (x - 1/2)^2 / 2 but for the constant
    lp.matrix.append_col(&row, &one, 1);
    lp.quadratic.append_col(&col, &one, 1);
    lp.cost.push_back(-0.5);
    lp.col_lower.push_back(-kInf);
    lp.col_upper.push_back(kInf);
  }
  TextLog log;
  const EngineAnswer answer = QuadraticSimplexEngine({}, {}, Basis()).solve(lp, {}, {}, log);
  ASSERT_EQ(answer.status, SolveStatus::kOptimal);
  EXPECT_TRUE(log.has("switch to barrier"));
  EXPECT_FALSE(log.has("quad precision"));
  for (Index col = 0; col < kCols; col += 500) EXPECT_NEAR(answer.point.x[col], 0.5, 1e-5);
}

TEST(Convexity, AdjustmentsOfSmallMatrices) {
  struct Case {
    const char* what;
    std::vector<std::vector<double>> q;
    double low, high;  // the largest adjustment lies between these
    int count;
  };
  const Case cases[] = {
      {"empty diagonal", {{0, 0}, {0, 0}}, 0, 0, 0},
      {"positive", {{2, 0}, {0, 3}}, 0, 0, 0},
      {"rank one", {{1, 2, 3}, {2, 4, 6}, {3, 6, 9}}, 0, 0, 0},
      {"rank one, badly scaled", {{1e-8, 1e-2}, {1e-2, 1e4}}, 0, 0, 0},
      {"slightly negative", {{1, 0}, {0, -1e-8}}, 1e-8, 1e-8, 1},
      {"more negative", {{-1e-5, 0}, {0, 1}}, 1e-5, 1e-5, 1},
      {"too little to count", {{-1e-11, 0}, {0, 1}}, 1e-11, 1e-11, 0},
      {"saddle", {{0, 1}, {1, 0}}, 1, kInf, 2},
      {"indefinite", {{1, 2}, {2, 1}}, 1, kInf, 1},
      {"negative", {{-3, 0}, {0, -2}}, 3, 3, 2},
  };
  for (const Case& each : cases) {
    const ConvexityCheck check = check_convexity(oracle::lower_of(each.q), {});
    EXPECT_EQ(check.stopped, SolveStatus::kLoaded) << each.what;
    EXPECT_GE(check.largest, each.low * (1 - 1e-12)) << each.what;
    EXPECT_LE(check.largest, each.high * (1 + 1e-12)) << each.what;
    EXPECT_EQ(check.count, each.count) << each.what;
  }
}

TEST(Convexity, RandomMatricesAreToldApart) {
  RandomStream random(23, "convexity");
  for (int trial = 0; trial < 300; ++trial) {
    LpData lp;
    const auto n = static_cast<Index>(2 + random.below(12));
    lp.cost.assign(static_cast<std::size_t>(n), 0);
    lp.matrix.num_cols = n;
    lp.matrix.start.assign(static_cast<std::size_t>(n) + 1, 0);
    oracle::add_convex_q(random, lp);
    EXPECT_EQ(check_convexity(lp.quadratic, {}).largest, 0) << "trial " << trial;
    // Less than nothing in one direction: some x'Qx is negative.
    std::vector<double> shift(static_cast<std::size_t>(n), 0);
    const auto at = static_cast<Index>(random.below(n));
    std::vector<double> unit(static_cast<std::size_t>(n), 0);
    unit[at] = 1;
    shift[at] = -2 * objective_at(lp, unit) - 0.5;
    add_to_diagonal(lp.quadratic, shift);
    EXPECT_GE(check_convexity(lp.quadratic, {}).largest, 1e-3) << "trial " << trial;
  }
}

// minimise 1/2 q x^2 - x, 0 <= x <= 10, and a second column that makes the largest diagonal entry one.
LpData two_columns(double q) {
  LpData lp;
  lp.matrix.num_cols = 2;
  lp.matrix.start = {0, 0, 0};
  lp.cost = {-1, -1};
  lp.col_lower = {0, 0};
  lp.col_upper = {10, 10};
  lp.quadratic = oracle::lower_of({{1, 0}, {0, q}});
  return lp;
}

TEST(Barrier, NearlyConvexQIsRepairedOrRefused) {
  TextLog repaired;
  const LpDriverResult good = solve(two_columns(-1e-8), -1, -1, repaired);
  EXPECT_EQ(good.error, 0);
  EXPECT_EQ(good.status, SolveStatus::kOptimal);
  EXPECT_TRUE(repaired.has("Warning: diagonal adjustment of 1.0e-08 performed to make Q PSD\n")) << repaired.text();
  EXPECT_NEAR(good.point.x[0], 1, 1e-5);
  EXPECT_NEAR(good.point.x[1], 10, 1e-5);
  TextLog refused;
  const LpDriverResult bad = solve(two_columns(-1e-5), -1, -1, refused);
  EXPECT_EQ(bad.error, kErrorQNotPsd);
  EXPECT_FALSE(bad.has_point);
  EXPECT_TRUE(refused.has("Q matrix not PSD (diagonal adjustment of 1.0e-05 would be required)\n")) << refused.text();
}

LpData random_feasible_lp(RandomStream& random) {
  oracle::RandomLpShape shape;
  shape.max_rows = 30;
  shape.max_cols = 60;
  shape.feasible_share = 1;
  LpData lp;
  do {
    lp = oracle::random_lp(random, shape);
  } while (lp.num_rows() < 10 || oracle::solve_dense_lp(lp).status != SolveStatus::kOptimal);
  return lp;
}

TEST(Barrier, LimitsAndInterruptions) {
  RandomStream random(24, "barrier limits");
  const LpData lp = random_feasible_lp(random);
  struct Case {
    int iterations;
    bool interrupted;
    SolveStatus status;
    const char* line;
  };
  constexpr Case kCases[] = {
      {0, false, SolveStatus::kIterationLimit, "Barrier performed 0 iterations in "},
      {2, false, SolveStatus::kIterationLimit, "Barrier performed 2 iterations in "},
      {1000, true, SolveStatus::kInterrupted, "Optimization interrupted\n"},
      {1000, false, SolveStatus::kOptimal, "Barrier solved model in "},
  };
  for (const Case& each : kCases) {
    BarrierOptions options;
    options.iteration_limit = each.iterations;
    const std::atomic<int> terminate{each.interrupted ? 1 : 0};
    TextLog log;
    const BarrierResult result = solve_barrier(lp, options, {&terminate, kInf}, log);
    EXPECT_EQ(result.status, each.status);
    EXPECT_TRUE(log.has(each.line)) << log.text();
  }
  TextLog log;
  EXPECT_EQ(solve_barrier(lp, {}, {nullptr, now_seconds() - 1}, log).status, SolveStatus::kTimeLimit);
  EXPECT_TRUE(log.has("Time limit exceeded\n"));
  BarrierOptions cutoff;
  cutoff.cutoff = oracle::solve_dense_lp(lp).objective - 1;
  EXPECT_EQ(solve_barrier(lp, cutoff, {}, log).status, SolveStatus::kCutoff);
  EXPECT_TRUE(log.has("Objective cutoff exceeded\n"));
}

TEST(Barrier, ThreadsOrderingsAndCorrectorsLeaveTheAnswer) {
  RandomStream random(25, "barrier settings");
  QuietLog log;
  for (int trial = 0; trial < 20; ++trial) {
    const LpData lp = random_feasible_lp(random);
    const double expected = oracle::solve_dense_lp(lp).objective;
    BarrierOptions options;
    const BarrierResult alone = solve_barrier(lp, options, {}, log);
    options.threads = 2;
    const BarrierResult together = solve_barrier(lp, options, {}, log);
    EXPECT_EQ(alone.point.x, together.point.x);
    for (const auto& [ordering, correctors] : {std::pair{0, 0}, {1, 0}, {0, 5}, {1, 2}}) {
      options.ordering = ordering;
      options.correctors = correctors;
      const BarrierResult result = solve_barrier(lp, options, {}, log);
      ASSERT_EQ(result.status, SolveStatus::kOptimal);
      EXPECT_NEAR(result.primal_objective, expected, 1e-6 * std::max(1.0, std::abs(expected)));
      EXPECT_NEAR(result.dual_objective, expected, 1e-6 * std::max(1.0, std::abs(expected)));
    }
  }
}

std::string without_times(const TextLog& log) {
  constexpr std::size_t kTimeColumn = 66;  // of iteration lines
  std::string lines;
  std::istringstream all(log.text());
  for (std::string line; std::getline(all, line);) {
    const bool timed = line.find("ime") != std::string::npos || line.find("iterations and") != std::string::npos;
    if (!timed) lines += line.substr(0, kTimeColumn) + '\n';
  }
  return lines;
}

// Each on its own takes another way to the same answer, linear and quadratic.
TEST(Barrier, SettingsActAndLeaveTheAnswer) {
  struct Setting {
    const char* name;
    std::function<void(BarrierOptions&)> set;
  };
  const Setting settings[] = {
      {"steps well short of the bounds", [](BarrierOptions& options) { options.loose_steps = false; }},
      {"extra regularization", [](BarrierOptions& options) { options.extra_regularization = 1e-4; }},
      {"values not solved for", [](BarrierOptions& options) { options.primal_start = false; }},
      {"multipliers not solved for", [](BarrierOptions& options) { options.dual_start = false; }},
      {"neither", [](BarrierOptions& options) { options.primal_start = options.dual_start = false; }},
  };
  RandomStream random(26, "barrier settings");
  for (const bool quadratic : {false, true}) {
    LpData lp = quadratic ? oracle::transportation(15, 15, random) : oracle::transportation(60, 60, random);
    if (quadratic) oracle::add_convex_q(random, lp);
    TextLog usual;
    const BarrierResult expected = solve_barrier(lp, {}, {}, usual);
    ASSERT_EQ(expected.status, SolveStatus::kOptimal);
    for (const Setting& setting : settings) {
      SCOPED_TRACE(std::string(setting.name) + (quadratic ? ", quadratic" : ""));
      BarrierOptions options;
      setting.set(options);
      TextLog log;
      const BarrierResult result = solve_barrier(lp, options, {}, log);
      EXPECT_EQ(result.status, SolveStatus::kOptimal);
      EXPECT_NEAR(result.primal_objective, expected.primal_objective, 1e-6 * std::abs(expected.primal_objective));
      EXPECT_NE(without_times(log), without_times(usual));
    }
  }
}

}  // namespace
}  // namespace zorvex
