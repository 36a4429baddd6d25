// Whole solves through the public interface, with known answers.
#include <algorithm>
#include <string>

#include "opt/tiny_model.hpp"
#include "support/models.hpp"

namespace zorvex::testing {
namespace {

constexpr double kInfinite = ZLP_INFINITY;
constexpr double kTol = 1e-6;

struct Known {
  const char* name;
  Tiny model;
  int status;
  double objective;
  std::vector<double> x;  // empty when not unique
};

const std::vector<Known>& known_lps() {
  static const std::vector<Known> cases = {
      {"maximise", {-1, {3, 2}, {{{1, 1}, '<', 4}, {{1, 3}, '<', 6}}, {}, {3, kInfinite}}, ZLP_OPTIMAL, 11, {3, 1}},
      {"minimise", {1, {2, 3}, {{{1, 1}, '>', 4}}}, ZLP_OPTIMAL, 8, {4, 0}},
      {"constant", {-1, {1}, {{{1}, '<', 5}}, {}, {}, {}, 10}, ZLP_OPTIMAL, 15, {5}},
      {"equation", {1, {1, 1}, {{{1, 2}, '=', 4}}}, ZLP_OPTIMAL, 2, {0, 2}},
      {"free column", {1, {1, 0}, {{{1, 1}, '>', -5}, {{0, 1}, '<', 3}}, {-kInfinite, 0}}, ZLP_OPTIMAL, -8, {-8, 3}},
      {"negative bounds", {1, {1}, {}, {-7}, {-2}}, ZLP_OPTIMAL, -7, {-7}},
      {"no rows, maximise", {-1, {1, -1}, {}, {0, 2}, {9, 4}}, ZLP_OPTIMAL, 7, {9, 2}},
      {"no columns", {1, {}, {{{}, '<', 3}}, {}, {}, {}, 4}, ZLP_OPTIMAL, 4, {}},
      {"no columns, contradiction", {1, {}, {{{}, '>', 3}}}, ZLP_INFEASIBLE, 0, {}},
      {"nothing at all", {1, {}, {}, {}, {}, {}, -2}, ZLP_OPTIMAL, -2, {}},
      {"no objective", {1, {0, 0}, {{{1, 1}, '=', 2}}}, ZLP_OPTIMAL, 0, {}},
      {"fixed columns", {1, {1, 1}, {{{1, 1}, '<', 5}}, {2, 3}, {2, 3}}, ZLP_OPTIMAL, 5, {2, 3}},
      {"empty row", {1, {1}, {{{0}, '<', 0}, {{1}, '>', 1}}}, ZLP_OPTIMAL, 1, {1}},
      {"empty column", {1, {-1, 1}, {{{0, 1}, '>', 1}}, {}, {6, 9}}, ZLP_OPTIMAL, -5, {6, 1}},
      {"degenerate", {1, {-1, -1}, {{{1, 0}, '<', 1}, {{0, 1}, '<', 1}, {{1, 1}, '<', 2}}}, ZLP_OPTIMAL, -2, {1, 1}},
      {"infeasible rows", {1, {1, 1}, {{{1, 1}, '<', 1}, {{1, 1}, '>', 2}}}, ZLP_INFEASIBLE, 0, {}},
      {"infeasible equations", {1, {0, 0}, {{{1, 1}, '=', 1}, {{2, 2}, '=', 3}}}, ZLP_INFEASIBLE, 0, {}},
      {"crossed bounds", {1, {1}, {{{1}, '<', 5}}, {3}, {2}}, ZLP_INFEASIBLE, 0, {}},
      {"infeasible empty row", {1, {1}, {{{0}, '=', 1}}}, ZLP_INFEASIBLE, 0, {}},
      {"infeasible and the cost falls forever",
       {1, {-1, 0}, {{{0, 1}, '>', 2}, {{0, 1}, '<', 1}}},
       ZLP_INFEASIBLE,
       0,
       {}},
      {"unbounded", {1, {-1, 0}, {{{1, -1}, '<', 1}}}, ZLP_UNBOUNDED, 0, {}},
      {"unbounded, no rows", {-1, {1}, {}}, ZLP_UNBOUNDED, 0, {}},
      {"unbounded free column", {1, {1, 1}, {{{0, 1}, '>', 1}}, {-kInfinite, 0}}, ZLP_UNBOUNDED, 0, {}},
  };
  return cases;
}

void expect_answer(const Known& c, ZLPmodel* model) {
  ASSERT_EQ(c.status, int_attr(model, "Status"));
  double value = 0;
  if (c.status != ZLP_OPTIMAL) {
    EXPECT_EQ(10005, ZLPgetdblattr(model, "ObjVal", &value));
    if (int_attr(model, "NumVars") > 0) {
      EXPECT_EQ(10005, ZLPgetdblattrarray(model, "X", 0, 1, &value));
    }
    EXPECT_EQ(0, int_attr(model, "SolCount"));
    return;
  }
  EXPECT_NEAR(c.objective, dbl_attr(model, "ObjVal"), kTol);
  if (!c.x.empty()) expect_near(c.x, dbl_array(model, "X", "NumVars"), kTol);
}

TEST(OptimizeLp, KnownAnswersWithAndWithoutPresolveAndWithBothAlgorithms) {
  const auto env = quiet_env();
  for (const int presolve : {-1, 0}) {
    for (const int method : {-1, 0, 1}) {
      ASSERT_EQ(0, ZLPsetintparam(env.get(), "Presolve", presolve));
      ASSERT_EQ(0, ZLPsetintparam(env.get(), "Method", method));
      for (const Known& c : known_lps()) {
        SCOPED_TRACE(std::string(c.name) + ", presolve " + std::to_string(presolve) + ", method " +
                     std::to_string(method));
        const Model model = build(env.get(), c.model);
        ASSERT_EQ(0, ZLPoptimize(model.get())) << ZLPgetmerrormsg(model.get());
        expect_answer(c, model.get());
        if (c.status == ZLP_OPTIMAL && !c.model.obj.empty()) expect_lp_quality(model.get());
        // From the basis left behind the answer is the same.
        ASSERT_EQ(0, ZLPoptimize(model.get())) << ZLPgetmerrormsg(model.get());
        expect_answer(c, model.get());
      }
    }
  }
}

TEST(OptimizeLp, SignsOfDualsAndSlacks) {
  const struct {
    const char* name;
    Tiny model;
    std::vector<double> pi, rc, slack;
  } cases[] = {
      {"maximise: '<' rows have pi >= 0, columns at upper bounds rc >= 0",
       {-1, {3, 2}, {{{1, 1}, '<', 4}, {{1, 3}, '<', 9}}, {}, {3, kInfinite}},
       {2, 0},
       {1, 0},
       {0, 3}},
      {"minimise: '>' rows have pi >= 0, columns at lower bounds rc >= 0",
       {1, {2, 3}, {{{1, 1}, '>', 4}, {{1, 0}, '>', 1}}},
       {2, 0},
       {0, 1},
       {0, -3}},
      {"minimise: '<' rows have pi <= 0", {1, {-1, 0}, {{{1, 1}, '<', 5}}}, {-1}, {0, 1}, {0}},
      {"equation", {-1, {1, 3}, {{{1, 2}, '=', 4}}}, {1.5}, {-0.5, 0}, {0}},
  };
  const auto env = quiet_env();
  for (const int presolve : {-1, 0}) {
    ASSERT_EQ(0, ZLPsetintparam(env.get(), "Presolve", presolve));
    for (const auto& c : cases) {
      SCOPED_TRACE(c.name);
      const Model model = build(env.get(), c.model);
      ASSERT_EQ(0, ZLPoptimize(model.get()));
      expect_near(c.pi, dbl_array(model.get(), "Pi", "NumConstrs"), kTol);
      expect_near(c.rc, dbl_array(model.get(), "RC", "NumVars"), kTol);
      expect_near(c.slack, dbl_array(model.get(), "Slack", "NumConstrs"), kTol);
      EXPECT_EQ(dbl_attr(model.get(), "ObjVal"), dbl_attr(model.get(), "ObjBound"));
    }
  }
}

TEST(OptimizeLp, RangeRowsCountSlackFromTheUpperSide) {
  const auto env = quiet_env();
  for (const int sense : {1, -1}) {
    const Model model = build(env.get(), {sense, {1, 1}, {}});
    const int ind[] = {0, 1};
    const double val[] = {1, 2};
    ASSERT_EQ(0, ZLPaddrangeconstr(model.get(), 2, ind, val, 2, 6, "range"));
    ASSERT_EQ(0, ZLPoptimize(model.get())) << "pending changes are applied";
    EXPECT_EQ(ZLP_OPTIMAL, int_attr(model.get(), "Status"));
    EXPECT_NEAR(sense > 0 ? 1 : 6, dbl_attr(model.get(), "ObjVal"), kTol);
    expect_near({sense > 0 ? 4.0 : 0.0}, dbl_array(model.get(), "Slack", "NumConstrs"), kTol);
    EXPECT_NEAR(sense > 0 ? 0.5 : 1.0, dbl_array(model.get(), "Pi", "NumConstrs")[0], kTol);
    expect_lp_quality(model.get());
  }
}

// lambda'A x over the bounds stays above lambda'b: written out on the model's own numbers.
TEST(OptimizeLp, ProofsWhenAskedFor) {
  const auto env = quiet_env();
  const Tiny infeasible{1, {1, 1}, {{{1, 2}, '<', 1}, {{1, 1}, '>', 2}}};
  for (const int presolve : {-1, 0}) {
    ASSERT_EQ(0, ZLPsetintparam(env.get(), "Presolve", presolve));
    ASSERT_EQ(0, ZLPsetintparam(env.get(), "InfUnbdInfo", 1));
    const Model model = build(env.get(), infeasible);
    ASSERT_EQ(0, ZLPoptimize(model.get()));
    ASSERT_EQ(ZLP_INFEASIBLE, int_attr(model.get(), "Status"));
    const std::vector<double> lambda = dbl_array(model.get(), "FarkasDual", "NumConstrs");
    EXPECT_GE(lambda[0], 0);
    EXPECT_LE(lambda[1], 0);
    double least = 0;
    for (int col = 0; col < 2; ++col) {
      double z = 0;
      for (int row = 0; row < 2; ++row) z += lambda[row] * infeasible.rows[row].coefficient[col];
      ASSERT_GE(z, -1e-9) << "no upper bound: a negative coefficient would prove nothing";
      least += z * 0;
    }
    EXPECT_GT(least - (lambda[0] * 1 + lambda[1] * 2), 1e-9);
    EXPECT_GT(dbl_attr(model.get(), "FarkasProof"), 0);

    const Model unbounded = build(env.get(), {-1, {1, 1}, {{{1, -1}, '<', 1}, {{2, -1}, '>', -8}}});
    ASSERT_EQ(0, ZLPoptimize(unbounded.get()));
    ASSERT_EQ(ZLP_UNBOUNDED, int_attr(unbounded.get(), "Status"));
    const std::vector<double> ray = dbl_array(unbounded.get(), "UnbdRay", "NumVars");
    EXPECT_GT(ray[0] + ray[1], 1e-9);
    EXPECT_LE(ray[0] - ray[1], 1e-9);
    EXPECT_GE(2 * ray[0] - ray[1], -1e-9);
    EXPECT_GE(std::min(ray[0], ray[1]), -1e-9);
  }
}

TEST(OptimizeLp, WarmStartFromTheLastBasisNeedsNoPivots) {
  ZORVEX_NEED_MODEL(path, "lp/afiro.mps.gz");
  const auto env = quiet_env();
  const Model model = read_model(env.get(), path);
  ASSERT_NE(nullptr, model);
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  EXPECT_NEAR(-464.75314286, dbl_attr(model.get(), "ObjVal"), 1e-6);
  expect_lp_quality(model.get());
  std::vector<int> vbasis(static_cast<std::size_t>(int_attr(model.get(), "NumVars")));
  std::vector<int> cbasis(static_cast<std::size_t>(int_attr(model.get(), "NumConstrs")));
  const int num_vars = static_cast<int>(vbasis.size()), num_constrs = static_cast<int>(cbasis.size());
  ASSERT_EQ(0, ZLPgetintattrarray(model.get(), "VBasis", 0, num_vars, vbasis.data()));
  ASSERT_EQ(0, ZLPgetintattrarray(model.get(), "CBasis", 0, num_constrs, cbasis.data()));
  EXPECT_EQ(num_constrs, std::count(vbasis.begin(), vbasis.end(), 0) + std::count(cbasis.begin(), cbasis.end(), 0));

  ASSERT_EQ(0, ZLPoptimize(model.get()));
  EXPECT_EQ(0, dbl_attr(model.get(), "IterCount"));
  EXPECT_NEAR(-464.75314286, dbl_attr(model.get(), "ObjVal"), 1e-6);

  const Model other = read_model(env.get(), path);
  ASSERT_EQ(0, ZLPsetintattrarray(other.get(), "VBasis", 0, num_vars, vbasis.data()));
  ASSERT_EQ(0, ZLPsetintattrarray(other.get(), "CBasis", 0, num_constrs, cbasis.data()));
  ASSERT_EQ(0, ZLPoptimize(other.get()));
  EXPECT_EQ(0, dbl_attr(other.get(), "IterCount"));
  EXPECT_NEAR(-464.75314286, dbl_attr(other.get(), "ObjVal"), 1e-6);
}

const std::vector<Known>& known_mips() {
  static const std::vector<Known> cases = {
      {"knapsack", {-1, {10, 13, 7, 8}, {{{3, 4, 2, 3}, '<', 6}}, {}, {}, "BBBB"}, ZLP_OPTIMAL, 20, {0, 1, 1, 0}},
      {"rounding is not enough", {-1, {1, 1}, {{{2, 2}, '<', 3}}, {}, {}, "II"}, ZLP_OPTIMAL, 1, {}},
      {"general integers", {1, {3, 2}, {{{2, 3}, '>', 7}, {{4, 1}, '>', 5}}, {}, {}, "II"}, ZLP_OPTIMAL, 7, {1, 2}},
      {"mixed", {-1, {1, 2}, {{{1, 1}, '<', 3.5}, {{0, 1}, '<', 1.5}}, {}, {}, "CI"}, ZLP_OPTIMAL, 4.5, {2.5, 1}},
      {"constant", {1, {1}, {{{2}, '>', 3}}, {}, {}, "I", 100}, ZLP_OPTIMAL, 102, {2}},
      {"objective 0", {1, {0, 0}, {{{1, 1}, '=', 1}}, {}, {}, "BB"}, ZLP_OPTIMAL, 0, {}},
      {"infeasible for integers only", {1, {1, 1}, {{{2, 2}, '=', 3}}, {}, {9, 9}, "II"}, ZLP_INFEASIBLE, 0, {}},
      {"infeasible relaxation", {1, {1}, {{{1}, '>', 2}}, {}, {}, "B"}, ZLP_INFEASIBLE, 0, {}},
      {"bounds without an integer between", {1, {1}, {}, {0.2}, {0.8}, "I"}, ZLP_INFEASIBLE, 0, {}},
      {"semicontinuous off", {1, {1, 5}, {{{1, 1}, '>', 1}}, {2, 0}, {9, 9}, "SC"}, ZLP_OPTIMAL, 2, {2, 0}},
      {"semicontinuous zero", {1, {1, 1}, {{{1, 1}, '>', 1}}, {2, 0}, {9, 9}, "SC"}, ZLP_OPTIMAL, 1, {0, 1}},
      {"semi-integer", {-1, {1}, {{{2}, '<', 7}}, {2}, {9}, "N"}, ZLP_OPTIMAL, 3, {3}},
      {"no rows", {-1, {1, 1}, {}, {}, {2.5, 1}, "IB"}, ZLP_OPTIMAL, 3, {2, 1}},
  };
  return cases;
}

TEST(OptimizeMip, KnownAnswers) {
  const auto env = quiet_env();
  for (const int presolve : {-1, 0}) {
    ASSERT_EQ(0, ZLPsetintparam(env.get(), "Presolve", presolve));
    for (const Known& c : known_mips()) {
      SCOPED_TRACE(std::string(c.name) + ", presolve " + std::to_string(presolve));
      const Model model = build(env.get(), c.model);
      ASSERT_EQ(0, ZLPoptimize(model.get())) << ZLPgetmerrormsg(model.get());
      expect_answer(c, model.get());
      if (c.status != ZLP_OPTIMAL) continue;
      expect_mip_quality(model.get());
      EXPECT_NEAR(c.objective, dbl_attr(model.get(), "ObjBound"), 1e-3);
      EXPECT_GE(int_attr(model.get(), "SolCount"), 1);
      double pi = 0;
      if (int_attr(model.get(), "NumConstrs") > 0) {
        EXPECT_EQ(10005, ZLPgetdblattrarray(model.get(), "Pi", 0, 1, &pi));
      }
    }
  }
}

TEST(OptimizeMip, UnboundedRelaxations) {
  const auto env = quiet_env();
  const struct {
    const char* name;
    Tiny model;
    int status;
  } cases[] = {
      {"a feasible point makes it unbounded", {1, {-1, 0}, {{{1, -1}, '>', -3}}, {}, {}, "II"}, ZLP_UNBOUNDED},
      {"maximised", {-1, {1, 1}, {{{1, -1}, '=', 0}}, {}, {}, "IC"}, ZLP_UNBOUNDED},
      {"no lattice point", {1, {-1, 0}, {{{2, -2}, '=', 1}}, {}, {}, "II"}, ZLP_INFEASIBLE},
      {"no lattice point with a continuous column",
       {1, {-1, 0, 0}, {{{2, -2, 1}, '=', 1}}, {0, 0, 0.2}, {kInfinite, kInfinite, 0.8}, "IIC"},
       ZLP_INFEASIBLE},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const Model model = build(env.get(), c.model);
    ASSERT_EQ(0, ZLPoptimize(model.get()));
    EXPECT_EQ(c.status, int_attr(model.get(), "Status"));
  }
}

// Infeasible by 6e-5 in all; the multipliers that prove it carry rounding.
TEST(OptimizeLp, BarelyInfeasibleModelIsProvenInfeasible) {
  ZORVEX_NEED_MODEL(path, "lp-infeas/cplex2.mps.gz");
  const auto env = quiet_env();
  for (const int presolve : {-1, 0}) {
    ASSERT_EQ(0, ZLPsetintparam(env.get(), "Presolve", presolve));
    const Model model = read_model(env.get(), path);
    ASSERT_EQ(0, ZLPoptimize(model.get()));
    EXPECT_EQ(ZLP_INFEASIBLE, int_attr(model.get(), "Status"));
  }
}

// x - y = 0.3 with x from 1e15 on: no doubles satisfy it within the tolerance, whatever is tried.
TEST(Optimize, WhatCannotBeSettledIsCalledSo) {
  const Tiny hopeless{1, {1, 0}, {{{1, -1}, '=', 0.3}}, {1e15, -kInfinite}, {2e15, kInfinite}};
  const Tiny one_branch{1, {0, 0, -1}, {{{1, -1, -0.3}, '=', 0}}, {1e15, -kInfinite, 0}, {2e15, kInfinite, 1}, "CCB"};
  const auto env = quiet_env();
  for (const int presolve : {-1, 0}) {
    ASSERT_EQ(0, ZLPsetintparam(env.get(), "Presolve", presolve));
    const Model numeric = build(env.get(), hopeless);
    ASSERT_EQ(0, ZLPoptimize(numeric.get()));
    EXPECT_EQ(ZLP_SUBOPTIMAL, int_attr(numeric.get(), "Status"));
    EXPECT_NEAR(1e15, dbl_attr(numeric.get(), "ObjVal"), 1);
    const Model suboptimal = build(env.get(), one_branch);
    ASSERT_EQ(0, ZLPoptimize(suboptimal.get()));
    EXPECT_EQ(ZLP_SUBOPTIMAL, int_attr(suboptimal.get(), "Status"));
    EXPECT_EQ(0, dbl_attr(suboptimal.get(), "ObjVal")) << "the branch with b = 1 stays open";
    expect_mip_quality(suboptimal.get());
  }
}

TEST(OptimizeMip, SosSets) {
  const auto env = quiet_env();
  const struct {
    int type;
    double objective;
  } cases[] = {{1, 3}, {2, 5}};  // max x + 2y + 3z with each <= 1
  for (const auto& c : cases) {
    const Model model = build(env.get(), {-1, {1, 2, 3}, {}, {}, {1, 1, 1}});
    const int begin = 0, ind[] = {0, 1, 2};
    const double weight[] = {1, 2, 3};
    ASSERT_EQ(0, ZLPaddsos(model.get(), 1, 3, &c.type, &begin, ind, weight));
    ASSERT_EQ(0, ZLPoptimize(model.get()));
    EXPECT_EQ(ZLP_OPTIMAL, int_attr(model.get(), "Status"));
    EXPECT_NEAR(c.objective, dbl_attr(model.get(), "ObjVal"), kTol);
  }
}

TEST(OptimizeMip, StartIsLoaded) {
  const auto env = quiet_env();
  const Model model = build(env.get(), known_mips()[0].model, {{"OutputFlag", 1}});
  const double start[] = {1, 0, ZLP_UNDEFINED, 0};
  ASSERT_EQ(0, ZLPsetdblattrarray(model.get(), "Start", 0, 4, start));
  const std::string log = printed([&] { EXPECT_EQ(0, ZLPoptimize(model.get())); });
  EXPECT_NE(std::string::npos, log.find("Loaded MIP start with objective 17\n")) << log;
  EXPECT_NEAR(20, dbl_attr(model.get(), "ObjVal"), kTol);
}

TEST(Optimize, Cutoff) {
  const auto env = quiet_env();
  const struct {
    const char* name;
    const Tiny* model;
    double cutoff;
    int status;
  } cases[] = {
      {"LP, minimise, beyond", &known_lps()[1].model, 7, ZLP_CUTOFF},
      {"LP, minimise, within", &known_lps()[1].model, 9, ZLP_OPTIMAL},
      {"LP, maximise, beyond", &known_lps()[0].model, 12, ZLP_CUTOFF},
      {"LP, maximise, within", &known_lps()[0].model, 10, ZLP_OPTIMAL},
      {"MIP, maximise, beyond", &known_mips()[0].model, 21, ZLP_CUTOFF},
      {"MIP, maximise, within", &known_mips()[0].model, 19, ZLP_OPTIMAL},
      {"MIP, minimise, beyond", &known_mips()[2].model, 6, ZLP_CUTOFF},
  };
  for (const auto& c : cases) {
    for (const int way : {0, 1, 2, 3}) {
      SCOPED_TRACE(c.name + std::string(way % 2 == 0 ? " primal" : " dual") + (way < 2 ? "" : " presolved"));
      const Model model =
          build(env.get(), *c.model, {{"Method", way % 2}, {"Presolve", way < 2 ? 0 : -1}, {"Cutoff", c.cutoff}});
      ASSERT_EQ(0, ZLPoptimize(model.get()));
      EXPECT_EQ(c.status, int_attr(model.get(), "Status"));
      EXPECT_EQ(c.status == ZLP_OPTIMAL ? 1 : 0, ZLPisattravailable(model.get(), "X"));
    }
  }
}

TEST(Optimize, ChangesBetweenSolves) {
  const auto env = quiet_env();
  const Model model = build(env.get(), known_lps()[1].model);
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  EXPECT_NEAR(8, dbl_attr(model.get(), "ObjVal"), kTol);
  const double cost = 9;
  ASSERT_EQ(0, ZLPsetdblattrarray(model.get(), "Obj", 0, 1, &cost));
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  EXPECT_NEAR(12, dbl_attr(model.get(), "ObjVal"), kTol) << "the other column is cheaper now";
  const int ind[] = {0, 1};
  const double val[] = {1, -1};
  ASSERT_EQ(0, ZLPaddconstr(model.get(), 2, ind, val, '=', 0, nullptr));
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  EXPECT_NEAR(24, dbl_attr(model.get(), "ObjVal"), kTol) << "both alike";
  ASSERT_EQ(0, ZLPsetintattr(model.get(), "ModelSense", -1));
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  EXPECT_EQ(ZLP_UNBOUNDED, int_attr(model.get(), "Status"));
  ASSERT_EQ(0, ZLPsetcharattrelement(model.get(), "VType", 0, 'B'));
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  EXPECT_EQ(ZLP_INFEASIBLE, int_attr(model.get(), "Status")) << "x = y = 2 at least";
  const int row = 0;
  ASSERT_EQ(0, ZLPdelconstrs(model.get(), 1, &row));
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  EXPECT_NEAR(12, dbl_attr(model.get(), "ObjVal"), kTol);
}

// sense * (x^2 + y^2 + x + y), x + y >= 1, with the linear part as given.
Model quadratic_model(ZLPenv* env, int sense, double curvature) {
  const double s = sense;
  Model model = build(env, {sense, {s, s}, {{{1, 1}, '>', 1}}});
  const int ind[] = {0, 1};
  const double val[] = {curvature * s, curvature * s};
  EXPECT_EQ(0, ZLPaddqpterms(model.get(), 2, ind, ind, val));
  return model;
}

TEST(Optimize, QuadraticModels) {
  const auto env = quiet_env();
  for (const int sense : {1, -1}) {
    for (const int method : {-1, 0, 1, 2, 3, 4}) {
      const Model model = quadratic_model(env.get(), sense, 2);
      set(model.get(), {{"Method", method}});
      ASSERT_EQ(0, ZLPoptimize(model.get()));
      EXPECT_EQ(ZLP_OPTIMAL, int_attr(model.get(), "Status"));
      EXPECT_NEAR(sense * 1.5, dbl_attr(model.get(), "ObjVal"), kTol);
      const bool barrier = method == -1 || method == 2;
      EXPECT_EQ(barrier, int_attr(model.get(), "BarIterCount") > 0);
      EXPECT_EQ(barrier, dbl_attr(model.get(), "IterCount") == 0);
      int basis[2];
      EXPECT_EQ(barrier ? 10005 : 0, ZLPgetintattrarray(model.get(), "VBasis", 0, 2, basis));
      if (!barrier) {
        EXPECT_EQ(-3, basis[0] + basis[1]) << "one column basic, one superbasic";
      }
      double x[2], pi = 0, rc[2];
      ASSERT_EQ(0, ZLPgetdblattrarray(model.get(), "X", 0, 2, x));
      ASSERT_EQ(0, ZLPgetdblattrarray(model.get(), "RC", 0, 2, rc));
      ASSERT_EQ(0, ZLPgetdblattrelement(model.get(), "Pi", 0, &pi));
      for (int k = 0; k < 2; ++k) {
        EXPECT_NEAR(0.5, x[k], kTol);
        EXPECT_NEAR(0, rc[k], kTol) << "the gradient 2x + 1 less the row's share";
      }
      EXPECT_NEAR(sense * 2, pi, kTol);
      EXPECT_LE(dbl_attr(model.get(), "DualVio"), kTol);
      EXPECT_LE(dbl_attr(model.get(), "ComplVio"), kTol);
    }
  }
}

TEST(Optimize, QuadraticModelsThatCannotBeSolved) {
  const auto env = quiet_env();
  const Model concave = quadratic_model(env.get(), 1, -2);
  EXPECT_EQ(10020, ZLPoptimize(concave.get()));
  EXPECT_STREQ("Q not positive semi-definite (PSD)", ZLPgetmerrormsg(concave.get()));
  EXPECT_EQ(ZLP_LOADED, int_attr(concave.get(), "Status"));
  // The only column with negative curvature is fixed: presolve could take it away, what is said must not depend on
  // that.
  for (const int method : {1, 2}) {
    for (const int presolve : {-1, 0}) {
      const Model fixed = build(env.get(), {1, {1, 1}, {{{1, 1}, '>', 1}}});
      const int ind[] = {0, 1};
      const double val[] = {2, -2};
      ASSERT_EQ(0, ZLPaddqpterms(fixed.get(), 2, ind, ind, val));
      ASSERT_EQ(0, ZLPsetdblattrelement(fixed.get(), "UB", 1, 0));
      set(fixed.get(), {{"Method", method}, {"Presolve", presolve}});
      EXPECT_EQ(10020, ZLPoptimize(fixed.get())) << method << ' ' << presolve;
    }
  }
  // minimise x^2 - y: falls along y.
  const Model unbounded = build(env.get(), {1, {0, -1}, {{{1, 1}, '>', 1}}});
  const int first = 0;
  const double two = 2;
  ASSERT_EQ(0, ZLPaddqpterms(unbounded.get(), 1, &first, &first, &two));
  ASSERT_EQ(0, ZLPoptimize(unbounded.get()));
  EXPECT_EQ(ZLP_UNBOUNDED, int_attr(unbounded.get(), "Status"));
  const Model infeasible = build(env.get(), {1, {0, -1}, {{{1, 1}, '>', 1}, {{2, 2}, '<', 1}}});
  ASSERT_EQ(0, ZLPaddqpterms(infeasible.get(), 1, &first, &first, &two));
  ASSERT_EQ(0, ZLPoptimize(infeasible.get()));
  EXPECT_EQ(ZLP_INFEASIBLE, int_attr(infeasible.get(), "Status"));
}

// x^2 + y^2 + x + y with x + y >= 1: (0.5, 0.5) as it is, a corner once x is integral. Between 0 and 1 the curvature of
// x does not matter.
TEST(Optimize, QuadraticMipModels) {
  const auto env = quiet_env();
  for (const double curvature : {2.0, -2.0}) {
    const Model model = quadratic_model(env.get(), 1, 2);
    ASSERT_EQ(0, ZLPsetcharattrelement(model.get(), "VType", 0, 'B'));
    const int first = 0;
    const double change = curvature - 2;
    ASSERT_EQ(0, ZLPaddqpterms(model.get(), 1, &first, &first, &change));
    set(model.get(), {{"OutputFlag", 1}, {"Method", curvature > 0 ? 2 : 3}, {"NodeMethod", 2}});
    const std::string log = printed([&] { EXPECT_EQ(0, ZLPoptimize(model.get())); });
    EXPECT_EQ(ZLP_OPTIMAL, int_attr(model.get(), "Status"));
    EXPECT_NEAR(curvature > 0 ? 2 : 0, dbl_attr(model.get(), "ObjVal"), kTol);
    EXPECT_NEAR(dbl_attr(model.get(), "ObjVal"), dbl_attr(model.get(), "ObjBound"), kTol);
    const std::string concurrent =
        "WARNING: Concurrent optimizer not supported for QP models\n         Using dual simplex\n";
    EXPECT_EQ(curvature < 0, log.find(concurrent) != std::string::npos) << log;
    const std::string wanted = std::string("WARNING: ") + (curvature > 0 ? "Barrier" : "Concurrent") +
                               " not supported for solving MIQP root relaxation\n"
                               "         Using dual simplex\n"
                               "WARNING: Barrier not supported for solving MIQP node relaxations\n"
                               "         Using dual simplex\n"
                               "Variable types: ";
    EXPECT_NE(std::string::npos, log.find(wanted)) << log;
  }
  const Model concave = quadratic_model(env.get(), 1, -2);
  ASSERT_EQ(0, ZLPsetcharattrelement(concave.get(), "VType", 0, 'I'));
  EXPECT_EQ(10020, ZLPoptimize(concave.get()));
  EXPECT_EQ(ZLP_LOADED, int_attr(concave.get(), "Status"));
}

TEST(Optimize, QuadraticModelsSayWhichMethod) {
  const auto env = quiet_env();
  const Model model = quadratic_model(env.get(), 1, 2);
  set(model.get(), {{"Method", 3}});
  const std::string log = log_of(model.get());
  EXPECT_EQ(0u, log.find("Optimize a model with 1 rows, 2 columns and 2 nonzeros\n"
                         "Model has 2 quadratic terms\n"
                         "WARNING: Concurrent optimizer not supported for QP models\n"
                         "         Using dual simplex\n"))
      << log;
  EXPECT_EQ(std::string::npos, log.find("Q statistics")) << log;
  EXPECT_NE(std::string::npos, log.find("\nIteration    Objective       Primal Inf.    Dual Inf.      Time\n")) << log;
}

// Without crossover the interior solution is the result: optimal within tolerances, no basis.
TEST(Optimize, BarrierWithAndWithoutCrossover) {
  const auto env = quiet_env();
  for (const int crossover : {-1, 0}) {
    const Model model =
        build(env.get(), {-1, {3, 2, 4}, {{{1, 1, 2}, '<', 4}, {{2, 0, 3}, '<', 5}, {{2, 1, 3}, '<', 7}}});
    set(model.get(), {{"Method", 2}, {"Presolve", 0}, {"Crossover", crossover}});
    ASSERT_EQ(0, ZLPoptimize(model.get()));
    EXPECT_EQ(ZLP_OPTIMAL, int_attr(model.get(), "Status"));
    EXPECT_NEAR(10.5, dbl_attr(model.get(), "ObjVal"), 1e-5);
    EXPECT_LT(0, int_attr(model.get(), "BarIterCount"));
    int status = 0;
    EXPECT_EQ(crossover == 0 ? 10005 : 0, ZLPgetintattrelement(model.get(), "VBasis", 0, &status));
    ASSERT_EQ(0, ZLPsetintparam(ZLPgetenv(model.get()), "BarIterLimit", 1));
    const std::string log = log_of(model.get());
    EXPECT_EQ(ZLP_ITERATION_LIMIT, int_attr(model.get(), "Status"));
    EXPECT_EQ(crossover != 0, log.find("\n\nBarrier solution isn't available for crossover\n") != std::string::npos)
        << log;
  }
}

}  // namespace
}  // namespace zorvex::testing
