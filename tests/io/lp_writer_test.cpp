// Text of written LP-format files, and that other models than those of files come back the same.
#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "io/io_fixture.hpp"
#include "io/lp_names.hpp"
#include "support/model_comparison.hpp"

namespace zorvex::testing {
namespace {

class LpWriter : public WriterTest {
 protected:
  LpWriter() : WriterTest("m.lp") {}
};

TEST_F(LpWriter, EveryPartOfTheFormat) {
  const Model m = model("small");
  column(m, "x", 1, 0, 1e30, 'C');
  column(m, "y", -0.1, -5, 1e30, 'C');
  column(m, "up", 1.0 / 3, 0, 4, 'C');
  column(m, "i", 2, 0, 1e30, 'I');
  column(m, "b", 1, 0, 1, 'B');
  column(m, "b0", 1, 0, 0, 'B');
  column(m, "sc", 1, 2, 9, 'S');
  column(m, "n", -1, 2, 8, 'N');
  column(m, "any", 1, -1e30, 1e30, 'C');
  column(m, "neg", 1, -1e30, -2, 'C');
  column(m, "fix", 1, 3, 3, 'C');
  row(m, "le", {0, 1, 3}, {1, -2.5, -1}, '<', 10);
  row(m, "ge", {2, 4}, {1e20, 1}, '>', -1);
  row(m, "none", {}, {}, '=', 0);
  range(m, "rng", {0, 1}, {1, 1}, -1, 4);
  const int ind[] = {0, 1};
  const double weight[] = {1, 2.5};
  const int type = 2, begin = 0;
  EXPECT_EQ(ZLPaddsos(m.get(), 1, 2, &type, &begin, ind, weight), 0);
  const int first[] = {0, 1}, second[] = {0, 0};
  const double q[] = {2, -3};
  EXPECT_EQ(ZLPaddqpterms(m.get(), 2, first, second, q), 0);
  EXPECT_EQ(ZLPsetintattr(m.get(), "ModelSense", -1), 0);
  EXPECT_EQ(ZLPsetdblattr(m.get(), "ObjCon", -7), 0);
  EXPECT_EQ(
      written(m),
      "\\Problem name: small\n\nMaximize\n"
      " obj: x - 0.1 y + 3.3333333333333331e-01 up + 2 i + b + b0 + sc - n + any + neg + fix - 7 + [ 2 x ^ 2 - "
      "3 y * x ] / 2\n"
      "Subject To\n le: x - 2.5 y - i <= 10\n ge: 1e+20 up + b >= -1\n none: 0 x = 0\n\\range\n rng: x + y - Rg3 = 0\n"
      "Bounds\n y >= -5\n up <= 4\n b0 = 0\n 2 <= sc <= 9\n 2 <= n <= 8\n any free\n -inf <= neg <= -2\n"
      " fix = 3\n -1 <= Rg3 <= 4\n"
      "Generals\n i n\nBinaries\n b b0\nSemi-continuous\n sc n\nSOS\n s0: S2:: x:1 y:2.5\nEnd\n");
  EXPECT_EQ(difference(m->data, back()->data, true), "");
}

TEST_F(LpWriter, ColumnsKeepTheirOrder) {
  const Model m = model("order");
  for (const char* name : {"a", "b", "c"}) column(m, name, *name == 'c' ? 1 : 0, 0, 1e30, 'C');
  row(m, "r", {0}, {1}, '>', 1);
  EXPECT_NE(written(m).find(" obj: 0 a + 0 b + c\n"), std::string::npos);
  EXPECT_EQ(difference(m->data, back()->data, true), "");
}

TEST_F(LpWriter, Names) {
  const Model m = model("");
  for (const char* name : {"ok", "with blank", "e5", "free", "ok", "2x", "C0000001", "x[1]", ""}) {
    column(m, name, 1, 0, 1e30, 'C');
  }
  row(m, "obj", {0, 1}, {1, 1}, '>', 1);
  row(m, "a:b", {0, 1}, {1, 1}, '>', 1);
  EXPECT_EQ(written(m),
            "\nMinimize\n obj_: ok + C0000001_ + C0000002 + C0000003 + C0000004 + C0000005 + C0000001 + C0000007 + "
            "C0000008\nSubject To\n obj: ok + C0000001_ >= 1\n R0000001: ok + C0000001_ >= 1\nEnd\n");
  EXPECT_EQ(env_.log(),
            "Warning: 1 names of constraints are unfit for LP format or not unique, generic names stand for them.\n"
            "Warning: 6 names of variables are unfit for LP format or not unique, generic names stand for them.\n");
  EXPECT_EQ(written(m, "m.RLP"),
            "\nMinimize\n obj: C0 + C1 + C2 + C3 + C4 + C5 + C6 + C7 + C8\nSubject To\n R0: C0 + C1 >= 1\n"
            " R1: C0 + C1 >= 1\nEnd\n");
  EXPECT_EQ(env_.log(), "");
  EXPECT_EQ(difference(m->data, back("m.RLP")->data, false), "");
}

TEST_F(LpWriter, NamesOfSets) {
  const Model m = model("");
  for (const char* name : {"x", "y"}) column(m, name, 1, 0, 1e30, 'C');
  const int type[] = {1, 2, 1, 2}, begin[] = {0, 1, 2, 3}, member[] = {0, 1, 0, 1};
  EXPECT_EQ(ZLPaddsos(m.get(), 4, 4, type, begin, member, nullptr), 0);
  EXPECT_EQ(ZLPupdatemodel(m.get()), 0);
  for (const auto& [set, name] : {std::pair{0, "one"}, {1, "two words"}, {3, "one"}}) m->data.sos[set].name = name;
  const std::string text = written(m);
  EXPECT_NE(text.find("SOS\n one: S1:: x:1\n s0000001: S2:: y:1\n s0000002: S1:: x:1\n s0000003: S2:: y:1\n"),
            std::string::npos)
      << text;
  EXPECT_EQ(env_.log(),
            "Warning: 2 names of sets are unfit for LP format or not unique, generic names stand for them.\n");
  EXPECT_EQ(back()->data.sos[0].name, "one");
  EXPECT_NE(written(m, "m.rlp").find("\n s0: S1:: C0:1\n"), std::string::npos);
}

TEST(LpNameTest, CarriedOrNot) {
  for (const char* name : {"x", "x(1,2)", "_", "E", "eel", "endless", "a.b", "\xc3\xa9", "stx"}) {
    EXPECT_TRUE(lp_can_carry_name(name)) << name;
  }
  for (const char* name :
       {"",     "a b", "1x",   ".x",  "/x",       "a+b",  "a-b", "a*b",  "a^b",    "a<b", "a:b", "a\\b",
        "x[1]", "e1",  "E12x", "inf", "Infinity", "Free", "ST",  "s.t.", "Bounds", "end", "S1",  "subject"}) {
    EXPECT_FALSE(lp_can_carry_name(name)) << name;
  }
  EXPECT_TRUE(lp_can_carry_name(std::string(240, 'n')));
  EXPECT_FALSE(lp_can_carry_name(std::string(241, 'n')));
}

TEST_F(LpWriter, LinesAreShort) {
  const Model m = model("wide");
  std::vector<int> ind;
  std::vector<double> val;
  for (int col = 0; col < 60; ++col) {
    column(m, (std::string(static_cast<std::size_t>(col * 4), 'v') + std::to_string(col)).insert(0, "n").c_str(),
           col % 3 - 1, -1e15, 1.0 / 3 + col, 'I');
    ind.push_back(col);
    val.push_back(-1e15 / (col + 3));
  }
  row(m, std::string(240, 'r').c_str(), ind, val, '<', 1);
  std::istringstream lines(written(m));
  std::size_t longest = 0;
  for (std::string line; std::getline(lines, line);) longest = std::max(longest, line.size());
  EXPECT_LE(longest, 255u);
  EXPECT_GT(longest, 200u);
  EXPECT_EQ(env_.log(), "");
  EXPECT_EQ(difference(m->data, back()->data, true), "");
}

TEST_F(LpWriter, PendingChangesAreLeftOut) {
  const Model m = model("");
  column(m, "x", 1, 0, 1e30, 'C');
  expect_pending_changes_left_out(m);
}

TEST_F(LpWriter, UnwritableFile) {
  const Model m = model("");
  const std::string name = dir_.file("absent/m.lp");
  EXPECT_EQ(ZLPwrite(m.get(), name.c_str()), 10013);
  EXPECT_EQ(std::string(ZLPgetmerrormsg(m.get())), "Unable to open file '" + name + "' for output");
}

// Whatever the data, the model comes back the same.
TEST_F(LpWriter, RandomModels) {
  std::mt19937 random(7);
  const auto pick = [&random](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  const auto value = [&] { return pick(3) == 0 ? pick(9) - 4.0 : static_cast<double>(random()) / 1e8 - 20; };
  for (int round = 0; round < 60; ++round) {
    const Model m = model("random");
    const int cols = 1 + pick(8), rows = pick(8);
    for (int col = 0; col < cols; ++col) {
      const double a = value(), b = value();
      const double lower = pick(3) == 0 ? -1e30 : pick(2) == 0 ? 0 : std::min(a, b);
      column(m, ("x" + std::to_string(col)).c_str(), pick(2) == 0 ? 0 : value(), lower,
             pick(2) == 0 ? 1e30 : std::max({a, b, lower}), "CCISN"[pick(5)]);
    }
    for (int k = 0; k < rows; ++k) {
      std::vector<int> ind;
      std::vector<double> val;
      for (int col = 0; col < cols; ++col) {
        if (pick(2) == 0) continue;
        ind.push_back(col);
        val.push_back(value());
      }
      const std::string name = "r" + std::to_string(k);
      if (pick(4) > 0) {
        row(m, name.c_str(), ind, val, "<>="[pick(3)], value());
      } else {
        const double a = value(), b = value();
        range(m, name.c_str(), ind, val, std::min(a, b), std::max(a, b));
      }
    }
    for (int k = pick(4); k > 0; --k) {
      const int first = pick(cols), second = pick(cols);
      const double q = value();
      EXPECT_EQ(ZLPaddqpterms(m.get(), 1, &first, &second, &q), 0);
    }
    EXPECT_EQ(ZLPsetdblattr(m.get(), "ObjCon", value()), 0);
    EXPECT_EQ(ZLPsetintattr(m.get(), "ModelSense", pick(2) == 0 ? 1 : -1), 0);
    const std::string text = written(m);
    EXPECT_EQ(difference(m->data, back()->data, true), "") << text;
  }
}

}  // namespace
}  // namespace zorvex::testing
