// Text of written LP-format files, and that other models than those of files come back the same.
#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "io/io_fixture.hpp"
#include "io/lp_names.hpp"
#include "io/model_comparison.hpp"

namespace zorvex {
namespace {

using testing::difference;
using testing::ModelPtr;
using testing::read_text;
using testing::RecordingEnv;
using testing::TempDir;

class LpWriter : public ::testing::Test {
 protected:
  ModelPtr model(const char* name) {
    ZLPmodel* made = nullptr;
    EXPECT_EQ(ZLPnewmodel(env_.get(), &made, name, 0, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
    env_.hook(made->env);
    return ModelPtr(made);
  }
  static void column(const ModelPtr& m, const char* name, double obj, double lb, double ub, char type) {
    EXPECT_EQ(ZLPaddvar(m.get(), 0, nullptr, nullptr, obj, lb, ub, type, name), 0);
  }
  static void row(const ModelPtr& m, const char* name, std::vector<int> ind, std::vector<double> val, char sense,
                  double rhs) {
    EXPECT_EQ(ZLPaddconstr(m.get(), static_cast<int>(ind.size()), ind.data(), val.data(), sense, rhs, name), 0);
  }
  std::string written(const ModelPtr& m, const std::string& file = "m.lp") {
    EXPECT_EQ(ZLPupdatemodel(m.get()), 0);
    env_.clear_log();
    EXPECT_EQ(ZLPwrite(m.get(), dir_.file(file).c_str()), 0) << ZLPgetmerrormsg(m.get());
    return read_text(dir_.file(file));
  }
  // The model as read back from what written() wrote.
  ModelPtr back(const std::string& file = "m.lp") {
    env_.clear_log();
    ModelPtr again = env_.read(dir_.file(file));
    EXPECT_NE(again, nullptr) << env_.log() << read_text(dir_.file(file));
    return again;
  }

  RecordingEnv env_;
  TempDir dir_;
};

TEST_F(LpWriter, EveryPartOfTheFormat) {
  const ModelPtr m = model("small");
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
  const int ind[] = {0, 1};
  const double val[] = {1, 1}, weight[] = {1, 2.5};
  EXPECT_EQ(ZLPaddrangeconstr(m.get(), 2, ind, val, -1, 4, "rng"), 0);
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
  const ModelPtr m = model("order");
  for (const char* name : {"a", "b", "c"}) column(m, name, *name == 'c' ? 1 : 0, 0, 1e30, 'C');
  row(m, "r", {0}, {1}, '>', 1);
  EXPECT_NE(written(m).find(" obj: 0 a + 0 b + c\n"), std::string::npos);
  EXPECT_EQ(difference(m->data, back()->data, true), "");
}

TEST_F(LpWriter, Names) {
  const ModelPtr m = model("");
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
  const ModelPtr m = model("wide");
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
  const ModelPtr m = model("");
  column(m, "x", 1, 0, 1e30, 'C');
  EXPECT_EQ(ZLPupdatemodel(m.get()), 0);
  column(m, "y", 1, 0, 1e30, 'C');
  EXPECT_EQ(ZLPwrite(m.get(), dir_.file("p.lp").c_str()), 0);
  EXPECT_EQ(env_.log(),
            "Warning: model has pending changes.\nFile '" + dir_.file("p.lp") + "' does not contain these changes.\n");
  EXPECT_EQ(read_text(dir_.file("p.lp")), "\nMinimize\n obj: x\nSubject To\nEnd\n");
}

TEST_F(LpWriter, UnwritableFile) {
  const ModelPtr m = model("");
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
    const ModelPtr m = model("random");
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
        EXPECT_EQ(ZLPaddrangeconstr(m.get(), static_cast<int>(ind.size()), ind.data(), val.data(), std::min(a, b),
                                    std::max(a, b), name.c_str()),
                  0);
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
}  // namespace zorvex
