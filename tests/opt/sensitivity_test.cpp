// Sensitivity ranges: inside them the reported basis stays optimal and the objective follows the prices, just outside
// it is not optimal any more; both judged by dense solves. Condition numbers against dense ones.
#include <cmath>
#include <functional>

#include "base/quality.hpp"
#include "base/random_stream.hpp"
#include "opt/lp_as_model.hpp"
#include "support/dense_lp.hpp"
#include "support/problem_view.hpp"
#include "support/random_lp.hpp"

namespace zorvex::testing {
namespace {

constexpr double kOutside = 1e-2;  // distance from a limit at which its violation must show

// How far the basis is from optimal for the changed model: the larger of primal and dual violation.
double violation(const LpData& lp, const Basis& basis, const std::vector<double>& x) {
  std::vector<double> point, activity, pi;
  EXPECT_TRUE(oracle::point_of_basis(lp, basis, x, point, activity));
  EXPECT_TRUE(oracle::duals_of_basis(lp, basis, pi));
  double worst = 0;
  const PrimalQuality primal = measure_primal(oracle::view_of(lp), point, {});
  worst = std::max(primal.bound.max, primal.row.max);
  const SparseMatrix& a = lp.matrix;
  const auto judge = [&](BasisStatus status, bool fixed, double d) {
    if (fixed || status == BasisStatus::kBasic) return;
    if (status != BasisStatus::kAtUpper) worst = std::max(worst, -d);
    if (status != BasisStatus::kAtLower) worst = std::max(worst, d);
  };
  for (Index col = 0; col < lp.num_cols(); ++col) {
    double d = lp.cost[col];
    for (Offset k = a.begin(col); k < a.end(col); ++k) d -= a.value[k] * pi[a.index[k]];
    judge(basis.col[col], lp.col_lower[col] == lp.col_upper[col], d);
  }
  for (Index row = 0; row < lp.num_rows(); ++row)
    judge(basis.row[row], lp.row_lower[row] == lp.row_upper[row], pi[row]);
  return worst;
}

struct Solved {
  LpData lp;
  int sense;
  Basis basis;
  std::vector<double> x, rc, pi;
  double objective;
};

// One number of the model: its limits in the user's terms, how to change it by an amount in the user's terms, and the
// rate at which the objective follows.
struct Number {
  std::string what;
  double value, low, up, rate;
  std::function<void(LpData&, double)> shift;
};

std::vector<Number> numbers_of(const Solved& solved, ZLPmodel* model) {
  const auto read = [&](const char* name, const char* count) { return dbl_array(model, name, count); };
  const std::vector<double> obj = read("Obj", "NumVars"), rhs = read("RHS", "NumConstrs");
  const std::vector<double> obj_low = read("SAObjLow", "NumVars"), obj_up = read("SAObjUp", "NumVars");
  const std::vector<double> lb_low = read("SALBLow", "NumVars"), lb_up = read("SALBUp", "NumVars");
  const std::vector<double> ub_low = read("SAUBLow", "NumVars"), ub_up = read("SAUBUp", "NumVars");
  const std::vector<double> rhs_low = read("SARHSLow", "NumConstrs"), rhs_up = read("SARHSUp", "NumConstrs");
  std::vector<Number> result;
  const double sense = solved.sense;
  for (Index col = 0; col < solved.lp.num_cols(); ++col) {
    const std::string at = " of column " + std::to_string(col);
    result.push_back({"cost" + at, obj[col], obj_low[col], obj_up[col], solved.x[col],
                      [col, sense](LpData& lp, double t) { lp.cost[col] += sense * t; }});
    const bool at_lower = solved.basis.col[col] == BasisStatus::kAtLower;
    const bool at_upper = solved.basis.col[col] == BasisStatus::kAtUpper;
    const double low = solved.lp.col_lower[col], up = solved.lp.col_upper[col];
    result.push_back({"lower bound" + at, low, lb_low[col], lb_up[col], at_lower ? solved.rc[col] : 0,
                      [col](LpData& lp, double t) { lp.col_lower[col] += t; }});
    result.push_back({"upper bound" + at, up, ub_low[col], ub_up[col], at_upper ? solved.rc[col] : 0,
                      [col](LpData& lp, double t) { lp.col_upper[col] += t; }});
  }
  for (Index row = 0; row < solved.lp.num_rows(); ++row) {
    result.push_back({"rhs of row " + std::to_string(row), rhs[row], rhs_low[row], rhs_up[row], solved.pi[row],
                      [row](LpData& lp, double t) {
                        lp.row_lower[row] += t;
                        lp.row_upper[row] += t;
                      }});
  }
  return result;
}

void check_number(const Solved& solved, const Number& number) {
  SCOPED_TRACE(number.what);
  // A missing bound has a limit at which it would begin to matter.
  if (!std::isfinite(number.value) || std::abs(number.value) >= 1e20) return;
  ASSERT_LE(number.low, number.value + 1e-7);
  ASSERT_GE(number.up, number.value - 1e-7);
  for (const double limit : {number.low, number.up}) {
    const bool open = std::abs(limit) >= 1e100;
    const double distance = open ? std::copysign(50.0, limit) : limit - number.value;
    LpData inside = solved.lp;
    if (std::abs(distance) > 1e-9) number.shift(inside, 0.9 * distance);
    EXPECT_LT(violation(inside, solved.basis, solved.x), 1e-6) << "within " << limit;
    const oracle::DenseLpResult again = oracle::solve_dense_lp(inside);
    ASSERT_EQ(SolveStatus::kOptimal, again.status) << "within " << limit;
    const double expected = solved.objective + number.rate * 0.9 * distance;
    EXPECT_NEAR(expected, solved.sense * again.objective, 1e-6 * std::max(1.0, std::abs(expected)))
        << "within " << limit;
    if (open) continue;
    LpData outside = solved.lp;
    number.shift(outside, distance + (limit == number.up ? kOutside : -kOutside));
    EXPECT_GT(violation(outside, solved.basis, solved.x), 1e-5) << "beyond " << limit;
  }
}

TEST(Sensitivity, BasisStaysOptimalInsideAndNotOutside) {
  const Env env = quiet_env();
  RandomStream random(53, "sensitivity");
  int checked = 0;
  for (int trial = 0; trial < 500; ++trial) {
    SCOPED_TRACE(trial);
    Solved solved{oracle::random_lp(random, {6, 8, 0.5, 0.95}), trial % 2 == 0 ? 1 : -1, {}, {}, {}, {}, 0};
    const Model model = model_of(env.get(), solved.lp, solved.sense);
    ASSERT_EQ(0, ZLPsetintparam(ZLPgetenv(model.get()), "Presolve", trial % 3 == 0 ? 0 : -1));
    ASSERT_EQ(0, ZLPsetintparam(ZLPgetenv(model.get()), "Quad", trial % 7 == 0 ? 1 : -1));
    ASSERT_EQ(0, ZLPoptimize(model.get()));
    if (int_attr(model.get(), "Status") != ZLP_OPTIMAL) {
      EXPECT_EQ(0, ZLPisattravailable(model.get(), "SARHSUp"));
      continue;
    }
    solved.basis = basis_of(model.get());
    solved.x = dbl_array(model.get(), "X", "NumVars");
    solved.rc = dbl_array(model.get(), "RC", "NumVars");
    solved.pi = dbl_array(model.get(), "Pi", "NumConstrs");
    solved.objective = dbl_attr(model.get(), "ObjVal");
    for (const Number& number : numbers_of(solved, model.get())) check_number(solved, number);
    ++checked;
    if (HasFailure()) FAIL() << "stopped at the first failing trial";
  }
  EXPECT_GT(checked, 300);
}

// max 3x + 2y, x + y <= 4, x + 3y <= 9, x <= 3: optimum (3, 1) with the first row and the bound of x binding.
TEST(Sensitivity, TextbookModel) {
  const Env env = quiet_env();
  const Model model =
      build(env.get(),
            {.sense = -1, .obj = {3, 2}, .rows = {{{1, 1}, '<', 4}, {{1, 3}, '<', 9}}, .lb = {}, .ub = {3, 1e100}});
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  const struct {
    const char* name;
    const char* count;
    std::vector<double> values;
  } facts[] = {{"SAObjLow", "NumVars", {2, 0}},          {"SAObjUp", "NumVars", {1e100, 3}},
               {"SALBLow", "NumVars", {-1e100, -1e100}}, {"SALBUp", "NumVars", {3, 1}},
               {"SAUBLow", "NumVars", {1.5, 1}},         {"SAUBUp", "NumVars", {4, 1e100}},
               {"SARHSLow", "NumConstrs", {3, 6}},       {"SARHSUp", "NumConstrs", {5, 1e100}}};
  for (const auto& fact : facts) {
    SCOPED_TRACE(fact.name);
    expect_near(fact.values, dbl_array(model.get(), fact.name, fact.count), 1e-9);
  }
}

// Two prices, one basis: writing another basis after the solve does not change what the results are about.
TEST(Sensitivity, IsAboutTheSolvedBasis) {
  const Env env = quiet_env();
  const Model model = build(env.get(), {.obj = {-1, -2}, .rows = {{{1, 1}, '<', 4}}});
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  const std::vector<double> before = dbl_array(model.get(), "SAObjUp", "NumVars");
  ASSERT_EQ(0, ZLPsetintattrelement(model.get(), "VBasis", 0, ZLP_BASIC));
  expect_near(before, dbl_array(model.get(), "SAObjUp", "NumVars"), 0);
  double value = 0;
  ASSERT_EQ(0, ZLPsetdblattrelement(model.get(), "Obj", 0, -5));
  ASSERT_EQ(0, ZLPupdatemodel(model.get()));
  EXPECT_EQ(ZLP_ERROR_DATA_NOT_AVAILABLE, ZLPgetdblattrelement(model.get(), "SAObjUp", 0, &value));
  EXPECT_EQ(ZLP_ERROR_DATA_NOT_AVAILABLE, ZLPgetdblattr(model.get(), "Kappa", &value));
}

// With tolerances tightened after the solve, a column that was left at its lower bound goes to the upper one: the
// ranges are those of the basis that is optimal now, and the log says so, once.
TEST(Sensitivity, WarnsWhenTheBasisHadToChange) {
  const Env env = quiet_env();
  const Model model = build(env.get(), {.obj = {-2e-4, 1}, .rows = {{{1, 1}, '<', 5}}, .lb = {}, .ub = {4, 4}});
  ZLPenv* own = ZLPgetenv(model.get());
  ASSERT_EQ(0, ZLPsetintparam(own, "Presolve", 0));
  ASSERT_EQ(0, ZLPsetdblparam(own, "PerturbValue", 0));
  ASSERT_EQ(0, ZLPsetdblparam(own, "OptimalityTol", 1e-2));
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  ASSERT_EQ(0, dbl_array(model.get(), "X", "NumVars")[0]);
  ASSERT_EQ(0, ZLPsetdblparam(own, "OptimalityTol", 1e-9));
  ASSERT_EQ(0, ZLPsetintparam(own, "OutputFlag", 1));
  std::vector<double> up, again;
  EXPECT_EQ("Warning: basis changed during sensitity analysis.\n",
            printed([&] { up = dbl_array(model.get(), "SAObjUp", "NumVars"); }));
  EXPECT_EQ("", printed([&] { again = dbl_array(model.get(), "SAObjUp", "NumVars"); }));
  expect_near({0, 1e100}, up, 1e-12);
  expect_near(up, again, 0);
}

// Singular values of a small matrix by one-sided Jacobi rotations.
std::vector<double> singular_values(std::vector<std::vector<double>> columns) {
  const std::size_t m = columns.size();
  for (int sweep = 0; sweep < 60; ++sweep) {
    for (std::size_t p = 0; p < m; ++p) {
      for (std::size_t q = p + 1; q < m; ++q) {
        double pp = 0, qq = 0, pq = 0;
        for (std::size_t i = 0; i < m; ++i) {
          pp += columns[p][i] * columns[p][i];
          qq += columns[q][i] * columns[q][i];
          pq += columns[p][i] * columns[q][i];
        }
        if (pq == 0) continue;
        const double zeta = (qq - pp) / (2 * pq);
        const double t = (zeta >= 0 ? 1 : -1) / (std::abs(zeta) + std::sqrt(1 + zeta * zeta));
        const double c = 1 / std::sqrt(1 + t * t);
        for (std::size_t i = 0; i < m; ++i) {
          const double a = columns[p][i];
          columns[p][i] = c * a - c * t * columns[q][i];
          columns[q][i] = c * t * a + c * columns[q][i];
        }
      }
    }
  }
  std::vector<double> result;
  for (const auto& column : columns) {
    double sum = 0;
    for (const double v : column) sum += v * v;
    result.push_back(std::sqrt(sum));
  }
  std::sort(result.begin(), result.end());
  return result;
}

double norm1(const std::vector<std::vector<double>>& columns) {
  double largest = 0;
  for (const auto& column : columns) {
    double sum = 0;
    for (const double v : column) sum += std::abs(v);
    largest = std::max(largest, sum);
  }
  return largest;
}

TEST(Condition, AgreesWithDenseFigures) {
  const Env env = quiet_env();
  RandomStream random(57, "condition");
  int close = 0, checked = 0;
  for (int trial = 0; trial < 300; ++trial) {
    SCOPED_TRACE(trial);
    const LpData lp = oracle::random_lp(random, {8, 12, 0.5, 0.95});
    const Model model = model_of(env.get(), lp, 1);
    ASSERT_EQ(0, ZLPoptimize(model.get()));
    if (ZLPisattravailable(model.get(), "Kappa") == 0) continue;
    const auto m = static_cast<std::size_t>(lp.num_rows());
    std::vector<int> head(m);
    ASSERT_EQ(0, ZLPgetBasisHead(model.get(), head.data()));
    std::vector<std::vector<double>> basis, inverse;
    for (std::size_t k = 0; k < m; ++k) {
      std::vector<double> column(m, 0);
      if (head[k] >= lp.num_cols()) column[head[k] - lp.num_cols()] = 1;
      for (Offset e = head[k] < lp.num_cols() ? lp.matrix.begin(head[k]) : 0;
           head[k] < lp.num_cols() && e < lp.matrix.end(head[k]); ++e) {
        column[lp.matrix.index[e]] = lp.matrix.value[e];
      }
      basis.push_back(column);
      std::vector<int> index(m);
      std::vector<double> value(m);
      ZLPsvec x{0, index.data(), value.data()};
      ASSERT_EQ(0, ZLPBinvj(model.get(), static_cast<int>(k), &x));
      inverse.emplace_back(m, 0.0);
      for (int e = 0; e < x.len; ++e) inverse.back()[index[e]] = value[e];
    }
    const double exact1 = norm1(basis) * norm1(inverse);
    const std::vector<double> sigma = singular_values(basis);
    const double exact2 = sigma.back() / sigma.front();
    const double kappa = dbl_attr(model.get(), "Kappa");
    EXPECT_LE(kappa, exact1 * (1 + 1e-9));
    EXPECT_GE(kappa, exact1 / 10);
    close += kappa > 0.999 * exact1 ? 1 : 0;
    EXPECT_NEAR(1.0, dbl_attr(model.get(), "N2Kappa") / exact2, 0.01);
    ++checked;
  }
  EXPECT_GT(checked, 200);
  EXPECT_GT(close, 0.8 * checked);
}

// What the solve took for infinite limits no range.
TEST(Sensitivity, BoundsThatCountAsInfinite) {
  const Env env = quiet_env();
  for (const bool infinite : {false, true}) {
    const Model model = build(env.get(), {.obj = {1, 1}, .rows = {{{1, -1}, '>', 2}}, .lb = {}, .ub = {1e7, 5}});
    if (infinite) {
      ASSERT_EQ(0, ZLPsetdblparam(ZLPgetenv(model.get()), "ZORV_PAR_INFBOUND", 1e6));
    }
    ASSERT_EQ(0, ZLPoptimize(model.get()));
    EXPECT_EQ(infinite ? 1e100 : 1e7, dbl_array(model.get(), "SARHSUp", "NumConstrs")[0]);
  }
}

}  // namespace
}  // namespace zorvex::testing
