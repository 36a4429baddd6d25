// What a solve prints, and the files it leaves behind.
#include <string>

#include "opt/tiny_model.hpp"
#include "support/models.hpp"

namespace zorvex::testing {
namespace {

const Tiny kLp{-1, {3, 2}, {{{1, 1}, '<', 4}, {{1, 3}, '<', 6}}, {}, {3, ZLP_INFINITY}};
const Tiny kMip{-1, {10, 13, 7, 8}, {{{3, 4, 2, 3}, '<', 6}}, {}, {}, "BBBB"};

Model loud(ZLPenv* env, const Tiny& tiny) {
  Model model = build(env, tiny, {{"OutputFlag", 1}});
  return model;
}

// The parts in this order, each after the end of the one before.
void expect_in_order(const std::string& log, const std::vector<std::string>& parts) {
  std::size_t at = 0;
  for (const std::string& part : parts) {
    const std::size_t found = log.find(part, at);
    ASSERT_NE(std::string::npos, found) << "missing: " << part << "\nin:\n" << log;
    at = found + part.size();
  }
}

TEST(OptimizeLog, ContinuousModel) {
  const auto env = quiet_env();
  const Model model = loud(env.get(), kLp);
  set(model.get(), {{"Presolve", 0}});
  const std::string log = printed([&] { ASSERT_EQ(0, ZLPoptimize(model.get())); });
  EXPECT_EQ(0U, log.find("Optimize a model with 2 rows, 2 columns and 4 nonzeros\n")) << log;
  expect_in_order(log, {"Solved in ", " iterations and ", " seconds\n", "Optimal objective  1.100000000e+01\n"});
  EXPECT_EQ(std::string::npos, log.find("Presolve")) << log;
}

TEST(OptimizeLog, PresolveLinesAndEverythingRemoved) {
  const auto env = quiet_env();
  const Model model = loud(env.get(), {1, {1, 2}, {{{0, 0}, '<', 1}}, {}, {5, 5}});
  expect_in_order(printed([&] { ASSERT_EQ(0, ZLPoptimize(model.get())); }),
                  {"Optimize a model with 1 rows, 2 columns and 0 nonzeros\n",
                   "Presolve time: ", "Presolve: All rows and columns removed\n", "Solved in 0 iterations and ",
                   "Optimal objective  0.000000000e+00\n"});
}

TEST(OptimizeLog, IntegerModelClosingBlock) {
  const auto env = quiet_env();
  const Model model = loud(env.get(), kMip);
  const std::string log = printed([&] { ASSERT_EQ(0, ZLPoptimize(model.get())); });
  expect_in_order(log, {"Optimize a model with 1 rows, 4 columns and 4 nonzeros\n",
                        "Variable types: 0 continuous, 4 integer (4 binary)\n", "\nExplored ", " nodes (",
                        " simplex iterations) in ", " seconds\n", "Thread count was 1 (of ",
                        " available processors)\n\nOptimal solution found (tolerance 1.00e-04)\n",
                        "Best objective 2.000000000000e+01, best bound 2.0000", "e+01, gap 0.0%\n"});
}

TEST(OptimizeLog, IntegerModelWithoutSolution) {
  const auto env = quiet_env();
  const Model model = loud(env.get(), {1, {1}, {{{1}, '>', 2}}, {}, {}, "B"});
  expect_in_order(printed([&] { ASSERT_EQ(0, ZLPoptimize(model.get())); }),
                  {"\nModel is infeasible\n", "Best objective -, best bound -, gap -\n"});
}

TEST(OptimizeLog, LogFileGetsTheSameTextAsTheConsole) {
  const ScratchDirectory scratch;
  const auto env = quiet_env();
  const Model model = loud(env.get(), kMip);
  ASSERT_EQ(0, ZLPsetstrparam(ZLPgetenv(model.get()), "LogFile", "solve.log"));
  const std::string banner = slurp("solve.log");
  const std::string log = printed([&] { ASSERT_EQ(0, ZLPoptimize(model.get())); });
  EXPECT_EQ(banner + log, slurp("solve.log"));
  ASSERT_EQ(0, ZLPsetintparam(ZLPgetenv(model.get()), "OutputFlag", 0));
  EXPECT_EQ("", printed([&] { ASSERT_EQ(0, ZLPoptimize(model.get())); }));
  EXPECT_EQ(banner + log, slurp("solve.log"));
}

TEST(OptimizeFiles, ResultFile) {
  const ScratchDirectory scratch;
  const auto env = quiet_env();
  const struct {
    const char* name;
    bool written;
  } cases[] = {{"out.mps", true}, {"out.sol", true}, {"no/such/dir/out.mps", false}, {"out.unknown", false}};
  for (const auto& c : cases) {
    const Model model = loud(env.get(), kLp);
    ASSERT_EQ(0, ZLPsetstrparam(ZLPgetenv(model.get()), "ResultFile", c.name));
    const std::string log = printed([&] { EXPECT_EQ(0, ZLPoptimize(model.get())) << "a lost file is only a warning"; });
    const std::string line = c.written
                                 ? std::string("\nWrote requested result file '") + c.name + "'\n\n"
                                 : std::string("\nWARNING: unable to write requested result file '") + c.name + "'\n\n";
    ASSERT_GE(log.size(), line.size());
    EXPECT_EQ(line, log.substr(log.size() - line.size()));
    EXPECT_EQ(c.written, std::filesystem::exists(c.name)) << c.name;
    EXPECT_STREQ("", ZLPgetmerrormsg(model.get()));
  }
}

TEST(OptimizeFiles, DebugDump) {
  const ScratchDirectory scratch;
  const auto env = quiet_env();
  const Model model = build(env.get(), kLp, {{"ZORV_PAR_DUMP", 1}, {"MIPGap", 0.5}});
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  EXPECT_EQ("MIPGap  0.5\nOutputFlag  0\nZORV_PAR_DUMP  1\n", slurp("zorvex.prm"));
  ZLPmodel* again = nullptr;
  ASSERT_EQ(0, ZLPreadmodel(env.get(), "zorvex.rew", &again));
  const Model copy(again);
  ASSERT_EQ(0, ZLPoptimize(copy.get()));
  EXPECT_NEAR(-11, dbl_attr(copy.get(), "ObjVal"), 1e-6) << "files hold the minimisation form";
  const char* name = nullptr;
  ASSERT_EQ(0, ZLPgetstrattrelement(copy.get(), "VarName", 1, &name));
  EXPECT_STREQ("C0000001", name);
}

// The presolved model has the same optimum as the model it came from.
TEST(OptimizeFiles, PresolvedModelOnRequest) {
  ZORVEX_NEED_MODEL(path, "lp/adlittle.mps.gz");
  const ScratchDirectory scratch;
  const auto env = quiet_env();
  const Model model = read_model(env.get(), path);
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  EXPECT_FALSE(std::filesystem::exists("junk.mps"));
  ASSERT_EQ(0, ZLPresetmodel(model.get()));
  ASSERT_EQ(0, ZLPsetintparam(ZLPgetenv(model.get()), "ZORV_PAR_WRITEPREMODEL", 1));
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  const Model reduced = read_model(env.get(), "junk.mps");
  ASSERT_NE(nullptr, reduced);
  EXPECT_LT(int_attr(reduced.get(), "NumConstrs"), int_attr(model.get(), "NumConstrs"));
  ASSERT_EQ(0, ZLPoptimize(reduced.get()));
  const double optimum = dbl_attr(model.get(), "ObjVal");
  EXPECT_NEAR(optimum, dbl_attr(reduced.get(), "ObjVal"), 1e-6 * std::abs(optimum));
}

}  // namespace
}  // namespace zorvex::testing
