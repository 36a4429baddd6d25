// What a solver says of a linear model, held against the dense oracle and judged from the model's own numbers.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "base/quality.hpp"
#include "support/dense_lp.hpp"
#include "support/problem_view.hpp"

namespace zorvex::oracle {

inline constexpr double kClaimTolerance = 1e-6;

// Bounds of a column or a row that cross are their own proof.
inline bool has_crossed_bounds(const LpData& lp) {
  bool crossed = false;
  for (Index col = 0; col < lp.num_cols(); ++col) crossed = crossed || lp.col_lower[col] > lp.col_upper[col];
  for (Index row = 0; row < lp.num_rows(); ++row) crossed = crossed || lp.row_lower[row] > lp.row_upper[row];
  return crossed;
}

// Proofs of a claim that there is no optimum; `answer` has status, point, farkas and ray.
template <class Answer>
void expect_proof(const LpData& lp, const Answer& answer, const std::string& where) {
  if (answer.status == SolveStatus::kInfeasible) {
    EXPECT_TRUE(has_crossed_bounds(lp) || farkas_gap(oracle::view_of(lp), answer.farkas, 1e-11) > 0) << where;
  }
  if (answer.status == SolveStatus::kUnbounded) {
    EXPECT_GT(ray_descent(oracle::view_of(lp), answer.ray, 1e-9), 0) << where;
  }
}

template <class Point>
void expect_optimal_point(const LpData& lp, const Point& point, double objective, const std::string& where) {
  const double scale = std::max(1.0, std::abs(objective));
  const PrimalQuality primal = measure_primal(oracle::view_of(lp), point.x, point.row_activity);
  EXPECT_NEAR(primal.objective + lp.offset, objective, kClaimTolerance * scale) << where;
  EXPECT_LE(std::max(primal.bound.max, primal.row.max), kClaimTolerance) << where;
  EXPECT_LE(primal.residual.max, kClaimTolerance) << where;
  const DualQuality dual = measure_dual(oracle::view_of(lp), point.pi, point.reduced_cost, point.x);
  EXPECT_LE(std::max(dual.sign.max, dual.residual.max), kClaimTolerance) << where;
  EXPECT_LE(dual.complementarity.max, kClaimTolerance * scale) << where;
}

// An optimal point that its basis stands for.
template <class Answer>
void expect_vertex(const LpData& lp, const Answer& answer, double objective, const std::string& where) {
  expect_optimal_point(lp, answer.point, objective, where);
  std::vector<double> x, activity;
  ASSERT_TRUE(point_of_basis(lp, answer.basis, answer.point.x, x, activity)) << where;
  for (std::size_t col = 0; col < x.size(); ++col) EXPECT_NEAR(x[col], answer.point.x[col], 1e-5) << where;
}

// The basis is judged where there is one.
template <class Answer>
void expect_right(const LpData& lp, const Answer& answer, const DenseLpResult& expected, const std::string& where) {
  ASSERT_EQ(answer.status, expected.status) << where;
  expect_proof(lp, answer, where);
  if (answer.status != SolveStatus::kOptimal) return;
  if (answer.basis.empty()) {
    expect_optimal_point(lp, answer.point, expected.objective, where);
  } else {
    expect_vertex(lp, answer, expected.objective, where);
  }
}

}  // namespace zorvex::oracle
