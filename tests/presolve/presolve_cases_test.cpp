// Hand-made models, one fact each: what presolve makes of them, and what it must leave alone.
#include <gtest/gtest.h>

#include <atomic>
#include <string>

#include "base/quality.hpp"
#include "presolve/presolve.hpp"
#include "support/dense_lp.hpp"
#include "support/problem_view.hpp"

namespace zorvex {
namespace {

// Dense description: rows of coefficients with their sides.
struct Row {
  std::vector<double> coefficients;
  double lower, upper;
};
struct Column {
  double cost, lower, upper;
};

LpData make(const std::vector<Column>& columns, const std::vector<Row>& rows) {
  LpData lp;
  lp.matrix.num_rows = static_cast<Index>(rows.size());
  for (const Row& row : rows) {
    lp.row_lower.push_back(row.lower);
    lp.row_upper.push_back(row.upper);
  }
  for (std::size_t j = 0; j < columns.size(); ++j) {
    std::vector<Index> index;
    std::vector<double> value;
    for (std::size_t i = 0; i < rows.size(); ++i) {
      if (rows[i].coefficients[j] == 0) continue;
      index.push_back(static_cast<Index>(i));
      value.push_back(rows[i].coefficients[j]);
    }
    lp.matrix.append_col(index.data(), value.data(), static_cast<Index>(index.size()));
    lp.cost.push_back(columns[j].cost);
    lp.col_lower.push_back(columns[j].lower);
    lp.col_upper.push_back(columns[j].upper);
  }
  return lp;
}

struct End {
  End(PresolveOutcome other) : outcome(other) {}
  End(Index rows, Index cols) : rows_left(rows), cols_left(cols) {}
  PresolveOutcome outcome = PresolveOutcome::kReduced;
  Index rows_left = 0, cols_left = 0;
};

struct Case {
  std::string fact;
  std::string only;  // the one reduction to run; empty for all
  std::vector<Column> columns;
  std::vector<Row> rows;
  End end;
};

const double kTiny = 1e-5;  // against 1: too small to divide by

const Case kCases[] = {
    {"singleton row becomes a bound",
     "singleton_row",
     {{1, 0, 9}, {1, 0, 9}},
     {{{2, 0}, 2, kInf}, {{1, 1}, 3, 5}},
     {1, 2}},
    {"singleton row against a bound", "", {{1, 0, 1}}, {{{-2}, -kInf, -6}}, {PresolveOutcome::kInfeasible}},
    {"crossing within the tolerance is left to the solver",
     "singleton_row",
     {{1, 0, 1}, {1, 0, 1}},
     {{{1, 0}, 1 + 5e-7, kInf}, {{1, 1}, 0, 1.5}},
     {2, 2}},
    {"crossing by rounding meets",
     "singleton_row",
     {{1, 0, 0.3}, {1, 0, 1}},
     {{{1, 0}, 0.1 + 0.2, kInf}, {{1, 1}, 0, 1.2}},
     {1, 2}},
    {"redundant row goes", "redundant_row", {{1, 0, 1}, {1, 0, 1}}, {{{1, 1}, -kInf, 2}, {{1, -1}, -0.5, 0.5}}, {1, 2}},
    {"activity out of reach",
     "redundant_row",
     {{1, 0, 1}, {1, 0, 1}},
     {{{1, 1}, 2.1, kInf}},
     {PresolveOutcome::kInfeasible}},
    {"activity out of reach within the tolerance of rows and bounds",
     "redundant_row",
     {{1, 0, 1}, {1, 0, 1}},
     {{{1, 1}, 2 + 2e-6, kInf}},
     {1, 2}},
    {"other rows put bounds on the columns that make a row redundant",
     "implied_row",
     {{1, 0, kInf}, {1, 0, kInf}, {1, 0, kInf}},
     {{{1, 1, 0}, -kInf, 2}, {{0, 1, 1}, -kInf, 3}, {{1, 1, 1}, 1, 7}},
     {3, 3}},
    {"and its upper side with them",
     "implied_row",
     {{1, 0, kInf}, {1, 0, kInf}, {1, 0, kInf}},
     {{{1, 1, 0}, -kInf, 2}, {{0, 1, 1}, -kInf, 3}, {{1, 1, 1}, -kInf, 7}},
     {2, 3}},
    {"forcing row fixes its columns",
     "forcing_row",
     {{-1, 0, 1}, {-1, 0, 1}, {1, 0, 1}},
     {{{1, 1, 0}, -kInf, 0}, {{1, 0, 1}, 1, kInf}},
     {1, 1}},
    {"nearly forcing row does not", "forcing_row", {{-1, 0, 1}, {-1, 0, 1}}, {{{1, 1}, -kInf, 1e-9}}, {1, 2}},
    {"bounds of an eliminated column move over",
     "doubleton_equation",
     {{1, 0, 1}, {2, -kInf, kInf}, {1, 0, 5}},
     {{{1, 2, 0}, 4, 4}, {{1, 1, 1}, 1, kInf}},
     {1, 2}},
    {"no elimination by a relatively tiny pivot",
     "free_column",
     {{1, -kInf, kInf}, {1, 0, 9}, {1, 0, 9}},
     {{{kTiny, 1, 1}, 3, 3}, {{kTiny, 1, 3}, 0, 9}},
     {2, 3}},
    {"slack of an equation", "singleton_column", {{0, 0, 2}, {1, 0, 9}, {1, 0, 9}}, {{{1, 1, 1}, 4, 4}}, {1, 2}},
    {"tiny slack stays",
     "singleton_column",
     {{0, 0, 2}, {1, 0, 9}, {1, 0, 9}},
     {{{kTiny, 1, 1}, 4, 4}, {{0, 1, 3}, 0, 9}},
     {2, 3}},
    {"no dual has a use for the second column",
     "dual_bounds",
     {{1, 0, kInf}, {2, 0, 4}, {-0.5, 0, 9}},
     {{{1, 1, 1}, 4, kInf}, {{1, -1, -1}, 2, kInf}},
     {2, 2}},
    {"nor for one that is as dear as what bounds the multiplier",
     "dual_bounds",
     {{1, 0, kInf}, {1, 0, 4}, {-2, 0, 9}},
     {{{1, 1, -1}, 4, kInf}, {{0, 1, 1}, -kInf, 20}},
     {2, 2}},
    {"two rows say the same",
     "duplicate_rows",
     {{1, 0, 9}, {1, 0, 9}},
     {{{1, 2}, 2, kInf}, {{-2, -4}, -20, -6}},
     {1, 2}},
    {"two rows contradict each other",
     "duplicate_rows",
     {{1, -kInf, kInf}, {1, -kInf, kInf}},
     {{{1, 2}, -kInf, 2}, {{-2, -4}, -20, -6}},
     {PresolveOutcome::kInfeasible}},
    {"two columns do the same",
     "duplicate_columns",
     {{1, 0, 1}, {2, 0, kInf}, {1, 0, 9}},
     {{{1, 2, 1}, 4, 8}, {{2, 4, -1}, 0, 9}},
     {2, 2}},
    {"the dearer of two ways goes",
     "duplicate_columns",
     {{3, 0, 1}, {2, 0, kInf}, {1, 0, 9}},
     {{{1, 2, 1}, 4, 8}, {{2, 4, -1}, 0, 9}},
     {2, 2}},
    {"unless the cheaper one is limited",
     "duplicate_columns",
     {{3, 0, 1}, {2, 0, 5}, {1, 0, 9}},
     {{{1, 2, 1}, 4, 8}, {{2, 4, -1}, 0, 9}},
     {2, 3}},
    {"an equation that others imply",
     "dependent_equations",
     {{1, 0, 9}, {1, 0, 9}, {1, 0, 9}},
     {{{1, 1, 1}, 6, 6}, {{1, 2, 3}, 14, 14}, {{1, 3, 5}, 22, 22}},
     {2, 3}},
    {"an equation that contradicts others",
     "dependent_equations",
     {{1, -kInf, kInf}, {1, -kInf, kInf}, {1, -kInf, kInf}},
     {{{1, 1, 1}, 6, 6}, {{1, 2, 3}, 14, 14}, {{1, 3, 5}, 22.01, 22.01}},
     {PresolveOutcome::kInfeasible}},
    {"an equation off by less than the tolerance stays",
     "dependent_equations",
     {{1, 0, 9}, {1, 0, 9}, {1, 0, 9}},
     {{{1, 1, 1}, 6, 6}, {{1, 2, 3}, 14, 14}, {{1, 3, 5}, 22 + 1e-6, 22 + 1e-6}},
     {3, 3}},
    {"nearly dependent equations stay",
     "dependent_equations",
     {{1, 0, 9}, {1, 0, 9}, {1, 0, 9}},
     {{{1, 1, 1}, 6, 6}, {{1, 2, 3}, 14, 14}, {{1, 3, 5 + 1e-7}, 22, 22}},
     {3, 3}},
    {"inequalities depend on nothing",
     "dependent_equations",
     {{1, 0, 9}, {1, 0, 9}, {1, 0, 9}},
     {{{1, 1, 1}, 6, 6}, {{1, 2, 3}, 14, 14}, {{1, 3, 5}, -kInf, 22}},
     {3, 3}},
    {"nothing stops a column that pays",
     "",
     {{-1, 0, kInf}, {1, 0, 1}},
     {{{1, 1}, 1, kInf}},
     {PresolveOutcome::kUnbounded}},
    {"column without cost satisfies its rows",
     "unblocked_column",
     {{0, 0, kInf}, {1, 0, 1}, {1, 0, 1}},
     {{{1, 1, 0}, 1, kInf}, {{2, 0, 1}, 3, kInf}, {{0, 1, 1}, 1, 1}},
     {1, 2}},
    {"crossing column bounds", "", {{1, 2, 1}}, {}, {PresolveOutcome::kInfeasible}},
    {"empty row that cannot hold", "", {{1, 0, 1}}, {{{0}, 1, 2}}, {PresolveOutcome::kInfeasible}},
    {"everything falls", "", {{1, 0, 9}, {1, 1, 1}}, {{{1, 1}, 3, kInf}}, {PresolveOutcome::kAllRemoved}},
};

TEST(PresolveCases, Outcomes) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.fact);
    const LpData lp = make(c.columns, c.rows);
    PresolveOptions options;
    options.only = c.only;
    Presolve presolve(lp, options);
    const PresolveOutcome outcome = presolve.run(StopToken());
    EXPECT_EQ(outcome, c.end.outcome);
    if (outcome == PresolveOutcome::kInfeasible && !presolve.farkas().empty()) {
      EXPECT_GT(farkas_gap(oracle::view_of(lp), presolve.farkas(), 1e-9), 0);
    }
    if (outcome != PresolveOutcome::kReduced) continue;
    EXPECT_EQ(presolve.reduced().num_rows(), c.end.rows_left);
    EXPECT_EQ(presolve.reduced().num_cols(), c.end.cols_left);
  }
}

