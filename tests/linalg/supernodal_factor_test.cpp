// Orderings, symbolic analysis and factorization against plain dense elimination on random quasi-definite matrices.
#include "linalg/supernodal_factor.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <string>

#include "base/random_stream.hpp"
#include "linalg/ordering.hpp"

namespace zorvex {
namespace {

struct Sample {
  SparseMatrix lower;
  std::vector<std::int8_t> sign;
  std::vector<double> smallest;
};

using Dense = std::vector<std::vector<Extended>>;

// [-F B'; B G] with diagonally dominant F and G, unknowns of both signs mixed. `kind` 0 random, 1 banded, 2 arrow,
// 3 grid, 4 dense, 5 with cliques.
Sample random_sample(RandomStream& random, Index n, int kind) {
  Sample sample;
  std::vector<std::set<Index>> rows(static_cast<std::size_t>(n));  // below the diagonal, by column
  const auto link = [&](Index a, Index b) {
    if (a != b) rows[std::min(a, b)].insert(std::max(a, b));
  };
  const auto side = static_cast<Index>(std::sqrt(n));
  for (Index k = 0; k < n; ++k) {
    if (kind == 0) {
      for (int e = 0; e < 3; ++e) link(k, static_cast<Index>(random.below(n)));
    } else if (kind == 1) {
      for (Index e = 1; e < 5; ++e) link(k, std::min(n - 1, k + e));
    } else if (kind == 2) {
      link(k, 0);
      link(k, n / 2);
    } else if (kind == 3) {
      if (k + side < n) link(k, k + side);
      if (k + 1 < n && (k + 1) % side != 0) link(k, k + 1);
    } else if (kind == 4) {
      for (Index e = 0; e < k; ++e) link(k, e);
    } else if (k % 7 == 0) {
      for (Index e = k; e < std::min(n, k + 9); ++e) {
        for (Index f = e; f < std::min(n, k + 9); ++f) link(e, f);
      }
      link(k, static_cast<Index>(random.below(n)));
    }
  }
  for (Index k = 0; k < n; ++k) sample.sign.push_back(random.below(3) == 0 ? -1 : 1);
  sample.smallest.assign(static_cast<std::size_t>(n), 0);
  sample.lower.num_rows = n;
  std::vector<double> weight(static_cast<std::size_t>(n), 0.5);
  SparseMatrix& lower = sample.lower;
  std::vector<Offset> diagonal;
  for (Index k = 0; k < n; ++k) {
    std::vector<Index> index{k};
    std::vector<double> value{0};
    for (const Index row : rows[k]) {
      const double entry = 2 * random.uniform() - 1;
      index.push_back(row);
      value.push_back(entry);
      // Entries between unknowns of different sign may be as large as they like.
      if (sample.sign[row] == sample.sign[k]) {
        weight[row] += std::abs(entry);
        weight[k] += std::abs(entry);
      }
    }
    diagonal.push_back(lower.num_nonzeros());
    lower.append_col(index.data(), value.data(), static_cast<Index>(index.size()));
  }
  for (Index k = 0; k < n; ++k) lower.value[diagonal[k]] = sample.sign[k] * weight[k];
  return sample;
}

std::vector<double> product(const SparseMatrix& lower, const std::vector<double>& x) {
  std::vector<Extended> sum(x.size(), 0);
  for (Index col = 0; col < lower.num_cols; ++col) {
    for (Offset k = lower.begin(col); k < lower.end(col); ++k) {
      const Index row = lower.index[k];
      sum[row] += Extended(lower.value[k]) * x[col];
      if (row != col) sum[col] += Extended(lower.value[k]) * x[row];
    }
  }
  return {sum.begin(), sum.end()};
}

// Entries of the factor column by column, by elimination on the pattern.
std::vector<Offset> eliminated_counts(const SymmetricPattern& pattern, const std::vector<Index>& order) {
  const auto n = static_cast<std::size_t>(pattern.size());
  std::vector<std::vector<char>> linked(n, std::vector<char>(n, 0));
  for (std::size_t v = 0; v < n; ++v) {
    for (Offset e = pattern.start[v]; e < pattern.start[v + 1]; ++e) linked[v][pattern.index[e]] = 1;
  }
  std::vector<char> gone(n, 0);
  std::vector<Offset> counts;
  for (const Index pivot : order) {
    std::vector<std::size_t> left;
    for (std::size_t v = 0; v < n; ++v) {
      if (!gone[v] && linked[pivot][v]) left.push_back(v);
    }
    gone[pivot] = 1;
    for (const std::size_t a : left) {
      for (const std::size_t b : left) linked[a][b] = a != b;
    }
    counts.push_back(static_cast<Offset>(left.size()) + 1);
  }
  return counts;
}

bool is_permutation_of_all(const std::vector<Index>& order, Index n) {
  std::vector<Index> sorted = order;
  std::sort(sorted.begin(), sorted.end());
  for (Index k = 0; k < n; ++k) {
    if (sorted[k] != k) return false;
  }
  return static_cast<Index>(sorted.size()) == n;
}

std::vector<Index> ordering(const SymmetricPattern& pattern, int which) {
  if (which == 0) return order_minimum_degree(pattern);
  std::vector<Index> order;
  EXPECT_TRUE(order_nested_dissection(
      pattern, [] { return true; }, order));
  return order;
}

TEST(EliminationTree, CountsEqualThoseOfPlainElimination) {
  RandomStream random(3, "elimination tree");
  for (int trial = 0; trial < 120; ++trial) {
    const auto n = static_cast<Index>(1 + random.below(60));
    const SymmetricPattern pattern = pattern_of_lower(random_sample(random, n, trial % 6).lower);
    for (const int which : {0, 1}) {
      const EliminationTree tree = make_elimination_tree(pattern, ordering(pattern, which));
      ASSERT_TRUE(is_permutation_of_all(tree.order, n));
      EXPECT_EQ(tree.counts, eliminated_counts(pattern, tree.order)) << "trial " << trial << " order " << which;
    }
  }
}

TEST(Ordering, DoesNotDisturbTheRandomNumbersOfTheProgram) {
  RandomStream random(5, "ordering");
  const SymmetricPattern pattern = pattern_of_lower(random_sample(random, 900, 3).lower);
  std::srand(17);
  const int expected = std::rand();
  std::srand(17);
  std::vector<Index> first, second;
  ASSERT_TRUE(order_nested_dissection(
      pattern, [] { return true; }, first));
  EXPECT_EQ(std::rand(), expected);
  ASSERT_TRUE(order_nested_dissection(
      pattern, [] { return true; }, second));
  EXPECT_EQ(first, second);
}

// Asked often enough that a wait between two questions is short, and no answer is overheard.
TEST(Ordering, NestedDissectionStopsWhenAsked) {
  RandomStream random(6, "ordering");
  const SymmetricPattern pattern = pattern_of_lower(random_sample(random, 2500, 3).lower);
  int questions = 0;
  std::vector<Index> order;
  ASSERT_TRUE(order_nested_dissection(
      pattern, [&] { return ++questions > 0; }, order));
  EXPECT_GT(questions, 2500 / 200);
  for (int last = 1; last <= questions; ++last) {
    int asked = 0;
    EXPECT_FALSE(order_nested_dissection(
        pattern, [&] { return ++asked < last; }, order));
    EXPECT_EQ(asked, last);
  }
}

TEST(SupernodalFactor, SolvesWhatItFactored) {
  RandomStream random(7, "supernodal factor");
  for (int trial = 0; trial < 150; ++trial) {
    const auto n = static_cast<Index>(1 + random.below(trial % 10 == 0 ? 700 : 80));
    const int kind = trial % 10 == 0 && trial % 6 == 4 ? 5 : trial % 6;
    const Sample sample = random_sample(random, n, kind);
    const SymmetricPattern pattern = pattern_of_lower(sample.lower);
    std::vector<double> x(static_cast<std::size_t>(n));
    for (double& value : x) value = 2 * random.uniform() - 1;
    const std::vector<double> rhs = product(sample.lower, x);
    for (const int which : {0, 1}) {
      WorkerPool pool(1 + trial % 2);
      const EliminationTree tree = make_elimination_tree(pattern, ordering(pattern, which));
      const bool dense = trial % 3 == 0;
      SupernodalFactor factor(analyze_factor(sample.lower, tree, dense), pool);
      if (dense && n > 300) {
        EXPECT_LT(factor.symbolic().num_supernodes(), analyze_factor(sample.lower, tree).num_supernodes());
      }
      ASSERT_TRUE(is_permutation_of_all(factor.symbolic().order, n));
      EXPECT_GE(static_cast<double>(factor.symbolic().factor_size()), tree.factor_nonzeros());
      ASSERT_EQ(factor.factor(sample.lower.value, sample.sign, sample.smallest, {}), SolveStatus::kLoaded);
      EXPECT_EQ(factor.replaced_pivots(), 0);
      std::vector<double> solution = rhs;
      factor.solve(solution);
      for (Index k = 0; k < n; ++k) {
        ASSERT_NEAR(solution[k], x[k], 1e-9) << "trial " << trial << " order " << which << " entry " << k;
      }
    }
  }
}

// Large enough for wide panels, several update blocks and shared fronts.
TEST(SupernodalFactor, NumberOfThreadsDoesNotChangeTheResult) {
  RandomStream random(11, "threads");
  for (const auto& [n, kind] : {std::pair<Index, int>{3600, 3}, {700, 4}, {4000, 0}}) {
    const Sample sample = random_sample(random, n, kind);
    const SymmetricPattern pattern = pattern_of_lower(sample.lower);
    const EliminationTree tree = make_elimination_tree(pattern, order_minimum_degree(pattern));
    std::vector<double> x(static_cast<std::size_t>(n), 1.0);
    const std::vector<double> rhs = product(sample.lower, x);
    std::vector<std::vector<double>> solutions;
    for (const int threads : {1, 2, 4}) {
      WorkerPool pool(threads);
      SupernodalFactor factor(analyze_factor(sample.lower, tree), pool);
      ASSERT_EQ(factor.factor(sample.lower.value, sample.sign, sample.smallest, {}), SolveStatus::kLoaded);
      solutions.push_back(rhs);
      factor.solve(solutions.back());
    }
    for (Index k = 0; k < n; ++k) ASSERT_NEAR(solutions[0][k], 1, 1e-8) << "kind " << kind;
    EXPECT_EQ(solutions[0], solutions[1]) << "kind " << kind;
    EXPECT_EQ(solutions[0], solutions[2]) << "kind " << kind;
  }
}

TEST(SupernodalFactor, DependentUnknownsComeOutAsZero) {
  // Rows 0 and 1 are equal: the second of them has nothing left on its diagonal.
  SparseMatrix lower;
  lower.num_rows = 3;
  const Index rows0[] = {0, 1, 2}, rows1[] = {1, 2}, rows2[] = {2};
  const double values0[] = {2, 2, 1}, values1[] = {2, 1}, values2[] = {5};
  lower.append_col(rows0, values0, 3);
  lower.append_col(rows1, values1, 2);
  lower.append_col(rows2, values2, 1);
  const std::vector<std::int8_t> sign{1, 1, 1};
  const std::vector<double> smallest{1e-12, 1e-12, 1e-12};
  WorkerPool pool(1);
  const SymmetricPattern pattern = pattern_of_lower(lower);
  SupernodalFactor factor(analyze_factor(lower, make_elimination_tree(pattern, {0, 1, 2})), pool);
  ASSERT_EQ(factor.factor(lower.value, sign, smallest, {}), SolveStatus::kLoaded);
  EXPECT_EQ(factor.replaced_pivots(), 1);
  std::vector<double> x{3, 3, 6};  // consistent
  factor.solve(x);
  EXPECT_NEAR(2 * x[0] + 2 * x[1] + x[2], 3, 1e-12);
  EXPECT_NEAR(x[0] + x[1] + 5 * x[2], 6, 1e-12);
  EXPECT_NEAR(std::min(std::abs(x[0]), std::abs(x[1])), 0, 1e-12);
}

TEST(SupernodalFactor, StopsWhenAsked) {
  RandomStream random(13, "stop");
  const Sample sample = random_sample(random, 900, 4);
  const SymmetricPattern pattern = pattern_of_lower(sample.lower);
  const EliminationTree tree = make_elimination_tree(pattern, order_minimum_degree(pattern));
  for (const int threads : {1, 2}) {
    WorkerPool pool(threads);
    SupernodalFactor factor(analyze_factor(sample.lower, tree), pool);
    const std::atomic<int> terminate{1};
    EXPECT_EQ(factor.factor(sample.lower.value, sample.sign, sample.smallest, {&terminate, kInf}),
              SolveStatus::kInterrupted);
    ASSERT_EQ(factor.factor(sample.lower.value, sample.sign, sample.smallest, {}), SolveStatus::kLoaded);
    std::vector<double> x(900, 1.0);
    std::vector<double> solution = product(sample.lower, x);
    factor.solve(solution);
    for (const double value : solution) ASSERT_NEAR(value, 1, 1e-9);
  }
}

}  // namespace
}  // namespace zorvex
