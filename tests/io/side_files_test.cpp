// Basis, start, priority and solution files on models with awkward names, and back.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "io/io_fixture.hpp"

namespace zorvex::testing {
namespace {

constexpr int B = ZLP_BASIC, L = ZLP_NONBASIC_LOWER, U = ZLP_NONBASIC_UPPER, S = ZLP_SUPERBASIC;

class SideFiles : public ::testing::Test {
 protected:
  Model model(const std::string& text) {
    spit(file("m.lp"), text);
    Model made = env_.read(file("m.lp"));
    EXPECT_NE(made, nullptr) << env_.log();
    env_.clear_log();
    return made;
  }
  // Rows of every kind; columns with both, one and no bounds.
  Model small() {
    return model(
        "min x + y + z + w st le: x + y <= 4 ge: x - y >= -2 eq: x + z = 3 rg: 1 <= y + z <= 5\n"
        "bounds z <= 2 w free -inf <= y <= 7 end\n");
  }
  std::string file(const std::string& name) { return dir_.file(name); }
  int load(const Model& m, const std::string& name) { return ZLPread(m.get(), file(name).c_str()); }
  int write(const Model& m, const std::string& name) { return ZLPwrite(m.get(), file(name).c_str()); }

  RecordingEnv env_;
  TempDir dir_;
};

TEST_F(SideFiles, BasisLines) {
  const Model m = small();
  const struct {
    const char* what;
    const char* lines;
    std::vector<int> columns, rows;  // x y z w; le ge eq rg
    int repairs;
  } cases[] = {
      {"slack basis", "", {L, U, L, S}, {B, B, B, B}, 0},
      {"exchanges", " XU x le\n XL z eq\n", {B, U, B, S}, {U, B, L, B}, 0},
      {"sides that rows do not have", " XL x le\n XU y ge\n XU z eq\n", {B, B, B, S}, {U, L, L, B}, 0},
      {"sides of a range", " XU w rg\n", {L, U, L, B}, {B, B, B, U}, 0},
      {"lower side of a range", " XL w rg\n", {L, U, L, B}, {B, B, B, L}, 0},
      {"bounds", " UL z\n LL x\n UL y\n", {L, U, U, S}, {B, B, B, B}, 0},
      {"tabs, comments, blank lines", "* basis\n\n\tXU\tx\tle\r\n", {B, U, L, S}, {U, B, B, B}, 0},
      {"values", " XU x le 7.5\n UL z 2.\n", {B, U, U, S}, {U, B, B, B}, 0},
      {"bounds that do not exist", " UL x\n LL y\n UL w\n", {L, U, L, S}, {B, B, B, B}, 3},
      {"unknown names", " XU x no\n XU no le\n UL no\n XL z le\n", {L, U, B, S}, {U, B, B, B}, 3},
      {"status twice", " XU x le\n XU x ge\n XU z le\n UL x\n", {B, U, L, S}, {U, B, B, B}, 3},
  };
  for (const auto& c : cases) {
    spit(file("b.bas"), std::string("NAME other\n") + c.lines + "ENDATA\nnothing of this counts\n");
    env_.clear_log();
    ASSERT_EQ(load(m, "b.bas"), 0) << c.what << env_.log();
    EXPECT_EQ(m->warm.vbasis, c.columns) << c.what;
    EXPECT_EQ(m->warm.cbasis, c.rows) << c.what;
    EXPECT_TRUE(m->warm.basis_fits(m->data)) << c.what;
    EXPECT_EQ(env_.log(), c.repairs == 0 ? ""
                                         : "Warning: " + std::to_string(c.repairs) + " lines of basis file '" +
                                               file("b.bas") + "' do not fit the model, the basis is repaired\n")
        << c.what;
  }
}

TEST_F(SideFiles, BasisWritten) {
  const Model m = small();
  m->warm.vbasis = {B, B, U, B};
  m->warm.cbasis = {L, U, B, U};  // the sides of one-sided rows follow from their senses
  ASSERT_EQ(write(m, "b.bas"), 0);
  EXPECT_EQ(slurp(file("b.bas")),
            "NAME \n XU x         le\n XL y         ge\n UL z       \n XU w         rg\nENDATA\n");
  m->warm.cbasis = {B, B, B, B};  // too many basic ones
  EXPECT_EQ(write(m, "b.bas"), 10005);
}

TEST_F(SideFiles, BasisThatEndsEarly) {
  const Model m = small();
  spit(file("b.bas"), "NAME t\n XU x le\n");
  EXPECT_EQ(load(m, "b.bas"), 10012);
  EXPECT_EQ(env_.log(), "Error: file " + file("b.bas") + " ends at line 2 without ENDATA\n");
  EXPECT_FALSE(m->warm.has_basis());
}

// Names with blanks, equal ones, none at all, and such that a line cannot hold.
TEST_F(SideFiles, RoundTripsWithAwkwardNames) {
  ZLPmodel* made = nullptr;
  ASSERT_EQ(ZLPnewmodel(env_.get(), &made, "odd", 0, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
  const Model m(made);
  env_.hook(made->env);
  const std::vector<const char*> cols = {"a", "a b", "b", "a", "", " lead", "tab\t", "#x", "C0000004", "7", "a 7"};
  const std::vector<const char*> rows = {"r", "b r", "r 1", "r", "", "*r", "1", "b", "R0000003", "a b r", "r  1"};
  for (const char* name : cols) ASSERT_EQ(ZLPaddvar(made, 0, nullptr, nullptr, 1, 0, 9, 'I', name), 0);
  for (const char* name : rows) ASSERT_EQ(ZLPaddrangeconstr(made, 0, nullptr, nullptr, 0, 5, name), 0);
  ASSERT_EQ(ZLPupdatemodel(made), 0);
  const auto n = static_cast<Index>(cols.size());
  std::mt19937 random(3);
  for (int round = 0; round < 50; ++round) {
    std::vector<int> vbasis, cbasis;
    for (Index j = 0; j < n; ++j) {
      // As many basic columns as nonbasic rows: column j with row n - 1 - j.
      const bool basic = random() % 2 == 0;
      vbasis.push_back(basic ? B : random() % 2 == 0 ? L : U);
      cbasis.insert(cbasis.begin(), basic ? (random() % 2 == 0 ? L : U) : B);
    }
    made->warm.vbasis = vbasis;
    made->warm.cbasis = cbasis;
    ASSERT_EQ(write(m, "b.bas.bz2"), 0);
    made->warm.drop_basis();
    env_.clear_log();
    ASSERT_EQ(load(m, "b.bas"), 0) << env_.log();
    ASSERT_EQ(env_.log(), "");
    ASSERT_EQ(made->warm.vbasis, vbasis) << round;
    ASSERT_EQ(made->warm.cbasis, cbasis) << round;

    std::vector<double> start;
    for (Index j = 0; j < n; ++j)
      start.push_back(random() % 3 == 0 ? kUndefinedStart : static_cast<double>(random()) / 3);
    start[0] = 1;
    made->warm.start = start;
    ASSERT_EQ(write(m, "s.mst.gz"), 0);
    made->warm.start.clear();
    ASSERT_EQ(load(m, "s.mst"), 0) << env_.log();
    ASSERT_EQ(made->warm.start, start) << round;
  }
}

TEST_F(SideFiles, OwnNamesWithoutRowNames) {
  const Model m = model("min y + x st y + x >= 1 end");
  m->solution.x = {1.0 / 3, 2};
  ASSERT_EQ(write(m, "m.sol"), 0);
  EXPECT_EQ(slurp(file("m.sol")), "# Solution for model \n# Status = LOADED\ny 3.3333333333333331e-01\nx 2\n");
}

}  // namespace
}  // namespace zorvex::testing
