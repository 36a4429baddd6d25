// Two classes of quadratic mixed-integer models against enumeration of what is discrete in them.
#include <gtest/gtest.h>

#include <cmath>

#include "base/random_stream.hpp"
#include "mip/mip_problem.hpp"
#include "support/convex_q.hpp"

namespace zorvex::testing {
namespace {

double solve(const MipProblem& problem) {
  QuietLog log;
  MipSolver solver(problem, log);
  MipOptions options;
  options.mip_gap = 0;
  const MipResult& result = solver.run(options, nullptr, now_seconds());
  EXPECT_EQ(result.status, SolveStatus::kOptimal);
  EXPECT_NEAR(result.bound, result.objective, 1e-6 * std::max(1.0, std::abs(result.objective)));
  return result.objective;
}

// Q = F'F, lower triangle; rows of F are given.
SparseMatrix gram(const std::vector<std::vector<double>>& factors, Index n) {
  SparseMatrix q;
  q.num_rows = n;
  for (Index col = 0; col < n; ++col) {
    std::vector<Index> index;
    std::vector<double> value;
    for (Index row = col; row < n; ++row) {
      double sum = 0;
      for (const auto& f : factors) {
        if (static_cast<std::size_t>(row) < f.size()) sum += f[row] * f[col];
      }
      if (sum == 0) continue;
      index.push_back(row);
      value.push_back(sum);
    }
    q.append_col(index.data(), value.data(), static_cast<Index>(index.size()));
  }
  return q;
}

std::vector<std::vector<double>> random_factors(RandomStream& random, Index rows, Index cols) {
  std::vector<std::vector<double>> factors(static_cast<std::size_t>(rows), std::vector<double>(cols));
  for (auto& row : factors) {
    for (double& entry : row) entry = 2 * random.uniform() - 1;
  }
  return factors;
}

// min 1/2 w'Qw with sum w = 1 and w_j <= z_j: at most `most` of the z are one. Without binaries for fixed z: `only`
// says which assets may be held.
MipProblem portfolio(const SparseMatrix& risk, Index n, Index most, const std::vector<char>* only) {
  MipProblem problem;
  LpData& lp = problem.lp;
  SparseMatrix rows;
  rows.num_rows = 2 * n;
  std::vector<Index> weights, choices;
  for (Index j = 0; j < n; ++j) {
    weights.push_back(j);
    choices.push_back(n + j);
  }
  const std::vector<double> ones(static_cast<std::size_t>(n), 1);
  rows.append_col(weights.data(), ones.data(), n);
  rows.append_col(choices.data(), ones.data(), n);
  lp.row_lower = {1, -kInf};
  lp.row_upper = {1, static_cast<double>(most)};
  for (Index j = 0; j < n; ++j) {
    const Index link[] = {j, n + j};
    const double coefficients[] = {1, -1};
    rows.append_col(link, coefficients, 2);
    lp.row_lower.push_back(-kInf);
    lp.row_upper.push_back(0);
  }
  lp.matrix = rows.transpose();
  lp.cost.assign(static_cast<std::size_t>(2 * n), 0);
  lp.col_lower.assign(lp.cost.size(), 0);
  lp.col_upper.assign(lp.cost.size(), 1);
  lp.quadratic = risk;
  for (Index j = 0; j < n; ++j) lp.quadratic.append_col(nullptr, nullptr, 0);
  lp.quadratic.num_rows = 2 * n;
  problem.type.assign(static_cast<std::size_t>(n), VarType::kContinuous);
  problem.type.resize(lp.cost.size(), VarType::kBinary);
  if (only != nullptr) {
    for (Index j = 0; j < n; ++j) lp.col_lower[n + j] = lp.col_upper[n + j] = (*only)[j];
  }
  return problem;
}

TEST(QuadraticMip, PortfoliosOfFewAssets) {
  constexpr Index kAssets = 9, kMost = 3;
  for (std::uint64_t seed = 0; seed < 6; ++seed) {
    RandomStream random(seed, "portfolio");
    const SparseMatrix risk = gram(random_factors(random, 5, kAssets), kAssets);  // of less than full rank
    double best = kInf;
    for (unsigned held = 1; held < 1U << kAssets; ++held) {
      if (__builtin_popcount(held) != kMost) continue;
      std::vector<char> only(kAssets);
      for (Index j = 0; j < kAssets; ++j) only[j] = held >> j & 1U;
      QuietLog log;
      LpSolver rest(portfolio(risk, kAssets, kMost, &only).lp, {}, log);
      ASSERT_EQ(rest.solve({}, {}), SolveStatus::kOptimal);
      best = std::min(best, rest.objective());
    }
    EXPECT_NEAR(solve(portfolio(risk, kAssets, kMost, nullptr)), best, 1e-6) << "seed " << seed;
  }
}

// What a tree search does: one bound at a time is closed and opened again.
TEST(QuadraticMip, RelaxationsGoOnFromTheLastActiveSet) {
  constexpr Index kAssets = 24, kMost = 6;
  double warm_iterations = 0, cold_iterations = 0;
  for (std::uint64_t seed = 0; seed < 4; ++seed) {
    RandomStream random(seed, "closed bounds");
    LpData lp = portfolio(gram(random_factors(random, 30, kAssets), kAssets), kAssets, kMost, nullptr).lp;
    QuietLog log;
    LpSolver warm(lp, {}, log);
    warm.solve({}, {});
    for (Index col = kAssets; col < 2 * kAssets; ++col) {
      for (const double upper : {0.0, 1.0}) {
        lp.col_upper[col] = upper;
        warm.set_col_bounds(col, 0, upper);
        LpSolver cold(lp, {}, log);
        ASSERT_EQ(warm.solve({}, {}), SolveStatus::kOptimal);
        ASSERT_EQ(cold.solve({}, {}), SolveStatus::kOptimal);
        EXPECT_NEAR(warm.objective(), cold.objective(), 1e-7) << "seed " << seed << ", column " << col;
        warm_iterations += warm.iterations();
        cold_iterations += cold.iterations();
      }
    }
  }
  EXPECT_LT(warm_iterations, 0.07 * cold_iterations);
}

// min ||F x - t||^2 over x in {-2..2}^n.
TEST(QuadraticMip, LeastSquaresOverIntegers) {
  constexpr Index kColumns = 6, kEquations = 8, kReach = 2;
  for (std::uint64_t seed = 0; seed < 6; ++seed) {
    RandomStream random(seed, "least squares");
    const std::vector<std::vector<double>> factors = random_factors(random, kEquations, kColumns);
    MipProblem problem;
    LpData& lp = problem.lp;
    lp.matrix.num_rows = 0;
    for (Index j = 0; j < kColumns; ++j) lp.matrix.append_col(nullptr, nullptr, 0);
    lp.cost.assign(kColumns, 0);
    lp.col_lower.assign(kColumns, -kReach);
    lp.col_upper.assign(kColumns, kReach);
    problem.type.assign(kColumns, VarType::kInteger);
    lp.quadratic = gram(factors, kColumns);
    for (double& value : lp.quadratic.value) value *= 2;
    for (const auto& row : factors) {
      const double target = 6 * random.uniform() - 3;
      for (Index j = 0; j < kColumns; ++j) lp.cost[j] -= 2 * target * row[j];
      lp.offset += target * target;
    }
    double best = kInf;
    std::vector<double> x(kColumns, -kReach);
    for (std::size_t digit = 0; digit < x.size();) {
      best = std::min(best, oracle::quadratic_objective(lp, x));
      for (digit = 0; digit < x.size() && x[digit] == kReach; ++digit) x[digit] = -kReach;
      if (digit < x.size()) ++x[digit];
    }
    EXPECT_NEAR(solve(problem), best, 1e-6) << "seed " << seed;
  }
}

}  // namespace
}  // namespace zorvex::testing
