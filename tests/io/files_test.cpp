// Choice of reader and writer by name, probing, side files, and the errors of the three file functions.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "io/file_suffix.hpp"
#include "io/io_fixture.hpp"

namespace zorvex::testing {
namespace {

const char kModel[] =
    "NAME tiny\nROWS\n N  c\n L  r1\n G  r2\nCOLUMNS\n    M 'MARKER' 'INTORG'\n    i  c  1  r1  2\n    b  r2  1\n"
    "    M 'MARKER' 'INTEND'\n    x  r1  1  r2  1\nRHS\n    B  r1  9\nBOUNDS\n UP B i 4\nENDATA\n";

TEST(FileSuffix, Types) {
  const struct {
    const char* name;
    FileType type;
  } cases[] = {{"a.mps", FileType::kMps},
               {"Model.MPS.gz", FileType::kMps},
               {"model.mps.GZ", FileType::kUnknown},
               {"a.rew.bz2", FileType::kRew},
               {"a.lp.zip", FileType::kLp},
               {"a.rLp.7z", FileType::kRlp},
               {"a.ilp", FileType::kIlp},
               {"a.mst", FileType::kMst},
               {"a.sol.gz", FileType::kSol},
               {"a.bas", FileType::kBas},
               {"a.prm", FileType::kPrm},
               {"a.QPS", FileType::kQps},
               {"a.ord", FileType::kOrd},
               {"mps", FileType::kUnknown},
               {"", FileType::kUnknown},
               {".mps", FileType::kMps},
               {"a.mps.lp", FileType::kLp},
               {"a.gz", FileType::kUnknown},
               {"a.mps.gz.gz", FileType::kUnknown},
               {"a.mps ", FileType::kUnknown},
               {"a.mpsx", FileType::kUnknown}};
  for (const auto& c : cases) EXPECT_EQ(file_type_of(c.name), c.type) << c.name;
  EXPECT_EQ(compression_of("a.7z"), Compression::k7z);
  EXPECT_EQ(compression_of("a.GZ"), Compression::kNone);
  EXPECT_EQ(without_compression("a.rew.bz2"), "a.rew");
  EXPECT_EQ(probed_type(1), FileType::kMps);
  EXPECT_EQ(probed_type(6), FileType::kMps);
  EXPECT_EQ(probed_type(9), FileType::kLp);
  EXPECT_EQ(probed_type(12), FileType::kMps);
}

class Files : public ::testing::Test {
 protected:
  std::string file(const std::string& name) { return dir_.file(name); }
  // Stores the model under a name whose suffix may ask for compression.
  Model stored(const std::string& name = "m.mps") {
    spit(file("source.mps"), kModel);
    Model model = env_.read(file("source.mps"));
    std::filesystem::remove(file("source.mps"));
    EXPECT_EQ(ZLPwrite(model.get(), file(name).c_str()), 0);
    env_.clear_log();
    return model;
  }
  int write(const Model& m, const std::string& name) { return ZLPwrite(m.get(), file(name).c_str()); }
  int load(const Model& m, const std::string& name) { return ZLPread(m.get(), file(name).c_str()); }

