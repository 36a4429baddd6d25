// The warm-started solver against an independent dense simplex: cold solves in both precisions and with both
// algorithms, then chains of changes from the last basis.
#include "simplex/lp_solver.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "base/random_stream.hpp"
#include "simplex/answer_check.hpp"
#include "simplex/lp_engine.hpp"
#include "support/claim.hpp"
#include "support/random_lp.hpp"
#include "support/text_log.hpp"

namespace zorvex {
namespace {

struct Setting {
  const char* name;
  SimplexAlgorithm algorithm;
  Precision precision;
  bool scale;
  int pricing;
  double perturb;
};

void PrintTo(const Setting& setting, std::ostream* out) { *out << setting.name; }

SimplexOptions options_of(const Setting& setting) {
  SimplexOptions options;
  options.algorithm = setting.algorithm;
  options.precision = setting.precision;
  options.scale = setting.scale;
  options.pricing = setting.pricing;
  options.perturb_value = setting.perturb;
  return options;
}

void expect_matches_oracle(LpSolver& solver, const std::string& where) {
  solver.solve({}, {});
  const oracle::DenseLpResult expected = oracle::solve_dense_lp(solver.data());
  oracle::expect_right(solver.data(), answer_of(solver), expected, where);
  if (solver.status() != SolveStatus::kOptimal) return;
  EXPECT_NEAR(solver.objective(), expected.objective, 1e-6 * std::max(1.0, std::abs(expected.objective))) << where;
}

class EverySetting : public testing::TestWithParam<Setting> {};

TEST_P(EverySetting, SolvesRandomModelsAsTheOracleDoes) {
  RandomStream random(17, "lp solver");
  oracle::RandomLpShape shape;
  shape.max_rows = 12;
  shape.max_cols = 16;
  QuietLog log;
  for (int trial = 0; trial < 600; ++trial) {
    LpSolver solver(oracle::random_lp(random, shape), options_of(GetParam()), log);
    expect_matches_oracle(solver, "trial " + std::to_string(trial));
    if (HasFatalFailure()) return;
  }
}

// After every change the solver goes on from its last basis, whatever state it was left in.
TEST_P(EverySetting, FollowsChangesFromTheLastBasis) {
  RandomStream random(29, "lp solver changes");
  QuietLog log;
  for (int trial = 0; trial < 120; ++trial) {
    LpSolver solver(oracle::random_lp(random, {}), options_of(GetParam()), log);
    solver.solve({}, {});
    for (int change = 0; change < 8; ++change) {
      const Index n = solver.num_cols();
      const Index m = solver.num_rows();
      const auto col = static_cast<Index>(random.below(n));
      switch (random.below(m > 0 ? 6 : 2)) {
        case 0: {
          const double low = static_cast<double>(random.below(7)) - 3;
          solver.set_col_bounds(col, low, low + static_cast<double>(random.below(4)));
          break;
        }
        case 1:
          solver.set_cost(col, static_cast<double>(random.below(9)) - 4);
          break;
        case 2: {
          const auto row = static_cast<Index>(random.below(m));
          const double low = static_cast<double>(random.below(9)) - 6;
          solver.set_row_bounds(row, low, random.below(2) == 0 ? low : low + 5);
          break;
        }
        case 3: {
          SparseMatrix rows;
          rows.num_rows = n;
          const Index indices[] = {col};
          const double values[] = {static_cast<double>(1 + random.below(3))};
          rows.append_col(indices, values, 1);
          const double lower[] = {-kInf};
          const double upper[] = {static_cast<double>(random.below(5))};
          solver.add_rows(rows, lower, upper);
          break;
        }
        case 4: {
          std::vector<char> remove(static_cast<std::size_t>(m), 0);
          remove[static_cast<std::size_t>(random.below(m))] = 1;
          solver.delete_rows(remove);
          break;
        }
        default:
          solver.set_basis(solver.basis());
      }
      expect_matches_oracle(solver, "trial " + std::to_string(trial) + " change " + std::to_string(change));
      if (HasFatalFailure()) return;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    Kernels, EverySetting,
    testing::Values(Setting{"dual", SimplexAlgorithm::kDual, Precision::kDouble, true, -1, 2e-4},
                    Setting{"dual_devex_plain", SimplexAlgorithm::kDual, Precision::kDouble, false, 2, 0},
                    Setting{"dual_partial", SimplexAlgorithm::kDual, Precision::kAutomatic, true, 0, 2e-4},
                    Setting{"primal", SimplexAlgorithm::kPrimal, Precision::kDouble, true, -1, 2e-4},
                    Setting{"dual_extended", SimplexAlgorithm::kDual, Precision::kExtended, true, -1, 2e-4},
                    Setting{"primal_extended", SimplexAlgorithm::kPrimal, Precision::kExtended, false, -1, 0}),
    [](const testing::TestParamInfo<Setting>& each) { return std::string(each.param.name); });

// min c'x over rows given densely; every bound is [0, inf) unless told otherwise.
LpData dense_model(const std::vector<double>& cost, const std::vector<std::vector<double>>& rows,
                   const std::vector<double>& lower, const std::vector<double>& upper) {
  LpData lp;
  lp.matrix.num_rows = static_cast<Index>(rows.size());
  for (std::size_t col = 0; col < cost.size(); ++col) {
    std::vector<Index> index;
    std::vector<double> value;
    for (std::size_t row = 0; row < rows.size(); ++row) {
      if (rows[row][col] == 0) continue;
      index.push_back(static_cast<Index>(row));
      value.push_back(rows[row][col]);
    }
    lp.matrix.append_col(index.data(), value.data(), static_cast<Index>(index.size()));
  }
  lp.cost = cost;
  lp.col_lower.assign(cost.size(), 0.0);
  lp.col_upper.assign(cost.size(), kInf);
  lp.row_lower = lower;
  lp.row_upper = upper;
  return lp;
}

struct Known {
  const char* name;
  LpData lp;
  SolveStatus status;
  double objective;
};

std::vector<Known> known_models() {
  std::vector<Known> models;
  // E. Beale, Naval Res. Logist. Quart. 2 (1955): cycles under the textbook rule.
  models.push_back({"beale",
                    dense_model({-0.75, 150, -0.02, 6}, {{0.25, -60, -0.04, 9}, {0.5, -90, -0.02, 3}, {0, 0, 1, 0}},
                                {-kInf, -kInf, -kInf}, {0, 0, 1}),
                    SolveStatus::kOptimal, -0.05});
  models.push_back({"no_columns", dense_model({}, {{}, {}}, {-1, 0}, {1, 0}), SolveStatus::kOptimal, 0});
  models.push_back({"no_columns_infeasible", dense_model({}, {{}}, {1}, {2}), SolveStatus::kInfeasible, 0});
  models.push_back(
      {"contradicting_rows", dense_model({1}, {{1}, {1}}, {2, -kInf}, {kInf, 1}), SolveStatus::kInfeasible, 0});
  models.push_back({"crossed_row", dense_model({1}, {{1}}, {3}, {2}), SolveStatus::kInfeasible, 0});
  models.push_back({"ray", dense_model({-1, -1}, {{1, -1}}, {-kInf}, {1}), SolveStatus::kUnbounded, 0});
  models.push_back(
      {"duplicate_columns", dense_model({2, 2, 1}, {{1, 1, 0}, {1, 1, 1}}, {3, 4}, {3, 4}), SolveStatus::kOptimal, 7});
  // Coefficients from 1e-7 to 1e7; the optimum is x = 1, y = 1.
  models.push_back({"badly_scaled",
                    dense_model({1e-3, 1e3}, {{1e7, 1}, {1e-7, 1e5}}, {1e7 + 1, 1e5 + 1e-7}, {kInf, kInf}),
                    SolveStatus::kOptimal, 1000.001});
  // A reduced cost that looks like rounding is worth 0.05 over the way to its bound.
  LpData long_way = dense_model({-5e-8, 0}, {{1, 1}}, {-kInf}, {2e6});
  long_way.col_upper = {1e6, 1e6};
  models.push_back({"long_way", long_way, SolveStatus::kOptimal, -0.05});
  // The same where no bound but a row ends the way, at y = 1e4.
  models.push_back({"unbounded_way", dense_model({-5e-8, 1e-4}, {{1, -1}, {0, 1}}, {-kInf, 1e4}, {0, kInf}),
                    SolveStatus::kOptimal, 0.9995});
  return models;
}

TEST(LpSolver, KnownModelsByBothAlgorithmsAndPrecisions) {
  QuietLog log;
  for (const Known& known : known_models()) {
    for (const SimplexAlgorithm algorithm : {SimplexAlgorithm::kDual, SimplexAlgorithm::kPrimal}) {
      for (const Precision precision : {Precision::kDouble, Precision::kExtended}) {
        SimplexOptions options;
        options.algorithm = algorithm;
        options.precision = precision;
        LpSolver solver(known.lp, options, log);
        EXPECT_EQ(solver.solve({}, {}), known.status) << known.name;
        if (known.status == SolveStatus::kOptimal) {
          EXPECT_NEAR(solver.objective(), known.objective, 1e-6 * std::max(1.0, std::abs(known.objective)))
              << known.name;
        }
      }
    }
  }
}

// A random model of some size, optimal by construction.
LpData solvable_model(Index m, Index n) {
  RandomStream random(5, "solvable");
  LpData lp;
  lp.matrix.num_rows = m;
  std::vector<double> activity(static_cast<std::size_t>(m), 0.0);
  for (Index col = 0; col < n; ++col) {
    std::vector<Index> rows;
    std::vector<double> values;
    for (Index row = 0; row < m; ++row) {
      if (random.uniform() > 0.1) continue;
      rows.push_back(row);
      values.push_back(1 + random.uniform());
      activity[row] += values.back();
    }
    lp.matrix.append_col(rows.data(), values.data(), static_cast<Index>(rows.size()));
    lp.cost.push_back(1 + random.uniform());
  }
  lp.col_lower.assign(static_cast<std::size_t>(n), 0.0);
  lp.col_upper.assign(static_cast<std::size_t>(n), 3.0);
  lp.row_lower = activity;
  lp.row_upper.assign(static_cast<std::size_t>(m), kInf);
  return lp;
}

TEST(LpSolver, IterationLimitAndTerminationStopTheSolve) {
  QuietLog log;
  LpSolver solver(solvable_model(60, 90), {}, log);
  EXPECT_EQ(solver.solve({5, kInf}, {}), SolveStatus::kIterationLimit);
  EXPECT_LE(solver.iterations(), 6);
  const std::atomic<int> terminate{1};
  EXPECT_EQ(solver.solve({}, StopToken(&terminate, kInf)), SolveStatus::kInterrupted);
  EXPECT_EQ(solver.solve({}, StopToken(nullptr, now_seconds() - 1)), SolveStatus::kTimeLimit);
  EXPECT_EQ(solver.solve({}, {}), SolveStatus::kOptimal);
}

TEST(LpSolver, WarmStartNeedsNoIterationsAndObjectiveLimitCutsOff) {
  QuietLog log;
  LpSolver first(solvable_model(60, 90), {}, log);
  ASSERT_EQ(first.solve({}, {}), SolveStatus::kOptimal);
  EXPECT_GT(first.iterations(), 20);
  LpSolver second(first.data(), {}, log);
  second.set_basis(first.basis());
  ASSERT_EQ(second.solve({}, {}), SolveStatus::kOptimal);
  EXPECT_EQ(second.iterations(), 0);
  EXPECT_NEAR(second.objective(), first.objective(), 1e-9 * first.objective());
  // The limit is on the objective with its constant, whatever the sign of that.
  for (const double offset : {0.0, 500.0, -500.0}) {
    LpData shifted = first.data();
    shifted.offset = offset;
    LpSolver below(shifted, {}, log);
    EXPECT_EQ(below.solve({kInf, 0.9 * first.objective() + offset}, {}), SolveStatus::kCutoff) << offset;
    LpSolver above(shifted, {}, log);
    EXPECT_EQ(above.solve({kInf, 1.01 * first.objective() + offset}, {}), SolveStatus::kOptimal) << offset;
  }
}

TEST(LpSolver, RepairsBasesOfWrongCountAndSingularOnes) {
  QuietLog log;
  LpData lp = dense_model({2, 2, 1}, {{1, 1, 0}, {1, 1, 1}}, {3, 4}, {3, 4});
  const BasisStatus basic = BasisStatus::kBasic;
  const BasisStatus lower = BasisStatus::kAtLower;
  for (const Basis& basis : {Basis{{basic, basic, lower}, {lower, lower}, {}, {}},     // identical columns
                             Basis{{basic, basic, basic}, {basic, basic}, {}, {}},     // too many
                             Basis{{lower, lower, lower}, {lower, lower}, {}, {}}}) {  // none
    LpSolver solver(lp, {}, log);
    solver.set_basis(basis);
    EXPECT_EQ(solver.solve({}, {}), SolveStatus::kOptimal);
    EXPECT_NEAR(solver.objective(), 7, 1e-9);
  }
}

// A singular start basis is repaired; that of a probe is given up for the slack basis.
TEST(LpSolver, WhatBecomesOfASingularStart) {
  const LpData lp = dense_model({2, 2, 1}, {{1, 1, 0}, {1, 1, 1}}, {3, 4}, {3, 4});
  const Basis identical_columns{{BasisStatus::kBasic, BasisStatus::kBasic, BasisStatus::kAtLower},
                                {BasisStatus::kAtLower, BasisStatus::kAtLower},
                                {},
                                {}};
  for (const bool temporary : {false, true}) {
    TextLog log;
    LpSolver solver(lp, {}, log);
    solver.set_basis(identical_columns);
    SimplexLimits limits;
    limits.temporary_fixings = temporary;
    EXPECT_EQ(solver.solve(limits, {}), SolveStatus::kOptimal);
    EXPECT_NEAR(solver.objective(), 7, 1e-9);
    EXPECT_TRUE(log.has("Warning: 1 variables dropped from basis\n")) << log.text();
    EXPECT_EQ(log.has("Warning: starting basis discarded\n"), temporary) << log.text();
  }
}

// x_0 = 1e10 / 3 and x_k = 7.3 x_{k-1} + x_{k-2} / 3: values up to 1e14 whose rounding alone violates the rows by far
// more than the tolerance.
TEST(LpSolver, GrowingValuesEndAtTheRoundingOfTheirStorage) {
  QuietLog log;
  constexpr Index kSteps = 6;
  LpData lp;
  lp.matrix.num_rows = kSteps;
  for (Index k = 0; k < kSteps; ++k) {
    const Index rows[] = {k, k + 1, k + 2};
    const double values[] = {1, -7.3, -1.0 / 3};
    lp.matrix.append_col(rows, values, std::min(3, kSteps - k));
  }
  lp.cost.assign(kSteps, 1e10 / 7);
  lp.col_lower.assign(kSteps, -kInf);
  lp.col_upper.assign(kSteps, kInf);
  lp.row_lower.assign(kSteps, 0);
  lp.row_lower[0] = 1e10 / 3;
  lp.row_upper = lp.row_lower;
  for (const Precision precision : {Precision::kDouble, Precision::kAutomatic, Precision::kExtended}) {
    SimplexOptions options;
    options.precision = precision;
    LpSolver solver(lp, options, log);
    ASSERT_EQ(solver.solve({}, {}), SolveStatus::kNumeric);
    EXPECT_TRUE(solver.nearly_optimal());
    EXPECT_FALSE(is_optimal(lp, solver.point(), options)) << "the model is too tame for this test";
    EXPECT_TRUE(is_optimal_as_stored(lp, solver.point(), options));
    for (const Index col : {0, 3, 5}) {  // four units in the last place are one too many
      LpPoint moved = solver.point();
      moved.x[col] *= 1 + 0x1p-50;
      EXPECT_FALSE(is_optimal_as_stored(lp, moved, options)) << col;
      moved = solver.point();
      moved.pi[col] *= 1 + 0x1p-50;
      EXPECT_FALSE(is_optimal_as_stored(lp, moved, options)) << col;
    }
  }
}

TEST(LpSolver, InverseRowsSumTheRowsToUnitVectorsOverTheBasis) {
  QuietLog log;
  LpSolver solver(solvable_model(20, 30), {}, log);
  ASSERT_EQ(solver.solve({}, {}), SolveStatus::kOptimal);
  const SparseMatrix& matrix = solver.data().matrix;
  std::vector<double> multipliers;
  for (Index position = 0; position < solver.num_rows(); ++position) {
    ASSERT_TRUE(solver.inverse_row(position, multipliers));
    for (Index other = 0; other < solver.num_rows(); ++other) {
      const Index var = solver.basis_head()[other];
      double entry = var < solver.num_cols() ? 0 : multipliers[var - solver.num_cols()];
      if (var < solver.num_cols()) {
        for (Offset k = matrix.begin(var); k < matrix.end(var); ++k) {
          entry += multipliers[matrix.index[k]] * matrix.value[k];
        }
      }
      EXPECT_NEAR(entry, other == position ? 1 : 0, 1e-9);
    }
  }
}

}  // namespace
}  // namespace zorvex
