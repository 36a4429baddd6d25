#include "mip/probing.hpp"

#include <gtest/gtest.h>

#include "mip/prepare.hpp"
#include "mip/random_mip.hpp"

namespace zorvex::testing {
namespace {

constexpr std::int64_t kPlenty = 1000000;

SearchModel model_of(const MipProblem& problem) {
  SearchModel model = make_search_model(problem);
  model.cliques.reset(model.num_cols());
  model.cliques.index();
  model.learned.reset(model.num_cols());
  model.learned.index();
  return model;
}

TEST(Probing, FixesWhatFailsAndWhatBothSidesAgreeOn) {
  // x0 = 1 needs x1 = 1 and x1 = 0; x3 >= x2 and x3 >= 1 - x2.
  SearchModel model = model_of(dense_problem({{1, -1, 0, 0}, {1, 1, 0, 0}, {0, 0, -1, 1}, {0, 0, 1, 1}},
                                             {-kInf, -kInf, 0, 1}, {0, 1, kInf, kInf}, 1));
  const ProbingResult result = probe_binaries(model, kPlenty, StopToken());
  EXPECT_FALSE(result.infeasible);
  EXPECT_EQ(model.lp.col_upper[0], 0);
  EXPECT_EQ(model.lp.col_lower[3], 1);
}

TEST(Probing, LearnsPairsThatNoRowShows) {
  // x0 <= x1 and x1 + x2 <= 1: x0 and x2 exclude each other through x1.
  SearchModel model = model_of(dense_problem({{1, -1, 0}, {0, 1, 1}}, {-kInf, -kInf}, {0, 1}, 1));
  probe_binaries(model, kPlenty, StopToken());
  EXPECT_TRUE(model.learned.conflict(literal(0, true), literal(2, true)));
  EXPECT_FALSE(model.learned.conflict(literal(0, false), literal(2, true)));
}

// A node that needs inflow must have its one arc: x0 + x1 = 5, x_i <= 9 y_i, y0 + y1 <= 1 becomes an equality, and the
// arc that is open carries all of it.
TEST(Probing, PackingThatCannotStayEmpty) {
  MipProblem problem = dense_problem({{1, 1, 0, 0}, {1, 0, -9, 0}, {0, 1, 0, -9}, {0, 0, 1, 1}},
                                     {5, -kInf, -kInf, -kInf}, {5, 0, 0, 1}, 1);
  problem.type[0] = problem.type[1] = VarType::kContinuous;
  problem.lp.col_upper[0] = problem.lp.col_upper[1] = 9;
  SearchModel model = model_of(problem);
  probe_binaries(model, kPlenty, StopToken());
  EXPECT_EQ(model.lp.row_lower[3], 1);
  const Preparation preparation = prepare(model, PrepareOptions{}, StopToken());
  EXPECT_FALSE(preparation.infeasible);
  EXPECT_TRUE(model.cliques.conflict(literal(2, true), literal(3, true)));
}

TEST(Probing, CoefficientsShrinkUntilTheRowBinds) {
  // With y = 0 the second row leaves x <= 3, so that x - 10 y <= 8 may become x - 15 y <= 3.
  MipProblem problem = dense_problem({{1, -10}, {1, -20}}, {-kInf, -kInf}, {8, 3}, 1);
  problem.type[0] = VarType::kContinuous;
  problem.lp.col_upper[0] = 20;
  SearchModel model = model_of(problem);
  const ProbingResult result = probe_binaries(model, kPlenty, StopToken());
  EXPECT_GT(result.strengthened, 0);
  EXPECT_NEAR(model.lp.row_upper[0], 3, 1e-6);
  EXPECT_NEAR(model.rows.value[model.rows.begin(0) + 1], -15, 1e-6);
}

TEST(Probing, BoundsOfContinuousColumnsByBinaries) {
  // y = 0 forces z = 0 and with it x <= 2.
  MipProblem problem = dense_problem({{1, 0, -6}, {0, -1, 1}}, {-kInf, -kInf}, {2, 0}, 1);
  problem.type[0] = VarType::kContinuous;
  problem.lp.col_upper[0] = 8;
  SearchModel model = model_of(problem);
  probe_binaries(model, kPlenty, StopToken());
  bool found = false;
  for (const ImpliedBound& implied : model.implied_bounds) {
    if (implied.col != 0 || !implied.upper || implied.bound.of != 1) continue;
    found = true;
    EXPECT_NEAR(implied.bound.constant, 2, 1e-5);
    EXPECT_NEAR(implied.bound.constant + implied.bound.slope, 8, 1e-5);
  }
  EXPECT_TRUE(found);
}

}  // namespace
}  // namespace zorvex::testing