// What a switch turns off is left alone, and what may be added is limited.
TEST(PresolveCases, Switches) {
  const LpData aggregable = make({{1, -kInf, kInf}, {1, 0, 9}, {1, 0, 9}, {1, 0, 9}},
                                 {{{1, 1, 1, 1}, 3, 3}, {{1, 2, 0, 0}, 0, 5}, {{1, 0, -1, 0}, 0, 9}});
  const LpData dependent =
      make({{1, 0, 9}, {1, 0, 9}, {1, 0, 9}}, {{{1, 1, 1}, 6, 6}, {{1, 2, 3}, 14, 14}, {{1, 3, 5}, 22, 22}});
  const auto rows_left = [](const LpData& lp, const PresolveOptions& options) {
    Presolve presolve(lp, options);
    EXPECT_EQ(presolve.run(StopToken()), PresolveOutcome::kReduced);
    return presolve.reduced().num_rows();
  };
  PresolveOptions options;
  options.only = "free_column";
  EXPECT_EQ(rows_left(aggregable, options), 2);
  options.aggregation_fill = -3;
  EXPECT_EQ(rows_left(aggregable, options), 3);
  options = {.only = "free_column", .off = {"duplicate_rows", "free_column"}};
  EXPECT_EQ(rows_left(aggregable, options), 3);
  options = {.max_steps = 0, .only = "free_column"};
  EXPECT_EQ(rows_left(aggregable, options), 3);
  options = {.dependent_rows = 0, .only = "dependent_equations"};
  EXPECT_EQ(rows_left(dependent, options), 3);
}

