// Parameters of continuous solves: what each one changes that a user can see.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "base/random_stream.hpp"
#include "opt/lp_as_model.hpp"
#include "opt/tiny_model.hpp"

namespace zorvex::testing {
namespace {

// "rows, columns, nonzeros" that presolve leaves, "" when it leaves nothing, "off" when it does not run.
std::string presolved(ZLPmodel* model) {
  EXPECT_EQ(0, ZLPsetintparam(ZLPgetenv(model), "OutputFlag", 1));
  const std::string log = printed([&] { EXPECT_EQ(0, ZLPoptimize(model)); });
  EXPECT_EQ(0, ZLPsetintparam(ZLPgetenv(model), "OutputFlag", 0));
  EXPECT_EQ(ZLP_OPTIMAL, int_attr(model, "Status"));
  if (log.find("Presolve time:") == std::string::npos) return "off";
  const std::size_t at = log.find("Presolved: ");
  if (at == std::string::npos) return "";
  int rows = 0, cols = 0, nonzeros = 0;
  EXPECT_EQ(3, std::sscanf(log.c_str() + at, "Presolved: %d rows, %d columns, %d nonzeros", &rows, &cols, &nonzeros));
  return std::to_string(rows) + " " + std::to_string(cols) + " " + std::to_string(nonzeros);
}

struct Reduced {
  const char* fact;
  Tiny model;
  std::vector<Setting> settings;  // on top of those that leave nothing else to do
  const char* without;            // what is left before the settings
  const char* with;
  std::vector<Setting> both_times = {};
};

// A model that no reduction gets anywhere with: a cycle of dense inequalities over boxed columns.
Tiny stubborn() {
  return {.sense = 1,
          .obj = {-3, -5, -4, -6},
          .rows = {{{2, 3, 1, 5}, '<', 19}, {{4, 1, 2, 1}, '<', 13}, {{3, 4, 2, 3}, '<', 21}},
          .lb = {0, 0, 0, 0},
          .ub = {3, 4, 5, 6}};
}

Tiny with_row(Tiny tiny, Row row) {
  tiny.rows.push_back(std::move(row));
  return tiny;
}

// A fifth column, free and without cost, that one equation over all columns and two rows share.
Tiny aggregable() {
  Tiny tiny = stubborn();
  for (Row& row : tiny.rows) row.coefficient.push_back(0);
  tiny.rows[0].coefficient[4] = 1;
  tiny.rows[1].coefficient[4] = -1;
  tiny.obj.push_back(0.5);
  tiny.lb.push_back(-1e100);
  tiny.ub.push_back(1e100);
  return with_row(tiny, {{1, 2, 3, 4, 2}, '=', 7});
}

// 51 of each of the columns, every time a little dearer and with other coefficients: 204 in each row.
Tiny longer_rows() {
  Tiny tiny = stubborn();
  for (int k = 4; k < 204; ++k) {
    for (std::size_t i = 0; i < tiny.rows.size(); ++i) {
      std::vector<double>& row = tiny.rows[i].coefficient;
      row.push_back(row[k % 4] + 0.01 * ((k * (k + 3 * static_cast<int>(i))) % 17));
    }
    tiny.obj.push_back(tiny.obj[k % 4] + 0.001 * k);
    tiny.lb.push_back(0);
    tiny.ub.push_back(tiny.ub[k % 4]);
  }
  return tiny;
}

std::vector<Reduced> reductions() {
  const Tiny plain = stubborn();
  Tiny dependent = with_row(with_row(plain, {{1, 1, 2, 1}, '=', 7}), {{2, 1, 1, 3}, '=', 9});
  dependent = with_row(dependent, {{3, 2, 3, 4}, '=', 16});
  Tiny wide = plain;
  for (Row& row : wide.rows) row.coefficient.push_back(2 * row.coefficient[0]);
  wide.obj.push_back(2 * wide.obj[0]);
  wide.lb.push_back(0);
  wide.ub.push_back(2);
  Tiny slack = with_row(plain, {{1, 1, 1, 1}, '=', 7});
  for (std::size_t k = 0; k < slack.rows.size(); ++k) slack.rows[k].coefficient.push_back(k == 3 ? 1 : 0);
  slack.obj.push_back(0);
  slack.lb.push_back(-2);
  slack.ub.push_back(2);
  const Tiny twin = with_row(plain, {{4, 6, 2, 10}, '<', 30});
  Tiny maximal = plain;
  maximal.sense = -1;
  for (double& cost : maximal.obj) cost = -cost;
  const Tiny contained = with_row(with_row(plain, {{1, 1, 0, 1}, '=', 4}), {{2, 2, 1, 2}, '<', 13});
  // Lower bounds of 1 on the first two columns by the others' bounds, and a sum of at most 2.
  Tiny squeezed =
      with_row(with_row(with_row(plain, {{1, 0, -1, 0}, '>', 0}), {{0, 1, 0, -1}, '>', 0}), {{1, 1, 0, 0}, '<', 2});
  squeezed.lb = {0, 0, 1, 1};
  const Tiny nested = with_row(with_row(plain, {{1, 1, 1, 1}, '=', 6}), {{2, 2, 2, 3}, '<', 15});
  return {
      {"presolve off", twin, {{"Presolve", "0"}}, "3 4 12", "off"},
      {"no pass", twin, {{"PrePasses", "0"}}, "3 4 12", "4 4 16"},
      {"no reduction", twin, {{"ZORV_PAR_PRELIMIT", "0"}}, "3 4 12", "4 4 16"},
      {"parallel rows stay", twin, {{"ZORV_PAR_PREPARALLEL", "0"}}, "3 4 12", "4 4 16"},
      {"parallel columns stay", wide, {{"ZORV_PAR_PREPARALLEL", "0"}}, "3 4 12", "3 5 15"},
      {"singleton columns stay", slack, {{"ZORV_PAR_PRESINGLECOL", "0"}}, "4 4 16", "4 5 17"},
      {"dependent equations go", dependent, {{"PreDepRow", "1"}}, "6 4 24", "5 4 20"},
      {"nonzeros cancel", nested, {{"PreSparsify", "1"}}, "5 4 20", "4 4 12"},
      {"the dual instead", maximal, {{"PreDual", "1"}}, "3 4 12", "4 7 16"},
      {"the dual with its slacks as columns", plain, {{"PreDual", "2"}}, "3 4 12", "4 11 20"},
      {"implied rows stay",
       with_row(plain, {{1, 1, 1, 2}, '<', 20}),  // 24 by the bounds, 19.6 by what the first row makes of them
       {{"ZORV_PAR_PREBOUND", "0"}},
       "3 4 12",
       "4 4 16"},
      {"no aggregation", aggregable(), {{"Aggregate", "0"}}, "3 4 12", "4 5 19"},
      // With the first row: its side and at most 6 more.
      {"a row that another one implies goes",
       with_row(plain, {{2, 3, 1, 6}, '<', 25}),
       {{"ZORV_PAR_PRETWOROWS", "1"}},
       "4 4 16",
       "3 4 12"},
      {"a contained equation is subtracted", contained, {{"ZORV_PAR_PRESUBROW", "1"}}, "5 4 19", "4 4 11"},
      {"a row that can only bind is an equation",
       squeezed,
       {{"ZORV_PAR_IMPLICITEQ", "1"}},
       "3 4 6",
       "",
       {{"ZORV_PAR_DUALREDUCTION", "0"}}},
      {"long rows are cut", longer_rows(), {{"ZORV_PAR_PRESPLITROWS", "1"}}, "3 204 612", "12 213 630"},
      {"long columns are cut", plain, {{"ZORV_PAR_SPLIT", "2"}}, "3 4 12", "7 8 20"},
      {"conservative", with_row(plain, {{1, 1, 1, 2}, '<', 20}), {{"Presolve", "1"}}, "3 4 12", "4 4 16"},
      {"aggressive", with_row(plain, {{2, 3, 1, 6}, '<', 25}), {{"Presolve", "2"}}, "4 4 16", "3 4 12"},
  };
}

TEST(LpParameters, PresolveSwitches) {
  const Env env = quiet_env();
  for (const Reduced& each : reductions()) {
    SCOPED_TRACE(each.fact);
    const Model before = build(env.get(), each.model, each.both_times);
    const Model after = build(env.get(), each.model, each.both_times);
    EXPECT_EQ(each.without, presolved(before.get()));
    set(after.get(), each.settings);
    EXPECT_EQ(each.with, presolved(after.get()));
    EXPECT_NEAR(dbl_attr(before.get(), "ObjVal"), dbl_attr(after.get(), "ObjVal"), 1e-6);
    expect_lp_quality(after.get());
  }
}

TEST(LpParameters, FeasibilityTolDecidesWhatHolds) {
  const Env env = quiet_env();
  for (const char* presolve : {"0", "-1"}) {
    for (const char* method : {"0", "1"}) {
      SCOPED_TRACE(std::string("presolve ") + presolve + " method " + method);
      const Tiny gap{.obj = {1, 1}, .rows = {{{1, 1}, '>', 1}, {{1, 1}, '<', 1 - 5e-5}}};
      for (const bool loose : {false, true}) {
        const Model model = build(
            env.get(), gap, {{"Presolve", presolve}, {"Method", method}, {"FeasibilityTol", loose ? 1e-3 : 1e-6}});
        ASSERT_EQ(0, ZLPoptimize(model.get()));
        EXPECT_EQ(loose ? ZLP_OPTIMAL : ZLP_INFEASIBLE, int_attr(model.get(), "Status"));
      }
    }
  }
}

TEST(LpParameters, OptimalityTolDecidesWhatPays) {
  const Env env = quiet_env();
  for (const bool loose : {false, true}) {
    const Model model = build(env.get(), {.obj = {-2e-4, 1}, .rows = {{{1, 1}, '<', 5}}, .lb = {}, .ub = {4, 4}},
                              {{"Presolve", "0"}, {"PerturbValue", "0"}, {"OptimalityTol", loose ? 1e-2 : 1e-6}});
    ASSERT_EQ(0, ZLPoptimize(model.get()));
    EXPECT_EQ(loose ? 0 : 4, dbl_array(model.get(), "X", "NumVars")[0]);
  }
}

struct Solved {
  int status;
  double x;  // of the first column, when optimal
};

TEST(LpParameters, WhatCountsAsInfiniteAsZeroAndAsSolved) {
  const Tiny wide{.obj = {-1, 1}, .rows = {{{1, -1}, '>', 1}}, .lb = {}, .ub = {1e7, 5}};
  const Tiny faint{.obj = {1, 1}, .rows = {{{5e-11, 0}, '>', 1}, {{1, 1}, '>', 1}}, .lb = {}, .ub = {1e12, 5}};
  const Tiny cheap{.obj = {-2e-4, 1}, .rows = {{{1, 1}, '<', 5}}, .lb = {}, .ub = {4, 4}};
  const Tiny steep{.obj = {1, 2}, .rows = {{{1e6, 1e6}, '>', 0.05}}};
  const Tiny open{.obj = {-1, 1}, .rows = {{{1, -1}, '>', 1}}};
  const std::vector<Setting> dual_alone{{"Presolve", "0"}, {"Method", "1"}};
  const std::vector<Setting> loose{{"Presolve", "0"}, {"PerturbValue", "0"}, {"OptimalityTol", "0.01"}};
  const struct {
    Tiny model;
    std::vector<Setting> without;
    Setting with;
    Solved before, after;
  } facts[] = {
      {wide, {}, {"ZORV_PAR_INFBOUND", "1e6"}, {ZLP_OPTIMAL, 1e7}, {ZLP_UNBOUNDED, 0}},
      {faint, {}, {"ZORV_PAR_ZERO", "1e-10"}, {ZLP_OPTIMAL, 2e10}, {ZLP_INFEASIBLE, 0}},
      {cheap, loose, {"ZORV_PAR_ASPIRE", "0.01"}, {ZLP_OPTIMAL, 0}, {ZLP_OPTIMAL, 4}},
      // Only the primal simplex can tell that there is no bound.
      {open, dual_alone, {"ZORV_PAR_PRIMDUALSWITCH", "0"}, {ZLP_UNBOUNDED, 0}, {ZLP_NUMERIC, 0}},
      {steep, {{"Presolve", "0"}}, {"ZORV_PAR_UNSCALEDVIO", "0"}, {ZLP_OPTIMAL, 5e-8}, {ZLP_OPTIMAL, 0}},
  };
  const Env env = quiet_env();
  for (const auto& fact : facts) {
    SCOPED_TRACE(fact.with.name);
    for (const bool changed : {false, true}) {
      const Model model = build(env.get(), fact.model, fact.without);
      if (changed) set(model.get(), {fact.with});
      ASSERT_EQ(0, ZLPoptimize(model.get()));
      const Solved& expected = changed ? fact.after : fact.before;
      ASSERT_EQ(expected.status, int_attr(model.get(), "Status"));
      if (expected.status != ZLP_OPTIMAL) continue;
      EXPECT_NEAR(expected.x, dbl_array(model.get(), "X", "NumVars")[0], 1e-9 * (1 + expected.x));
    }
  }
}

// Costs 1000 and 10 in the diagnostic line that follows scaling.
TEST(LpParameters, ScalingOfObjectiveAndMatrix) {
  const Env env = quiet_env();
  const struct {
    const char* name;
    const char* value;
    const char* line;
  } facts[] = {
      {"ObjScale", "0", "MaxC= 1.00000e+03, MinC= 1.00000e+01, MaxOC= 1.00000e+03, MinOC= 1.00000e+01\n"},
      {"ObjScale", "256", "MaxC= 3.90625e+00, MinC= 3.90625e-02, MaxOC= 1.00000e+03, MinOC= 1.00000e+01\n"},
      {"ObjScale", "-0.5", "MaxC= 3.12500e+01, MinC= 3.12500e-01, MaxOC= 1.00000e+03, MinOC= 1.00000e+01\n"},
  };
  for (const auto& fact : facts) {
    SCOPED_TRACE(fact.value);
    const Model model = build(env.get(), {.obj = {1000, -10}, .rows = {{{1, 1}, '<', 5}, {{1, -1}, '>', 1}}},
                              {{"Presolve", "0"}, {"ZORV_PAR_ITEST", "1"}, {fact.name, fact.value}});
    const std::string log = log_of(model.get());
    EXPECT_NE(std::string::npos, log.find(std::string("Scaled:\n") + fact.line)) << log;
    EXPECT_NEAR(1000, dbl_attr(model.get(), "ObjVal"), 1e-6);
  }
  const Setting ways[] = {{"ScaleFlag", "0"}, {"ScaleFlag", "1"}, {"ZORV_PAR_ALTSCALE", "1"}};
  std::vector<std::string> scaled;
  for (const Setting& way : ways) {
    const Model model = build(env.get(), {.obj = {-1, -1}, .rows = {{{1e4, 1e-4}, '<', 5}, {{1e-3, 1e5}, '<', 1}}});
    set(model.get(), {{"Presolve", "0"}, {"ZORV_PAR_ITEST", "1"}, way});
    const std::string log = log_of(model.get());
    const std::size_t at = log.find("MaxC=");
    ASSERT_NE(std::string::npos, at) << log;
    scaled.push_back(log.substr(at, log.find(", MaxOC", at) - at));
    expect_lp_quality(model.get());
  }
  EXPECT_EQ("MaxC= 1.00000e+00, MinC= 1.00000e+00", scaled[0]);
  EXPECT_NE(scaled[0], scaled[1]);
  EXPECT_NE(scaled[1], scaled[2]);
}

// Nearly a Hilbert matrix, with a known feasible point.
LpData ill_conditioned_model(std::uint64_t seed) {
  constexpr Index kRows = 11;
  RandomStream random(seed, "ill-conditioned");
  LpData lp;
  lp.matrix.num_rows = kRows;
  lp.row_lower.assign(kRows, 0);
  for (Index col = 0; col < kRows + 2; ++col) {
    std::vector<Index> rows;
    std::vector<double> values;
    for (Index row = 0; row < kRows; ++row) {
      rows.push_back(row);
      values.push_back((1 + 1e-6 * random.uniform()) / (1 + row + col));
      lp.row_lower[row] += 1e4 * values.back();
    }
    lp.matrix.append_col(rows.data(), values.data(), kRows);
    lp.cost.push_back(random.uniform() - 0.3);
  }
  lp.col_lower.assign(lp.cost.size(), 0);
  lp.col_upper.assign(lp.cost.size(), kInf);
  lp.row_upper = lp.row_lower;
  return lp;
}

// Where doubles are too short for narrow tolerances, wider ones lead to bases whose points are good after all, or
// nearly.
TEST(LpParameters, BigTolFindsPointsWhereNumericalTroubleOutlastsTheRest) {
  const Env env = quiet_env();
  int found[] = {0, 0};
  for (std::uint64_t seed = 0; seed < 60; ++seed) {
    const LpData lp = ill_conditioned_model(seed);
    for (const bool relaxed : {false, true}) {
      const Model model = model_of(env.get(), lp, 1);
      set(model.get(), {{"Presolve", "0"},
                        {"Method", "1"},
                        {"Quad", "0"},
                        {"FeasibilityTol", "1e-9"},
                        {"OptimalityTol", "1e-9"},
                        {"ZORV_PAR_BIGTOL", relaxed ? "1e-4" : "1e-9"}});
      ASSERT_EQ(0, ZLPoptimize(model.get()));
      const int status = int_attr(model.get(), "Status");
      if (status != ZLP_OPTIMAL && status != ZLP_SUBOPTIMAL) continue;
      ++found[relaxed];
      const double most = status == ZLP_OPTIMAL ? 1e-9 : 1e-4;
      EXPECT_LE(dbl_attr(model.get(), "ConstrVio"), most) << seed;
      EXPECT_LE(dbl_attr(model.get(), "BoundVio"), most) << seed;
    }
  }
  EXPECT_GT(found[true], found[false]);
}

// The part of a log that the solve's first point shows in.
std::string first_point(ZLPenv* env, const Tiny& tiny, const std::vector<Setting>& settings, const char* before) {
  const Model model = build(env, tiny, settings);
  const std::string log = log_of(model.get());
  expect_lp_quality(model.get());
  const std::size_t at = log.find(before);
  EXPECT_NE(std::string::npos, at) << log;
  return at == std::string::npos ? "" : log.substr(at + std::strlen(before), 50);
}

TEST(LpParameters, WhereSolvesStart) {
  const Tiny with_free{
      .obj = {-1, 3}, .rows = {{{1, 1}, '<', 5}, {{1, -1}, '<', 1}}, .lb = {-1e100, 0}, .ub = {1e100, 9}};
  const Tiny badly_scaled{.obj = {-1, -1, 1}, .rows = {{{1e4, 1e-4, 1}, '<', 5}, {{1e-3, 1e5, 1}, '<', 1}}};
  Tiny wide_rows = stubborn();
  for (Row& row : wide_rows.rows) row.coefficient[0] += 16;
  for (Row& row : wide_rows.rows) row.sense = '>';
  for (double& cost : wide_rows.obj) cost = -cost;
  const char* const simplex = "Time\n";
  const char* const barrier = "\n   0 ";
  const struct {
    const Tiny& model;
    std::vector<Setting> settings;
    const char* before;
    const char* parameter;
    std::vector<const char*> values;
  } facts[] = {
      {with_free,
       {{"Presolve", "0"}, {"Method", "1"}, {"PerturbValue", "0"}, {"ScaleFlag", "0"}},
       simplex,
       "ZORV_PAR_BIGM",
       {"1e5", "1e6", "1e9"}},
      {badly_scaled,
       {{"Presolve", "0"}, {"Method", "2"}, {"Crossover", "0"}},
       barrier,
       "ZORV_PAR_ALTSCALE",
       {"0", "1"}},
      {badly_scaled, {{"Presolve", "0"}, {"Method", "2"}}, "statistics:", "ZORV_PAR_FORCEQP", {"0", "1"}},
      {badly_scaled, {{"Method", "1"}}, "Presolved", "ZORV_PAR_FORCEQP", {"0", "1"}},
      {wide_rows, {{"Method", "1"}, {"ScaleFlag", "0"}}, simplex, "ZORV_PAR_PREPOWER", {"0", "1"}},
      {wide_rows, {{"Method", "1"}}, "FactSpace=", "ZORV_PAR_SIMPLEXALLOCS", {"1", "5", "6"}},
  };
  const Env env = quiet_env();
  for (const auto& fact : facts) {
    std::vector<std::string> seen;
    for (const char* value : fact.values) {
      std::vector<Setting> settings = fact.settings;
      settings.push_back({fact.parameter, value});
      seen.push_back(first_point(env.get(), fact.model, settings, fact.before));
    }
    for (std::size_t k = 1; k < seen.size(); ++k) EXPECT_NE(seen[k - 1], seen[k]) << fact.parameter;
  }
}

// Norms of a start basis that brings none: ones or exact ones, seen after a solve that may not iterate.
TEST(LpParameters, NormAdjustSaysWhereNormsComeFrom) {
  const Env env = quiet_env();
  const char* const adjust = "NormAdjust";
  const char* const exact = "ZORV_PAR_EXACTNORM";
  const struct {
    const char* name;
    const char* value;
    bool bring_norms;
    double expected;
  } facts[] = {{adjust, "0", false, 1},     {adjust, "1", false, 0.0625}, {adjust, "2", false, 0.0625},
               {adjust, "3", false, 1},     {adjust, "0", true, 7},       {adjust, "1", true, 7},
               {adjust, "2", true, 0.0625}, {adjust, "3", true, 1},       {exact, "0", false, 1},
               {exact, "1", false, 0.0625}, {exact, "1", true, 7}};
  for (const auto& fact : facts) {
    SCOPED_TRACE(std::string(fact.name) + fact.value + (fact.bring_norms ? " with norms" : ""));
    // x is basic in its row with coefficient 4: the exact norm is 1/16. Its bound is violated, so one pivot is due.
    const Model model = build(env.get(), {.obj = {1, 1}, .rows = {{{4, 1}, '=', 8}}, .lb = {}, .ub = {1, 9}},
                              {{"Presolve", 0}, {"ScaleFlag", 0}, {"IterationLimit", 0}, {fact.name, fact.value}});
    ASSERT_EQ(0, ZLPsetintattrelement(model.get(), "VBasis", 0, ZLP_BASIC));
    ASSERT_EQ(0, ZLPsetintattrelement(model.get(), "CBasis", 0, ZLP_NONBASIC_LOWER));
    if (fact.bring_norms) {
      ASSERT_EQ(0, ZLPsetdblattrelement(model.get(), "VDualNorm", 0, 7));
    }
    ASSERT_EQ(0, ZLPoptimize(model.get()));
    ASSERT_EQ(ZLP_ITERATION_LIMIT, int_attr(model.get(), "Status"));
    ASSERT_EQ(1, int_attr(model.get(), "HasDualNorm"));
    double norm = 0;
    ASSERT_EQ(0, ZLPgetdblattrelement(model.get(), "VDualNorm", 0, &norm));
    EXPECT_DOUBLE_EQ(fact.expected, norm);
  }
}

// min sum of x over rows with equal ratios: ties wherever one looks.
Tiny degenerate() {
  Tiny tiny;
  constexpr int kSize = 12;  // an assignment problem
  for (int i = 0; i < kSize; ++i) {
    for (int j = 0; j < kSize; ++j) tiny.obj.push_back(1 + (3 * i + 5 * j + i * i * j) % 7);
  }
  for (int k = 0; k < 2 * kSize; ++k) {
    Row row{std::vector<double>(tiny.obj.size(), 0), '=', 1};
    for (int i = 0; i < kSize; ++i) row.coefficient[k < kSize ? k * kSize + i : i * kSize + k - kSize] = 1;
    tiny.rows.push_back(row);
  }
  return tiny;
}

// Many boxed columns in one row: a dual ratio test that flips bounds gets to the end in one iteration.
Tiny knapsack() {
  Tiny tiny;
  tiny.sense = -1;
  Row row{{}, '<', 30};
  for (int k = 0; k < 40; ++k) {
    tiny.obj.push_back(20 + (7 * k) % 41);
    tiny.lb.push_back(0);
    tiny.ub.push_back(1);
    row.coefficient.push_back(1 + k % 3);
  }
  tiny.rows.push_back(row);
  return tiny;
}

// Iterations, log lines and, among the diagnostics, pivot rows computed by a solve without presolve.
struct Path {
  double iterations, objective;
  std::ptrdiff_t lines;
  int rows = 0;
  std::string log;
  bool operator==(const Path& other) const {
    return iterations == other.iterations && lines == other.lines && rows == other.rows;
  }
};

Path path_of(const Tiny& tiny, const std::vector<Setting>& settings) {
  const Env env = quiet_env();
  const Model model = build(env.get(), tiny, settings);
  set(model.get(), {{"Presolve", "0"}});
  Path path;
  path.log = log_of(model.get());
  EXPECT_EQ(ZLP_OPTIMAL, int_attr(model.get(), "Status"));
  path.objective = dbl_attr(model.get(), "ObjVal");
  expect_lp_quality(model.get());
  path.iterations = dbl_attr(model.get(), "IterCount");
  path.lines = std::count(path.log.begin(), path.log.end(), '\n');
  const std::size_t at = path.log.find("Operation price");
  if (at != std::string::npos) std::sscanf(path.log.c_str() + at, "Operation price %d", &path.rows);
  return path;
}

TEST(LpParameters, HiddenSwitchesOfTheSimplex) {
  const double flow = path_of(degenerate(), {}).iterations;
  const Setting statistics{"ZORV_PAR_ITEST", "1"};
  const struct {
    const char* fact;
    Tiny model;
    std::vector<Setting> without;
    Setting with;
    double at_least, at_most;  // iterations with the setting
  } facts[] = {
      {"no bound flipping", knapsack(), {}, {"ZORV_PAR_SIMPLEXPWRATIO", "0"}, 5, 40},
      {"partial pricing", degenerate(), {{"Method", "0"}}, {"ZORV_PAR_PRIMALPARTIAL", "1"}, 2, 1000},
      {"values of the last update are final", degenerate(), {statistics}, {"ZORV_PAR_SIMPLEXENDFAC", "0"}, flow, flow},
      {"lines by iterations", degenerate(), {}, {"ZORV_PAR_SDISPINTERVAL", "1"}, flow, flow},
  };
  for (const auto& fact : facts) {
    SCOPED_TRACE(fact.fact);
    const Path before = path_of(fact.model, fact.without);
    std::vector<Setting> settings = fact.without;
    settings.push_back(fact.with);
    const Path after = path_of(fact.model, settings);
    EXPECT_NEAR(before.objective, after.objective, 1e-9);
    EXPECT_FALSE(before == after) << before.log << after.log;
    EXPECT_GE(after.iterations, fact.at_least);
    EXPECT_LE(after.iterations, fact.at_most);
  }
}

// Each row multiplies the value before it by 1e4: growth of the basic values over the right-hand side shows how far a
// factorization may be trusted.
TEST(LpParameters, GrowthTightensTheMarkowitzTolerance) {
  const struct {
    int steps;
    const char* tolerance;
    const char* expected;
  } facts[] = {{1, "0.0078125", ""},
               {2, "0.0078125", "tightened to 0.0625\n"},
               {3, "0.0078125", "tightened to 0.5\n"},
               {2, "0.1", ""},
               {3, "0.1", "tightened to 0.5\n"},
               {3, "0.5", ""},
               {2, "0.0001", "tightened to 0.0625\n"}};
  for (const auto& fact : facts) {
    SCOPED_TRACE(std::to_string(fact.steps) + " steps from " + fact.tolerance);
    Tiny chain;
    for (int k = 0; k < fact.steps; ++k) {
      chain.obj.push_back(1);
      chain.rows.push_back({std::vector<double>(static_cast<std::size_t>(fact.steps), 0), '=', k == 0 ? 1.0 : 0.0});
      chain.rows.back().coefficient[static_cast<std::size_t>(k)] = 1e-4;
      if (k > 0) chain.rows.back().coefficient[static_cast<std::size_t>(k - 1)] = -1;
    }
    const std::string log = path_of(chain, {{"ScaleFlag", "0"}, {"MarkowitzTol", fact.tolerance}}).log;
    const std::size_t at = log.find("tightened to ");
    EXPECT_EQ(fact.expected, at == std::string::npos ? "" : log.substr(at, log.find('\n', at) + 1 - at)) << log;
  }
}

// The only pivot that makes the row feasible is 1e-6.
TEST(LpParameters, PivotTolerance) {
  const Tiny tiny{.obj = {1}, .rows = {{{1e-6}, '>', 1e-6}}};
  const Setting diagnostics{"ZORV_PAR_ITEST", "1"}, plain{"ScaleFlag", "0"};
  EXPECT_EQ(std::string::npos, path_of(tiny, {diagnostics, plain}).log.find("small pivot"));
  const std::vector<Setting> strict{diagnostics, plain, {"ZORV_PAR_PIVOTTOL", "1e-6"}};
  EXPECT_NE(std::string::npos, path_of(tiny, strict).log.find("small pivot"));
}

// Same optimum whatever the path; the paths, seen by their lengths, are not all the same.
TEST(LpParameters, PathsThroughDegenerateModel) {
  const Env env = quiet_env();
  double optimum = std::nan("");
  for (const auto& settings : std::vector<std::vector<Setting>>{
           {{"PerturbValue", "0"}, {"PerturbValue", "0.0002"}, {"PerturbValue", "0.01"}},
           {{"SimplexPricing", "0"}, {"SimplexPricing", "1"}, {"SimplexPricing", "2"}, {"SimplexPricing", "3"}},
           {{"Method", "0"}, {"Method", "1"}, {"Method", "2"}}}) {
    std::vector<double> lengths;
    for (const Setting& setting : settings) {
      const Model model = build(env.get(), degenerate(), {{"Presolve", "0"}, setting});
      ASSERT_EQ(0, ZLPoptimize(model.get()));
      if (std::isnan(optimum)) optimum = dbl_attr(model.get(), "ObjVal");
      EXPECT_NEAR(optimum, dbl_attr(model.get(), "ObjVal"), 1e-9) << setting.name << " " << setting.value;
      expect_lp_quality(model.get());
      lengths.push_back(dbl_attr(model.get(), "IterCount"));
    }
    EXPECT_NE(lengths, std::vector<double>(lengths.size(), lengths[0])) << settings[0].name;
  }
}

// With a start basis presolve is left out: the basis of the whole model says more than the rows and columns it takes.
TEST(LpParameters, StartBasisIsUsedUnlessSwitchedOff) {
  const Env env = quiet_env();
  for (const char* presolve : {"0", "-1", "2"}) {
    SCOPED_TRACE(presolve);
    const Model model = build(env.get(), degenerate(), {{"Presolve", presolve}});
    ZLPenv* own = ZLPgetenv(model.get());
    ASSERT_EQ(0, ZLPoptimize(model.get()));
    const double cold = dbl_attr(model.get(), "IterCount");
    ASSERT_GT(cold, 1);
    ASSERT_EQ(0, ZLPoptimize(model.get()));
    EXPECT_LE(dbl_attr(model.get(), "IterCount"), 1);
    ASSERT_EQ(0, ZLPsetdblattrelement(model.get(), "UB", 13, 0));
    ASSERT_EQ(0, ZLPoptimize(model.get()));
    EXPECT_LE(dbl_attr(model.get(), "IterCount"), cold / 2);
    expect_lp_quality(model.get());
    ASSERT_EQ(0, ZLPsetdblattrelement(model.get(), "UB", 13, 1e100));
    ASSERT_EQ(0, ZLPsetparam(own, "ZORV_PAR_WARMBASIS", "0"));
    ASSERT_EQ(0, ZLPoptimize(model.get()));
    EXPECT_EQ(cold, dbl_attr(model.get(), "IterCount"));
  }
}

TEST(LpParameters, QuadKeepsAndSwitchesPrecision) {
  const Env env = quiet_env();
  const Model model = build(env.get(), {.obj = {-1, -1}, .rows = {{{1, 2}, '<', 4}, {{3, 1}, '<', 6}}});
  ZLPenv* own = ZLPgetenv(model.get());
  const auto log_with = [&](const char* quad) {
    EXPECT_EQ(0, ZLPsetparam(own, "Quad", quad));
    EXPECT_EQ(0, ZLPsetparam(own, "OutputFlag", "1"));
    const std::string log = printed([&] { EXPECT_EQ(0, ZLPoptimize(model.get())); });
    EXPECT_EQ(ZLP_OPTIMAL, int_attr(model.get(), "Status"));
    return log.find("Switch to double precision\n") != std::string::npos;
  };
  EXPECT_FALSE(log_with("1"));   // cold: extended
  EXPECT_FALSE(log_with("-1"));  // keeps it
  EXPECT_TRUE(log_with("0"));
  EXPECT_FALSE(log_with("1"));  // the start is double now, and stays
  EXPECT_FALSE(log_with("0"));
}

TEST(LpParameters, InfUnbdInfoKeepsProofs) {
  const Env env = quiet_env();
  for (const int wanted : {0, 1}) {
    ASSERT_EQ(0, ZLPsetintparam(env.get(), "InfUnbdInfo", wanted));
    const Model infeasible =
        build(env.get(), {.obj = {1, 1}, .rows = {{{1, 2}, '<', 1}, {{1, 3}, '>', 2}}, .lb = {}, .ub = {9, 0}});
    ASSERT_EQ(0, ZLPoptimize(infeasible.get()));
    ASSERT_EQ(ZLP_INFEASIBLE, int_attr(infeasible.get(), "Status"));
    EXPECT_EQ(wanted, ZLPisattravailable(infeasible.get(), "FarkasDual"));
    EXPECT_GT(dbl_attr(infeasible.get(), "FarkasProof"), 0);
    EXPECT_GE(int_attr(infeasible.get(), "InfeasVar"), -1);
    const Model unbounded = build(env.get(), {.sense = -1, .obj = {1, 1}, .rows = {{{1, -1}, '<', 1}}});
    ASSERT_EQ(0, ZLPoptimize(unbounded.get()));
    ASSERT_EQ(ZLP_UNBOUNDED, int_attr(unbounded.get(), "Status"));
    EXPECT_EQ(wanted, ZLPisattravailable(unbounded.get(), "UnbdRay"));
    EXPECT_GE(int_attr(unbounded.get(), "UnbdVar"), 0);
  }
}

}  // namespace
}  // namespace zorvex::testing
