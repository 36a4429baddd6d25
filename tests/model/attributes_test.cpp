// Attribute access: the table, the order of its checks, every text.
#include "model/attribute.hpp"

#include <functional>

#include "model_fixture.hpp"

namespace zorvex::test {
namespace {

class Attributes : public ModelTest {};

TEST_F(Attributes, TableShape) {
  const auto table = attribute_table();
  ASSERT_EQ(table.size(), 104u);
  EXPECT_STREQ(table.front().name, "NumConstrs");
  EXPECT_STREQ(table.back().name, "UnbdRay");
  int settable = 0, optional = 0;
  for (const Attribute& attribute : table) {
    EXPECT_EQ(find_attribute(attribute.name), &attribute) << attribute.name;
    settable += attribute.settable();
    optional += attribute.may_be_unavailable();
  }
  EXPECT_EQ(settable, 17);
  EXPECT_EQ(optional, 74);
}

// Sample of the table's columns: type, kind, settable.
TEST_F(Attributes, Info) {
  make_model(2, 2);
  const struct {
    const char* name;
    int type, kind, settable;
  } kRows[] = {{"ModelName", 3, 0, 1}, {"VType", 0, 1, 1},         {"Sense", 0, 2, 1},         {"RHS", 2, 2, 1},
               {"IISSOS", 1, 3, 0},    {"IterCount", 2, 0, 0},     {"BarIterCount", 1, 0, 0},  {"ConstrName", 3, 2, 1},
               {"X", 2, 1, 0},         {"ComplVioIndex", 1, 0, 0}, {"BranchPriority", 1, 1, 1}};
  for (const auto& row : kRows) {
    int type = -1, kind = -1, settable = -1;
    EXPECT_EQ(ZLPgetattrinfo(model_, row.name, &type, &kind, &settable), 0);
    EXPECT_EQ(type, row.type) << row.name;
    EXPECT_EQ(kind, row.kind) << row.name;
    EXPECT_EQ(settable, row.settable) << row.name;
  }
  EXPECT_EQ(ZLPgetattrinfo(model_, "LB", nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(ZLPgetattrinfo(model_, "Nonsense", nullptr, nullptr, nullptr), 10004);
  EXPECT_EQ(message(), "Unknown attribute 'Nonsense'");
}

TEST_F(Attributes, FreshModelHasOnlyItsData) {
  make_model(2, 2);
  for (const Attribute& attribute : attribute_table()) {
    const bool data = !attribute.may_be_unavailable() && attribute.reader != nullptr;
    const bool statistic = std::string(attribute.name).find("Coeff") != std::string::npos ||
                           std::string(attribute.name) == "MaxBound" || std::string(attribute.name) == "MinBound" ||
                           std::string(attribute.name) == "MaxRHS" || std::string(attribute.name) == "MinRHS";
    EXPECT_EQ(ZLPisattravailable(model_, attribute.name), data || statistic ? 1 : 0) << attribute.name;
  }
  EXPECT_EQ(ZLPisattravailable(model_, "Nonsense"), 0);
  EXPECT_EQ(ZLPisattravailable(nullptr, "LB"), 0);
}

const int kTwo[] = {0, 5};
const int kFine[] = {1, 0};
const double kNumbers[] = {1, 2, 3};
const double kNanSecond[] = {1, __builtin_nan("")};
const int kIntegers[] = {1, -7};
double out_double[4];
int out_int[4];
char out_char[4];

using M = ZLPmodel*;

struct Refused {
  int code;
  const char* text;
  std::function<int(ZLPmodel*)> call;
};

// Model: 3 rows, 2 columns, never solved.
const Refused kRefused[] = {
    {10005, "Unable to retrieve attribute 'ObjVal'", [](M m) { return ZLPgetdblattr(m, "ObjVal", out_double); }},
    {10004, "Requested int attribute 'ObjVal' is of type double",
     [](M m) { return ZLPgetintattr(m, "objval", out_int); }},
    {10004, "Requested double attribute 'NumVars' is of type int", [](M m) { return ZLPsetdblattr(m, "NumVars", 1); }},
    {10004, "Requested char attribute 'VarName' is of type string",
     [](M m) { return ZLPgetcharattrelement(m, "VarName", 0, out_char); }},
    {10004, "Attribute 'Runtime' may not be set", [](M m) { return ZLPsetdblattr(m, "Runtime", 1); }},
    {10004, "Attribute 'X' may not be set", [](M m) { return ZLPsetdblattrelement(m, "X", 9, 1); }},
    {10004, "Unknown attribute 'Bounds'", [](M m) { return ZLPgetdblattr(m, "Bounds", out_double); }},
    {10004, "You tried to access scalar attribute 'ObjCon' as an array",
     [](M m) { return ZLPgetdblattrarray(m, "ObjCon", 0, 1, out_double); }},
    {10004, "You tried to access scalar attribute 'ObjCon' as an array",
     [](M m) { return ZLPsetdblattrelement(m, "ObjCon", 0, 1); }},
    {10004, "You tried to access array attribute 'LB' as a scalar",
     [](M m) { return ZLPgetdblattr(m, "LB", out_double); }},
    {10004, "You tried to access array attribute 'X' as a scalar", [](M m) { return ZLPsetdblattr(m, "X", 1); }},
    {10006, "Index out of range for attribute 'LB'", [](M m) { return ZLPgetdblattrarray(m, "LB", 2, 1, out_double); }},
    {10006, "Index out of range for attribute 'RHS'",
     [](M m) { return ZLPgetdblattrarray(m, "RHS", -1, 2, out_double); }},
    {10006, "Index out of range for attribute 'LB'",
     [](M m) { return ZLPgetdblattrarray(m, "LB", 0, -1, out_double); }},
    {10006, "Index out of range for attribute 'LB'",
     [](M m) { return ZLPgetdblattrarray(m, "LB", 2147483647, 1, out_double); }},
    {10006, "Index out of range for attribute 'Sense'", [](M m) { return ZLPsetcharattrelement(m, "Sense", 3, '<'); }},
    {10006, "Index 5 out of range for attribute 'LB'",
     [](M m) { return ZLPgetdblattrlist(m, "LB", 2, kTwo, out_double); }},
    {10006, "Index out of range for attribute 'LB'", [](M m) { return ZLPsetdblattrlist(m, "LB", 3, kTwo, kNumbers); }},
    {10002, "NULL argument for required parameter",
     [](M m) { return ZLPgetdblattrlist(m, "LB", 2, nullptr, out_double); }},
    {10006, "Index out of range for attribute 'X'", [](M m) { return ZLPgetdblattrarray(m, "X", 0, 9, nullptr); }},
    {10005, "Unable to retrieve attribute 'X'", [](M m) { return ZLPgetdblattrarray(m, "X", 0, 2, nullptr); }},
    {10005, "Unable to retrieve attribute 'SAObjLow'",
     [](M m) { return ZLPgetdblattrelement(m, "SAObjLow", 0, out_double); }},
    {10005, "Unable to retrieve attribute 'Kappa'", [](M m) { return ZLPgetdblattr(m, "Kappa", out_double); }},
    {10005, "Unable to retrieve attribute 'IntVio'", [](M m) { return ZLPgetdblattr(m, "IntVio", out_double); }},
    {10002, "NULL 'value' argument supplied", [](M m) { return ZLPgetdblattrarray(m, "LB", 0, 2, nullptr); }},
    {10002, "NULL 'value' argument supplied", [](M m) { return ZLPgetintattr(m, "NumVars", nullptr); }},
    {10002, "NULL 'value' argument supplied", [](M m) { return ZLPsetdblattrarray(m, "LB", 0, 2, nullptr); }},
    {10002, "NULL argument for required parameter", [](M m) { return ZLPgetdblattr(m, nullptr, out_double); }},
    {10003, "Element 1 of a double array is Nan.", [](M m) { return ZLPsetdblattrarray(m, "UB", 0, 2, kNanSecond); }},
    {10003, "Element 1 of a double array is Nan or Inf.",
     [](M m) { return ZLPsetdblattrlist(m, "Obj", 2, kFine, kNanSecond); }},
    {10003, "Double value is Nan or Inf.", [](M m) { return ZLPsetdblattrelement(m, "RHS", 0, kNanSecond[1]); }},
    {10003, "Double value is Nan or Inf.", [](M m) { return ZLPsetdblattr(m, "ObjCon", 1.0 / 0.0); }},
    {10003, "Unable to set attribute 'Sense'", [](M m) { return ZLPsetcharattrelement(m, "Sense", 0, 'L'); }},
    {10003, "Unable to set attribute 'VType'", [](M m) { return ZLPsetcharattrelement(m, "VType", 0, 'Z'); }},
    {10003, "Unable to set attribute 'ModelSense'", [](M m) { return ZLPsetintattr(m, "ModelSense", 2); }},
    {10003, "Unable to set attribute 'VBasis'", [](M m) { return ZLPsetintattrarray(m, "VBasis", 0, 2, kIntegers); }},
    {10003, "Unable to set attribute 'CDualNorm'", [](M m) { return ZLPsetdblattrelement(m, "CDualNorm", 0, 0); }},
    {10003, "Name too long (maximum name length is 255 characters)",
     [](M m) { return ZLPsetstrattr(m, "ModelName", std::string(256, 'x').c_str()); }},
};

TEST_F(Attributes, RefusedAccess) {
  make_model(3, 2);
  for (const Refused& refused : kRefused) {
    ASSERT_EQ(ZLPaddvar(model_, -1, nullptr, nullptr, 0, 0, 0, 'C', nullptr), 10003);  // an old text to be replaced
    EXPECT_EQ(refused.call(model_), refused.code) << refused.text;
    EXPECT_EQ(message(), refused.text);
  }
  EXPECT_FALSE(has_pending_changes(*model_));
  EXPECT_EQ(ZLPisattravailable(model_, "VBasis"), 0) << "refused values must not start a basis";
}

TEST_F(Attributes, CountZeroSucceedsBeforeAnyCheck) {
  EXPECT_EQ(ZLPgetdblattrarray(nullptr, "X", 0, 0, nullptr), 0);
  EXPECT_EQ(ZLPsetstrattrarray(nullptr, nullptr, -1, 0, nullptr), 0);
  EXPECT_EQ(ZLPgetintattrlist(nullptr, "VBasis", 0, nullptr, nullptr), 0);
  EXPECT_EQ(ZLPgetdblattrarray(nullptr, "X", 0, 1, out_double), 10002);
}

TEST_F(Attributes, NamesMatchInAnyCaseAndWithUnderscores) {
  make_model(1, 3);
  for (const char* name : {"NumVars", "NUMVARS", "numvars", "Num_Vars", "num__vars_"}) EXPECT_EQ(get_int(name), 3);
  int value = 0;
  EXPECT_EQ(ZLPgetintattr(model_, "_NumVars", &value), 10004);
}

TEST_F(Attributes, WritesShowAfterUpdate) {
  make_model(3, 3);
  const double obj[] = {4, 5, 6}, lb[] = {-1e20, -1.1e20}, ub[] = {9e19, 1e20};
  const int odd[] = {2, 0};
  const char* names[] = {"alpha", nullptr};
  EXPECT_EQ(ZLPsetdblattrarray(model_, "Obj", 0, 3, obj), 0);
  EXPECT_EQ(ZLPsetdblattrlist(model_, "LB", 2, odd, lb), 0);
  EXPECT_EQ(ZLPsetdblattrlist(model_, "UB", 2, odd, ub), 0);
  EXPECT_EQ(ZLPsetdblattrelement(model_, "Obj", 1, 50), 0);
  EXPECT_EQ(ZLPsetcharattrarray(model_, "VType", 0, 3, "BIN"), 0);
  EXPECT_EQ(ZLPsetstrattrlist(model_, "VarName", 2, odd, names), 0);
  EXPECT_EQ(ZLPsetdblattrelement(model_, "RHS", 1, -7), 0);
  EXPECT_EQ(ZLPsetcharattrelement(model_, "Sense", 0, '>'), 0);
  EXPECT_EQ(ZLPsetcharattrelement(model_, "Sense", 1, '='), 0);
  EXPECT_EQ(ZLPsetstrattrelement(model_, "ConstrName", 0, "row"), 0);
  EXPECT_EQ(ZLPsetintattr(model_, "ModelSense", -1), 0);
  EXPECT_EQ(ZLPsetdblattr(model_, "ObjCon", 2.5), 0);
  EXPECT_EQ(ZLPsetstrattr(model_, "ModelName", "renamed"), 0);
  EXPECT_EQ(get_dbl("Obj", 1), 0) << "nothing is seen before the update";
  EXPECT_EQ(get_int("ModelSense"), 1);
  EXPECT_EQ(get_int("IsMIP"), 0);
  update();
  EXPECT_EQ(get_dbl("Obj", 0), 4);
  EXPECT_EQ(get_dbl("Obj", 1), 50);
  EXPECT_EQ(get_dbl("LB", 2), -1e20);
  EXPECT_EQ(get_dbl("LB", 0), -1e30);
  EXPECT_EQ(get_dbl("UB", 2), 9e19);
  EXPECT_EQ(get_dbl("UB", 0), 1e30);
  EXPECT_EQ(get_char("VType", 2), 'N');
  EXPECT_EQ(get_int("NumIntVars"), 3);
  EXPECT_EQ(get_int("NumBinVars"), 1);
  EXPECT_EQ(get_int("IsMIP"), 1);
  EXPECT_EQ(get_str("VarName", 2), "alpha");
  EXPECT_EQ(get_str("VarName", 0), "C0000000");
  EXPECT_EQ(get_str("ConstrName", 0), "row");
  EXPECT_EQ(get_str("ConstrName", 2), "R0000002");
  EXPECT_EQ(get_dbl("RHS", 1), -7);
  EXPECT_EQ(get_dbl("RHS", 0), 10);
  EXPECT_EQ(get_char("Sense", 0), '>');
  EXPECT_EQ(coefficient(0, 2), 21) << "a turned row reads as given";
  EXPECT_EQ(coefficient(1, 1), 12);
  EXPECT_EQ(get_int("ModelSense"), -1);
  EXPECT_EQ(get_dbl("ObjCon"), 2.5);
  const char* name = nullptr;
  EXPECT_EQ(ZLPgetstrattr(model_, "ModelName", &name), 0);
  EXPECT_STREQ(name, "renamed");
}

TEST_F(Attributes, StartingInformationTakesEffectAtOnce) {
  make_model(2, 3);
  EXPECT_EQ(get_dbl("Start", 1), 1e101);
  EXPECT_EQ(get_int("BranchPriority", 1), 0);
  EXPECT_EQ(ZLPsetdblattrelement(model_, "Start", 1, 4), 0);
  EXPECT_EQ(ZLPsetintattrelement(model_, "BranchPriority", 2, 7), 0);
  EXPECT_EQ(ZLPsetintattrelement(model_, "VBasis", 1, 0), 0);
  EXPECT_EQ(ZLPsetintattrelement(model_, "CBasis", 0, -1), 0);
  EXPECT_EQ(get_int("HasDualNorm"), 0);
  EXPECT_EQ(ZLPsetdblattrelement(model_, "VDualNorm", 2, 3), 0);
  EXPECT_EQ(get_dbl("Start", 1), 4);
  EXPECT_EQ(get_dbl("Start", 0), 1e101);
  EXPECT_EQ(get_int("BranchPriority", 2), 7);
  EXPECT_EQ(get_int("VBasis", 0), -1);
  EXPECT_EQ(get_int("VBasis", 1), 0);
  EXPECT_EQ(get_int("CBasis", 0), -1);
  EXPECT_EQ(get_int("CBasis", 1), 0);
  EXPECT_EQ(get_int("HasDualNorm"), 1);
  EXPECT_EQ(get_dbl("VDualNorm", 2), 3);
  EXPECT_EQ(get_dbl("CDualNorm", 0), 1);
  EXPECT_FALSE(has_pending_changes(*model_));
}

// One value of each type through every shape: what one writes, all read.
TEST_F(Attributes, ShapesAgree) {
  make_model(4, 4);
  const int middle[] = {2, 1}, all[] = {3, 2, 1, 0};
  const int priorities[] = {7, 8};
  ASSERT_EQ(ZLPsetintattrlist(model_, "BranchPriority", 2, middle, priorities), 0);
  ASSERT_EQ(ZLPsetcharattrlist(model_, "VType", 2, middle, "IB"), 0);
  const char* const names[] = {"two", "one"};
  ASSERT_EQ(ZLPsetstrattrlist(model_, "VarName", 2, middle, names), 0);
  const double bounds[] = {3, 0.5};
  ASSERT_EQ(ZLPsetdblattrlist(model_, "UB", 2, middle, bounds), 0);
  update();

  int ints[4], ints_back[4];
  char chars[4], chars_back[4];
  const char *texts[4], *texts_back[4];
  double doubles[4], doubles_back[4];
  ASSERT_EQ(ZLPgetintattrarray(model_, "BranchPriority", 0, 4, ints), 0);
  ASSERT_EQ(ZLPgetintattrlist(model_, "BranchPriority", 4, all, ints_back), 0);
  ASSERT_EQ(ZLPgetcharattrarray(model_, "VType", 0, 4, chars), 0);
  ASSERT_EQ(ZLPgetcharattrlist(model_, "VType", 4, all, chars_back), 0);
  ASSERT_EQ(ZLPgetstrattrarray(model_, "VarName", 0, 4, texts), 0);
  ASSERT_EQ(ZLPgetstrattrlist(model_, "VarName", 4, all, texts_back), 0);
  ASSERT_EQ(ZLPgetdblattrarray(model_, "UB", 0, 4, doubles), 0);
  ASSERT_EQ(ZLPgetdblattrlist(model_, "UB", 4, all, doubles_back), 0);
  const int expected_int[] = {0, 8, 7, 0};
  const std::string expected_char = "CBIC";
  const char* const expected_text[] = {"C0000000", "one", "two", "C0000003"};
  const double expected_double[] = {1e30, 0.5, 3, 1e30};
  for (int k = 0; k < 4; ++k) {
    EXPECT_EQ(ints[k], expected_int[k]);
    EXPECT_EQ(chars[k], expected_char[k]);
    EXPECT_STREQ(texts[k], expected_text[k]);
    EXPECT_EQ(doubles[k], expected_double[k]);
    EXPECT_EQ(ints_back[3 - k], ints[k]);
    EXPECT_EQ(chars_back[3 - k], chars[k]);
    EXPECT_STREQ(texts_back[3 - k], texts[k]);
    EXPECT_EQ(doubles_back[3 - k], doubles[k]);
    EXPECT_EQ(get_int("BranchPriority", k), ints[k]);
    EXPECT_EQ(get_char("VType", k), chars[k]);
    EXPECT_EQ(get_str("VarName", k), texts[k]);
    EXPECT_EQ(get_dbl("UB", k), doubles[k]);
  }
}

}  // namespace
}  // namespace zorvex::test
