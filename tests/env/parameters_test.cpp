#include <array>
#include <clocale>
#include <cmath>
#include <cstring>
#include <limits>

#include "env/environment.hpp"
#include "env/parameter_lines.hpp"
#include "env/processors.hpp"
#include "support/scratch.hpp"
#include "support/session.hpp"

namespace zorvex::testing {
namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();

TEST(ParameterTable, ShapeAndDefaultsWithinBounds) {
  EXPECT_EQ(154, kNumParameterRows);
  EXPECT_EQ(153, kNumDescriptors);
  EXPECT_EQ(76, kNumPublicParameters);
  const auto env = load();
  for (const ParameterDescriptor& descriptor : env->store->descriptors()) {
    SCOPED_TRACE(descriptor.name);
    if (descriptor.type == ParamType::kSeparator) {
      EXPECT_EQ(0, descriptor.position);
      continue;
    }
    EXPECT_EQ(&descriptor, env->store->find(descriptor.name));
    EXPECT_EQ(static_cast<int>(descriptor.type), ZLPgetparamtype(env.get(), descriptor.name));
    if (descriptor.type == ParamType::kString) continue;
    EXPECT_LE(descriptor.min, descriptor.def);
    EXPECT_LE(descriptor.def, descriptor.max);
    char text[64];
    std::snprintf(text, sizeof text, "%.17g", descriptor.def);
    EXPECT_EQ(0, ZLPsetparam(env.get(), descriptor.name, text)) << ZLPgeterrormsg(env.get());
  }
}

TEST(ParameterNames, Matching) {
  const struct {
    const char* name;
    int type;
  } cases[] = {
      {"FeasibilityTol", 2},   {"feasibilitytol", 2},
      {"FEASIBILITY_TOL", 2},  {"F_e_a_s_ibilityTol__", 2},
      {"zorvpardump", 1},      {"ZORV_PAR_DUMP", 1},
      {"_FeasibilityTol", -1}, {"Feasibility", -1},
      {"FeasibilityTol2", -1}, {"", -1},
      {"EndPublic", -1},       {"End", -1},
      {"LogFile", 3},          {"Feasibility Tol", -1},
  };
  const auto env = load();
  for (const auto& c : cases) EXPECT_EQ(c.type, ZLPgetparamtype(env.get(), c.name)) << c.name;
  EXPECT_EQ(-1, ZLPgetparamtype(nullptr, "Method"));
  EXPECT_EQ(-1, ZLPgetparamtype(env.get(), nullptr));
}

// One call that sets a parameter, what it answers, and the value of `read` afterwards.
struct SetCase {
  enum Kind { kInt, kDouble, kText, kString } kind;
  const char* name;
  double number;
  const char* text;
  int code;
  std::string message;
  const char* read;
  double value;
};

int apply(ZLPenv* env, const SetCase& c) {
  switch (c.kind) {
    case SetCase::kInt:
      return ZLPsetintparam(env, c.name, static_cast<int>(c.number));
    case SetCase::kDouble:
      return ZLPsetdblparam(env, c.name, c.number);
    case SetCase::kText:
      return ZLPsetparam(env, c.name, c.text);
    default:
      return ZLPsetstrparam(env, c.name, c.text);
  }
}

double read_number(ZLPenv* env, const char* name) {
  if (ZLPgetparamtype(env, name) == ZLP_PARAM_INT) {
    int value = -99;
    EXPECT_EQ(0, ZLPgetintparam(env, name, &value));
    return value;
  }
  double value = -99;
  EXPECT_EQ(0, ZLPgetdblparam(env, name, &value));
  return value;
}

TEST(ParameterSet, ValuesCodesAndTexts) {
  using enum SetCase::Kind;
  const std::string threads_text =
      "Unable to set parameter Threads to value 1024 (maximum is " + std::to_string(count_logical_processors()) + ")";
  const SetCase cases[] = {
      {kInt, "method", 2, nullptr, 0, "", "Method", 2},
      {kInt, "Method", 5, nullptr, 10008, "Unable to set parameter Method to value 5 (maximum is 4)", "Method", 2},
      {kInt, "Method", -2, nullptr, 10008, "Unable to set parameter Method to value -2 (minimum is -1)", "Method", 2},
      {kInt, "SolutionLimit", 2147483647, nullptr, 0, "", "SolutionLimit", 2e9},
      {kInt, "Method", 2147483647, nullptr, 10008, "Unable to set parameter Method to value 2000000000 (maximum is 4)",
       "Method", 2},
      {kInt, "Threads", 1024, nullptr, 10008, threads_text, "Threads", 0},
      {kInt, "FeasibilityTol", 1, nullptr, 10007, "Wrong type for parameter: FeasibilityTol", "FeasibilityTol", 1e-6},
      {kInt, "Nothing", 1, nullptr, 10007, "Unknown parameter: Nothing", "Method", 2},
      {kInt, "EndPublic", 1, nullptr, 10007, "Wrong type for parameter: EndPublic", "Method", 2},
      {kInt, nullptr, 1, nullptr, 10002, "NULL argument for required parameter", "Method", 2},
      {kDouble, "TimeLimit", kInfinite, nullptr, 0, "", "TimeLimit", 1e100},
      {kDouble, "TimeLimit", 1e300, nullptr, 0, "", "TimeLimit", 1e100},
      {kDouble, "TimeLimit", -1, nullptr, 10008, "Unable to set parameter TimeLimit to value -1 (minimum is 0)",
       "TimeLimit", 1e100},
      {kDouble, "TimeLimit", std::nan(""), nullptr, 10008,
       "Unable to set parameter TimeLimit to value nan (minimum is 0)", "TimeLimit", 1e100},
      {kDouble, "FeasibilityTol", 0.5, nullptr, 10008,
       "Unable to set parameter FeasibilityTol to value 0.5 (maximum is 0.01)", "FeasibilityTol", 1e-6},
      {kDouble, "Method", 1, nullptr, 10007, "Wrong type for parameter: Method", "Method", 2},
      {kText, "Method", 0, "2.0000000001", 0, "", "Method", 2},
      {kText, "Method", 0, "2.5", 10008, "Invalid value '2.5' for parameter 'Method'\n", "Method", 2},
      {kText, "METHOD", 0, "two", 10008, "Invalid value 'two' for parameter 'METHOD'\n", "Method", 2},
      {kText, "Method", 0, "nan", 10008, "Invalid value 'nan' for parameter 'Method'\n", "Method", 2},
      {kText, "Method", 0, "inf", 10008, "Invalid value 'inf' for parameter 'Method'\n", "Method", 2},
      {kText, "Method", 0, "1e20", 10008, "Unable to set parameter Method to value 2000000000 (maximum is 4)", "Method",
       2},
      {kText, "MIPGap", 0, "nan", 10008, "Invalid value 'nan' for parameter 'MIPGap'\n", "MIPGap", 1e-4},
      {kText, "MIPGap", 0, " 1.25e-1x", 0, "", "MIPGap", 0.125},
      {kText, "MIPGap", 0, "", 10008, "Invalid value '' for parameter 'MIPGap'\n", "MIPGap", 1e-4},
      {kText, "EndPublic", 0, "1", 10007, "Unknown parameter: EndPublic", "Method", 2},
      {kText, "Method", 0, nullptr, 10002, "NULL argument for required parameter", "Method", 2},
      {kString, "Dummy", 0, "MIPGap 0.5", 0, "", "MIPGap", 0.5},
      {kString, "Dummy", 0, "cut_passes 3", 0, "", "CutPasses", 3},
      {kText, "Dummy", 0, "MIPGap 0.75", 0, "", "MIPGap", 0.75},
      {kString, "Dummy", 0, "MIPGap", 10007, "Unknown parameter requested", "MIPGap", 1e-4},
      {kString, "Dummy", 0, "MIPGap x", 10007, "Unknown parameter requested", "MIPGap", 1e-4},
      {kString, "Dummy", 0, "MIPGap -1", 10008, "Unable to set parameter MIPGap to value -1 (minimum is 0)", "MIPGap",
       1e-4},
      {kString, "Dummy", 0, "NodefileDir 1", 10007, "Wrong type for parameter: NodefileDir", "MIPGap", 1e-4},
      {kString, "Method", 0, "1", 10007, "Wrong type for parameter: Method", "Method", 2},
  };
  const auto env = load();
  for (const SetCase& c : cases) {
    SCOPED_TRACE(std::string(c.name == nullptr ? "null" : c.name) + " " + std::to_string(c.number) + " " +
                 (c.text == nullptr ? "" : c.text));
    ASSERT_EQ(0, ZLPresetparams(env.get()));  // empties the message
    ASSERT_EQ(0, ZLPsetintparam(env.get(), "Method", 2));
    EXPECT_EQ(c.code, apply(env.get(), c));
    EXPECT_EQ(c.message, ZLPgeterrormsg(env.get()));
    EXPECT_EQ(c.value, read_number(env.get(), c.read));
  }
}

TEST(ParameterSet, SeparatorTextComesOnlyIntoAnEmptyBuffer) {
  const auto env = load();
  EXPECT_EQ(10007, ZLPsetparam(env.get(), "first", "1"));
  EXPECT_EQ(10007, ZLPsetparam(env.get(), "EndPublic", "1"));
  EXPECT_STREQ("Unknown parameter: first", ZLPgeterrormsg(env.get()));
}

TEST(ParameterSet, DecimalPointWhateverTheLocale) {
  const std::string before = std::setlocale(LC_NUMERIC, nullptr);
  if (std::setlocale(LC_NUMERIC, "de_DE.UTF-8") == nullptr) GTEST_SKIP() << "no locale with a decimal comma here";
  const auto env = load();
  EXPECT_EQ(0, ZLPsetparam(env.get(), "MIPGap", "0.5"));
  const std::string written = parameter_lines(*env);
  std::setlocale(LC_NUMERIC, before.c_str());
  EXPECT_EQ("MIPGap  0.5\n", written);
}

TEST(ParameterGet, InfoAndNames) {
  const auto env = load();
  ZLPenv* e = env.get();
  int value = 0, min = 0, max = 0, def = 0;
  ASSERT_EQ(0, ZLPsetintparam(e, "Threads", 1));
  EXPECT_EQ(0, ZLPgetintparaminfo(e, "Threads", &value, &min, &max, &def));
  EXPECT_EQ((std::array{1, -1, count_logical_processors(), 0}), (std::array{value, min, max, def}));
  EXPECT_EQ(0, ZLPgetintparaminfo(e, "Threads", nullptr, nullptr, nullptr, nullptr));
  double dvalue = 0, dmin = 0, dmax = 0, ddef = 0;
  EXPECT_EQ(0, ZLPgetdblparaminfo(e, "Cutoff", &dvalue, &dmin, &dmax, &ddef));
  EXPECT_EQ((std::array{1e100, -1e100, 1e100, 1e100}), (std::array{dvalue, dmin, dmax, ddef}));
  char text[ZLP_MAX_STRLEN] = "", text_def[ZLP_MAX_STRLEN] = "";
  EXPECT_EQ(0, ZLPsetstrparam(e, "NodefileDir", "/tmp"));
  EXPECT_EQ(0, ZLPgetstrparaminfo(e, "NodefileDir", text, text_def));
  EXPECT_STREQ("/tmp", text);
  EXPECT_STREQ(".", text_def);
  EXPECT_EQ(10002, ZLPgetintparam(e, "Threads", nullptr));
  EXPECT_EQ(10002, ZLPgetdblparam(e, "MIPGap", nullptr));
  EXPECT_EQ(10002, ZLPgetstrparam(e, "LogFile", nullptr));
  EXPECT_EQ(10007, ZLPgetintparam(e, "MIPGap", &value));

  EXPECT_EQ(76, ZLPgetnumparams(e));
  EXPECT_EQ(0, ZLPgetnumparams(nullptr));
  const char* name = nullptr;
  EXPECT_EQ(0, ZLPgetparamname(e, 0, &name));
  EXPECT_STREQ("Cutoff", name);
  EXPECT_EQ(0, ZLPgetparamname(e, 75, &name));
  EXPECT_STREQ("OutputFlag", name);
  for (const int i : {76, 77, -1}) {
    name = "x";
    EXPECT_EQ(10003, ZLPgetparamname(e, i, &name)) << i;
    EXPECT_EQ(nullptr, name) << i;
  }
  EXPECT_EQ(10002, ZLPgetparamname(e, 0, nullptr));
}

TEST(ParameterSet, StringsAreCutTo511AndSurviveAReset) {
  const ScratchDirectory scratch;
  const auto env = load();
  ZLPenv* e = env.get();
  char text[ZLP_MAX_STRLEN];
  ASSERT_EQ(0, ZLPsetstrparam(e, "ResultFile", std::string(600, 'r').c_str()));
  ASSERT_EQ(0, ZLPgetstrparam(e, "ResultFile", text));
  EXPECT_EQ(std::string(511, 'r'), text);
  ASSERT_EQ(0, ZLPsetstrparam(e, "LogFile", "a.log"));
  ASSERT_EQ(0, ZLPsetdblparam(e, "MIPGap", 0.5));
  ASSERT_EQ(0, ZLPresetparams(e));
  ASSERT_EQ(0, ZLPgetstrparam(e, "LogFile", text));
  EXPECT_STREQ("a.log", text);
  EXPECT_EQ(1e-4, read_number(e, "MIPGap"));

  EXPECT_EQ("Warning: Failed to open log file 'no/dir/b.log'\n",
            printed([&] { EXPECT_EQ(10013, ZLPsetstrparam(e, "LogFile", "no/dir/b.log")); }));
  EXPECT_STREQ("Unable to write file", ZLPgeterrormsg(e));
  ASSERT_EQ(0, ZLPgetstrparam(e, "LogFile", text));
  EXPECT_STREQ("a.log", text);
  printed([&] { ZLPmsg(e, "still to a\n"); });
  EXPECT_NE(std::string::npos, slurp("a.log").find("still to a\n"));
  ASSERT_EQ(0, ZLPsetstrparam(e, "LogFile", nullptr));
  EXPECT_EQ(nullptr, env->log_file);
}

TEST(MasterWarning, OncePerArmingAndOnlyWithModels) {
  const std::string warning = "Warning: parameter changes on this environment will not affect existing models.\n";
  const auto env = load();
  const auto set = [&] { ZLPsetintparam(env.get(), "Method", 1); };
  EXPECT_EQ("", printed(set)) << "no models yet";
  const EnvironmentPtr model = new_model_environment(*env);
  EXPECT_EQ("", printed([&] { ZLPsetintparam(model.get(), "Method", 0); })) << "a model's own parameters";
  EXPECT_EQ("", printed([&] { ZLPsetintparam(env.get(), "NoSuch", 0); })) << "failed lookup";
  EXPECT_EQ(warning, printed([&] { ZLPsetintparam(env.get(), "Method", 99); })) << "lookup works, range fails";
  EXPECT_EQ("", printed(set)) << "already said";
  const EnvironmentPtr second = new_model_environment(*env);
  EXPECT_EQ(warning, printed([&] { ZLPsetstrparam(env.get(), "ResultFile", "x"); })) << "armed again";
  ASSERT_EQ(0, ZLPsetintparam(env.get(), "ZORV_PAR_MASTERENVWARN", 0));
  const EnvironmentPtr third = new_model_environment(*env);
  EXPECT_EQ("", printed(set)) << "switched off";
}

TEST(ParameterLines, WrittenInTableOrderWithoutDefaultsStringsAndFlagged) {
  const auto env = load();
  EXPECT_EQ("", parameter_lines(*env));
  ASSERT_EQ(0, ZLPsetintparam(env.get(), "ZORV_PAR_DUMP", 1));
  ASSERT_EQ(0, ZLPsetintparam(env.get(), "ZORV_PAR_MASTERENVWARN", 0));
  ASSERT_EQ(0, ZLPsetintparam(env.get(), "Threads", 1));
  ASSERT_EQ(0, ZLPsetdblparam(env.get(), "MIPGap", 0.5));
  ASSERT_EQ(0, ZLPsetstrparam(env.get(), "ResultFile", "x.sol"));
  EXPECT_EQ("MIPGap  0.5\nThreads  1\nZORV_PAR_DUMP  1\n", parameter_lines(*env));
}

TEST(ParameterLines, EveryKindOfLine) {
  const std::string long_line = "MIPGap 0.5" + std::string(149, ' ') + "MIPGap 0.75\n";
  const struct {
    const char* name;
    std::string lines;
    std::string log;
    double mip_gap;
  } cases[] = {
      {"plain", "MIPGap 0.5\n", "", 0.5},
      {"anything after the value is ignored", "\t MIPGap\t0.5 # half\r\n", "", 0.5},
      {"comment", "#MIPGap 0.5\n", "", 1e-4},
      {"blank lines", "\n   \n\r\n", "", 1e-4},
      {"comment sign not in the first place", " # MIPGap 0.5\n",
       "Warning: unknown parameter # in p.prm\n1 warnings while reading parameter file p.prm\n", 1e-4},
      {"no newline at the end", "mip_gap 0.5", "", 0.5},
      {"no value", "MIPGap\n", "Failed to set parameter MIPGap to value \n", 1e-4},
      {"not a number", "MIPGap half\n", "Failed to set parameter MIPGap to value half\n", 1e-4},
      {"unknown and out of range", "Foo 1\nMIPGap -1\n",
       "Warning: unknown parameter Foo in p.prm\nFailed to set parameter MIPGap to value -1\n"
       "1 warnings while reading parameter file p.prm\n",
       1e-4},
      {"two unknown", "Foo 1\nBar 1\nMIPGap 0.5\n",
       "Warning: unknown parameter Foo in p.prm\nWarning: unknown parameter Bar in p.prm\n"
       "2 warnings while reading parameter file p.prm\n",
       0.5},
      {"a long line is read in pieces of 159 bytes", long_line, "", 0.75},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const auto env = load();
    EXPECT_EQ(c.log, printed([&] { apply_parameter_lines(*env, c.lines, "p.prm"); }));
    EXPECT_EQ(c.mip_gap, read_number(env.get(), "MIPGap"));
  }
}

}  // namespace
}  // namespace zorvex::testing
