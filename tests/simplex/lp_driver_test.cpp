// The LP driver: presolve on and off agree with the dense oracle, every claim stands up to the judge in the space of
// the model as given, and the log says what happened.
#include "simplex/lp_driver.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "base/random_stream.hpp"
#include "simplex/answer_check.hpp"
#include "simplex/scaling.hpp"
#include "simplex/simplex_log.hpp"
#include "support/claim.hpp"
#include "support/random_lp.hpp"
#include "support/text_log.hpp"

namespace zorvex {
namespace {

TEST(LpDriver, AgreesWithTheOracleWithAndWithoutPresolve) {
  RandomStream random(41, "lp driver");
  QuietLog log;
  const struct {
    int level, passes, dualize;
  } ways[] = {{0, -1, 0}, {-1, -1, 0}, {2, -1, 0}, {1, 0, 1}, {1, 0, 2}, {2, -1, 1}};
  for (int trial = 0; trial < 1500; ++trial) {
    const LpData lp = oracle::random_lp(random, {});
    const oracle::DenseLpResult expected = oracle::solve_dense_lp(lp);
    for (const auto& way : ways) {
      for (const int method : {0, 1}) {
        LpDriverOptions options;
        options.presolve.level = way.level;
        options.presolve.max_passes = way.passes;
        options.presolve.dualize = way.dualize;
        options.method = method;
        const std::string where = "trial " + std::to_string(trial) + " presolve " + std::to_string(way.level) +
                                  " dual " + std::to_string(way.dualize) + " method " + std::to_string(method);
        const LpDriverResult result = solve_lp(lp, options, nullptr, {}, log);
        oracle::expect_right(lp, result, expected, where);
        if (HasFatalFailure()) return;
        if (result.has_point) {
          EXPECT_NEAR(result.objective, objective_at(lp, result.point.x),
                      1e-9 * std::max(1.0, std::abs(result.objective)))
              << where;
        }
      }
    }
  }
}

TEST(LpDriver, OptimalBasisIsAWarmStart) {
  RandomStream random(43, "lp driver warm");
  QuietLog log;
  for (int trial = 0; trial < 200; ++trial) {
    const LpData lp = oracle::random_lp(random, {});
    const LpDriverResult first = solve_lp(lp, {}, nullptr, {}, log);
    if (first.status != SolveStatus::kOptimal) continue;
    const LpDriverResult second = solve_lp(lp, {}, &first.basis, {}, log);
    EXPECT_EQ(second.status, SolveStatus::kOptimal) << trial;
    EXPECT_LE(second.iterations, 1) << trial;  // a degenerate vertex may need a basis change
  }
}

// min -x - y, x + 2y <= 4, 3x + y <= 6: optimum -2.8 at (1.6, 1.2).
LpData small_model() {
  LpData lp;
  lp.matrix.num_rows = 2;
  const Index rows[] = {0, 1};
  const double x[] = {1, 3};
  const double y[] = {2, 1};
  lp.matrix.append_col(rows, x, 2);
  lp.matrix.append_col(rows, y, 2);
  lp.cost = {-1, -1};
  lp.col_lower = {0, 0};
  lp.col_upper = {kInf, kInf};
  lp.row_lower = {-kInf, -kInf};
  lp.row_upper = {4, 6};
  return lp;
}

TEST(LpDriver, LogOfASolve) {
  TextLog log;
  LpDriverOptions options;
  options.sense = -1;  // the model as a maximisation
  options.presolve.level = 0;
  const LpDriverResult result = solve_lp(small_model(), options, nullptr, {}, log);
  EXPECT_NEAR(result.objective, -2.8, 1e-12);
  const std::string& text = log.text();
  EXPECT_NE(text.find("Iteration    Objective       Primal Inf.    Dual Inf.      Time\n"), std::string::npos) << text;
  EXPECT_NE(text.find("\nSolved in "), std::string::npos) << text;
  EXPECT_NE(text.find("Optimal objective  2.800000000e+00\n"), std::string::npos) << text;
  EXPECT_EQ(text.find("Presolve"), std::string::npos) << text;
}

TEST(LpDriver, LogLinesOfOtherEnds) {
  LpData infeasible = small_model();
  infeasible.row_lower[0] = 20;
  infeasible.row_upper[0] = kInf;
  LpData unbounded = small_model();
  unbounded.row_upper = {kInf, kInf};
  LpData removed = small_model();
  removed.col_upper = {0, 0};
  struct Case {
    const LpData& lp;
    double iteration_limit;
    const StopToken stop;
    const char* expected[2];
  };
  const std::atomic<int> terminate{1};
  const Case cases[] = {
      {infeasible, kInf, {}, {"Solved in ", "Infeasible model\n"}},
      {unbounded, kInf, {}, {"Solved in ", "Unbounded model\n"}},
      {removed, kInf, {}, {"Presolve: All rows and columns removed\n\nSolved in 0 iterations", "Optimal objective "}},
      {small_model(), 0, {}, {"Stopped in 0 iterations", "Iteration limit exceeded\n"}},
      {small_model(), kInf, StopToken(nullptr, now_seconds() - 1), {"Stopped in ", "Time limit exceeded\n"}},
      {small_model(), kInf, StopToken(&terminate, kInf), {"Stopped in ", "Solve interrupted\n"}},
  };
  for (const Case& each : cases) {
    TextLog log;
    LpDriverOptions options;
    options.iteration_limit = each.iteration_limit;
    if (each.iteration_limit == 0) options.presolve.level = 0;
    solve_lp(each.lp, options, nullptr, each.stop, log);
    for (const char* line : each.expected) EXPECT_NE(log.text().find(line), std::string::npos) << line << log.text();
  }
}

// Gives up on models with fewer than `rows` rows.
class TimidEngine final : public LpEngine {
 public:
  explicit TimidEngine(Index rows) : rows_(rows) {}
  void set_sense(int) override {}
  EngineAnswer solve(const LpData& lp, const SimplexLimits& limits, const StopToken& stop, LogSink& log) override {
    ++calls;
    EngineAnswer answer;
    answer.status = SolveStatus::kNumeric;
    answer.iterations = 3;
    if (lp.num_rows() < rows_ || limits.iterations < 3) return answer;
    LpSolver solver(lp, {}, log);
    solver.solve(limits, stop);
    return answer_of(solver);
  }
  void report_without_solve(SolveStatus, double, double, LogSink&) override {}
  int calls = 0;

