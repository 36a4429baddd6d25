#include "mip/grids.hpp"

#include <gtest/gtest.h>

#include "mip/random_mip.hpp"

namespace zorvex::testing {
namespace {

// Columns 0 and 1 integer, 2 and 3 as the row says, all in [0, 5].
struct Row {
  const char* name;
  std::vector<std::vector<double>> matrix;
  std::vector<double> lower, upper;
  std::vector<double> cost;
  VarType type2, type3;
  double grid2, grid3, granularity;
};

constexpr VarType kReal = VarType::kContinuous;
constexpr VarType kWhole = VarType::kInteger;

TEST(Grids, StepsOfColumnsAndObjective) {
  for (const Row& row :
       {Row{"costs", {{1, 1, 1, 1}}, {1}, {2}, {4, 6, 10, 0}, kWhole, kWhole, 1, 1, 2},
        Row{"decimal costs", {{1, 1, 1, 1}}, {1}, {2}, {0.1, 0.3, 0, 0}, kWhole, kWhole, 1, 1, 0.1},
        Row{"no common step", {{1, 1, 1, 1}}, {1}, {2}, {1, 3.14159265358979, 0, 0}, kWhole, kWhole, 1, 1, 0},
        Row{"equality makes a multiple",
            {{2, 3, -1, 0}, {1, 0, 0.7, 0.3}},
            {0, 1},
            {0, 2},
            {0, 0, 1, 0},
            kReal,
            kReal,
            1,
            1.0 / 3,
            1},
        Row{"half steps by choice", {{1, 1, -2, 0}}, {0}, {kInf}, {0, 0, -1, 0}, kReal, kWhole, 0.5, 1, 0.5},
        Row{"two continuous in one row", {{1, 1, -1, -1}}, {0}, {kInf}, {0, 0, -1, -1}, kReal, kReal, 0, 0, 0},
        Row{"one row off the grid",
            {{1, 1, -1, 0}, {1, 0.37, 1, 0}},
            {0, 0},
            {kInf, 3},
            {0, 0, -1, 0},
            kReal,
            kWhole,
            0.01,
            1,
            0.01},
        Row{"chain through an equality",
            {{1, 1, -1, 0}, {1, 0, 1, -1}},
            {0, 0},
            {0, kInf},
            {0, 0, 0, 1},
            kReal,
            kReal,
            1,
            1,
            1}}) {
    MipProblem problem = dense_problem(row.matrix, row.lower, row.upper, 5);
    problem.lp.cost = row.cost;
    problem.type[2] = row.type2;
    problem.type[3] = row.type3;
    const SearchModel model = make_search_model(problem);
    EXPECT_NEAR(model.grid[2], row.grid2, 1e-9) << row.name;
    EXPECT_NEAR(model.grid[3], row.grid3, 1e-9) << row.name;
    EXPECT_NEAR(model.objective_grid.step, row.granularity, 1e-9) << row.name;
  }
}

}  // namespace
}  // namespace zorvex::testing
