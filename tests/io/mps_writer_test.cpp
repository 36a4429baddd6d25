// Exact text of written files, on models built through the C interface.
#include <gtest/gtest.h>

#include <string>

#include "io/io_fixture.hpp"

namespace zorvex::testing {
namespace {

class MpsWriter : public WriterTest {
 protected:
  MpsWriter() : WriterTest("m.mps") {}
};

TEST_F(MpsWriter, EveryPartOfTheFormat) {
  const Model m = model("small");
  column(m, "x", 1, 0, 1e30, 'C');
  column(m, "elevenchars", 0.1, -5, 1e30, 'C');
  column(m, "empty", 0, 0, 4, 'C');
  column(m, "i", 2, 0, 1e30, 'I');
  column(m, "i5", 0, 0, 5, 'I');
  column(m, "b", 0, 0, 1, 'B');
  column(m, "sc", 1.0 / 3, 0, 1e30, 'S');
  column(m, "n", -1, 2, 8, 'N');
  column(m, "free", 0, -1e30, 1e30, 'C');
  column(m, "neg", 0, -1e30, -2, 'C');
  column(m, "fix", 0, 3, 3, 'C');
  row(m, "le", {0, 1, 3}, {1, -2.5, 4}, '<', 10);
  row(m, "a_long_name", {0, 4, 5, 6}, {1, 1, 1, 1}, '>', -1);
  row(m, "eq", {7, 8, 9, 10}, {1, 1e20, 1234567, 1}, '=', 0);
  range(m, "rng", {0, 1}, {1, 1}, -1, 4);
  const int types[] = {1, 2};
  const int beg[] = {0, 2};
  const int members[] = {3, 4, 5, 0};
  const double weights[] = {1, 2.5, 1, 2};
  EXPECT_EQ(ZLPaddsos(m.get(), 2, 4, types, beg, members, weights), 0);
  EXPECT_EQ(ZLPupdatemodel(m.get()), 0);
  m->data.quadratic = {{0, 0, 3}, {0, 1, 5}};
  EXPECT_EQ(written(m),
            "NAME small\n"
            "ROWS\n"
            " N  OBJ\n"
            " L  le      \n"
            " G  a_long_name\n"
            " E  eq      \n"
            " L  rng     \n"
            "COLUMNS\n"
            "    x         OBJ       1\n"
            "    x         le        1\n"
            "    x         a_long_name  1\n"
            "    x         rng       1\n"
            "    elevenchars  OBJ       0.1\n"
            "    elevenchars  le        -2.5\n"
            "    elevenchars  rng       1\n"
            "    empty     OBJ       0\n"
            "    MARKER    'MARKER'                 'INTORG'\n"
            "    i         OBJ       2\n"
            "    i         le        4\n"
            "    i5        a_long_name  1\n"
            "    b         a_long_name  1\n"
            "    MARKER    'MARKER'                 'INTEND'\n"
            "    sc        OBJ       3.3333333333333331e-01\n"
            "    sc        a_long_name  1\n"
            "    MARKER    'MARKER'                 'INTORG'\n"
            "    n         OBJ       -1\n"
            "    n         eq        1\n"
            "    MARKER    'MARKER'                 'INTEND'\n"
            "    free      eq        1e+20\n"
            "    neg       eq        1.2345670000000000e+06\n"
            "    fix       eq        1\n"
            "RHS\n"
            "    RHS1      le        10\n"
            "    RHS1      a_long_name  -1\n"
            "    RHS1      rng       4\n"
            "RANGES\n"
            "    RNG1      rng       5\n"
            "BOUNDS\n"
            " LO BND1      elevenchars  -5\n"
            " UP BND1      empty     4\n"
            " LI BND1      i         0\n"
            " UP BND1      i5        5\n"
            " UP BND1      b         1\n"
            " SC BND1      sc        1e+30\n"
            " LO BND1      n         2\n"
            " SC BND1      n         8\n"
            " FR BND1      free    \n"
            " MI BND1      neg     \n"
            " UP BND1      neg       -2\n"
            " FX BND1      fix       3\n"
            "SOS\n"
            " S1 s0\n"
            "    i            1\n"
            "    i5           2.5\n"
            " S2 s1\n"
            "    b            1\n"
            "    x            2\n"
            "QUADOBJ\n"
            "    x         x         3\n"
            "    x         elevenchars  2.5\n"
            "ENDATA\n");
}

TEST_F(MpsWriter, MaximisationIsWrittenAsMinimisation) {
  const Model m = model("top");
  column(m, "x", 3, 0, 1e30, 'C');
  row(m, "r", {0}, {1}, '<', 1);
  EXPECT_EQ(ZLPsetintattr(m.get(), "ModelSense", -1), 0);
  EXPECT_EQ(ZLPsetdblattr(m.get(), "ObjCon", 12.5), 0);
  const std::string text = written(m);
  EXPECT_EQ(
      text.substr(0, text.find("COLUMNS")),
      "NAME top with objcon=       -12.5\n* Max problem is converted into Min one\nROWS\n N  OBJ\n L  r       \n");
  EXPECT_NE(text.find("    x         OBJ       -3\n"), std::string::npos);
  const Model again = back();
  EXPECT_EQ(again->data.sense, 1);
  EXPECT_EQ(again->data.obj_con, -12.5);
}

TEST_F(MpsWriter, GenericNames) {
  const Model m = model("g");
  column(m, "x", 1, 0, 1e30, 'C');
  column(m, nullptr, 1, 0, 1e30, 'C');
  row(m, "r", {0, 1}, {1, 2}, '<', 1);
  const std::string own = written(m);
  EXPECT_NE(own.find("    x         r         1\n    C0000001  OBJ       1\n"), std::string::npos) << own;
  for (const char* file : {"m.rew", "m.REW.gz", "m.mps.rew"}) written(m, file);
  const std::string generic = slurp(dir_.file("m.rew"));
  EXPECT_NE(generic.find(" L  R0000000\n"), std::string::npos);
  EXPECT_NE(generic.find("    C0000000  R0000000  1\n"), std::string::npos);
  EXPECT_EQ(slurp(dir_.file("m.mps.rew")), generic);
  EXPECT_EQ(env_.read(dir_.file("m.REW.gz"))->data.var_names[0], "C0000000");

  const Model unnamed_rows = model("h");
  column(unnamed_rows, "x", 1, 0, 1e30, 'C');
  row(unnamed_rows, nullptr, {0}, {1}, '<', 1);
  EXPECT_NE(written(unnamed_rows).find("    C0000000  R0000000  1\n"), std::string::npos);
}

// Files whose names would run together or be taken for something else are written under generic names.
TEST_F(MpsWriter, NamesThatTheFormatCannotCarry) {
  const struct {
    const char* col;
    const char* row;
    bool carried;
  } cases[] = {{"other", "r", true},
               {"x", "r", false},
               {"two words", "r", false},
               {"a b", "r s", true},
               {"a b", "a_long_row_name", false},
               {"y", "OBJ", false},
               {"$y", "r", false},
               {"y\n", "r", false}};
  for (const auto& c : cases) {
    const Model m = model("n");
    column(m, "x", 1, 0, 1e30, 'C');
    column(m, c.col, 2, 0, 1e30, 'C');
    row(m, c.row, {0, 1}, {1, 1}, '<', 1);
    env_.clear_log();
    written(m);
    EXPECT_EQ(env_.log().empty(), c.carried) << c.col << " " << c.row;
    const Model again = back();
    ASSERT_NE(again, nullptr) << c.col << " " << c.row;
    EXPECT_EQ(again->data.obj, m->data.obj) << c.col << " " << c.row;
    EXPECT_EQ(again->data.var_names[1] == c.col, c.carried) << c.col << " " << c.row;
  }
}

TEST_F(MpsWriter, PendingChangesAreLeftOut) {
  const Model m = model("p");
  column(m, "x", 1, 0, 1e30, 'C');
  row(m, "r", {0}, {1}, '<', 1);
  expect_pending_changes_left_out(m);
}

// Sides for which upper - (upper - lower) is not lower when the width is rounded to nearest.
TEST_F(MpsWriter, RangesReadBackExactly) {
  for (const auto& [lower, upper] : {std::pair{0.1, 0.3}, {1e-3, 1e3}, {-0.7, 0.1}, {-1e10, 1e-3}, {0.1, 0.7}}) {
    const Model m = model("r");
    column(m, "x", 1, 0, 1e30, 'C');
    range(m, "r", {0}, {1}, lower, upper);
    const std::string text = written(m);
    const Model again = back();
    EXPECT_NEAR(again->data.range_lower[0], lower, 1e-16 * std::max(std::fabs(lower), std::fabs(upper)));
    EXPECT_EQ(again->data.rhs[0], upper);
    EXPECT_EQ(written(again, "n.mps"), text);
  }
}

TEST_F(MpsWriter, BoundsReadBackExactly) {
  const Model m = model("b");
  std::string types = "CBISN";
  const double bounds[][2] = {{0, 1e30},  {0, 1}, {0, 5}, {1, 1e30}, {-3, 8},  {-1e30, 1e30},
                              {-1e30, 4}, {2, 2}, {0, 0}, {0, -1},   {-5, -2}, {-1e30, -4}};
  std::vector<int> ind;
  std::vector<double> val;
  for (const char type : types) {
    for (const auto& b : bounds) {
      column(m, ("v" + std::to_string(ind.size())).c_str(), 1, b[0], b[1], type);
      ind.push_back(static_cast<int>(ind.size()));
      val.push_back(1);
    }
  }
  row(m, "r", ind, val, '<', 1);
  written(m);
  const Model again = back();
  ASSERT_NE(again, nullptr);
  for (std::size_t j = 0; j < ind.size(); ++j) {
    const Interval want = m->data.column_bounds(static_cast<Index>(j));
    const Interval got = again->data.column_bounds(static_cast<Index>(j));
    EXPECT_EQ(got.lower, want.lower) << j << " " << m->data.vtype[j];
    EXPECT_EQ(got.upper, want.upper) << j << " " << m->data.vtype[j];
    const bool was_integer = m->data.vtype[j] != 'C' && m->data.vtype[j] != 'S';
    EXPECT_EQ(again->data.vtype[j] != 'C' && again->data.vtype[j] != 'S', was_integer) << j;
  }
}

}  // namespace
}  // namespace zorvex::testing
