#include "simplex/reduced_hessian.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "base/random_stream.hpp"

namespace zorvex {
namespace {

using Matrix = std::vector<std::vector<double>>;  // rows

// Z'QZ by definition, to which every answer of the factor is compared.
Matrix product(const Matrix& z, const Matrix& q) {
  const std::size_t k = z.size();
  Matrix h(k, std::vector<double>(k, 0));
  for (std::size_t a = 0; a < k; ++a) {
    for (std::size_t b = 0; b < k; ++b) {
      for (std::size_t i = 0; i < q.size(); ++i) {
        for (std::size_t j = 0; j < q.size(); ++j) h[a][b] += z[a][i] * q[i][j] * z[b][j];
      }
    }
  }
  return h;
}

class Tracked {
 public:
  explicit Tracked(RandomStream& random, std::size_t n) : random_(random), q_(n, std::vector<double>(n, 0)) {
    Matrix factor(n, std::vector<double>(n));
    for (auto& row : factor) {
      for (double& entry : row) entry = 2 * random.uniform() - 1;
    }
    for (std::size_t i = 0; i < n; ++i) {
      for (std::size_t j = 0; j < n; ++j) {
        for (std::size_t l = 0; l < n; ++l) q_[i][j] += factor[l][i] * factor[l][j];
      }
    }
  }

  void append() {
    std::vector<double> direction(q_.size());
    for (double& entry : direction) entry = 2 * random_.uniform() - 1;
    z_.push_back(direction);
    const Matrix h = product(z_, q_);
    std::vector<double> r(h.back().begin(), h.back().end() - 1);
    factor_.solve_transposed(r);
    double excess = h.back().back();
    for (const double entry : r) excess -= entry * entry;
    factor_.append(r, excess);
  }

  void remove(std::size_t slot) {
    factor_.remove(static_cast<Index>(slot));
    z_.erase(z_.begin() + static_cast<std::ptrdiff_t>(slot));
  }

  void exchange(std::size_t slot) {
    std::vector<double> weight(z_.size());
    for (double& entry : weight) entry = 4 * random_.uniform() - 2;
    factor_.exchange(static_cast<Index>(slot), weight);
    for (std::size_t j = 0; j < z_.size(); ++j) {
      if (j == slot) continue;
      for (std::size_t i = 0; i < q_.size(); ++i) z_[j][i] += weight[j] * z_[slot][i];
    }
    z_.erase(z_.begin() + static_cast<std::ptrdiff_t>(slot));
  }

  [[nodiscard]] std::size_t size() const { return z_.size(); }

  // max |H (R'R)^-1 b - b| for b of ones.
  [[nodiscard]] double residual() const {
    std::vector<double> x(z_.size(), 1.0);
    factor_.solve_transposed(x);
    factor_.solve(x);
    const Matrix h = product(z_, q_);
    double worst = 0;
    for (const auto& row : h) {
      double sum = -1;
      for (std::size_t j = 0; j < x.size(); ++j) sum += row[j] * x[j];
      worst = std::max(worst, std::abs(sum));
    }
    return worst;
  }

 private:
  RandomStream& random_;
  Matrix q_, z_;
  ReducedHessian<double> factor_;
};

TEST(ReducedHessian, SolvesAfterAnySequenceOfChanges) {
  for (std::uint64_t seed = 0; seed < 20; ++seed) {
    RandomStream random(seed, "reduced hessian");
    Tracked tracked(random, 12);
    for (int change = 0; change < 60; ++change) {
      const double draw = random.uniform();
      const auto slot = static_cast<std::size_t>(random.uniform() * static_cast<double>(tracked.size()));
      if (tracked.size() < 2 || (tracked.size() < 7 && draw < 0.5)) {
        tracked.append();
      } else if (draw < 0.75) {
        tracked.exchange(slot);
      } else {
        tracked.remove(slot);
      }
      ASSERT_LT(tracked.residual(), 1e-5) << "seed " << seed << ", change " << change;
    }
  }
}

// A variable without curvature of its own makes the factor singular until the next exchange takes its direction away.
TEST(ReducedHessian, IsRegularAgainOnceTheFlatDirectionIsGone) {
  ReducedHessian<double> factor;
  factor.append({}, 4);
  factor.append({2}, 1);
  factor.append({1, -1}, 0);
  EXPECT_EQ(factor.diagonal_ratio(), 0);
  factor.exchange(0, {0, 0.5, -3});
  ASSERT_EQ(factor.size(), 2);
  EXPECT_GT(factor.diagonal_ratio(), 0.01);
  // R = (2 2 1; 0 1 -1; 0 0 0), T = (0.5 -3; 1 0; 0 1): RT = (3 -5; 1 -1), H = (10 -16; -16 26).
  std::vector<double> x{10 * 2 - 16 * 1.0, -16 * 2 + 26 * 1.0};
  factor.solve_transposed(x);
  factor.solve(x);
  EXPECT_NEAR(x[0], 2, 1e-10);
  EXPECT_NEAR(x[1], 1, 1e-10);
}

}  // namespace
}  // namespace zorvex
