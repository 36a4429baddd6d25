// Basis queries against a dense inverse in long double, in both precisions, and the calls that must be refused.
#include <cmath>

#include "base/random_stream.hpp"
#include "opt/lp_as_model.hpp"
#include "support/random_lp.hpp"

namespace zorvex::testing {
namespace {

using Dense = std::vector<std::vector<long double>>;

// Gauss-Jordan with partial pivoting.
Dense dense_inverse(Dense a) {
  const std::size_t m = a.size();
  for (std::size_t i = 0; i < m; ++i) {
    a[i].resize(2 * m, 0);
    a[i][m + i] = 1;
  }
  for (std::size_t k = 0; k < m; ++k) {
    std::size_t best = k;
    for (std::size_t i = k; i < m; ++i) {
      if (std::abs(a[i][k]) > std::abs(a[best][k])) best = i;
    }
    std::swap(a[k], a[best]);
    const long double pivot = a[k][k];
    for (long double& v : a[k]) v /= pivot;
    for (std::size_t i = 0; i < m; ++i) {
      const long double factor = a[i][k];
      if (i == k || factor == 0) continue;
      for (std::size_t j = 0; j < 2 * m; ++j) a[i][j] -= factor * a[k][j];
    }
  }
  for (auto& row : a) row.erase(row.begin(), row.begin() + static_cast<std::ptrdiff_t>(m));
  return a;
}

// Column of [A I] as the user sees it.
std::vector<long double> column(const LpData& lp, Index var) {
  std::vector<long double> result(lp.row_lower.size(), 0);
  if (var >= lp.num_cols()) {
    result[var - lp.num_cols()] = 1;
    return result;
  }
  for (Offset k = lp.matrix.begin(var); k < lp.matrix.end(var); ++k) result[lp.matrix.index[k]] = lp.matrix.value[k];
  return result;
}

// An output vector with room for `size` entries, and its dense form after a check of its shape.
struct Output {
  explicit Output(std::size_t size) : index(size), value(size), vector{-7, index.data(), value.data()} {}
  std::vector<int> index;
  std::vector<double> value;
  ZLPsvec vector;