 private:
  Index rows_;
};

TEST(LpDriver, EngineThatFailsOnThePresolvedModelGetsTheModelAsGiven) {
  LpData lp = small_model();  // with a row that presolve takes away
  const Index rows[] = {0};
  const double values[] = {1};
  SparseMatrix row;
  row.num_rows = lp.num_cols();
  row.append_col(rows, values, 1);
  lp.matrix.append_rows(row);
  lp.row_lower.push_back(-kInf);
  lp.row_upper.push_back(1.7);
  QuietLog log;
  const struct {
    Index rows;
    double iteration_limit;
    int calls;
    SolveStatus status;
  } cases[] = {{2, kInf, 1, SolveStatus::kOptimal},
               {3, kInf, 2, SolveStatus::kOptimal},
               {3, 5, 2, SolveStatus::kNumeric},  // what the first call took is gone
               {4, kInf, 2, SolveStatus::kNumeric}};
  for (const auto& each : cases) {
    TimidEngine engine(each.rows);
    LpDriverOptions options;
    options.engine = &engine;
    options.iteration_limit = each.iteration_limit;
    const LpDriverResult result = solve_lp(lp, options, nullptr, {}, log);
    EXPECT_EQ(result.status, each.status) << each.rows;
    EXPECT_EQ(engine.calls, each.calls) << each.rows;
    if (each.status != SolveStatus::kOptimal) continue;
    EXPECT_NEAR(result.objective, -2.8, 1e-12);
  }
}

// Says that it found and reported an optimum without a basis, at x = (at, 0).
class ClaimingEngine final : public LpEngine {
 public:
  explicit ClaimingEngine(double at) : at_(at) {}
  void set_sense(int) override {}
  EngineAnswer solve(const LpData&, const SimplexLimits&, const StopToken&, LogSink& log) override {
    log.write("Optimal objective claimed\n");
    EngineAnswer answer;
    answer.status = SolveStatus::kOptimal;
    answer.point = {{at_}, {at_}, {1}, {0}};
    answer.reported = true;
    return answer;
  }
  void report_without_solve(SolveStatus, double, double, LogSink&) override {}

