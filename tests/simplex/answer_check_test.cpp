#include "simplex/answer_check.hpp"

#include <gtest/gtest.h>

namespace zorvex {
namespace {

// x + y >= 3 and x - y >= -5 within [0, 1]: the first row alone is the proof.
TEST(AnswerCheck, MultipliersOfAWrongSignAreDroppedOnlyAsNoise) {
  LpData lp;
  lp.matrix.num_rows = 2;
  const Index rows[] = {0, 1};
  const double x[] = {1, 1}, y[] = {1, -1};
  lp.matrix.append_col(rows, x, 2);
  lp.matrix.append_col(rows, y, 2);
  lp.cost = lp.col_lower = {0, 0};
  lp.col_upper = {1, 1};
  lp.row_lower = {3, -5};
  lp.row_upper = {kInf, kInf};
  const struct {
    std::vector<double> proof;
    bool raw, cleaned;
  } cases[] = {{{1, 0}, true, true},       {{1, -1e-13}, false, true}, {{1e5, -1e-8}, false, true},
               {{1, -1e-9}, false, false}, {{-1, 0}, false, false},    {{1e-13, 1}, false, false}};
  for (const auto& c : cases) {
    std::vector<double> proof = c.proof;
    double gap = 0;
    EXPECT_EQ(c.raw, proves_infeasible(lp, proof, gap)) << proof[0] << " " << proof[1];
    drop_sign_noise(lp, proof);
    EXPECT_EQ(c.cleaned, proves_infeasible(lp, proof, gap)) << proof[0] << " " << proof[1];
  }
}

// Any x = y minimises 1/2 (x - y)^2, but far out the rounding of Qx could hide a linear part: no answer there counts.
TEST(AnswerCheck, NoQuadraticOptimumWhereRoundingHidesTheLinearPart) {
  LpData lp;
  lp.matrix.num_rows = 0;
  lp.matrix.append_col(nullptr, nullptr, 0);
  lp.matrix.append_col(nullptr, nullptr, 0);
  lp.cost = {0, 0};
  lp.col_lower = {-kInf, -kInf};
  lp.col_upper = {kInf, kInf};
  lp.quadratic.num_rows = 2;
  const Index rows[] = {0, 1};
  const double first[] = {1, -1}, second[] = {1};
  lp.quadratic.append_col(rows, first, 2);
  lp.quadratic.append_col(rows + 1, second, 1);
  LpPoint point;
  point.x = {4.9e19, 4.9e19};
  point.reduced_cost = {0, 0};
  EXPECT_FALSE(is_optimal(lp, point, {}));
  point.x = {4.9e3, 4.9e3};
  EXPECT_TRUE(is_optimal(lp, point, {}));
}

}  // namespace
}  // namespace zorvex