  RecordingEnv env_;
  TempDir dir_;
};

TEST_F(Files, ProbingFindsTheFile) {
  const struct {
    const char* stored;
    const char* asked;
  } cases[] = {{"afiro.mps.bz2", "afiro"}, {"afiro.mps", "afiro"}, {"afiro.mps.gz", "afiro.mps"}, {"x.rew", "x"}};
  for (const auto& c : cases) {
    const Model original = stored(c.stored);
    const Model model = env_.read(file(c.asked));
    ASSERT_NE(model, nullptr) << c.asked << env_.log();
    std::string log = env_.log();
    const std::size_t time = log.find("Reading time = ");
    ASSERT_NE(time, std::string::npos) << log;
    EXPECT_EQ(log.substr(0, time), "Read MPS format model from file " + file(c.stored) + "\n");
    EXPECT_TRUE(log.ends_with(" seconds\ntiny: 2 rows, 3 columns, 4 nonzeros\n")) << log;
    std::filesystem::remove(file(c.stored));
  }
}

TEST_F(Files, QpsIsAnnouncedByTheWayItWasFound) {
  spit(file("x.QPS"), kModel);
  EXPECT_NE(env_.read(file("x.QPS")), nullptr);
  EXPECT_EQ(env_.log().find("Read LP format model from file " + file("x.QPS") + "\n"), 0u) << env_.log();
  env_.clear_log();
  spit(file("y.qps"), kModel);
  EXPECT_NE(env_.read(file("y")), nullptr);
  EXPECT_EQ(env_.log().find("Read MPS format model from file " + file("y.qps") + "\n"), 0u) << env_.log();
}

TEST_F(Files, ExactNameComesFirstAndDirectoriesDoNotCount) {
  stored("x.mps.gz");
  spit(file("x.mps"), "no model\n");
  int code = 0;
  EXPECT_EQ(env_.read(file("x.mps"), &code), nullptr);
  EXPECT_EQ(code, 10012);
  std::filesystem::create_directory(file("y"));
  stored("y.mps");
  EXPECT_NE(env_.read(file("y")), nullptr);
}

TEST_F(Files, ReadmodelErrors) {
  spit(file("x.abc"), kModel);
  spit(file("x.sol"), kModel);
  const struct {
    std::string name;
    int code;
    std::string text;
  } cases[] = {{file("none"), 10003, "Unable to open file '" + file("none") + "' for input"},
               {file("x.abc"), 10012, "Unknown file type for file '" + file("x.abc") + "'"},
               {file("x.sol"), 10012, "Unknown file type for file '" + file("x.sol") + "'"},
               {"", 10003, "Unable to open file '' for input"}};
  for (const auto& c : cases) {
    int code = 0;
    EXPECT_EQ(env_.read(c.name, &code), nullptr) << c.name;
    EXPECT_EQ(code, c.code) << c.name;
    EXPECT_EQ(env_.error(), c.text) << c.name;
  }
  EXPECT_EQ(env_.log(), "");
  ZLPmodel* model = reinterpret_cast<ZLPmodel*>(&env_);
  EXPECT_EQ(ZLPreadmodel(env_.get(), nullptr, &model), 10002);
  EXPECT_EQ(model, nullptr);
  EXPECT_EQ(env_.error(), "No 'filename' argument supplied");
  EXPECT_EQ(ZLPreadmodel(nullptr, "x.mps", &model), 10002);
  EXPECT_EQ(ZLPreadmodel(env_.get(), file("x.mps").c_str(), nullptr), 10002);
}

TEST_F(Files, WriteErrors) {
  const Model m = stored();
  const auto full = [&](const std::string& before, const std::string& name, const std::string& after) {
    return before + "'" + file(name) + "'" + after;
  };
  const struct {
    std::string name;
    int code;
    std::string text;
  } cases[] = {{"m.ord", 10013, full("Unknown file type for file ", "m.ord", "")},
               {"m.qps", 10013, full("Unknown file type for file ", "m.qps", "")},
               {"m", 10013, full("Unknown file type for file ", "m", "")},
               {"m.mps.GZ", 10013, full("Unknown file type for file ", "m.mps.GZ", "")},
               {"m.mps.zip", 10013, full("Unable to write to file ", "m.mps.zip", "\n")},
               {"no/m.mps", 10013, full("Unable to write to file ", "no/m.mps", "\n")},
               {"no/m.lp", 10013, full("Unable to open file ", "no/m.lp", " for output")},
               {"m.lp.zip", 10013, full("Unable to open file ", "m.lp.zip", " for output")},
               {"no/m.mst", 10013, full("Unable to open file ", "no/m.mst", " for output")},
               {"no/m.prm", 10003, full("Unable to write to parameter file ", "no/m.prm", "")},
               {"m.ilp", 10005, "No IIS available for current model"},
               {"m.sol", 10005, full("No solution available for file ", "m.sol", "")},
               {"m.mst", 10005, full("No MIP start available for file ", "m.mst", "")},
               {"m.bas", 10005, full("No basis available for file ", "m.bas", "")}};
  m->warm.start.assign(3, 0.0);
  for (const auto& c : cases) {
    if (c.name == "m.mst") m->warm.start.clear();
    EXPECT_EQ(ZLPcheckmodel(m.get()), 0);
    EXPECT_EQ(write(m, c.name), c.code) << c.name;
    std::string text = ZLPgetmerrormsg(m.get());
    std::erase(text, '\'');
    std::string expected = c.text;
    std::erase(expected, '\'');
    EXPECT_EQ(text, expected) << c.name;
  }
  EXPECT_EQ(ZLPwrite(m.get(), nullptr), 10002);
  EXPECT_STREQ(ZLPgetmerrormsg(m.get()), "No 'filename' argument supplied");
  EXPECT_EQ(ZLPwrite(nullptr, "m.mps"), 10002);
}

TEST_F(Files, FullDiskIsAnError) {
  const Model m = stored();
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
  std::filesystem::create_symlink("/dev/full", file("full.mps"));
  EXPECT_EQ(write(m, "full.mps"), 10013);
}

TEST_F(Files, ReadErrors) {
  const Model m = stored();
  for (const char* name : {"a.mps", "a.rew", "a.lp", "a.rlp", "a.ilp", "a.sol", "a.qps"}) {
    spit(file(name), "");
    EXPECT_EQ(load(m, name), 10012) << name;
    EXPECT_EQ(ZLPgetmerrormsg(m.get()), "Can't import file '" + file(name) + "' into a model");
  }
  spit(file("a.xyz"), "");
  EXPECT_EQ(load(m, "a.xyz"), 10012);
  EXPECT_EQ(ZLPgetmerrormsg(m.get()), "Unknown file type for file '" + file("a.xyz") + "'");
  EXPECT_EQ(load(m, "none.mst"), 10003);
  EXPECT_EQ(ZLPgetmerrormsg(m.get()), "Unable to open file '" + file("none.mst") + "' for input");
  EXPECT_EQ(ZLPread(m.get(), nullptr), 10002);
  EXPECT_STREQ(ZLPgetmerrormsg(m.get()), "No 'filename' argument supplied");
}

TEST_F(Files, Solutions) {
  const Model m = stored();
  m->solution.x = {2, 1, 1.0 / 3};
  m->solution.status = SolveStatus::kOptimal;
  m->solution.has_objective = true;
  m->solution.obj_val = 2;
  ASSERT_EQ(write(m, "m.sol"), 0);
  EXPECT_EQ(
      slurp(file("m.sol")),
      "# Solution for model tiny\n# Status = OPTIMAL\n# Objective value = 2\ni 2\nb 1\nx 3.3333333333333331e-01\n");
  ASSERT_EQ(write(m, "m.mst"), 0);
  EXPECT_EQ(slurp(file("m.mst")), "# MIP start for model tiny\ni 2\nb 1\n");
}

TEST_F(Files, MipStarts) {
  const Model m = stored();
  spit(file("m.mst"), "# start\r\n\nx 0.5\n  b\t1 \nnobody 3\nsomebody 4\n");
  ASSERT_EQ(load(m, "m.mst"), 0);
  EXPECT_EQ(m->warm.start, (std::vector<double>{kUndefinedStart, 1, 0.5}));
  EXPECT_EQ(env_.log(), "Warning: 2 names in file '" + file("m.mst") + "' are not variables of the model\n");
  spit(file("n.mst"), "i 3\n");
  ASSERT_EQ(load(m, "n.mst"), 0);
  EXPECT_EQ(m->warm.start, (std::vector<double>{3, 1, 0.5}));
  ASSERT_EQ(write(m, "o.mst.gz"), 0);
  m->warm.start.clear();
  ASSERT_EQ(load(m, "o.mst"), 0);  // found compressed
  EXPECT_EQ(m->warm.start, (std::vector<double>{3, 1, kUndefinedStart}));
}

TEST_F(Files, BrokenSideFilesChangeNothing) {
  const Model m = stored();
  m->warm.start = {1, 1, 1};
  const struct {
    const char* name;
    const char* text;
    int line;
    const char* shown;
  } cases[] = {{"a.mst", "i 2\nb\n", 2, "b"},
               {"a.mst", "i 2\nb x\n", 2, "b x"},
               {"a.mst", "i inf\n", 1, "i inf"},
               {"a.ord", "i 2.5\n", 1, "i 2.5"},
               {"a.ord", "i 1e10\n", 1, "i 1e10"},
               {"a.bas", " XX i r1\nENDATA\n", 1, " XX i r1"},
               {"a.bas", "NAME t\n XU i\n", 2, " XU i"},
               {"a.bas", "rubbish\n", 1, "rubbish"}};
  for (const auto& c : cases) {
    spit(file(c.name), c.text);
    env_.clear_log();
    EXPECT_EQ(load(m, c.name), 10012) << c.text;
    const std::string text = "line " + std::to_string(c.line) + " of file " + file(c.name) + " is wrong: " + c.shown;
    EXPECT_EQ(env_.log(), "Error: " + text + "\n");
    EXPECT_EQ(ZLPgetmerrormsg(m.get()), text);
  }
  EXPECT_EQ(m->warm.start, (std::vector<double>{1, 1, 1}));
  EXPECT_TRUE(m->branch_priority.empty());
  EXPECT_FALSE(m->warm.has_basis());
}

TEST_F(Files, Priorities) {
  const Model m = stored();
  spit(file("m.ord"), "# name priority\ni 7\nx -2\n");
  ASSERT_EQ(load(m, "m.ord"), 0);
  EXPECT_EQ(m->branch_priority, (std::vector<int>{7, 0, -2}));
}

TEST_F(Files, Bases) {
  const Model m = stored();
  m->warm.vbasis = {ZLP_BASIC, ZLP_NONBASIC_UPPER, ZLP_NONBASIC_LOWER};
  m->warm.cbasis = {ZLP_BASIC, ZLP_NONBASIC_LOWER};
  ASSERT_EQ(write(m, "m.bas"), 0);
  const std::string text = "NAME tiny\n XL i         r2\n UL b       \nENDATA\n";
  EXPECT_EQ(slurp(file("m.bas")), text);
  const WarmStart before = m->warm;
  m->warm.drop_basis();
  ASSERT_EQ(load(m, "m.bas"), 0);
  EXPECT_EQ(m->warm.vbasis, before.vbasis);
  EXPECT_EQ(m->warm.cbasis, before.cbasis);
  env_.clear_log();
  spit(file("n.bas"), "NAME t\n XU i r1\n XU b r1\n UL i\n XL zz r2\nENDATA\n");
  ASSERT_EQ(load(m, "n.bas"), 0);
  EXPECT_EQ(m->warm.vbasis, (std::vector<int>{ZLP_BASIC, ZLP_NONBASIC_LOWER, ZLP_NONBASIC_LOWER}));
  EXPECT_EQ(m->warm.cbasis, (std::vector<int>{ZLP_NONBASIC_UPPER, ZLP_BASIC}));
  EXPECT_EQ(env_.log(),
            "Warning: 3 lines of basis file '" + file("n.bas") + "' do not fit the model, the basis is repaired\n");
}

TEST_F(Files, Parameters) {
  const Model m = stored();
  ZLPenv* env = ZLPgetenv(m.get());
  ZLPsetdblparam(env, "MIPGap", 0.5);
  ASSERT_EQ(write(m, "m.prm.gz"), 0);
  ZLPsetdblparam(env, "MIPGap", 0.25);
  ASSERT_EQ(load(m, "m.prm"), 0);
  double gap = 0;
  ZLPgetdblparam(env, "MIPGap", &gap);
  EXPECT_EQ(gap, 0.5);
  ASSERT_EQ(ZLPwriteparams(env, file("n.prm").c_str()), 0);
  EXPECT_NE(slurp(file("n.prm")).find("MIPGap  0.5\n"), std::string::npos);
  EXPECT_EQ(ZLPreadparams(env, file("none.prm").c_str()), 10003);
  EXPECT_EQ(ZLPgeterrormsg(env), "Unable to read parameter file " + file("none.prm"));
  EXPECT_EQ(ZLPwriteparams(env, file("no/n.prm").c_str()), 10003);
  EXPECT_EQ(ZLPgeterrormsg(env), "Unable to write to parameter file " + file("no/n.prm"));
}

// The log names the program that is missing; the file is not taken for an empty model.
TEST_F(Files, MissingCompressorIsNamed) {
  stored("m.mps.bz2");
  const std::string saved = std::getenv("PATH");
  setenv("PATH", "/nonexistent", 1);
  int code = 0;
  EXPECT_EQ(env_.read(file("m"), &code), nullptr);
  setenv("PATH", saved.c_str(), 1);
  EXPECT_EQ(code, 10003);
  EXPECT_EQ(env_.log(), "Error: file " + file("m.mps.bz2") + ": cannot start bzip2: No such file or directory\n");
}

}  // namespace
}  // namespace zorvex::testing