 private:
  double at_;
};

TEST(LpDriver, ClosingLinesAgreeWithTheStatusThatAClaimEndsWith) {
  LpData lp;  // minimise x, x >= 1 as a row
  lp.matrix.num_rows = 1;
  const Index row = 0;
  const double one = 1;
  lp.matrix.append_col(&row, &one, 1);
  lp.cost = {1};
  lp.col_lower = {-kInf};
  lp.col_upper = {kInf};
  lp.row_lower = {1};
  lp.row_upper = {kInf};
  for (const double at : {1.0, 0.999}) {
    ClaimingEngine engine(at);
    LpDriverOptions options;
    options.engine = &engine;
    options.presolve.level = 0;
    TextLog log;
    const bool holds = at == 1;
    EXPECT_EQ(solve_lp(lp, options, nullptr, {}, log).status, holds ? SolveStatus::kOptimal : SolveStatus::kSuboptimal);
    EXPECT_EQ(log.has("Sub-optimal termination - objective 9.99000000e-01\n"), !holds) << log.text();
  }
}

TEST(SimplexLog, PacesLinesAndPrintsEachIterationOnce) {
  TextLog text;
  SimplexLog::Settings settings;
  settings.start_time = now_seconds();
  settings.display_interval = 1000;
  SimplexLog log(text, settings);
  log.iteration(0, 1.5, 2, 0, false);
  log.iteration(7, 2.5, 1, 0, false);  // same interval: skipped
  log.iteration(9, 3.5, 0, 0, true);
  log.iteration(9, 3.5, 0, 0, true);
  EXPECT_EQ(text.text(),
            "Iteration    Objective       Primal Inf.    Dual Inf.      Time\n"
            "       0    1.5000000e+00   2.000000e+00   0.000000e+00      0s\n"
            "       9    3.5000000e+00   0.000000e+00   0.000000e+00      0s\n");
}

TEST(SimplexLog, CrossoverKindsAreSeparated) {
  TextLog text;
  SimplexLog::Settings settings;
  settings.start_time = now_seconds();
  SimplexLog log(text, settings);
  log.crossover(SimplexLog::Kind::kPrimalPush, 12, 0.5, 0);
  log.crossover(SimplexLog::Kind::kPrimalPush, 3, 0, 0);
  log.crossover(SimplexLog::Kind::kDualPush, 4, 0, 0.25);
  log.crossover(SimplexLog::Kind::kPushDone, 0, 0, 0);
  EXPECT_EQ(text.text(),
            "Crossover log...\n\n"
            "      12 PPushes remaining with PInf 5.0000000e-01                 0s\n"
            "       3 PPushes remaining with PInf 0.0000000e+00                 0s\n"
            "\n"
            "       4 DPushes remaining with DInf 2.5000000e-01                 0s\n"
            "\n"
            "  Push phase complete: Pinf 0.0000000e+00, Dinf 0.0000000e+00      0s\n\n");
}

TEST(Scaling, FactorsArePowersOfTwoAndNarrowTheSpread) {
  LpData lp = small_model();
  lp.matrix.value = {1e-6, 3e2, 2e-3, 1e6};
  const Scaling scaling = compute_scaling(lp);
  double low = kInf;
  double high = 0;
  for (Index col = 0; col < 2; ++col) {
    int exponent = 0;
    EXPECT_EQ(std::frexp(scaling.col[col], &exponent), 0.5);
    for (Offset k = lp.matrix.begin(col); k < lp.matrix.end(col); ++k) {
      const double entry = lp.matrix.value[k] * scaling.row[lp.matrix.index[k]] * scaling.col[col];
      low = std::min(low, entry);
      high = std::max(high, entry);
    }
  }
  EXPECT_LT(high / low, 1e4);  // from 1e12
}

}  // namespace
}  // namespace zorvex
