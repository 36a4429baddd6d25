// Chains of solves as tree searches make them, each against an independent dense simplex; and the check in double that
// such solves rely on against the gate in long double.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "base/random_stream.hpp"
#include "simplex/answer_check.hpp"
#include "simplex/lp_engine.hpp"
#include "simplex/lp_solver.hpp"
#include "simplex/warm_check.hpp"
#include "support/claim.hpp"
#include "support/random_lp.hpp"

namespace zorvex {
namespace {

constexpr double kTolerance = 1e-6;

oracle::RandomLpShape walk_shape() {
  oracle::RandomLpShape shape;
  shape.max_rows = 14;
  shape.max_cols = 24;
  shape.feasible_share = 1;
  return shape;
}

// One model, its root basis, and the moves of a search on it.
class Walk {
 public:
  Walk(const LpData& lp, RandomStream& random) : root_(lp), random_(random), solver_(lp, {}, log_) {}

  bool start() {
    if (solver_.solve({}, {}) != SolveStatus::kOptimal) return false;
    saved_ = solver_.basis();
    return true;
  }
  void step(const std::string& where) {
    move();
    SimplexLimits limits;
    const std::int64_t kind = random_.below(6);
    if (kind == 0) limits.iterations = static_cast<double>(random_.below(4));
    if (kind == 1) limits.objective = solver_.objective() + random_.uniform();
    judge(solver_.solve(limits, {}), limits, where);
    if (random_.below(10) == 0 && solver_.status() == SolveStatus::kOptimal) saved_ = solver_.basis();
  }

 private:
  void move() {
    switch (random_.below(8)) {
      case 0:
        for (Index col = 0; col < root_.num_cols(); ++col) {
          solver_.set_col_bounds(col, root_.col_lower[col], root_.col_upper[col]);
        }
        solver_.set_basis(saved_);
        break;
      case 1:
        solver_.set_basis(saved_);
        break;
      case 2: {
        const auto row = static_cast<Index>(random_.below(root_.num_rows()));
        const double shift = static_cast<double>(random_.below(3)) - 1;
        solver_.set_row_bounds(row, root_.row_lower[row] + shift, root_.row_upper[row] + shift);
        break;
      }
      default:
        for (std::int64_t count = 1 + random_.below(3); count > 0; --count) move_column();
    }
  }
  // Down, up, fixed, or back to the root's bounds.
  void move_column() {
    const auto col = static_cast<Index>(random_.below(root_.num_cols()));
    const double x = solver_.point().x[col];
    const double low = root_.col_lower[col];
    const double up = root_.col_upper[col];
    switch (random_.below(4)) {
      case 0:
        solver_.set_col_bounds(col, low, std::max(std::floor(x), low));
        break;
      case 1:
        solver_.set_col_bounds(col, std::min(std::ceil(x), up), up);
        break;
      case 2:
        solver_.set_col_bounds(col, std::round(x), std::round(x));
        break;
      default:
        solver_.set_col_bounds(col, low, up);
    }
  }
  void judge(SolveStatus status, const SimplexLimits& limits, const std::string& where) {
    if (status == SolveStatus::kIterationLimit) {
      EXPECT_LT(limits.iterations, 4) << where;
      return;
    }
    const oracle::DenseLpResult expected = oracle::solve_dense_lp(solver_.data());
    const double scale = std::max(1.0, std::abs(expected.objective));
    if (status == SolveStatus::kCutoff) {
      const bool infeasible = expected.status == SolveStatus::kInfeasible;
      EXPECT_TRUE(infeasible || expected.objective >= limits.objective - kTolerance * scale) << where;
      return;
    }
    oracle::expect_right(solver_.data(), answer_of(solver_), expected, where);
    if (status != SolveStatus::kOptimal) return;
    EXPECT_NEAR(solver_.objective(), expected.objective, kTolerance * scale) << where;
  }

