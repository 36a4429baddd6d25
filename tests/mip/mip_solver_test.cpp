#include <gtest/gtest.h>

#include <cmath>

#include "mip/mip_problem.hpp"
#include "mip/mip_start.hpp"
#include "mip/random_mip.hpp"
#include "support/text_log.hpp"

namespace zorvex::testing {
namespace {

// max sum of values over a multi-row knapsack, as a minimisation with sense -1: needs a tree of some size.
MipProblem knapsack(Index items, Index rows, std::uint64_t seed) {
  RandomStream random(seed, "knapsack");
  MipProblem problem;
  problem.sense = -1;
  SparseMatrix& matrix = problem.lp.matrix;
  matrix.num_rows = rows;
  std::vector<double> total(static_cast<std::size_t>(rows), 0);
  std::vector<Index> index;
  for (Index row = 0; row < rows; ++row) index.push_back(row);
  for (Index item = 0; item < items; ++item) {
    std::vector<double> weight;
    for (Index row = 0; row < rows; ++row) {
      weight.push_back(static_cast<double>(20 + random.below(80)));
      total[row] += weight.back();
    }
    matrix.append_col(index.data(), weight.data(), rows);
    problem.lp.cost.push_back(-static_cast<double>(30 + random.below(60)) - random.uniform());
    problem.lp.col_lower.push_back(0);
    problem.lp.col_upper.push_back(1);
    problem.type.push_back(VarType::kBinary);
  }
  for (Index row = 0; row < rows; ++row) {
    problem.lp.row_lower.push_back(-kInf);
    problem.lp.row_upper.push_back(std::floor(total[row] / 2));
  }
  return problem;
}

MipProblem one_row(std::vector<double> coefficients, double lower, double upper, std::vector<double> cost,
                   std::vector<VarType> type, double col_upper) {
  MipProblem problem;
  problem.lp.matrix.num_rows = 1;
  const Index row = 0;
  for (const double a : coefficients) problem.lp.matrix.append_col(&row, &a, 1);
  problem.lp.row_lower = {lower};
  problem.lp.row_upper = {upper};
  problem.lp.col_lower.assign(cost.size(), 0);
  problem.lp.col_upper.assign(cost.size(), col_upper);
  problem.lp.cost = std::move(cost);
  problem.type = std::move(type);
  return problem;
}

MipResult solve(const MipProblem& problem, const MipOptions& options, std::string* text = nullptr) {
  TextLog log;
  MipSolver solver(problem, log);
  MipResult result = solver.run(options, nullptr, now_seconds());
  if (text != nullptr) *text = log.text();
  return result;
}

TEST(MipSolver, SameInputSameTree) {
  const MipProblem problem = knapsack(40, 5, 3);
  const MipResult first = solve(problem, {});
  const MipResult second = solve(problem, {});
  EXPECT_EQ(first.status, SolveStatus::kOptimal);
  EXPECT_GT(first.nodes, 10);
  EXPECT_EQ(first.nodes, second.nodes);
  EXPECT_EQ(first.iterations, second.iterations);
  EXPECT_EQ(first.solutions, second.solutions);
}

TEST(MipSolver, ResumingAfterNodeLimitsGivesTheSameAnswer) {
  const MipProblem problem = knapsack(40, 5, 3);
  MipOptions options;
  options.mip_gap = 0;
  const MipResult whole = solve(problem, options);
  ASSERT_EQ(whole.status, SolveStatus::kOptimal);
  TextLog log;
  MipSolver solver(problem, log);
  int calls = 0;
  double last_bound = -1e100;
  for (double limit = 0;; limit += whole.nodes / 5) {
    options.node_limit = limit;
    const MipResult& result = solver.run(options, nullptr, now_seconds());
    ++calls;
    EXPECT_GE(result.bound, last_bound - 1e-9);
    last_bound = result.bound;
    if (result.status != SolveStatus::kNodeLimit) break;
    EXPECT_GE(result.nodes, limit);
    EXPECT_LE(result.nodes, limit + 2);
    ASSERT_LT(calls, 20);
  }
  EXPECT_GE(calls, 4);
  EXPECT_EQ(solver.result().status, SolveStatus::kOptimal);
  EXPECT_NEAR(solver.result().objective, whole.objective, 1e-9);
  const std::string text = log.text();
  const std::string header = " Expl Unexpl |";
  EXPECT_EQ(text.find(header), text.rfind(header)) << "the header is printed once";
  EXPECT_NE(text.find("\n\nContinuing optimization...\n\n"), std::string::npos);
  EXPECT_EQ(text.find("Variable types"), text.rfind("Variable types"));
}

TEST(MipSolver, IterationAndSolutionLimits) {
  const MipProblem problem = knapsack(40, 5, 3);
  MipOptions options;
  for (const double limit : {0.0, 1.0, 7.0, 60.0, 400.0}) {
    options.iteration_limit = limit;
    TextLog log;
    MipSolver solver(problem, log);
    EXPECT_EQ(solver.run(options, nullptr, now_seconds()).status, SolveStatus::kIterationLimit) << limit;
    EXPECT_LE(solver.result().iterations, limit + 1);
    MipOptions open;
    EXPECT_EQ(solver.run(open, nullptr, now_seconds()).status, SolveStatus::kOptimal) << limit;
    EXPECT_NEAR(solver.result().objective, solve(problem, open).objective, 1e-2);
  }
  MipOptions few;
  few.solution_limit = 1;
  const MipResult result = solve(problem, few);
  EXPECT_EQ(result.status, SolveStatus::kSolutionLimit);
  EXPECT_EQ(result.solutions.size(), 1u);
}

TEST(MipSolver, TimeLimitAndInterruptReturnAtOnce) {
  const MipProblem problem = knapsack(60, 8, 5);
  MipOptions options;
  options.time_limit = 0;
  EXPECT_EQ(solve(problem, options).status, SolveStatus::kTimeLimit);
  QuietLog log;
  MipSolver solver(problem, log);
  const std::atomic<int> raised = 1;
  EXPECT_EQ(solver.run({}, &raised, now_seconds()).status, SolveStatus::kInterrupted);
  EXPECT_EQ(solver.result().error, 0);
}

TEST(MipSolver, CutoffHandling) {
  const MipProblem problem = knapsack(20, 3, 9);
  const double best = solve(problem, {}).objective;
  struct Row {
    double cutoff;
    SolveStatus status;
  };
  for (const Row& row : {Row{best - 1, SolveStatus::kCutoff}, Row{best + 1, SolveStatus::kOptimal},
                         Row{0, SolveStatus::kOptimal}, Row{-1e6, SolveStatus::kCutoff}}) {
    MipOptions options;
    options.mip_gap = 0;
    options.cutoff = row.cutoff;
    const MipResult result = solve(problem, options);
    EXPECT_EQ(result.status, row.status) << row.cutoff;
    EXPECT_EQ(result.solutions.empty(), row.status == SolveStatus::kCutoff);
  }
  // A weaker cutoff in a later call must not rest on nodes the stronger one removed.
  QuietLog log;
  MipSolver solver(problem, log);
  MipOptions options;
  options.cutoff = best - 1;
  options.node_limit = 0;
  solver.run(options, nullptr, now_seconds());
  MipOptions open;
  open.mip_gap = 0;
  if (solver.result().status == SolveStatus::kNodeLimit) {
    EXPECT_EQ(solver.run(open, nullptr, now_seconds()).status, SolveStatus::kOptimal);
    EXPECT_NEAR(solver.result().objective, best, 1e-9);
  }
}

TEST(MipSolver, LogOfAnInfeasibleRoot) {
  // x + y >= 3 with 2x + 2y <= 5 over reals: no propagation proves it, the relaxation does.
  MipProblem problem;
  problem.lp.matrix.num_rows = 2;
  const Index rows[] = {0, 1};
  const double a[] = {1, 2};
  for (int k = 0; k < 4; ++k) problem.lp.matrix.append_col(rows, a, 2);
  problem.lp.row_lower = {3, -kInf};
  problem.lp.row_upper = {kInf, 5};
  problem.lp.col_lower.assign(4, 0);
  problem.lp.col_upper.assign(4, 5);
  problem.lp.cost.assign(4, 1);
  problem.type.assign(4, VarType::kContinuous);
  problem.type[3] = VarType::kInteger;
  MipOptions options;
  options.heuristics = 0;
  std::string text;
  const MipResult result = solve(problem, options, &text);
  EXPECT_EQ(result.status, SolveStatus::kInfeasible);
  EXPECT_NE(text.find("\nRoot relaxation: infeasible, "), std::string::npos) << text;
  EXPECT_EQ(text.find("Expl Unexpl"), std::string::npos);
  EXPECT_EQ(text.find("Cutting planes"), std::string::npos);
  EXPECT_NE(text.find("Variable types: 3 continuous, 1 integer (0 binary)\n"), std::string::npos);
}

TEST(MipSolver, UnboundedAndInfeasibleOrUnbounded) {
  const auto integer = std::vector<VarType>(2, VarType::kInteger);
  struct Row {
    const char* name;
    MipProblem problem;
    SolveStatus status;
  };
  MipProblem one_sided = one_row({1, -1}, 0, 0, {-1, 0}, integer, kInf);
  MipProblem set = one_row({1, -1}, -kInf, 3, {-1, -1}, {VarType::kContinuous, VarType::kContinuous}, kInf);
  set.sos.push_back({1, {0, 1}, {1, 2}});
  MipProblem bounded_set = set;  // the ray (1, 1) of the relaxation needs both members of the set
  bounded_set.lp.row_lower = {-3};
  for (const Row& row :
       {Row{"integer ray", one_sided, SolveStatus::kUnbounded}, Row{"free set", set, SolveStatus::kUnbounded},
        Row{"ray outside the set", bounded_set, SolveStatus::kOptimal},
        Row{"no integer point", one_row({2, -2}, 1, 1, {-1, 0}, integer, kInf), SolveStatus::kInfeasible}}) {
    EXPECT_EQ(solve(row.problem, {}).status, row.status) << row.name;
  }
}

TEST(MipSolver, ImprovementPhaseByGap) {
  const MipProblem problem = knapsack(40, 5, 3);
  MipOptions options;
  options.mip_gap = 0;
  options.improve_start_gap = 0.5;
  std::string text;
  const MipResult result = solve(problem, options, &text);
  EXPECT_EQ(result.status, SolveStatus::kOptimal);
  const std::string announcement =
      "\nResetting heuristic parameters to focus on improving solution\n(using Heuristics=0.5 and RINS=10)...\n\n";
  ASSERT_NE(text.find(announcement), std::string::npos);
  EXPECT_EQ(text.find(announcement), text.rfind(announcement)) << "the switch happens once";
  options.improve_start_gap = 0;
  EXPECT_NEAR(result.objective, solve(problem, options).objective, 1e-9);
}

TEST(MipStart, Rounding) {
  MipProblem problem;
  const double inf = kInf;
  struct Row {
    VarType type;
    double lower, upper, start, rounded;
  };
  const std::vector<Row> rows = {{VarType::kContinuous, 0, 9, 2.3, 2.3},     {VarType::kInteger, 0, 9, 2.5, 3},
                                 {VarType::kInteger, -9, 9, -2.5, -2},       {VarType::kBinary, 0, 1, 0.4, 0},
                                 {VarType::kSemiContinuous, 4, 9, 1.9, 0},   {VarType::kSemiContinuous, 4, 9, 2.1, 4},
                                 {VarType::kSemiContinuous, 4, inf, 11, 11}, {VarType::kSemiInteger, 4, 9, 1.6, 4},
                                 {VarType::kSemiInteger, 4, 9, 1.4, 0},      {VarType::kInteger, 0, 9, 1e101, 1e101}};
  for (const Row& row : rows) {
    problem.type.push_back(row.type);
    problem.lp.col_lower.push_back(row.lower);
    problem.lp.col_upper.push_back(row.upper);
    problem.start.push_back(row.start);
  }
  const std::vector<double> rounded = round_start(problem, problem.start);
  for (std::size_t k = 0; k < rows.size(); ++k) EXPECT_EQ(rounded[k], rows[k].rounded) << k;
}

TEST(MipStart, CompleteAndPartial) {
  MipProblem problem = knapsack(20, 3, 9);
  MipOptions options;
  const MipResult best = solve(problem, options);
  struct Row {
    const char* name;
    std::vector<double> start;
    const char* text;
  };
  char loaded[80];
  std::snprintf(loaded, sizeof loaded, "\nLoaded MIP start with objective %g\n\n", -best.objective);
  std::vector<double> near = best.solutions[0];
  for (double& value : near) value += value == 0 ? 0.2 : -0.2;
  std::vector<double> partial(20, 1e101);
  partial[0] = best.solutions[0][0];
  partial[5] = best.solutions[0][5];
  const std::vector<double> ones(20, 1);
  for (const Row& row : {Row{"complete", best.solutions[0], loaded}, Row{"rounded", near, loaded},
                         Row{"infeasible", ones, "\nMIP start did not produce a feasible solution\n\n"},
                         Row{"partial", partial, "\nLoaded MIP start with objective "},
                         Row{"all undefined", std::vector<double>(20, 1e101), "Variable types"}}) {
    problem.start = row.start;
    std::string text;
    const MipResult result = solve(problem, options, &text);
    EXPECT_EQ(text.rfind(row.text, 0), 0u) << row.name << "\n" << text.substr(0, 200);
    EXPECT_EQ(result.status, SolveStatus::kOptimal);
    EXPECT_NEAR(result.objective, best.objective, 1e-4 * std::abs(best.objective)) << row.name;
  }
}

TEST(MipSolver, BranchingPrioritiesAndDirectionsKeepTheAnswer) {
  MipProblem problem = knapsack(20, 3, 9);
  MipOptions options;
  options.mip_gap = 0;
  const double best = solve(problem, options).objective;
  problem.priority.assign(20, 0);
  for (Index col = 0; col < 20; ++col) problem.priority[col] = (col * 7) % 5;
  for (const int direction : {-1, 0, 1}) {
    options.branch_dir = direction;
    const MipResult result = solve(problem, options);
    EXPECT_EQ(result.status, SolveStatus::kOptimal);
    EXPECT_NEAR(result.objective, best, 1e-9);
  }
}

TEST(MipSolver, ProblemsWithoutRowsOrColumns) {
  MipProblem empty;
  EXPECT_EQ(solve(empty, {}).status, SolveStatus::kOptimal);
  MipProblem free_rows;
  free_rows.lp.matrix.append_col(nullptr, nullptr, 0);
  free_rows.lp.cost = {-1};
  free_rows.lp.col_lower = {0};
  free_rows.lp.col_upper = {2.7};
  free_rows.type = {VarType::kInteger};
  const MipResult result = solve(free_rows, {});
  EXPECT_EQ(result.status, SolveStatus::kOptimal);
  EXPECT_EQ(result.objective, -2);
  free_rows.lp.col_upper = {kInf};
  EXPECT_EQ(solve(free_rows, {}).status, SolveStatus::kUnbounded);
  free_rows.lp.col_lower = {0.2};
  free_rows.lp.col_upper = {0.8};
  EXPECT_EQ(solve(free_rows, {}).status, SolveStatus::kInfeasible);
}

}  // namespace
}  // namespace zorvex::testing
