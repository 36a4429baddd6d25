#include "mip/cancel_equations.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "base/random_stream.hpp"
#include "mip/random_mip.hpp"

namespace zorvex {
namespace {

using testing::dense_problem;

constexpr std::int64_t kPlenty = 1000000;

double activity(const SearchModel& model, Index row, const std::vector<double>& x) {
  double sum = 0;
  for (Offset k = model.rows.begin(row); k < model.rows.end(row); ++k)
    sum += model.rows.value[k] * x[model.rows.index[k]];
  return sum;
}

bool holds(const SearchModel& model, const std::vector<double>& x) {
  for (Index row = 0; row < model.num_rows(); ++row) {
    const double sum = activity(model, row, x);
    if (sum < model.lp.row_lower[row] - 1e-9 || sum > model.lp.row_upper[row] + 1e-9) return false;
  }
  return true;
}

TEST(CancelEquations, RowsLoseWhatAPartitionSettles) {
  struct Case {
    const char* what;
    std::vector<std::vector<double>> rows;
    std::vector<double> lower, upper;
    Index row;  // expected afterwards
    std::vector<double> entries;
    double row_lower, row_upper;
  };
  const std::array cases = {
      Case{"all members", {{5, 5, 5, 3}, {1, 1, 1, 0}}, {-kInf, 1}, {9, 1}, 0, {0, 0, 0, 3}, -kInf, 4},
      Case{"all, with a remainder", {{5, 5, 5, 2}, {1, 1, 1, 1}}, {2, 1}, {9, 1}, 0, {0, 0, 0, -3}, -3, 4},
      Case{"half of them", {{5, 5, 0, 3}, {1, 1, 1, 1}}, {-kInf, 1}, {9, 1}, 0, {5, 5, 0, 3}, -kInf, 9},
      Case{"a packing", {{1, 1, 1, 0}, {1, 1, 1, 1}}, {-kInf, 1}, {1, 1}, 0, {1, 1, 1, 0}, -kInf, 1},
      Case{"two kinds", {{2, 2, 2, 7}, {1, 1, 1, 1}}, {-kInf, 1}, {9, 1}, 0, {0, 0, 0, 5}, -kInf, 7},
      Case{"an inequality", {{5, 5, 5, 3}, {1, 1, 1, 0}}, {-kInf, -kInf}, {9, 1}, 0, {5, 5, 5, 3}, -kInf, 9},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    SearchModel model = make_search_model(dense_problem(c.rows, c.lower, c.upper, 1));
    cancel_with_equations(model, kPlenty, StopToken());
    EXPECT_EQ(model.lp.row_lower[c.row], c.row_lower);
    EXPECT_EQ(model.lp.row_upper[c.row], c.row_upper);
    for (Index col = 0; col < 4; ++col) {
      std::vector<double> unit(4, 0.0);
      unit[col] = 1;
      EXPECT_EQ(activity(model, c.row, unit), c.entries[col]) << col;
    }
  }
}

// Equations that overlap with each other and with rows, in any order: no point comes or goes.
TEST(CancelEquations, KeepsEveryPoint) {
  constexpr Index kCols = 9;
  constexpr Index kRows = 7;
  std::int64_t gone = 0;
  RandomStream random(7, "cancel");
  for (int round = 0; round < 300; ++round) {
    std::vector<std::vector<double>> rows;
    std::vector<double> lower, upper;
    for (Index row = 0; row < kRows; ++row) {
      const bool equation = random.uniform() < 0.6;
      const double scale = std::floor(1 + 5 * random.uniform());
      std::vector<double> dense(kCols, 0.0);
      for (double& a : dense) {
        if (random.uniform() < 0.6) a = random.uniform() < 0.8 ? scale : scale + 1;
      }
      const double side = std::floor(3 * random.uniform()) * scale;
      rows.push_back(dense);
      lower.push_back(equation ? side : -kInf);
      upper.push_back(side);
    }
    const MipProblem problem = dense_problem(rows, lower, upper, 1);
    const SearchModel before = make_search_model(problem);
    SearchModel after = before;
    gone += cancel_with_equations(after, kPlenty, StopToken());
    EXPECT_LE(after.rows.num_nonzeros(), before.rows.num_nonzeros());
    for (unsigned bits = 0; bits < (1U << kCols); ++bits) {
      std::vector<double> x(kCols);
      for (Index col = 0; col < kCols; ++col) x[col] = (bits >> col) & 1U;
      ASSERT_EQ(holds(before, x), holds(after, x)) << "round " << round << " point " << bits;
    }
  }
  EXPECT_GT(gone, 1000);
}

}  // namespace
}  // namespace zorvex
