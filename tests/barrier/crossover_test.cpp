// Crossover from points of every quality: whatever it starts from, it ends with an optimal basis; from a point of the
// optimal faces the pushes leave nothing to the simplex.
#include "barrier/crossover.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <string>

#include "face_point.hpp"
#include "simplex/answer_check.hpp"
#include "support/claim.hpp"
#include "support/random_lp.hpp"
#include "support/text_log.hpp"

namespace zorvex {
namespace {

struct Setting {
  const char* name;
  int crossover;
  int basis;
  Precision precision;
  bool scale;
};

void PrintTo(const Setting& setting, std::ostream* out) { *out << setting.name; }

CrossoverOptions options_of(const Setting& setting) {
  CrossoverOptions options;
  options.crossover = setting.crossover;
  options.crossover_basis = setting.basis;
  options.simplex.precision = setting.precision;
  options.simplex.scale = setting.scale;
  return options;
}

CrossoverResult cross(const LpData& lp, const InteriorPoint& point, const CrossoverOptions& options) {
  QuietLog log;
  return run_crossover(lp, point, options, {}, {}, log);
}

class EverySetting : public testing::TestWithParam<Setting> {};

TEST_P(EverySetting, AnyPointLeadsToAnOptimalBasis) {
  RandomStream random(5, "crossover points");
  oracle::RandomLpShape shape;
  shape.max_rows = 12;
  shape.max_cols = 18;
  for (int trial = 0; trial < 300; ++trial) {
    const LpData lp = oracle::random_lp(random, shape);
    const oracle::DenseLpResult expected = oracle::solve_dense_lp(lp);
    InteriorPoint point{expected.x, expected.row_activity, expected.pi, expected.reduced_cost};
    const auto n = static_cast<std::size_t>(lp.num_cols());
    const auto m = static_cast<std::size_t>(lp.num_rows());
    switch (trial % 4) {
      case 0:  // nothing known
        point = {std::vector<double>(n, 0), std::vector<double>(m, 0), std::vector<double>(m, 0),
                 std::vector<double>(n, 0)};
        break;
      case 1:
        if (expected.status == SolveStatus::kOptimal) point = oracle::average_over_faces(lp, random, 4);
        break;
      case 2:
        oracle::add_noise(point, random, 1e-3);
        break;
      default:
        oracle::add_noise(point, random, 10);
    }
    point.x.resize(n);
    point.row_activity.resize(m);
    point.pi.resize(m);
    point.reduced_cost.resize(n);
    const std::string where = "trial " + std::to_string(trial);
    const CrossoverResult result = cross(lp, point, options_of(GetParam()));
    if (result.status == SolveStatus::kOptimal) {
      EXPECT_FALSE(result.basis.empty()) << where;
    }
    oracle::expect_right(lp, result, expected, where);
    if (HasFatalFailure()) return;
  }
}

// The point is complementary: after the pushes the basis is optimal, and a pivot of the simplex would be one too many.
TEST_P(EverySetting, PushesFromTheOptimalFacesLeaveNothing) {
  RandomStream random(11, "crossover faces");
  double pushes = 0;
  for (int trial = 0; trial < 8; ++trial) {
    const LpData lp = oracle::transportation(6 + trial, 9, random);
    const InteriorPoint point = oracle::average_over_faces(lp, random, 12);
    ASSERT_FALSE(point.x.empty());
    const CrossoverResult result = cross(lp, point, options_of(GetParam()));
    ASSERT_EQ(result.status, SolveStatus::kOptimal);
    oracle::expect_vertex(lp, result, objective_at(lp, point.x), "trial " + std::to_string(trial));
    EXPECT_EQ(result.iterations, result.push_pivots);
    EXPECT_LE(result.push_pivots, result.pushes);
    pushes += result.pushes;
  }
  EXPECT_GT(pushes, 0);
}

INSTANTIATE_TEST_SUITE_P(Crossover, EverySetting,
                         testing::Values(Setting{"automatic", -1, 0, Precision::kAutomatic, true},
                                         Setting{"automatic_careful", -1, 1, Precision::kAutomatic, true},
                                         Setting{"duals_then_primal_simplex", 1, 0, Precision::kAutomatic, true},
                                         Setting{"duals_then_dual_simplex", 2, 1, Precision::kAutomatic, false},
                                         Setting{"primals_then_primal_simplex", 3, 1, Precision::kAutomatic, true},
                                         Setting{"primals_then_dual_simplex", 4, 0, Precision::kAutomatic, false},
                                         Setting{"extended", -1, 0, Precision::kExtended, true},
                                         Setting{"extended_duals_first", 1, 1, Precision::kExtended, false}),
                         [](const testing::TestParamInfo<Setting>& setting) { return setting.param.name; });

// --- log, limits, missing points ---

class Transport : public testing::Test {
 protected:
  Transport() {
    RandomStream random(3, "crossover transport");
    lp_ = oracle::transportation(8, 10, random);
    point_ = oracle::average_over_faces(lp_, random, 12);
    options_.simplex.log_start_time = now_seconds();
  }
  CrossoverResult run(LogSink& log, const SimplexLimits& limits = {}, const StopToken& stop = {}) {
    return run_crossover(lp_, point_, options_, limits, stop, log);
  }

