// Basis factorization against the definition: residuals of solves, updates against fresh factorizations, and the
// answers on dependent columns, small factor space and interruption.
#include "simplex/basis_lu.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <new>
#include <numeric>
#include <string>

#include "base/random_stream.hpp"

namespace zorvex {
namespace {

constexpr double kMarkowitz = 0.1;

// A matrix of candidate columns and a basis drawn from it.
template <class Real>
struct Instance {
  Index m = 0;
  std::vector<Offset> start{0};
  std::vector<Index> index;
  std::vector<Real> value;
  std::vector<Index> head;

  [[nodiscard]] Index num_cols() const { return static_cast<Index>(start.size()) - 1; }
  [[nodiscard]] ColumnView<Real> view() const { return {m, num_cols(), start.data(), index.data(), value.data()}; }
  void entry(Index row, double v) {
    index.push_back(row);
    value.push_back(static_cast<Real>(v));
  }
  void end_column() { start.push_back(static_cast<Offset>(index.size())); }

  template <class Visit>
  void visit_column(Index variable, Visit visit) const {
    if (variable >= num_cols()) {
      visit(variable - num_cols(), Real(1));
      return;
    }
    for (Offset k = start[variable]; k < start[variable + 1]; ++k) visit(index[k], value[k]);
  }
};

struct Shape {
  const char* name;
  Index m;
  double logicals;      // share of logical columns
  double triangular;    // share of the structurals that are part of a permuted triangular block
  Index extra;          // off-diagonal entries of a triangular column
  Index nucleus_extra;  // off-diagonal entries of any other column
  double log10_spread;  // magnitudes 10^(-spread..spread)
};

const Shape kShapes[] = {
    {"one", 1, 0, 1, 0, 0, 0},
    {"one_logical", 1, 1, 1, 0, 0, 0},
    {"permuted_identity", 60, 0, 1, 0, 0, 0},
    {"all_logical", 50, 1, 1, 0, 0, 0},
    {"triangular", 300, 0.3, 1, 3, 0, 1},
    {"near_triangular", 800, 0.4, 0.9, 3, 3, 1},
    {"small_dense_nucleus", 90, 0.2, 0.3, 3, 40, 0},
    {"dense", 60, 0, 0, 0, 60, 0},
    {"dense_tail", 150, 0.1, 0.1, 3, 80, 0.5},
    {"sparse_nucleus", 1000, 0.1, 0.1, 2, 2, 0.5},
    {"badly_scaled", 400, 0.3, 0.6, 3, 4, 4},
    {"hypersparse", 5000, 0.6, 0.95, 2, 2, 1},
};

double magnitude(RandomStream& random, double spread) {
  const double size = std::pow(10.0, (2 * random.uniform() - 1) * spread) * (1 + random.uniform());
  return random.below(2) == 0 ? size : -size;
}

std::vector<Index> permutation(Index n, RandomStream& random) {
  std::vector<Index> order(n);
  std::iota(order.begin(), order.end(), 0);
  for (Index i = n - 1; i > 0; --i) std::swap(order[i], order[random.below(i + 1)]);
  return order;
}

// One column with a diagonal entry in row_of[k]; triangular columns have their other entries in earlier rows.
template <class Real>
void append_column(Instance<Real>& instance, const Shape& shape, const std::vector<Index>& row_of, Index k,
                   bool triangular, RandomStream& random) {
  std::vector<Index> rows{k};
  const Index extra = triangular ? shape.extra : shape.nucleus_extra;
  const Index range = triangular ? k : shape.m;
  for (Index e = 0; e < extra && range > 0; ++e) rows.push_back(static_cast<Index>(random.below(range)));
  std::sort(rows.begin() + 1, rows.end());
  rows.erase(std::unique(rows.begin() + 1, rows.end()), rows.end());
  rows.erase(std::remove(rows.begin() + 1, rows.end(), k), rows.end());
  for (const Index row : rows) {
    // A heavier diagonal keeps the condition of the basis within what residual tests can judge.
    instance.entry(row_of[row], magnitude(random, shape.log10_spread) * (row == k ? 3 : 1));
  }
  instance.end_column();
}

template <class Real>
Instance<Real> make_instance(const Shape& shape, RandomStream& random) {
  Instance<Real> instance;
  instance.m = shape.m;
  const std::vector<Index> row_of = permutation(shape.m, random);
  std::vector<Index> logical_rows;
  for (Index k = 0; k < shape.m; ++k) {
    if (random.uniform() < shape.logicals) {
      logical_rows.push_back(row_of[k]);
      continue;
    }
    instance.head.push_back(instance.num_cols());
    append_column(instance, shape, row_of, k, random.uniform() < shape.triangular, random);
  }
  for (const Index row : logical_rows) instance.head.push_back(instance.num_cols() + row);
  const std::vector<Index> shuffle = permutation(shape.m, random);
  std::vector<Index> head(shape.m);
  for (Index k = 0; k < shape.m; ++k) head[k] = instance.head[shuffle[k]];
  instance.head = std::move(head);
  return instance;
}

template <class Real>
LuStatus factor(BasisLu<Real>& lu, const Instance<Real>& instance) {
  LuStatus status = lu.factor(instance.view(), instance.head, kMarkowitz, StopToken());
  while (status == LuStatus::kSpaceTooSmall) {
    lu.grow_space();
    status = lu.factor(instance.view(), instance.head, kMarkowitz, StopToken());
  }
  return status;
}

template <class Real>
Scattered<Real> random_vector(Index m, Index nonzeros, RandomStream& random) {
  Scattered<Real> x;
  x.resize(m);
  for (Index k = 0; k < nonzeros; ++k) {
    const auto i = static_cast<Index>(random.below(m));
    if (x.value[i] != Real(0)) continue;
    x.value[i] = static_cast<Real>(magnitude(random, 0.5));
    x.index.push_back(i);
  }
  return x;
}

// The index list covers the nonzeros once each.
template <class Real>
void expect_consistent(const Scattered<Real>& x) {
  if (x.dense) return;
  std::vector<int> seen(x.value.size(), 0);
  for (const Index i : x.index) EXPECT_EQ(++seen[i], 1);
  for (Index i = 0; i < x.size(); ++i) EXPECT_TRUE(seen[i] == 1 || x.value[i] == Real(0)) << i;
}

// Largest |B x - b| over rows, and |B' y - c| over positions, relative to the sizes of the products involved.
template <class Real>
double ftran_residual(const Instance<Real>& instance, const Scattered<Real>& x, const Scattered<Real>& rhs) {
  std::vector<Extended> sum(instance.m), size(instance.m);
  for (Index i = 0; i < instance.m; ++i) sum[i] = -rhs.value[i];
  Extended scale = 1;
  for (Index pos = 0; pos < instance.m; ++pos) {
    instance.visit_column(instance.head[pos], [&](Index row, Real v) {
      const Extended product = static_cast<Extended>(v) * x.value[pos];
      sum[row] += product;
      scale = std::max(scale, std::abs(product));
    });
  }
  Extended worst = 0;
  for (Index i = 0; i < instance.m; ++i) worst = std::max(worst, std::abs(sum[i]));
  return static_cast<double>(worst / scale);
}

template <class Real>
double btran_residual(const Instance<Real>& instance, const Scattered<Real>& y, const Scattered<Real>& rhs) {
  Extended worst = 0, scale = 1;
  for (Index pos = 0; pos < instance.m; ++pos) {
    Extended sum = -rhs.value[pos];
    instance.visit_column(instance.head[pos], [&](Index row, Real v) {
      const Extended product = static_cast<Extended>(v) * y.value[row];
      sum += product;
      scale = std::max(scale, std::abs(product));
    });
    worst = std::max(worst, std::abs(sum));
  }
  return static_cast<double>(worst / scale);
}

template <class Real>
double max_difference(const Scattered<Real>& a, const Scattered<Real>& b) {
  Real worst = 0, scale = 1;
  for (Index i = 0; i < a.size(); ++i) {
    worst = std::max(worst, std::abs(a.value[i] - b.value[i]));
    scale = std::max(scale, std::abs(a.value[i]));
  }
  return static_cast<double>(worst / scale);
}

template <class Real>
constexpr double kResidual = 1e-9;
template <>
constexpr double kResidual<Extended> = 1e-13;

// Residuals of both solves with few and many nonzeros, and the same answer whether the input is listed or dense.
template <class Real>
void expect_solves(BasisLu<Real>& lu, const Instance<Real>& instance, RandomStream& random,
                   double tolerance = kResidual<Real>) {
  for (const Index nonzeros : {Index{1}, Index{3}, instance.m}) {
    const Scattered<Real> rhs = random_vector<Real>(instance.m, nonzeros, random);
    Scattered<Real> dense_rhs = rhs;
    dense_rhs.dense = true;
    dense_rhs.index.clear();

    Scattered<Real> x = rhs, dense_x = dense_rhs;
    lu.ftran(x);
    lu.ftran(dense_x);
    expect_consistent(x);
    EXPECT_LT(ftran_residual(instance, x, rhs), tolerance) << "ftran, nonzeros " << nonzeros;
    EXPECT_LT(max_difference(x, dense_x), tolerance);

    Scattered<Real> y = rhs, dense_y = dense_rhs;
    lu.btran(y);
    lu.btran(dense_y);
    expect_consistent(y);
    EXPECT_LT(btran_residual(instance, y, rhs), tolerance) << "btran, nonzeros " << nonzeros;
    EXPECT_LT(max_difference(y, dense_y), tolerance);
  }
}

// A random position among those within a factor of ten of the largest magnitude.
template <class Real>
Index pick_leaving(const Scattered<Real>& column, RandomStream& random) {
  Real largest = 0;
  for (const Real v : column.value) largest = std::max(largest, std::abs(v));
  std::vector<Index> candidates;
  for (Index i = 0; i < column.size(); ++i) {
    if (std::abs(column.value[i]) >= largest / 10) candidates.push_back(i);
  }
  return candidates[random.below(static_cast<std::int64_t>(candidates.size()))];
}

template <class Real>
class BasisLuTest : public testing::Test {};
using Reals = testing::Types<double, Extended>;
TYPED_TEST_SUITE(BasisLuTest, Reals);

TYPED_TEST(BasisLuTest, SolvesEveryShape) {
  for (const Shape& shape : kShapes) {
    RandomStream random(1, shape.name);
    for (int trial = 0; trial < 4; ++trial) {
      SCOPED_TRACE(std::string(shape.name) + " " + std::to_string(trial));
      const Instance<TypeParam> instance = make_instance<TypeParam>(shape, random);
      BasisLu<TypeParam> lu;
      lu.reserve(instance.m, static_cast<Offset>(instance.index.size()));
      ASSERT_EQ(factor(lu, instance), LuStatus::kOk);
      for (int repeat = 0; repeat < 5; ++repeat) expect_solves(lu, instance, random);
    }
  }
}

// A long staircase at the loosest threshold: entries would grow by many orders of magnitude if nothing watched them.
TYPED_TEST(BasisLuTest, GrowthIsContained) {
  RandomStream random(7, "growth");
  Instance<TypeParam> instance;
  instance.m = 3000;
  for (Index k = 0; k < instance.m; ++k) {
    instance.entry(k, magnitude(random, 1));
    for (Index row = std::max<Index>(0, k - 25); row < std::min(instance.m, k + 26); ++row) {
      if (row != k && random.below(8) == 0) instance.entry(row, magnitude(random, 1.5));
    }
    instance.end_column();
  }
  instance.head.resize(instance.m);
  std::iota(instance.head.begin(), instance.head.end(), 0);
  BasisLu<TypeParam> lu;
  while (lu.factor(instance.view(), instance.head, 1e-4, StopToken()) == LuStatus::kSpaceTooSmall) lu.grow_space();
  expect_solves(lu, instance, random, 0.01 * kResidual<TypeParam>);
}

TYPED_TEST(BasisLuTest, EmptyBasis) {
  Instance<TypeParam> instance;
  BasisLu<TypeParam> lu;
  lu.reserve(0, 0);
  ASSERT_EQ(factor(lu, instance), LuStatus::kOk);
  Scattered<TypeParam> x;
  x.resize(0);
  lu.ftran(x);
  lu.btran(x);
  EXPECT_TRUE(x.value.empty());
}

// Hundreds of random exchanges; every solve must agree with the definition of the present basis, and now and then with
// a fresh factorization.
TYPED_TEST(BasisLuTest, UpdatesFollowExchanges) {
  for (const Shape& shape : kShapes) {
    if (shape.m < 50 || shape.log10_spread > 2) continue;
    SCOPED_TRACE(shape.name);
    RandomStream random(2, shape.name);
    Instance<TypeParam> instance = make_instance<TypeParam>(shape, random);
    const std::vector<Index> row_of = permutation(shape.m, random);
    const Index old_cols = instance.num_cols();
    for (Index k = 0; k < 300; ++k) {
      append_column(instance, shape, row_of, static_cast<Index>(random.below(shape.m)), k % 2 == 0, random);
    }
    for (Index& variable : instance.head) {
      if (variable >= old_cols) variable += instance.num_cols() - old_cols;
    }
    BasisLu<TypeParam> lu;
    lu.reserve(instance.m, static_cast<Offset>(instance.index.size()));
    ASSERT_EQ(factor(lu, instance), LuStatus::kOk);
    int updates = 0, refactored = 0;
    RandomStream draws(7, "companions");
    for (Index k = 0; k < 300; ++k) {
      const Index entering = old_cols + k;
      Scattered<TypeParam> column;
      column.resize(instance.m);
      instance.visit_column(entering, [&](Index row, TypeParam v) {
        column.value[row] = v;
        column.index.push_back(row);
      });
      if (k % 2 == 0) {
        lu.ftran(column, true);
      } else {
        Scattered<TypeParam> other = random_vector<TypeParam>(instance.m, instance.m, draws), alone = other;
        lu.ftran(alone);
        lu.ftran_pair(column, true, other);
        ASSERT_LT(max_difference(other, alone), 1e3 * kResidual<TypeParam>);
      }
      const Index leaving = pick_leaving(column, random);
      if (k % 3 != 0) {  // usually the caller has just computed this row
        Scattered<TypeParam> row;
        row.resize(instance.m);
        row.value[leaving] = 1;
        row.index.push_back(leaving);
        lu.btran(row);
      }
      const LuUpdateStatus status = lu.update(leaving, column.value[leaving]);
      instance.head[leaving] = entering;
      if (status != LuUpdateStatus::kOk) {
        ++refactored;
        ASSERT_EQ(factor(lu, instance), LuStatus::kOk);
      } else {
        ++updates;
      }
      if (k % 10 == 9) expect_solves(lu, instance, random, 1e3 * kResidual<TypeParam>);  // rounding adds up
      if (k % 100 == 99) {
        BasisLu<TypeParam> fresh;
        ASSERT_EQ(factor(fresh, instance), LuStatus::kOk);
        Scattered<TypeParam> a = random_vector<TypeParam>(instance.m, 5, random), b = a;
        lu.ftran(a);
        fresh.ftran(b);
        EXPECT_LT(max_difference(a, b), 1e4 * kResidual<TypeParam>);
      }
    }
    EXPECT_GT(updates, 290) << refactored;
  }
}

TYPED_TEST(BasisLuTest, WrongPivotIsRefused) {
  RandomStream random(3, "wrong_pivot");
  const Instance<TypeParam> instance = make_instance<TypeParam>(kShapes[5], random);
  BasisLu<TypeParam> lu;
  ASSERT_EQ(factor(lu, instance), LuStatus::kOk);
  Scattered<TypeParam> column = random_vector<TypeParam>(instance.m, 4, random);
  lu.ftran(column, true);
  const auto largest =
      static_cast<Index>(std::max_element(column.value.begin(), column.value.end()) - column.value.begin());
  EXPECT_EQ(lu.update(largest, column.value[largest] * TypeParam(1.001)), LuUpdateStatus::kUnstable);
  expect_solves(lu, instance, random);  // the refused update left the factors as they were
  EXPECT_EQ(lu.num_updates(), 0);
}

// Duplicated, zero and combined columns; the replacement by the logicals named must give a basis.
TYPED_TEST(BasisLuTest, DependentColumnsAreReported) {
  for (const Shape& shape : kShapes) {
    if (shape.m < 50) continue;
    for (const Index deficiency : {1, 4}) {
      SCOPED_TRACE(std::string(shape.name) + " " + std::to_string(deficiency));
      RandomStream random(4, shape.name);
      Instance<TypeParam> instance = make_instance<TypeParam>(shape, random);
      const std::vector<Index> victims = permutation(instance.m, random);
      for (Index k = 0; k < deficiency; ++k) {
        instance.head[victims[k]] = instance.head[victims[k + 10]];  // a copy of another basic column
      }
      BasisLu<TypeParam> lu;
      ASSERT_EQ(factor(lu, instance), LuStatus::kSingular);
      ASSERT_EQ(static_cast<Index>(lu.deficiencies().size()), deficiency);
      for (const LuDeficiency& d : lu.deficiencies()) instance.head[d.position] = instance.num_cols() + d.row;
      ASSERT_EQ(factor(lu, instance), LuStatus::kOk);
      expect_solves(lu, instance, random);
    }
  }
}

TYPED_TEST(BasisLuTest, NumericalDependenceIsFound) {
  Instance<TypeParam> instance;  // third column = first + second, empty fourth
  instance.m = 4;
  const double columns[4][4] = {{1, 2, 0, 3}, {0.1, 0, 5, 1}, {1.1, 2, 5, 4}, {0, 0, 0, 0}};
  for (const auto& column : columns) {
    for (Index i = 0; i < 4; ++i) {
      if (column[i] != 0) instance.entry(i, column[i]);
    }
    instance.end_column();
  }
  // The sum is taken in the type's own arithmetic.
  instance.value[6] = instance.value[0] + instance.value[3];
  instance.head = {0, 1, 2, 3};
  BasisLu<TypeParam> lu;
  ASSERT_EQ(factor(lu, instance), LuStatus::kSingular);
  EXPECT_EQ(lu.deficiencies().size(), 2U);
}

TYPED_TEST(BasisLuTest, SpaceGrowsByHalf) {
  RandomStream random(5, "space");
  const Shape shape{"space", 400, 0, 0, 0, 60, 0};
  const Instance<TypeParam> instance = make_instance<TypeParam>(shape, random);
  BasisLu<TypeParam> lu;
  EXPECT_TRUE(lu.reserve(1, 1, kUsualSpaceSteps + 2));
  const Offset ample = lu.factor_space();
  EXPECT_TRUE(lu.reserve(1, 1));
  EXPECT_NEAR(static_cast<double>(ample), 2.25 * static_cast<double>(lu.factor_space()), 3);
  EXPECT_EQ(lu.growth_count(), 0);
  Offset space = lu.factor_space();
  Index growths = 0;
  while (lu.factor(instance.view(), instance.head, kMarkowitz, StopToken()) == LuStatus::kSpaceTooSmall) {
    lu.grow_space();
    EXPECT_EQ(lu.factor_space(), space + space / 2);
    EXPECT_EQ(lu.growth_count(), ++growths);
    space = lu.factor_space();
  }
  EXPECT_GT(growths, 3);
  expect_solves(lu, instance, random);
}

TYPED_TEST(BasisLuTest, ImpossibleSpaceThrows) {
  BasisLu<TypeParam> lu;
  EXPECT_THROW(lu.reserve(1000, Offset{1} << 60), std::bad_alloc);
  EXPECT_THROW(lu.reserve(1, 1, 2000000000), std::bad_alloc);
}

TYPED_TEST(BasisLuTest, StopsWhenAsked) {
  RandomStream random(6, "stop");
  const Instance<TypeParam> instance = make_instance<TypeParam>(kShapes[9], random);
  BasisLu<TypeParam> lu;
  std::atomic<int> terminate{1};
  EXPECT_EQ(lu.factor(instance.view(), instance.head, kMarkowitz, StopToken(&terminate, kInf)), LuStatus::kInterrupted);
  terminate = 0;
  ASSERT_EQ(lu.factor(instance.view(), instance.head, kMarkowitz, StopToken(&terminate, kInf)), LuStatus::kOk);
  expect_solves(lu, instance, random);
}

}  // namespace
}  // namespace zorvex
