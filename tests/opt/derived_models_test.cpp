// Copies, fixed and relaxed models: what they carry over, what they drop, and that they stand on their own.
#include <gtest/gtest.h>

#include "env/environment.hpp"
#include "model/model.hpp"
#include "support/model_comparison.hpp"
#include "tiny_model.hpp"

namespace zorvex::testing {
namespace {

// maximise x + 2y + 3z + w + v - u + 7: a row of each kind, a variable of each type, both kinds of sets, a quadratic
// term, names, a start, priorities, parameters of its own, and one queued edit that nobody may see yet.
Model full_model(ZLPenv* env, bool quadratic) {
  const double obj[] = {1, 2, 3, 1, 1, -1}, lb[] = {0, 0, 1, 2, 2, -4}, ub[] = {9, 5, 3, 6, 4, 8};
  const char* const names[] = {"x", "y", "z", "w", "v", "u"};
  ZLPmodel* made = nullptr;
  EXPECT_EQ(0, ZLPnewmodel(env, &made, "full", 6, obj, lb, ub, "CBISNC", names));
  Model model(made);
  const int all[] = {0, 1, 2, 3, 4, 5}, two[] = {0, 5};
  const double ones[] = {1, 1, 1, 1, 1, -1}, pair[] = {1, -1};
  EXPECT_EQ(0, ZLPaddconstr(made, 6, all, ones, '<', 11.5, "cap"));
  EXPECT_EQ(0, ZLPaddconstr(made, 2, two, pair, '>', -6, "floor"));
  EXPECT_EQ(0, ZLPaddrangeconstr(made, 2, two, ones, 0, 8, "range"));
  const int type[] = {1, 2}, begin[] = {0, 2}, member[] = {0, 3, 0, 4, 5};
  const double weight[] = {1, 2, 3, 1, 2};
  EXPECT_EQ(0, ZLPaddsos(made, 2, 5, type, begin, member, weight));
  const double q = -0.5;
  if (quadratic) {
    EXPECT_EQ(0, ZLPaddqpterms(made, 1, all, all + 1, &q));
  }
  EXPECT_EQ(0, ZLPsetintattr(made, "ModelSense", -1));
  EXPECT_EQ(0, ZLPsetdblattr(made, "ObjCon", 7));
  EXPECT_EQ(0, ZLPupdatemodel(made));
  EXPECT_EQ(0, ZLPsetdblattrelement(made, "Start", 1, 1));
  EXPECT_EQ(0, ZLPsetintattrelement(made, "BranchPriority", 2, 5));
  EXPECT_EQ(0, ZLPsetintparam(ZLPgetenv(made), "Cuts", 2));
  return model;
}

// What of a model's data, start, priorities and own parameters is not as in `other`; "" when nothing.
std::string unlike(const ZLPmodel& model, const ZLPmodel& other) {
  if (model.data.name != other.data.name || model.data.sense != other.data.sense) return "name or sense";
  if (model.warm.start != other.warm.start) return "start";
  if (model.branch_priority != other.branch_priority) return "priorities";
  if (model.env->values->ints != other.env->values->ints) return "parameters";
  return difference(model.data, other.data, true);
}

using Derive = int (*)(ZLPmodel*, ZLPmodel**);

Model derive(Derive function, ZLPmodel* model) {
  ZLPmodel* made = nullptr;
  EXPECT_EQ(0, function(model, &made)) << ZLPgetmerrormsg(model);
  return Model(made);
}

TEST(CopyModel, HasAllDataOfTheLastUpdateAndItsOwnParameters) {
  const Env env = quiet_env();
  Model model = full_model(env.get(), true);
  const Model expected = full_model(env.get(), true);
  EXPECT_EQ(0, ZLPsetdblattrelement(model.get(), "LB", 0, 4));  // queued
  Model copy = derive(ZLPcopymodel, model.get());
  EXPECT_EQ("", unlike(*copy, *expected));
  EXPECT_EQ(0, ZLPupdatemodel(copy.get()));
  EXPECT_EQ("", unlike(*copy, *expected)) << "queued edits stay with the original";

  EXPECT_EQ(0, ZLPsetintparam(ZLPgetenv(copy.get()), "Cuts", 0));
  EXPECT_EQ(0, ZLPsetdblattrelement(copy.get(), "UB", 0, 1));
  EXPECT_EQ(0, ZLPsetdblattrelement(copy.get(), "Start", 0, 3));
  EXPECT_EQ(0, ZLPupdatemodel(copy.get()));
  EXPECT_EQ("", unlike(*model, *expected)) << "changes of the copy stay with the copy";
  EXPECT_NE("", unlike(*model, *copy));

  const Model second = derive(ZLPcopymodel, model.get());
  model.reset();
  copy.reset();
  EXPECT_EQ("", unlike(*second, *expected)) << "the original may be freed first";
}

TEST(CopyModel, StartsWhereTheOriginalWouldStart) {
  const Env env = quiet_env();
  const Model model = build(env.get(), {-1, {3, 2}, {{{1, 1}, '<', 4}, {{1, 3}, '<', 6}}});
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  const Model copy = derive(ZLPcopymodel, model.get());
  EXPECT_EQ(1, int_attr(copy.get(), "Status")) << "results do not come along";
  int from[2], to[2];
  for (const char* name : {"VBasis", "CBasis"}) {
    ASSERT_EQ(0, ZLPgetintattrarray(model.get(), name, 0, 2, from));
    ASSERT_EQ(0, ZLPgetintattrarray(copy.get(), name, 0, 2, to));
    EXPECT_EQ(from[0], to[0]);
    EXPECT_EQ(from[1], to[1]);
  }
  ASSERT_EQ(0, ZLPoptimize(copy.get()));
  EXPECT_NEAR(12, dbl_attr(copy.get(), "ObjVal"), 1e-9);
  EXPECT_EQ(0, dbl_attr(copy.get(), "IterCount"));
}

TEST(FixedModel, GivesTheSolutionBackWithDuals) {
  const Env env = quiet_env();
  const Model model = full_model(env.get(), false);
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  ASSERT_EQ(2, int_attr(model.get(), "Status"));
  const std::vector<double> x = dbl_array(model.get(), "X", "NumVars");
  const Model fixed = derive(ZLPfixedmodel, model.get());
  EXPECT_EQ(0, int_attr(fixed.get(), "IsMIP"));
  EXPECT_EQ(0, int_attr(fixed.get(), "NumSOS"));
  ASSERT_EQ(0, ZLPoptimize(fixed.get()));
  ASSERT_EQ(2, int_attr(fixed.get(), "Status"));
  EXPECT_NEAR(dbl_attr(model.get(), "ObjVal"), dbl_attr(fixed.get(), "ObjVal"), 1e-6);
  const std::vector<double> lb = dbl_array(fixed.get(), "LB", "NumVars"), ub = dbl_array(fixed.get(), "UB", "NumVars");
  for (const int integer : {1, 2, 4}) {
    EXPECT_EQ(lb[integer], ub[integer]);
    EXPECT_EQ(lb[integer], x[integer]);
  }
  EXPECT_EQ(3u, dbl_array(fixed.get(), "Pi", "NumConstrs").size());
}

// One semicontinuous variable whose branch the objective decides, alone in its model.
TEST(FixedModel, SemicontinuousVariablesStayInTheirBranch) {
  struct Case {
    const char* what;
    char type;
    double obj, lb, ub;
    double fixed_lb, fixed_ub;
  };
  const Case cases[] = {
      {"zero branch", 'S', 1, 2, 6, 0, 0},         {"upper branch", 'S', -1, 2, 6, 2, 6},
      {"negative branch", 'S', 1, -6, -2, -6, -2}, {"zero above a negative branch", 'S', -1, -6, -2, 0, 0},
      {"integer zero branch", 'N', 1, 2, 6, 0, 0}, {"integer value", 'N', -1, 2, 6, 6, 6},
      {"no gap, zero value", 'S', 1, 0, 6, 0, 0},
  };
  const Env env = quiet_env();
  for (const Case& c : cases) {
    const Model model = build(env.get(), {1, {c.obj}, {}, {c.lb}, {c.ub}, std::string(1, c.type)});
    ASSERT_EQ(0, ZLPoptimize(model.get()));
    const Model fixed = derive(ZLPfixedmodel, model.get());
    EXPECT_EQ(c.fixed_lb, dbl_array(fixed.get(), "LB", "NumVars")[0]) << c.what;
    EXPECT_EQ(c.fixed_ub, dbl_array(fixed.get(), "UB", "NumVars")[0]) << c.what;
  }
}

TEST(RelaxModel, BoundsOfEachType) {
  struct Case {
    char type;
    double lb, ub;
    double relaxed_lb, relaxed_ub;
  };
  const Case cases[] = {{'B', -3, 5, 0, 1},   {'B', 1, 5, 1, 1},        {'I', 1, 3, 1, 3},       {'S', 2, 6, 0, 6},
                        {'S', -6, -2, -6, 0}, {'S', -1, 4, -1, 4},      {'N', 2, 1e30, 0, 1e30}, {'S', 5, 3, 0, 0},
                        {'C', -2, 7, -2, 7},  {'I', -1e30, 3, -1e30, 3}};
  const Env env = quiet_env();
  for (const Case& c : cases) {
    const Model model = build(env.get(), {1, {1}, {}, {c.lb}, {c.ub}, std::string(1, c.type)});
    const Model relaxed = derive(ZLPrelaxmodel, model.get());
    EXPECT_EQ(0, int_attr(relaxed.get(), "IsMIP")) << c.type;
    EXPECT_EQ(c.relaxed_lb, dbl_array(relaxed.get(), "LB", "NumVars")[0]) << c.type << c.lb;
    EXPECT_EQ(c.relaxed_ub, dbl_array(relaxed.get(), "UB", "NumVars")[0]) << c.type << c.ub;
  }
  const Model model = full_model(env.get(), false);
  const Model relaxed = derive(ZLPrelaxmodel, model.get());
  EXPECT_EQ(0, int_attr(relaxed.get(), "NumSOS"));
  EXPECT_EQ(1, dbl_array(relaxed.get(), "Start", "NumVars")[1]);
  int priority = 0;
  EXPECT_EQ(0, ZLPgetintattrelement(relaxed.get(), "BranchPriority", 2, &priority));
  EXPECT_EQ(5, priority);
  ASSERT_EQ(0, ZLPoptimize(relaxed.get()));
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  EXPECT_GE(dbl_attr(relaxed.get(), "ObjVal"), dbl_attr(model.get(), "ObjVal") - 1e-6);
}

TEST(DerivedModels, Refusals) {
  const Env env = quiet_env();
  const Model model = full_model(env.get(), false);
  for (const Derive function : {ZLPcopymodel, ZLPfixedmodel, ZLPrelaxmodel}) {
    EXPECT_EQ(10002, function(model.get(), nullptr));
    ZLPmodel* out = model.get();
    EXPECT_EQ(10002, function(nullptr, &out));
    EXPECT_EQ(nullptr, out);
  }
  ZLPmodel* out = nullptr;
  EXPECT_EQ(0, ZLPcheckmodel(model.get()));
  EXPECT_EQ(10005, ZLPfixedmodel(model.get(), &out));
  EXPECT_STREQ("The model has no solution to fix its variables at", ZLPgetmerrormsg(model.get()));
  EXPECT_EQ(nullptr, out);
}

}  // namespace
}  // namespace zorvex::testing
