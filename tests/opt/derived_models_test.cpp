// Copies, fixed and relaxed models: what they carry over, what they drop, and that they stand on their own.
#include <gtest/gtest.h>

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

struct Answer {
  int code;
  std::vector<double> number;
  std::string text;
  bool operator==(const Answer&) const = default;
};

// Everything the interface tells about the data of a model.
std::vector<Answer> describe(ZLPmodel* model) {
  std::vector<Answer> result;
  const char* text = nullptr;
  for (const char* name : {"NumConstrs", "NumVars", "NumSOS", "NumNZs", "NumQNZs", "ModelSense"}) {
    result.push_back({0, {static_cast<double>(int_attr(model, name))}, name});
  }
  result.push_back({0, {dbl_attr(model, "ObjCon")}, "ObjCon"});
  EXPECT_EQ(0, ZLPgetstrattr(model, "ModelName", &text));
  result.push_back({0, {}, text});
  for (const char* name : {"LB", "UB", "Obj", "Start"}) result.push_back({0, dbl_array(model, name, "NumVars"), name});
  result.push_back({0, dbl_array(model, "RHS", "NumConstrs"), "RHS"});
  const int cols = int_attr(model, "NumVars"), rows = int_attr(model, "NumConstrs");
  const auto strings = [&](const char* name, int count) {
    for (int k = 0; k < count; ++k) {
      EXPECT_EQ(0, ZLPgetstrattrelement(model, name, k, &text));
      result.push_back({0, {}, text});
    }
  };
  strings("VarName", cols);
  strings("ConstrName", rows);
  std::string letters(static_cast<std::size_t>(cols), ' '), senses(static_cast<std::size_t>(rows), ' ');
  EXPECT_EQ(0, ZLPgetcharattrarray(model, "VType", 0, cols, letters.data()));
  EXPECT_EQ(0, ZLPgetcharattrarray(model, "Sense", 0, rows, senses.data()));
  result.push_back({0, {}, letters + senses});
  std::vector<double> values;
  for (int row = 0; row < rows; ++row) {
    double lower = 0, upper = 0;
    EXPECT_EQ(0, ZLPgetconstrsides(model, &lower, &upper, row, 1));
    values.insert(values.end(), {lower, upper});
    for (int col = 0; col < cols; ++col) {
      double a = 0;
      EXPECT_EQ(0, ZLPgetcoeff(model, row, col, &a));
      values.push_back(a);
    }
  }
  for (int col = 0; col < cols; ++col) {
    int priority = -1;
    EXPECT_EQ(0, ZLPgetintattrelement(model, "BranchPriority", col, &priority));
    values.push_back(priority);
  }
  int count = 0, types[4], begin[4], index[16], second[16];
  double weight[16];
  if (int_attr(model, "NumSOS") > 0) {
    EXPECT_EQ(0, ZLPgetsos(model, &count, types, begin, index, weight, 0, int_attr(model, "NumSOS")));
    values.insert(values.end(), index, index + count);
    values.insert(values.end(), weight, weight + count);
    values.insert(values.end(), types, types + int_attr(model, "NumSOS"));
  }
  EXPECT_EQ(0, ZLPgetq(model, &count, index, second, weight));
  for (int k = 0; k < count; ++k) values.insert(values.end(), {double(index[k]), double(second[k]), weight[k]});
  result.push_back({0, values, "matrix"});
  int cuts = 0;
  EXPECT_EQ(0, ZLPgetintparam(ZLPgetenv(model), "Cuts", &cuts));
  result.push_back({0, {static_cast<double>(cuts)}, "Cuts"});
  return result;
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
  EXPECT_EQ(0, ZLPsetdblattrelement(model.get(), "LB", 0, 4));  // queued
  const std::vector<Answer> expected = describe(model.get());
  Model copy = derive(ZLPcopymodel, model.get());
  EXPECT_EQ(expected, describe(copy.get()));
  EXPECT_EQ(0, ZLPupdatemodel(copy.get()));
  EXPECT_EQ(expected, describe(copy.get())) << "queued edits stay with the original";

  EXPECT_EQ(0, ZLPsetintparam(ZLPgetenv(copy.get()), "Cuts", 0));
  EXPECT_EQ(0, ZLPsetdblattrelement(copy.get(), "UB", 0, 1));
  EXPECT_EQ(0, ZLPupdatemodel(copy.get()));
  EXPECT_EQ(expected, describe(model.get())) << "changes of the copy stay with the copy";

  Model second = derive(ZLPcopymodel, model.get());
  model.reset();
  copy.reset();
  EXPECT_EQ(expected, describe(second.get())) << "the original may be freed first";
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