  LpData root_;
  RandomStream& random_;
  QuietLog log_;
  LpSolver solver_;
  Basis saved_;
};

TEST(WarmStart, WalksOfBoundChangesAndBasisJumpsStayRight) {
  RandomStream random(41, "warm walk");
  int walks = 0;
  for (int trial = 0; trial < 150; ++trial) {
    const LpData lp = oracle::random_lp(random, walk_shape());
    if (lp.num_rows() == 0) continue;
    Walk walk(lp, random);
    if (!walk.start()) continue;
    ++walks;
    for (int step = 0; step < 60; ++step) {
      walk.step("trial " + std::to_string(trial) + " step " + std::to_string(step));
      if (HasFailure()) return;
    }
  }
  EXPECT_GT(walks, 60);
}

struct Disturbance {
  const char* name;
  double x, pi;  // added to one entry
};

// Never milder than the gate in long double, never harsher where it does not leave the question open.
TEST(WarmCheck, AgreesWithTheGateInLongDouble) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const Disturbance disturbances[] = {{"none", 0, 0},
                                      {"noise", 1e-13, 1e-13},
                                      {"x at the tolerance", 1e-6, 0},
                                      {"x below the tolerance", 0.999e-6, 0},
                                      {"x beyond", -1.001e-6, 0},
                                      {"x far off", 0.5, 0},
                                      {"dual at the tolerance", 0, 1e-6},
                                      {"dual beyond", 0, 1.1e-6},
                                      {"dual far off", 0, -0.25},
                                      {"x not a number", nan, 0},
                                      {"x infinite", kInf, 0},
                                      {"dual not a number", 0, nan}};
  RandomStream random(43, "warm check");
  QuietLog log;
  WarmCheck check;
  double objective = 0;
  int undecided = 0;
  int decided = 0;
  for (int trial = 0; trial < 200; ++trial) {
    LpSolver solver(oracle::random_lp(random, walk_shape()), {}, log);
    if (solver.num_rows() == 0 || solver.solve({}, {}) != SolveStatus::kOptimal) continue;
    for (const Disturbance& disturbance : disturbances) {
      LpPoint point = solver.point();
      point.x[static_cast<std::size_t>(random.below(solver.num_cols()))] += disturbance.x;
      point.pi[static_cast<std::size_t>(random.below(solver.num_rows()))] += disturbance.pi;
      const WarmVerdict verdict = check.optimal(solver.data(), {}, false, point, objective);
      (verdict == WarmVerdict::kOpen ? undecided : decided)++;
      if (verdict == WarmVerdict::kOpen) continue;
      EXPECT_EQ(verdict == WarmVerdict::kHolds, is_optimal(solver.data(), point, {}))
          << "trial " << trial << " " << disturbance.name;
    }
  }
  EXPECT_GT(decided, 1000);
  EXPECT_LT(undecided, decided / 10);
}

// min x over x <= 5 as a row, x in [0, 10], at x = 3: feasible, dual feasible, and not optimal.
TEST(WarmCheck, UpdatedValuesMustBeComplementary) {
  LpData lp;
  lp.matrix.num_rows = 1;
  const Index row = 0;
  const double one = 1;
  lp.matrix.append_col(&row, &one, 1);
  lp.cost = {1};
  lp.col_lower = {0};
  lp.col_upper = {10};
  lp.row_lower = {-kInf};
  lp.row_upper = {5};
  WarmCheck check;
  double objective = 0;
  LpPoint point{{3}, {0}, {0}, {0}};
  EXPECT_EQ(check.optimal(lp, {}, true, point, objective), WarmVerdict::kFails);
  EXPECT_EQ(objective, 3);
  point.x = {0};
  EXPECT_EQ(check.optimal(lp, {}, true, point, objective), WarmVerdict::kHolds);
  EXPECT_EQ(point.reduced_cost[0], 1);
}

TEST(WarmCheck, ProofsOfInfeasibilityAreNoWeakerThanTheGates) {
  RandomStream random(47, "warm proofs");
  oracle::RandomLpShape shape = walk_shape();
  shape.feasible_share = 0;
  QuietLog log;
  WarmCheck check;
  int held = 0;
  for (int trial = 0; trial < 300; ++trial) {
    LpSolver solver(oracle::random_lp(random, shape), {}, log);
    if (solver.num_rows() == 0 || solver.solve({}, {}) != SolveStatus::kInfeasible) continue;
    if (solver.farkas().empty()) continue;
    for (const double disturbance : {0.0, 1e-12, 1e-3, -0.5, kInf}) {
      std::vector<double> y = solver.farkas();
      y[static_cast<std::size_t>(random.below(solver.num_rows()))] += disturbance;
      double gap = 0;
      double exact = 0;
      if (check.infeasible(solver.data(), y, gap) != WarmVerdict::kHolds) continue;
      ++held;
      EXPECT_TRUE(proves_infeasible(solver.data(), y, exact)) << "trial " << trial << " " << disturbance;
      EXPECT_LE(gap, exact * (1 + 1e-12)) << "trial " << trial << " " << disturbance;
    }
  }
  EXPECT_GT(held, 50);
}

}  // namespace
}  // namespace zorvex