  LpData lp_;
  InteriorPoint point_;
  CrossoverOptions options_;
};

std::string line(const char* format, auto... values) {
  char text[200];
  std::snprintf(text, sizeof text, format, values...);
  return text;
}

// Every digit a zero and every sign a plus.
std::string mask_figures(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c >= '1' && c <= '9'; }, '0');
  std::replace(text.begin(), text.end(), '-', '+');
  for (std::size_t i = 1; i + 1 < text.size(); ++i) {  // counts of several figures look like those of one
    if (text[i - 1] == ' ' && text[i] == '0' && text[i + 1] == '0') text[i] = ' ';
  }
  return text;
}

TEST_F(Transport, LogsBasisPushesAndTheirEnd) {
  TextLog log;
  ASSERT_EQ(run(log).status, SolveStatus::kOptimal);
  const std::string start = line("  Building initial crossover basis %33.0fs\n", 0.0) + "Crossover log...\n\n";
  EXPECT_EQ(log.text().rfind(start, 0), 0U) << log.text();
  EXPECT_TRUE(log.has(" variables added to crossover basis                        0s\n")) << log.text();
  // Two lines of each kind, the first and the last; an empty line behind the last.
  const std::string masked = mask_figures(log.text());
  for (const char* format : {" %7d PPushes remaining with PInf %12.7e            %6.0fs\n",
                             " %7d DPushes remaining with DInf %12.7e            %6.0fs\n"}) {
    EXPECT_NE(masked.find(line(format, 0, 0.0, 0.0) + line(format, 0, 0.0, 0.0) + "\n"), std::string::npos) << masked;
  }
  EXPECT_TRUE(log.has("       0 PPushes") && log.has("       0 DPushes")) << log.text();
  EXPECT_TRUE(log.has("  Push phase complete: Pinf 0.0000000e+00, Dinf 0.0000000e+00      0s\n\n")) << log.text();
  const std::size_t pushed = log.text().find("Push phase complete");
  EXPECT_NE(log.text().find("Iteration    Objective       Primal Inf.    Dual Inf.      Time\n", pushed),
            std::string::npos);
}

TEST_F(Transport, DualsFirstTurnsTheLinesAround) {
  options_.crossover = 1;
  TextLog log;
  ASSERT_EQ(run(log).status, SolveStatus::kOptimal);
  EXPECT_LT(log.text().find("DPushes"), log.text().find("PPushes"));
}

TEST_F(Transport, RootLogKeepsSilentWithinTheFirstInterval) {
  options_.root_log = true;
  TextLog log;
  ASSERT_EQ(run(log).status, SolveStatus::kOptimal);
  EXPECT_FALSE(log.has("rossover log")) << log.text();
  EXPECT_FALSE(log.has("Push")) << log.text();
}

TEST_F(Transport, RootLogAfterTheFirstInterval) {
  options_.root_log = true;
  options_.simplex.log_start_time = now_seconds() - 100;
  TextLog log;
  ASSERT_EQ(run(log).status, SolveStatus::kOptimal);
  EXPECT_TRUE(log.has("\nRoot crossover log...\n\n")) << log.text();
}

TEST_F(Transport, IterationsGoOnFromThoseBefore) {
  options_.iteration_offset = 1000;
  TextLog log;
  const CrossoverResult result = run(log);
  ASSERT_EQ(result.status, SolveStatus::kOptimal);
  EXPECT_TRUE(log.has(line("\n %7.0f   ", 1000 + result.iterations))) << log.text();
}

TEST_F(Transport, FreeVariablesAreAnnounced) {
  lp_.col_lower[0] = -kInf;
  TextLog log;
  run(log);
  EXPECT_TRUE(log.has(line(" %7.0f      handle free variables                     %6.0fs\n", 1.0, 0.0))) << log.text();
}

