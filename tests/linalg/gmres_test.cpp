// Flexible GMRES against known solutions, with exact, rough and changing preconditioners.
#include "linalg/gmres.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "base/random_stream.hpp"
#include "base/types.hpp"

namespace zorvex {
namespace {

struct System {
  std::vector<std::vector<double>> a;
  std::vector<double> x, rhs;
};

System random_system(RandomStream& random, std::size_t n) {
  System system{std::vector<std::vector<double>>(n, std::vector<double>(n)), std::vector<double>(n),
                std::vector<double>(n, 0)};
  for (std::size_t i = 0; i < n; ++i) {
    system.x[i] = 2 * random.uniform() - 1;
    for (std::size_t j = 0; j < n; ++j) system.a[i][j] = random.uniform() - 0.5 + (i == j ? 4 : 0);
  }
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < n; ++j) system.rhs[i] += system.a[i][j] * system.x[j];
  }
  return system;
}

GmresOperators operators_of(const System& system, double shift) {
  GmresOperators operators;
  operators.apply = [&system](const std::vector<double>& x, std::vector<double>& y) {
    y.assign(x.size(), 0);
    for (std::size_t i = 0; i < x.size(); ++i) {
      for (std::size_t j = 0; j < x.size(); ++j) y[i] += system.a[i][j] * x[j];
    }
  };
  operators.precondition = [&system, shift](const std::vector<double>& r, std::vector<double>& z) {
    z = r;
    for (std::size_t i = 0; i < r.size(); ++i) z[i] /= system.a[i][i] + shift;
  };
  return operators;
}

TEST(Gmres, FindsTheSolutionWithinAsManyIterationsAsUnknowns) {
  RandomStream random(31, "gmres");
  for (const std::size_t n : {1u, 2u, 7u, 30u}) {
    for (const double shift : {0.0, 3.0}) {
      const System system = random_system(random, n);
      std::vector<double> x(n, 0);
      const double norm = flexible_gmres(operators_of(system, shift), system.rhs, 1e-12, static_cast<int>(n), x);
      EXPECT_LE(norm, 1e-9);
      for (std::size_t k = 0; k < n; ++k) EXPECT_NEAR(x[k], system.x[k], 1e-8);
    }
  }
}

TEST(Gmres, PredictsTheResidualOfAnEarlyStop) {
  RandomStream random(32, "gmres");
  const System system = random_system(random, 40);
  const GmresOperators operators = operators_of(system, 0);
  double last = kInf;
  for (const int iterations : {1, 3, 6}) {
    std::vector<double> x(40, 0), product;
    const double predicted = flexible_gmres(operators, system.rhs, 1e-14, iterations, x);
    operators.apply(x, product);
    double sum = 0;
    for (std::size_t k = 0; k < x.size(); ++k) sum += std::pow(system.rhs[k] - product[k], 2);
    EXPECT_NEAR(predicted, std::sqrt(sum), 1e-10);
    EXPECT_LT(predicted, last);
    last = predicted;
  }
}

TEST(Gmres, LeavesWhatIsGoodEnoughOrHopeless) {
  RandomStream random(33, "gmres");
  const System system = random_system(random, 5);
  std::vector<double> x(5, 7);
  flexible_gmres(operators_of(system, 0), std::vector<double>(5, 1e-9), 1e-6, 10, x);
  EXPECT_EQ(x, std::vector<double>(5, 7));
  flexible_gmres(operators_of(system, 0), std::vector<double>(5, std::nan("")), 1e-6, 10, x);
  EXPECT_EQ(x, std::vector<double>(5, 7));
}

}  // namespace
}  // namespace zorvex
