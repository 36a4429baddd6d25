#include "quality.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "small_model.hpp"

namespace zorvex_cli {
namespace {

// max 3 a - b + 10 + 1/2 (2 a^2 + 4 a b), a integer in [0, 5], b semicontinuous in [2, 8]; 1 <= a + 2 b <= 9.
ModelView example() {
  ModelView model;
  model.sense = -1;
  model.obj_con = 10;
  add_var(model, 'I', 0, 5, 3);
  add_var(model, 'S', 2, 8, -1);
  add_row(model, 1, 9, {0, 1}, {1, 2});
  model.q_first = {0, 0};
  model.q_second = {0, 1};
  model.q_value = {2, 4};
  return model;
}

struct Case {
  const char* what;
  double a, b;
  double objective, bound, constraint, integrality;
};

TEST(PointQuality, Table) {
  const Case cases[] = {
      {"feasible", 3, 2.5, 9 - 2.5 + 10 + 9 + 15, 0, 0, 0},
      {"semicontinuous at zero", 1, 0, 14, 0, 0, 0},
      {"semicontinuous between zero and its bound", 1, 0.5, 3 - 0.5 + 10 + 1 + 1, 0.5, 0, 0},
      {"semicontinuous nearer to its bound", 1, 1.75, 3 - 1.75 + 10 + 1 + 3.5, 0.25, 0, 0},
      {"beyond the upper bound and the row", 7, 2, 21 - 2 + 10 + 49 + 28, 2, 2, 0},
      {"below the row", 0, 0, 10, 0, 1, 0},
      {"fractional", 1.25, 0, 3.75 + 10 + 1.5625, 0, 0, 0.25},
  };
  const ModelView model = example();
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const PointQuality quality = measure_point(model, {c.a, c.b}, 1e-6, 1e-5);
    EXPECT_DOUBLE_EQ(static_cast<double>(quality.objective), c.objective);
    EXPECT_DOUBLE_EQ(static_cast<double>(quality.bound.max), c.bound);
    EXPECT_DOUBLE_EQ(static_cast<double>(quality.constraint.max), c.constraint);
    EXPECT_DOUBLE_EQ(static_cast<double>(quality.integrality.max), c.integrality);
    EXPECT_EQ(quality.is_feasible(), c.bound == 0 && c.constraint == 0 && c.integrality == 0);
  }
}

TEST(PointQuality, NothingThatIsNotANumberIsFeasible) {
  for (const double bad : {std::nan(""), kInfinite, -kInfinite}) {
    ModelView model;
    add_var(model, 'C', -kInfinite, kInfinite);
    add_row(model, -kInfinite, kInfinite, {0}, {1});
    EXPECT_FALSE(measure_point(model, {bad}, 1e-6, 1e-5).is_feasible());
  }
}

TEST(PointQuality, ExtendedPrecision) {
  ModelView model;
  for (int k = 0; k < 3; ++k) add_var(model, 'C', -kInfinite, kInfinite);
  add_row(model, 1, 1, {0, 1, 2}, {1e17, 1, -1e17});  // in doubles the 1 is lost
  EXPECT_TRUE(measure_point(model, {1, 1, 1}, 1e-6, 1e-5).is_feasible());
}

TEST(PointQuality, SpecialOrderedSets) {
  struct SosCase {
    const char* what;
    int type;
    std::vector<double> x;
    double expected;
  };
  const SosCase cases[] = {
      {"one nonzero", 1, {0, 3, 0, 0}, 0},
      {"two nonzeros in type 1", 1, {0, 3, 2, 0}, 2},
      {"two neighbours in type 2", 2, {0, 3, 2, 0}, 0},
      {"two apart in type 2", 2, {4, 0, -2.5, 0}, 2.5},
      {"the best pair is kept", 2, {1, 3, 2, 0}, 1},
      {"all zero", 2, {0, 0, 0, 0}, 0},
  };
  for (const SosCase& c : cases) {
    SCOPED_TRACE(c.what);
    ModelView model;
    for (int k = 0; k < 4; ++k) add_var(model, 'C', -kInfinite, kInfinite);
    model.sos.push_back({c.type, {0, 1, 2, 3}});
    EXPECT_DOUBLE_EQ(static_cast<double>(measure_point(model, c.x, 1e-6, 1e-5).sos.max), c.expected);
  }
}

}  // namespace
}  // namespace zorvex_cli
