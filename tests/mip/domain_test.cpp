#include "mip/domain.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "mip/prepare.hpp"
#include "mip/random_mip.hpp"

namespace zorvex::testing {
namespace {

TEST(Domain, RowsTightenAndBacktrackRestores) {
  const SearchModel model = make_search_model(dense_problem({{2, 3, 0}, {0, 1, -1}}, {-kInf, 0}, {7.5, 0}, 10));
  Domain domain(model);
  domain.queue_all();
  ASSERT_TRUE(domain.propagate());
  EXPECT_EQ(domain.upper(0), 3);
  EXPECT_EQ(domain.upper(1), 2);
  EXPECT_EQ(domain.upper(2), 2);
  domain.push_level();
  ASSERT_TRUE(domain.tighten_lower(2, 0.2, Reason::kBranch));
  ASSERT_TRUE(domain.propagate());
  EXPECT_EQ(domain.lower(2), 1);
  EXPECT_EQ(domain.lower(1), 1);
  EXPECT_EQ(domain.upper(0), 2);
  domain.push_level();
  EXPECT_TRUE(domain.tighten_lower(0, 2, Reason::kRelaxation));
  EXPECT_TRUE(domain.propagate());
  EXPECT_EQ(domain.relaxation_changes().size(), 1u);
  EXPECT_FALSE(domain.tighten_lower(1, 2, Reason::kBranch));
  EXPECT_TRUE(domain.infeasible());
  domain.backtrack(0);
  EXPECT_FALSE(domain.infeasible());
  EXPECT_EQ(domain.lower(1), 0);
  EXPECT_EQ(domain.upper(0), 3);
  EXPECT_NEAR(domain.max_activity(0), 12, 1e-12);
  EXPECT_NEAR(domain.min_activity(1), -2, 1e-12);
}

TEST(Domain, InfiniteBoundsCountOneByOne) {
  MipProblem problem = dense_problem({{1, 1}}, {-kInf}, {4}, kInf);
  problem.lp.col_lower = {-kInf, 1};
  const SearchModel model = make_search_model(problem);
  Domain domain(model);
  domain.queue_all();
  ASSERT_TRUE(domain.propagate());
  EXPECT_EQ(domain.upper(0), 3);
  EXPECT_EQ(domain.upper(1), kInf) << "the other column has no lower bound";
  ASSERT_TRUE(domain.tighten_lower(0, -5, Reason::kBranch));
  ASSERT_TRUE(domain.propagate());
  EXPECT_EQ(domain.upper(1), 9);
}

TEST(Domain, GapsAndSets) {
  MipProblem problem = dense_problem({{1, 1, 1}}, {-kInf}, {100}, 10);
  problem.type = {VarType::kSemiContinuous, VarType::kContinuous, VarType::kContinuous};
  problem.lp.col_lower[0] = 4;
  problem.sos.push_back({1, {2, 0, 1}, {3, 1, 2}});
  const SearchModel model = make_search_model(problem);
  Domain domain(model);
  EXPECT_EQ(domain.lower(0), 0);
  domain.push_level();
  ASSERT_TRUE(domain.tighten_upper(0, 3, Reason::kBranch));
  EXPECT_EQ(domain.upper(0), 0) << "nothing lies between zero and the nonzero branch";
  domain.backtrack(0);
  domain.push_level();
  ASSERT_TRUE(domain.tighten_lower(0, 1, Reason::kBranch));
  EXPECT_EQ(domain.lower(0), 4);
  ASSERT_TRUE(domain.propagate());
  EXPECT_EQ(domain.upper(1), 0) << "the set allows one nonzero";
  EXPECT_EQ(domain.upper(2), 0);
  EXPECT_FALSE(domain.tighten_lower(1, 1, Reason::kBranch));
}

// Propagation and preparation never lose the optimum, and every point of the prepared model is one of the problem.
TEST(Domain, RandomPropagationAndPreparationKeepTheAnswer) {
  RandomStream random(7, "prepare");
  RandomMipShape shape;
  shape.semi_share = 0.2;
  shape.max_rows = 9;
  int tightened = 0;
  for (int k = 0; k < 1500; ++k) {
    const MipProblem problem = random_mip(random, shape);
    const EnumeratedMip before = enumerate_mip(problem);
    SearchModel model = make_search_model(problem);
    const Preparation preparation = prepare(model, PrepareOptions{}, StopToken());
    if (before.status == SolveStatus::kInfeasible && preparation.infeasible) continue;
    ASSERT_FALSE(preparation.infeasible) << k;
    MipProblem prepared = problem;
    prepared.lp = model.lp;
    for (Index col = 0; col < model.num_cols(); ++col) {
      if (!model.has_gap(col)) {
        // A gap that was decided leaves a plain column.
        if (problem.type[col] == VarType::kSemiContinuous) prepared.type[col] = VarType::kContinuous;
        if (problem.type[col] == VarType::kSemiInteger) prepared.type[col] = VarType::kInteger;
      } else if (model.lp.col_upper[col] >= model.gap_upper[col] && model.lp.col_lower[col] <= 0) {
        prepared.lp.col_lower[col] = model.gap_upper[col];
      } else {
        prepared.type[col] = model.integer[col] ? VarType::kInteger : VarType::kContinuous;
      }
    }
    tightened += model.num_rows() != problem.lp.num_rows() || model.lp.matrix.value != problem.lp.matrix.value;
    const EnumeratedMip after = enumerate_mip(prepared);
    ASSERT_EQ(after.status, before.status) << k;
    if (after.status == SolveStatus::kOptimal) {
      ASSERT_NEAR(after.objective, before.objective, 1e-5) << k;
    }
  }
  EXPECT_GT(tightened, 300);
}

TEST(Domain, BacktrackAfterRandomMovesRestoresBoundsAndActivities) {
  RandomStream random(8, "backtrack");
  for (int k = 0; k < 300; ++k) {
    const MipProblem problem = random_mip(random, {});
    const SearchModel model = make_search_model(problem);
    Domain domain(model);
    const Domain fresh(model);
    for (int move = 0; move < 6; ++move) {
      domain.push_level();
      const auto col = static_cast<Index>(random.below(model.num_cols()));
      const double value = domain.lower(col) + std::floor((domain.upper(col) - domain.lower(col)) * random.uniform());
      if (!domain.fix(col, value, Reason::kBranch) || !domain.propagate()) break;
    }
    domain.backtrack(0);
    for (Index col = 0; col < model.num_cols(); ++col) {
      ASSERT_EQ(domain.lower(col), fresh.lower(col));
      ASSERT_EQ(domain.upper(col), fresh.upper(col));
    }
    for (Index row = 0; row < model.num_rows(); ++row) {
      ASSERT_EQ(domain.activity(row).min_inf, fresh.activity(row).min_inf);
      ASSERT_EQ(domain.activity(row).max_inf, fresh.activity(row).max_inf);
      ASSERT_NEAR(domain.activity(row).min, fresh.activity(row).min, 1e-9);
      ASSERT_NEAR(domain.activity(row).max, fresh.activity(row).max, 1e-9);
    }
  }
}

TEST(Preparation, Tables) {
  struct Row {
    const char* name;
    std::vector<double> coefficients;
    double lower, upper, col_upper;
    bool infeasible;
    std::vector<double> tightened;  // of the one row; empty when it is dropped
    double new_upper;
  };
  for (const Row& row :
       {Row{"coefficient", {10, 1, 1}, -kInf, 11, 1, false, {1, 1, 1}, 2},
        Row{"redundant", {1, 1, 1}, -kInf, 3, 1, false, {}, 0},
        Row{"divisor", {2, 2, 2}, -kInf, 5, 1, false, {2, 2, 2}, 4}, Row{"parity", {2, 4, 6}, 5, 5, 3, true, {}, 0},
        Row{"too large", {1, 1, 1}, 4, kInf, 1, true, {}, 0}}) {
    SearchModel model = make_search_model(dense_problem({row.coefficients}, {row.lower}, {row.upper}, row.col_upper));
    const Preparation preparation = prepare(model, PrepareOptions{}, StopToken());
    EXPECT_EQ(preparation.infeasible, row.infeasible) << row.name;
    if (row.infeasible) continue;
    EXPECT_EQ(model.rows.value, row.tightened) << row.name;
    if (!row.tightened.empty()) {
      EXPECT_EQ(model.lp.row_upper[0], row.new_upper) << row.name;
    }
  }
}

}  // namespace
}  // namespace zorvex::testing