// pi_0 <= 1 and a chain pi_k <= pi_k-1, met from its far end, say that the last column, which pays 2 for what the last
// row is worth, stays at zero.
TEST(PresolveCases, EffortFollowsMultipliersAlongAChain) {
  const int length = 12;
  std::vector<Column> columns;
  std::vector<Row> rows(length, Row{std::vector<double>(length + 1, 0), 1, kInf});
  for (int link = length - 1; link >= 0; --link) {
    const auto col = columns.size();
    columns.push_back({link == 0 ? 1.0 : 0.0, 0, kInf});
    rows[static_cast<std::size_t>(link)].coefficients[col] = 1;
    if (link > 0) rows[static_cast<std::size_t>(link - 1)].coefficients[col] = -1;
  }
  columns.push_back({2, 0, 3});
  rows.back().coefficients.back() = 1;
  const LpData lp = make(columns, rows);
  for (const double effort : {0.0, 1.0}) {
    Presolve presolve(lp, {.make_equations = false, .dual_effort = effort, .only = "dual_bounds"});
    EXPECT_EQ(presolve.run(StopToken()), PresolveOutcome::kReduced);
    EXPECT_EQ(presolve.reduced().num_cols(), effort > 0 ? length : length + 1);
  }
}

TEST(PresolveCases, BindingRowsBecomeEquationsUnlessSwitchedOff) {
  const LpData lp = make({{1, 0, kInf}, {-2, 0, 9}}, {{{1, -1}, 4, kInf}});
  for (const bool wanted : {false, true}) {
    Presolve presolve(lp, {.make_equations = wanted, .only = "dual_bounds"});
    EXPECT_EQ(presolve.run(StopToken()), PresolveOutcome::kReduced);
    EXPECT_EQ(presolve.reduced().row_upper[0] == presolve.reduced().row_lower[0], wanted);
  }
}

