#include "base/quality.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace zorvex {
namespace {

const double kNan = std::numeric_limits<double>::quiet_NaN();

// min 2x + 3y - z,  1 <= x + y <= 4,  x - z >= -2,  x in [0, 3], y >= 0, z free above by 5.
struct Model {
  std::vector<Offset> start{0, 2, 3, 4};
  std::vector<Index> index{0, 1, 0, 1};
  std::vector<double> value{1, 1, 1, -1};
  std::vector<double> cost{2, 3, -1};
  std::vector<double> col_lower{0, 0, -kInf}, col_upper{3, kInf, 5};
  std::vector<double> row_lower{1, -2}, row_upper{4, kInf};

  [[nodiscard]] ProblemView view() const {
    return {2,
            3,
            start.data(),
            index.data(),
            value.data(),
            cost.data(),
            col_lower.data(),
            col_upper.data(),
            row_lower.data(),
            row_upper.data()};
  }
};

TEST(Quality, PrimalViolationsAreMeasuredPerKind) {
  const Model model;
  const double x[] = {-0.5, 5, 1};
  const double activity[] = {4.5, -1};
  const PrimalQuality quality = measure_primal(model.view(), x, activity);
  EXPECT_DOUBLE_EQ(quality.bound.max, 0.5);
  EXPECT_EQ(quality.bound.at, 0);
  EXPECT_DOUBLE_EQ(quality.row.max, 0.5);
  EXPECT_EQ(quality.row.at, 0);
  EXPECT_DOUBLE_EQ(quality.residual.max, 0.5);  // -1.5 was claimed to be -1
  EXPECT_EQ(quality.residual.at, 1);
  EXPECT_DOUBLE_EQ(quality.objective, 13);
}

TEST(Quality, OptimalPairIsClean) {
  const Model model;
  // x = 1 makes row 0 tight at 1, z = 3 makes row 1 tight: pi_1 = 1 (z), pi_0 = 1 (x), y has d = 2.
  const double x[] = {1, 0, 3};
  const double pi[] = {1, 1};
  const double reduced[] = {0, 2, 0};
  const PrimalQuality primal = measure_primal(model.view(), x, {});
  EXPECT_EQ(primal.bound.max + primal.row.max, 0);
  const DualQuality dual = measure_dual(model.view(), pi, reduced, x);
  EXPECT_EQ(dual.sign.at, -1);
  EXPECT_EQ(dual.residual.max, 0);
  EXPECT_EQ(dual.complementarity.max, 0);
  EXPECT_DOUBLE_EQ(dual.objective, primal.objective);
}

TEST(Quality, DualViolationsAreMeasuredPerKind) {
  const Model model;
  // z has a lower bound of -inf: d_z = 1 has the wrong sign; row 1 has no upper side: pi_1 = -2 neither. d_x = 4 at 1.
  const double x[] = {1, 0, 3};
  const double pi[] = {0, -2};
  const double reduced[] = {4, 3, 0};
  const DualQuality dual = measure_dual(model.view(), pi, reduced, x);
  EXPECT_DOUBLE_EQ(dual.sign.max, 2);
  EXPECT_EQ(dual.sign.at, 3 + 1);
  EXPECT_DOUBLE_EQ(dual.residual.max, 3);
  EXPECT_EQ(dual.residual.at, 2);
  EXPECT_DOUBLE_EQ(dual.complementarity.max, 6);  // d_z = -3 while z = 3 is 2 away from 5
  EXPECT_EQ(dual.complementarity.at, 2);
  EXPECT_DOUBLE_EQ(dual.complementarity.sum, 10);  // d_x = 4 while x = 1 is 1 away from 0
  EXPECT_DOUBLE_EQ(dual.promise.sum, 4);           // pi_1 while the largest activity is -2
}

TEST(Quality, NotANumberIsNeverClean) {
  const Model model;
  const double good[] = {1, 0, 3};
  for (int at = 0; at < 3; ++at) {
    for (const double bad : {kNan, kInf, -kInf}) {
      std::vector<double> x(good, good + 3);
      x[at] = bad;
      const PrimalQuality quality = measure_primal(model.view(), x, {});
      EXPECT_EQ(quality.bound.max, kInf) << at << ' ' << bad;
      EXPECT_EQ(quality.row.max, kInf) << at << ' ' << bad;
    }
  }
  const double pi[] = {kNan, 0};
  const DualQuality dual = measure_dual(model.view(), pi, good, good);
  EXPECT_EQ(dual.sign.max, kInf);
  EXPECT_EQ(dual.residual.max, kInf);
  EXPECT_EQ(dual.objective, -kInf);
  const double y[] = {1, kNan};
  EXPECT_EQ(farkas_gap(model.view(), y, 1e-9), -kInf);
  const double r[] = {0, kNan, 1};
  EXPECT_EQ(ray_descent(model.view(), r, 1e-9), -kInf);
  Model broken;
  broken.value[2] = kNan;
  EXPECT_EQ(measure_primal(broken.view(), std::vector<double>{1, 1, 1}, {}).row.max, kInf);
  EXPECT_EQ(ray_descent(broken.view(), std::vector<double>{0, 1, 0}, 1e-9), -kInf);
}

TEST(Quality, DualBoundNeedsFiniteBounds) {
  const Model model;
  const double noise[] = {1, 1 + 1e-12};  // d_z = 1e-12 would need a lower bound of z
  EXPECT_NEAR(measure_dual(model.view(), noise, {}, {}).objective, -1, 1e-9);
  EXPECT_GT(measure_dual(model.view(), noise, {}, {}).sign.max, 0);
  const double wrong[] = {1, 1.1};
  EXPECT_EQ(measure_dual(model.view(), wrong, {}, {}).objective, -kInf);
}

TEST(Quality, FarkasProofs) {
  Model model;
  model.row_lower[0] = 10;
  model.row_upper[0] = 20;
  model.col_upper[1] = 4;  // x + y <= 7 < 10
  EXPECT_DOUBLE_EQ(farkas_gap(model.view(), std::vector<double>{2, 0}, 1e-9), 3);
  EXPECT_LT(farkas_gap(model.view(), std::vector<double>{-1, 0}, 1e-9), 0);
  EXPECT_EQ(farkas_gap(model.view(), std::vector<double>{0, 0}, 1e-9), -kInf);
  EXPECT_EQ(farkas_gap(model.view(), std::vector<double>{1, -1}, 1e-9), -kInf);  // row 1 has no upper side
  model.col_upper[1] = kInf;
  EXPECT_EQ(farkas_gap(model.view(), std::vector<double>{2, 0}, 1e-9), -kInf);
  // An infinite bound is forgiven for noise only: here y's column is the difference of two nearly equal rows.
  Model twin;
  twin.index = {0, 1, 0, 1};
  twin.start = {0, 2, 4, 4};
  twin.value = {1, 1, 1 + 1e-15, 1};
  twin.row_lower = {3, -kInf};
  twin.row_upper = {kInf, 2};
  twin.col_lower[1] = -kInf;
  EXPECT_NEAR(farkas_gap(twin.view(), std::vector<double>{1, -1}, 1e-12), 1, 1e-12);
  EXPECT_EQ(farkas_gap(twin.view(), std::vector<double>{1, -1}, 0), -kInf);
}

TEST(Quality, Rays) {
  Model model;
  EXPECT_EQ(ray_descent(model.view(), std::vector<double>{0, 0, 1}, 1e-9), -kInf);  // z <= 5
  EXPECT_EQ(ray_descent(model.view(), std::vector<double>{0, 0, 0}, 1e-9), -kInf);
  model.col_upper[2] = kInf;
  EXPECT_EQ(ray_descent(model.view(), std::vector<double>{0, 0, 1}, 1e-9), -kInf);  // x - z >= -2
  model.row_lower[1] = -kInf;
  EXPECT_DOUBLE_EQ(ray_descent(model.view(), std::vector<double>{0, 0, 2}, 1e-9), 1);
  EXPECT_LT(ray_descent(model.view(), std::vector<double>{0, 0, -2}, 1e-9), 0);  // recedes, but uphill
  EXPECT_NEAR(ray_descent(model.view(), std::vector<double>{-1e-12, 0, 2}, 1e-9), 1, 1e-11);
  EXPECT_EQ(ray_descent(model.view(), std::vector<double>{-1e-6, 0, 2}, 1e-9), -kInf);
}

TEST(Quality, EmptyModel) {
  const Offset start[] = {0};
  ProblemView empty;
  empty.start = start;
  EXPECT_EQ(measure_primal(empty, {}, {}).objective, 0);
  EXPECT_EQ(measure_dual(empty, {}, {}, {}).objective, 0);
  EXPECT_EQ(farkas_gap(empty, {}, 0), -kInf);
  EXPECT_EQ(ray_descent(empty, {}, 0), -kInf);
}

}  // namespace
}  // namespace zorvex