  [[nodiscard]] std::vector<double> dense() const {
    std::vector<double> result(index.size(), 0);
    EXPECT_GE(vector.len, 0);
    for (int k = 0; k < vector.len; ++k) {
      if (k > 0) {
        EXPECT_LT(index[k - 1], index[k]);
      }
      EXPECT_GT(std::abs(value[k]), 1e-13);
      result[index[k]] = value[k];
    }
    return result;
  }
};

void expect_close(const std::vector<long double>& expected, const Output& output, const char* what) {
  const std::vector<double> found = output.dense();
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const double scale = std::max(1.0, std::abs(static_cast<double>(expected[i])));
    EXPECT_NEAR(static_cast<double>(expected[i]), found[i], 1e-9 * scale) << what << " entry " << i;
  }
}

void check_queries(ZLPmodel* model, const LpData& lp, RandomStream& random) {
  const auto m = static_cast<std::size_t>(lp.num_rows());
  std::vector<int> head(m);
  ASSERT_EQ(0, ZLPgetBasisHead(model, head.data()));
  const Basis basis = basis_of(model);
  Dense b(m, std::vector<long double>(m));
  for (std::size_t k = 0; k < m; ++k) {
    const bool is_column = head[k] < lp.num_cols();
    EXPECT_EQ((is_column ? basis.col[head[k]] : basis.row[head[k] - lp.num_cols()]), BasisStatus::kBasic);
    const std::vector<long double> entries = column(lp, head[k]);
    for (std::size_t i = 0; i < m; ++i) b[i][k] = entries[i];
  }
  const Dense inverse = dense_inverse(b);
  const auto times = [&](const std::vector<long double>& v) {
    std::vector<long double> result(m, 0);
    for (std::size_t k = 0; k < m; ++k) {
      for (std::size_t i = 0; i < m; ++i) result[k] += inverse[k][i] * v[i];
    }
    return result;
  };
  std::vector<int> index;
  std::vector<double> value;
  std::vector<long double> rhs(m, 0), transposed(m, 0);
  for (std::size_t i = m; i-- > 0;) {  // any order will do
    if (random.below(2) == 0) continue;
    index.push_back(static_cast<int>(i));
    value.push_back(random.uniform() - 0.5);
    rhs[i] = value.back();
  }
  for (std::size_t k = 0; k < m; ++k) {
    for (std::size_t i = 0; i < m; ++i) transposed[i] += rhs[k] * inverse[k][i];
  }
  const ZLPsvec input{static_cast<int>(index.size()), index.data(), value.data()};
  Output x(m);
  ASSERT_EQ(0, ZLPFSolve(model, &input, &x.vector));
  expect_close(times(rhs), x, "FSolve");
  ASSERT_EQ(0, ZLPBSolve(model, &input, &x.vector));
  expect_close(transposed, x, "BSolve");
  for (int k = 0; k < lp.num_rows(); ++k) {
    std::vector<long double> unit_column(m), tableau_row(lp.cost.size(), 0);
    for (std::size_t i = 0; i < m; ++i) unit_column[i] = inverse[i][k];
    ASSERT_EQ(0, ZLPBinvj(model, k, &x.vector));
    expect_close(unit_column, x, "Binvj");
    ASSERT_EQ(0, ZLPBinvi(model, k, &x.vector));
    expect_close(inverse[k], x, "Binvi");
    for (Index col = 0; col < lp.num_cols(); ++col) {
      const std::vector<long double> entries = column(lp, col);
      for (std::size_t i = 0; i < m; ++i) tableau_row[col] += inverse[k][i] * entries[i];
    }
    Output row(lp.cost.size());
    ASSERT_EQ(0, ZLPBinvRowi(model, k, &row.vector));
    expect_close(tableau_row, row, "BinvRowi");
  }
  for (int var = 0; var < lp.num_cols() + lp.num_rows(); ++var) {
    ASSERT_EQ(0, ZLPBinvColj(model, var, &x.vector));
    expect_close(times(column(lp, var)), x, "BinvColj");
  }
}

TEST(BasisQueries, AgreeWithADenseInverse) {
  const Env env = quiet_env();
  RandomStream random(51, "basis queries");
  int checked = 0;
  for (int trial = 0; trial < 600; ++trial) {
    SCOPED_TRACE(trial);
    const LpData lp = oracle::random_lp(random, {8, 10, 0.4, 0.9});
    const Model model = model_of(env.get(), lp, trial % 2 == 0 ? 1 : -1);
    ASSERT_EQ(0, ZLPsetintparam(ZLPgetenv(model.get()), "Quad", trial % 3 == 0 ? 1 : -1));
    ASSERT_EQ(0, ZLPsetintparam(ZLPgetenv(model.get()), "Presolve", trial % 5 == 0 ? 0 : -1));
    ASSERT_EQ(0, ZLPoptimize(model.get()));
    if (ZLPisattravailable(model.get(), "VBasis") == 0) continue;
    check_queries(model.get(), lp, random);
    ++checked;
    if (HasFailure()) FAIL() << "stopped at the first failing trial";
  }
  EXPECT_GT(checked, 400);
}

// A basis of condition 1e7, entries of its inverse of size 1e6: double precision would lose what is checked here.
TEST(BasisQueries, ExtendedPrecisionKeepsItsDigits) {
  const Env env = quiet_env();
  ASSERT_EQ(0, ZLPsetintparam(env.get(), "Quad", 1));
  ASSERT_EQ(0, ZLPsetintparam(env.get(), "Presolve", 0));
  const double e = std::ldexp(1.0, -20);
  const Model model = build(
      env.get(), {.obj = {-1, -1}, .rows = {{{1, 1}, '=', 2}, {{1, 1 + e}, '=', 2 + e}}, .lb = {-5, -5}, .ub = {5, 5}});
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  ASSERT_EQ(2, int_attr(model.get(), "Status"));
  const int index[] = {0, 1};
  const double value[] = {1, 1 + 3 * e};
  const ZLPsvec b{2, const_cast<int*>(index), const_cast<double*>(value)};
  std::vector<int> head(2);
  ASSERT_EQ(0, ZLPgetBasisHead(model.get(), head.data()));
  Output x(2);
  ASSERT_EQ(0, ZLPFSolve(model.get(), &b, &x.vector));
  const std::vector<double> dense = x.dense();
  for (int k = 0; k < 2; ++k) EXPECT_NEAR(head[k] == 0 ? -2 : 3, dense[k], 1e-12) << k;
  EXPECT_GT(dbl_attr(model.get(), "Kappa"), 4e6);
}

// Entries of 1e-13 are dropped, larger ones kept: a basis of slacks returns what it is given.
TEST(BasisQueries, SmallEntriesAreLeftOut) {
  const Env env = quiet_env();
  const Model model = build(env.get(), {.obj = {1}, .rows = {{{1}, '<', 9}, {{-1}, '<', 9}, {{2}, '<', 9}}});
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  int index[] = {2, 0, 1};
  double value[] = {1e-13, 1.1e-13, -5};
  ZLPsvec b{3, index, value};
  Output x(3);
  ASSERT_EQ(0, ZLPFSolve(model.get(), &b, &x.vector));
  EXPECT_EQ(2, x.vector.len);
  EXPECT_EQ((std::vector<double>{1.1e-13, -5, 0}), x.dense());
  ASSERT_EQ(0, ZLPBSolve(model.get(), &b, &b));  // in place
  EXPECT_EQ(2, b.len);
  EXPECT_EQ(1, index[1]);
  EXPECT_EQ(-5, value[1]);
}

TEST(BasisQueries, RefusedCalls) {
  const Env env = quiet_env();
  const Tiny tiny{.obj = {-1, -1}, .rows = {{{1, 1}, '<', 4}, {{1, 3}, '<', 6}}};
  const Model model = build(env.get(), tiny);
  Output x(2);
  int index[] = {0, 1};
  double value[] = {1, 2};
  const ZLPsvec b{2, index, value};
  int head[2];
  EXPECT_EQ(ZLP_ERROR_DATA_NOT_AVAILABLE, ZLPFSolve(model.get(), &b, &x.vector));
  EXPECT_EQ(ZLP_ERROR_DATA_NOT_AVAILABLE, ZLPgetBasisHead(model.get(), nullptr));
  EXPECT_EQ(ZLP_ERROR_NULL_ARGUMENT, ZLPgetBasisHead(nullptr, head));
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  EXPECT_EQ(ZLP_ERROR_NULL_ARGUMENT, ZLPFSolve(model.get(), &b, nullptr));
  EXPECT_EQ(ZLP_ERROR_NULL_ARGUMENT, ZLPBSolve(model.get(), nullptr, &x.vector));
  EXPECT_EQ(ZLP_ERROR_NULL_ARGUMENT, ZLPBinvj(model.get(), 0, nullptr));
  EXPECT_EQ(ZLP_ERROR_NULL_ARGUMENT, ZLPgetBasisHead(model.get(), nullptr));
  ZLPsvec no_values{2, index, nullptr};
  EXPECT_EQ(ZLP_ERROR_NULL_ARGUMENT, ZLPBinvi(model.get(), 0, &no_values));
  EXPECT_EQ(ZLP_ERROR_NULL_ARGUMENT, ZLPFSolve(model.get(), &no_values, &x.vector));
  const struct {
    int len, second;
    double value;
    int code;
  } inputs[] = {{-1, 1, 2, ZLP_ERROR_INVALID_ARGUMENT},
                {2, 2, 2, ZLP_ERROR_INDEX_OUT_OF_RANGE},
                {2, -1, 2, ZLP_ERROR_INDEX_OUT_OF_RANGE},
                {2, 0, 2, ZLP_ERROR_DUPLICATES},
                {2, 1, std::nan(""), ZLP_ERROR_INVALID_ARGUMENT}};
  for (const auto& each : inputs) {
    int indices[] = {0, each.second};
    double values[] = {1, each.value};
    const ZLPsvec bad{each.len, indices, values};
    EXPECT_EQ(each.code, ZLPFSolve(model.get(), &bad, &x.vector)) << each.len << " " << each.second;
  }
  for (const int bad : {-1, 2}) {
    EXPECT_EQ(ZLP_ERROR_INDEX_OUT_OF_RANGE, ZLPBinvj(model.get(), bad, &x.vector));
    EXPECT_EQ(ZLP_ERROR_INDEX_OUT_OF_RANGE, ZLPBinvi(model.get(), bad, &x.vector));
    EXPECT_EQ(ZLP_ERROR_INDEX_OUT_OF_RANGE, ZLPBinvRowi(model.get(), bad, &x.vector));
  }
  EXPECT_EQ(ZLP_ERROR_INDEX_OUT_OF_RANGE, ZLPBinvColj(model.get(), 4, &x.vector));
  EXPECT_EQ(-7, x.vector.len);  // nothing was written so far
  ASSERT_EQ(0, ZLPsetdblattrelement(model.get(), "RHS", 0, 5));
  EXPECT_EQ(0, ZLPgetBasisHead(model.get(), head));  // the change is only queued
  ASSERT_EQ(0, ZLPupdatemodel(model.get()));
  EXPECT_EQ(ZLP_ERROR_DATA_NOT_AVAILABLE, ZLPgetBasisHead(model.get(), head));
  Tiny integer = tiny;
  integer.types = "II";
  const Model mip = build(env.get(), integer);
  ASSERT_EQ(0, ZLPoptimize(mip.get()));
  EXPECT_EQ(ZLP_ERROR_DATA_NOT_AVAILABLE, ZLPgetBasisHead(mip.get(), head));
}

}  // namespace
}  // namespace zorvex::testing