// 1 1 1 1 0 = 4 inside 2 2 2 2 1 >= 5: the multiple -2 cancels four entries and makes none.
TEST(PresolveCases, EquationsCancelNonzeros) {
  const std::vector<Column> columns(5, Column{1, 0, 9});
  const LpData lp = make(columns, {{{1, 1, 1, 1, 0}, 4, 4}, {{2, 2, 2, 2, 1}, 9, kInf}, {{1, 0, 1, 0, 1}, 3, kInf}});
  PresolveOptions options;
  options.only = "sparsify";
  Presolve presolve(lp, options);
  ASSERT_EQ(presolve.run(StopToken()), PresolveOutcome::kReduced);
  EXPECT_EQ(presolve.statistics().nonzeros_removed, 4);
  EXPECT_EQ(presolve.reduced().row_lower[1], 1);
}

TEST(PresolveCases, LevelZeroChangesNothing) {
  const LpData lp = make({{1, 0, 9}, {1, 1, 1}}, {{{1, 1}, 3, kInf}});
  PresolveOptions options;
  options.level = 0;
  Presolve presolve(lp, options);
  EXPECT_EQ(presolve.run(StopToken()), PresolveOutcome::kReduced);
  EXPECT_EQ(presolve.reduced().num_cols(), 2);
  EXPECT_EQ(presolve.reduced().matrix.num_nonzeros(), 2);
  EXPECT_EQ(presolve.statistics().rows_removed, 0);
}

TEST(PresolveCases, StopsWhenAsked) {
  LpData lp;  // large enough for a poll
  for (int j = 0; j < 5000; ++j) {
    lp.matrix.append_col(nullptr, nullptr, 0);
    lp.cost.push_back(1);
    lp.col_lower.push_back(0);
    lp.col_upper.push_back(1);
  }
  const std::atomic<int> terminate{1};
  Presolve presolve(lp, {});
  EXPECT_EQ(presolve.run(StopToken(&terminate, kInf)), PresolveOutcome::kStopped);
}

// Eliminations one inside the other: each bound of the chain x1 = x2/2 + 1 = ... is the only binding one in turn.
TEST(PresolveCases, ChainOfEquationsComesBackExactly) {
  const int length = 12;
  for (int tight = 0; tight < length; ++tight) {
    SCOPED_TRACE(tight);
    std::vector<Column> columns(length, Column{1, -100, 100});
    columns[tight].lower = 2;
    std::vector<Row> rows;
    for (int i = 0; i + 1 < length; ++i) {
      Row row{std::vector<double>(length, 0), 1, 1};
      row.coefficients[i] = 1;
      row.coefficients[i + 1] = -0.5;
      rows.push_back(row);
    }
    const LpData lp = make(columns, rows);
    Presolve presolve(lp, {});
    ASSERT_EQ(presolve.run(StopToken()), PresolveOutcome::kAllRemoved);
    const PresolvePoint full = presolve.postsolve({});
    const double expected = oracle::solve_dense_lp(lp).objective;
    EXPECT_NEAR(measure_primal(oracle::view_of(lp), full.x, {}).objective, expected, 1e-9);
    EXPECT_LT(measure_primal(oracle::view_of(lp), full.x, {}).row.max, 1e-11);
    EXPECT_NEAR(measure_dual(oracle::view_of(lp), full.pi, full.reduced_cost, full.x).objective, expected, 1e-9);
    std::vector<double> x, activity;
    ASSERT_TRUE(oracle::point_of_basis(lp, full.basis, full.x, x, activity));
    for (int j = 0; j < length; ++j) EXPECT_NEAR(x[j], full.x[j], 1e-9);
  }
}

}  // namespace
}  // namespace zorvex