TEST_F(Transport, DroppedColumnsAreADiagnostic) {
  TextLog log(true);
  run(log);
  EXPECT_TRUE(log.has(" Columns dropped for crossover initial basis\n")) << log.text();
}

TEST_F(Transport, NoPointNoCrossover) {
  point_ = {};
  TextLog log;
  EXPECT_EQ(run(log).status, SolveStatus::kLoaded);
  EXPECT_EQ(log.text(), "Barrier solution isn't available for crossover\n");
}

TEST_F(Transport, IterationLimitStopsThePushes) {
  RandomStream random(8, "crossover limits");
  lp_ = oracle::transportation(20, 30, random);
  point_ = oracle::average_over_faces(lp_, random, 20);
  QuietLog log;
  const double pivots = run(log).push_pivots;
  ASSERT_GT(pivots, 3);
  const CrossoverResult result = run(log, {.iterations = pivots - 2});
  EXPECT_EQ(result.status, SolveStatus::kIterationLimit);
  EXPECT_EQ(result.iterations, pivots - 2);
  EXPECT_EQ(result.point.x, point_.x);
  EXPECT_TRUE(result.basis.empty());
}

TEST_F(Transport, IterationLimitHoldsForPushesAndSimplexTogether) {
  oracle::add_noise(point_, *std::make_unique<RandomStream>(1, "far off"), 4);
  QuietLog log;
  const double needed = run(log).iterations;
  const CrossoverResult result = run(log, {.iterations = needed - 1});
  EXPECT_EQ(result.status, SolveStatus::kIterationLimit);
  EXPECT_EQ(result.iterations, needed - 1);
}

TEST_F(Transport, InterruptAndDeadline) {
  QuietLog log;
  const std::atomic<int> raised{1};
  EXPECT_EQ(run(log, {}, {&raised, kInf}).status, SolveStatus::kInterrupted);
  const CrossoverResult late = run(log, {}, {nullptr, now_seconds() - 1});
  EXPECT_EQ(late.status, SolveStatus::kTimeLimit);
  EXPECT_EQ(late.point.pi, point_.pi);
}

TEST(CrossoverSpecialShapes, NoRowsAndNoColumns) {
  LpData lp;
  lp.matrix.append_col(nullptr, nullptr, 0);
  lp.cost = {1};
  lp.col_lower = {2};
  lp.col_upper = {5};
  const CrossoverResult result = cross(lp, {{3}, {}, {}, {1}}, {});
  ASSERT_EQ(result.status, SolveStatus::kOptimal);
  EXPECT_EQ(result.point.x[0], 2);
  LpData rows;
  rows.matrix.num_rows = 2;
  rows.row_lower = {-1, -kInf};
  rows.row_upper = {1, 0};
  EXPECT_EQ(cross(rows, {{}, {0, 0}, {0, 0}, {}}, {}).status, SolveStatus::kOptimal);
}

// Rows x[k] - 2 x[k+1] = -1 and x[n] <= 1 + 1e-7 have unit pivots only, yet the last side reaches x[1] enlarged by
// 2^(n-1): the columns, all of them off their bounds, are a basis to which the point is no solution.
TEST(CrossoverSpecialShapes, NearlySingularBasesDoNotLoseThePoint) {
  constexpr Index kSize = 40;
  LpData lp;
  lp.matrix.num_rows = kSize;
  InteriorPoint point;
  for (Index k = 0; k < kSize; ++k) {
    const Index rows[] = {k - 1, k};
    const double values[] = {-2, 1};
    lp.matrix.append_col(rows + (k == 0), values + (k == 0), k == 0 ? 1 : 2);
    lp.row_lower.push_back(k + 1 < kSize ? -1 : 0);
    lp.row_upper.push_back(k + 1 < kSize ? -1 : 1 + 1e-7);
    point.x.push_back(1 + std::exp2(-k));
    point.row_activity.push_back(k + 1 < kSize ? -1 : 1 + std::exp2(-k));
    point.pi.push_back(k + 1 < kSize ? 0 : -1);
  }
  lp.cost.assign(kSize, 0);
  lp.col_lower.assign(kSize, 0);
  lp.col_upper.assign(kSize, 4);
  point.reduced_cost.assign(kSize, 0);
  CrossoverOptions options;
  options.simplex.scale = false;
  const CrossoverResult result = cross(lp, point, options);
  ASSERT_EQ(result.status, SolveStatus::kOptimal);
  EXPECT_EQ(result.primal_infeasibilities, 0);
}

}  // namespace
}  // namespace zorvex
