// What LP-format texts mean: each text against the model it stands for.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "io/io_fixture.hpp"
#include "io/lp_reader.hpp"

namespace zorvex::testing {
namespace {

// "min|max costs + constant ; rows ; columns ; sets ; quadratic terms", empty parts left out:
//   rows      "name: [lower <] 2 x - y < 3"
//   columns   "x C [0, 1e+30]", only those that are not continuous with the default bounds
std::string shown(const ModelData& data) {
  const auto term = [&](double value, Index col) { return " " + number(value) + " " + data.var_names[col]; };
  std::string out = data.sense < 0 ? "max" : "min";
  for (Index col = 0; col < data.num_cols(); ++col) out += term(data.obj[col], col);
  if (data.obj_con != 0) out += " + " + number(data.obj_con);
  for (Index row = 0; row < data.num_rows(); ++row) {
    out += "; " + data.constr_names[row] + ":";
    if (data.is_range(row)) out += " " + number(data.range_lower[row]) + " <";
    for (Index col = 0; col < data.num_cols(); ++col) {
      for (Offset k = data.matrix.begin(col); k < data.matrix.end(col); ++k) {
        if (data.matrix.index[k] == row) out += term(data.row_sign(row) * data.matrix.value[k], col);
      }
    }
    out += std::string(" ") + data.row_sense[row] + " " + number(data.user_rhs(row) + 0.0);
  }
  for (Index col = 0; col < data.num_cols(); ++col) {
    if (data.vtype[col] == 'C' && data.lb[col] == 0 && data.ub[col] == kStoredInfinity) continue;
    out += "; " + data.var_names[col] + " " + data.vtype[col] + " [" + number(data.lb[col]) + ", " +
           number(data.ub[col]) + "]";
  }
  for (const SosConstraint& set : data.sos) {
    out += "; " + (set.name.empty() ? "" : set.name + " ") + "S" + std::to_string(set.type);
    for (std::size_t k = 0; k < set.member.size(); ++k) {
      out += " " + data.var_names[set.member[k]] + ":" + number(set.weight[k]);
    }
  }
  for (const QuadraticTerm& q : data.quadratic) {
    out += "; " + number(q.value) + " " + data.var_names[q.first] + "*" + data.var_names[q.second];
  }
  return out;
}

struct Reading {
  const char* what;
  std::string text;
  std::string model;
  std::string warnings = "";
};

class LpParsing : public ::testing::Test {
 protected:
  void check(const std::vector<Reading>& readings) {
    for (const Reading& reading : readings) {
      spit(file_, reading.text);
      LpParseResult result = parse_lp_file(file_);
      EXPECT_TRUE(result.ok) << reading.what << ": " << result.diagnostics.error().log;
      if (!result.ok) continue;
      std::string warnings;
      for (const std::string& warning : result.diagnostics.warnings()) warnings += warning;
      EXPECT_EQ(warnings, reading.warnings) << reading.what;
      ModelData data = to_model_data(std::move(result.data));
      to_stored_form(data);
      EXPECT_EQ(shown(data), reading.model) << reading.what;
    }
  }
  TempDir dir_;
  std::string file_ = dir_.file("m.lp");
};

// One row "c" and the objective x + y; `tail` follows.
std::string with_tail(const std::string& tail) { return "min x + y\nst\n c: x + y >= 1\n" + tail + "\nend\n"; }
std::string tail_model(const std::string& rest) { return "min 1 x 1 y; c: 1 x 1 y > 1" + rest; }
// The objective x + y + z and the constraints given.
std::string with_rows(const std::string& rows) { return "min x + y + z st " + rows + "\nend\n"; }
std::string rows_model(const std::string& rest) { return "min 1 x 1 y 1 z" + rest; }

TEST_F(LpParsing, Objective) {
  check({
      {"named, mixed case", "MiNiMiZe\ncost: x + 2 y\nSUBJECT   TO\nc: x >= 1\nEND\n", "min 1 x 2 y; c: 1 x > 1"},
      {"maximum", "maximum x st c: x < 1 end", "max 1 x; c: 1 x < 1"},
      {"maximise", "Maximise x such that c: x =< 1 End", "max 1 x; c: 1 x < 1"},
      {"s.t.", "MAX x s.t. c: x <= 1 End", "max 1 x; c: 1 x < 1"},
      {"st.", "MIN x st. c: x => 1 End", "min 1 x; c: 1 x > 1"},
      {"label with nothing behind", "min obj: st c: x >= 1 end", "min 0 x; c: 1 x > 1"},
      {"nothing at all", "minimise st c: x >= 1 end", "min 0 x; c: 1 x > 1"},
      {"constants", "min 3 + x - 2.5 + 4 st c: x >= 1 end", "min 1 x + 4.5; c: 1 x > 1"},
      {"constant before the section", "min x - 2\nst c: x >= 1 end", "min 1 x + -2; c: 1 x > 1"},
      {"no constraints", "min x bounds x <= 2 end", "min 1 x; x C [0, 2]"},
      {"line breaks anywhere", "min\no\n:\n2\nx\n-\n3\ny\nst\nc\n:\nx\n+\ny\n>=\n-\n1\nend",
       "min 2 x -3 y; c: 1 x 1 y > -1"},
      {"carriage returns", "min x\r\nst\r\nc: x >= 1\r\nend\r\n", "min 1 x; c: 1 x > 1"},
      {"comments", "\\ one\nmin x \\ + y\n\\* two *\\\nst\nc: x >= 1 \\ 2\nend \\ three", "min 1 x; c: 1 x > 1"},
      {"no end", "min x st c: x >= 1", "min 1 x; c: 1 x > 1",
       "Warning: the file has no End, it may have been cut off.\n"},
      {"twice", "min x + y - 3 x st c: x >= 1 end", "min -2 x 1 y; c: 1 x > 1",
       "Warning: variable x again at line 1, column 15: its coefficients are added up.\n"},
  });
}

TEST_F(LpParsing, NumbersAndSigns) {
  check({
      {"signs", with_rows("c: - - 3 x + - y - + - 2 z >= + - + 4"), rows_model("; c: 3 x -1 y 2 z > -4")},
      {"adjoining name", with_rows("c: 2e3x + 2ex + 0x1 >= 2"), "min 1 x 1 y 1 z 0 ex 0 x1; c: 2000 x 2 ex > 2"},
      {"exponents", with_rows("c: 1e-2 x + 1.5E+2y + .5z >= 1.e1"), rows_model("; c: 0.01 x 150 y 0.5 z > 10")},
      {"product sign", with_rows("c: 2 * x + 3*y >= 1"), rows_model("; c: 2 x 3 y > 1")},
      {"quotient", with_rows("c: 53/2 x - 1/4 y >= 1/2"), rows_model("; c: 26.5 x -0.25 y > 0.5")},
      {"zero coefficient", with_rows("c: 0 x + y >= 1"), rows_model("; c: 1 y > 1")},
      {"17 digits", with_rows("c: 0.1000000000000000055 x >= 1"), rows_model("; c: 0.1 x > 1")},
  });
}

TEST_F(LpParsing, Constraints) {
  check({
      {"all relations", with_rows("a: x < 1 b: x > 1 c: x = 1 d: x =< 1 e: x => 1"),
       rows_model("; a: 1 x < 1; b: 1 x > 1; c: 1 x = 1; d: 1 x < 1; e: 1 x > 1")},
      {"unnamed", with_rows("x + y >= 1\n-x + 2 y <= 3\n2 z = 4"),
       rows_model("; : 1 x 1 y > 1; : -1 x 2 y < 3; : 2 z = 4")},
      {"number on the left", with_rows("a: 3 <= x + y b: 3 >= x c: 3 = z"),
       rows_model("; a: 1 x 1 y > 3; b: 1 x < 3; c: 1 z = 3")},
      {"range", with_rows("a: 1 <= x + y <= 4 b: 4 >= z >= -1"), rows_model("; a: 1 < 1 x 1 y < 4; b: -1 < 1 z < 4")},
      {"range that is an equation", with_rows("a: 2 <= x <= 2"), rows_model("; a: 1 x = 2")},
      {"range with infinity", with_rows("a: -inf <= x <= 2 b: 2 <= y <= +Infinity"),
       rows_model("; a: 1 x < 2; b: 1 y > 2")},
      {"range that its constants move beyond all numbers",
       with_rows("a: 1 <= 1e54 + x <= 3 b: -4 <= y - 1e54 <= 4 c: -1e54 <= z <= 1e54"),
       rows_model("; a: 1 x < -1e+30; b: 1 y > 1e+30; c: 1 z < 1e+30")},
      {"infinite side", with_rows("a: x <= inf b: x >= -inf"), rows_model("; a: 1 x < 1e+30; b: 1 x > -1e+30")},
      {"constants", with_rows("a: x + 3 <= 5 b: 2 + y - 1 >= 4 + 1 - 2\n c: 1 <= z + 2 <= 9"),
       rows_model("; a: 1 x < 2; b: 1 y > 2; c: -1 < 1 z < 7")},
      {"a number after the side starts a row", with_rows("x >= 2\n-3 y >= 4"), rows_model("; : 1 x > 2; : -3 y > 4")},
      {"a number range after the side", with_rows("x >= 2\n-3 <= y + z <= 4"),
       rows_model("; : 1 x > 2; : -3 < 1 y 1 z < 4")},
      {"terms added up", with_rows("a: x + y + 2 x >= 1 b: y - y >= 0"), rows_model("; a: 3 x 1 y > 1; b: > 0"),
       "Warning: variable x again at line 1, column 31: its coefficients are added up.\n"
       "Warning: variable y again at line 1, column 45: its coefficients are added up.\n"},
      {"empty rows", with_rows("a: = 0 b: 0 >= -1 c: 0 x <= 2"), rows_model("; a: = 0; b: < 1; c: < 2")},
      {"lazy constraints", with_rows("a: x >= 1\nlazy constraints\nb: y >= 1\nuser cuts\nc: z >= 1"),
       rows_model("; a: 1 x > 1; b: 1 y > 1; c: 1 z > 1"),
       "Warning: lazy constraints at line 2 are read as constraints.\n"
       "Warning: user cuts at line 4 are read as constraints.\n"},
  });
}

TEST_F(LpParsing, NamesAndKeywords) {
  check({
      {"keywords as names",
       "min max: end + st\nst\n end: max + bin >= 1\n bounds: free + inf >= 2\n gen + sos <= 3\nbounds <= 5\n"
       "c: end >= 2\n3 inf - 2 semi >= 0\nend",
       "min 1 end 1 st 0 max 0 bin 0 free 0 inf 0 gen 0 sos 0 bounds 0 semi; end: 1 max 1 bin > 1; "
       "bounds: 1 free 1 inf > 2; : 1 gen 1 sos < 3; : 1 bounds < 5; c: 1 end > 2; : 3 inf -2 semi > 0"},
      {"parts of names", "min minimize_it + end.x st subject: send >= 1 stx + boundsx >= 1 binary' <= 1 end",
       "min 1 minimize_it 1 end.x 0 send 0 stx 0 boundsx 0 binary'; subject: 1 send > 1; : 1 stx 1 boundsx > 1; "
       ": 1 binary' < 1"},
      {"customary characters", "min a!\"#$%&(b),.;?@_`'{}~|/1 st (85): x#1 + _y >= 1 end",
       "min 1 a!\"#$%&(b),.;?@_`'{}~|/1 0 x#1 0 _y; (85): 1 x#1 1 _y > 1"},
      {"brackets and other bytes", "min x[1,2] + 3y[a[1]] + [ z^2 + z[1]*z ]/2 + \xc3\xa9 st c: z >= 1 end",
       "min 1 x[1,2] 3 y[a[1]] 0 z 0 z[1] 1 \xc3\xa9; c: 1 z > 1; 1 z*z; 1 z[1]*z"},
  });
}

TEST_F(LpParsing, Bounds) {
  check({
      {"all forms",
       "min a+b+c+d+e+f+g+h+i\nst\nbounds\na <= 4\nb >= 1\n1 <= c <= 2\n5 >= d >= -5\n-1 <= e\nf = 3\ng free\n"
       "-inf <= h <= 7\n8 = i\nend",
       "min 1 a 1 b 1 c 1 d 1 e 1 f 1 g 1 h 1 i; a C [0, 4]; b C [1, 1e+30]; c C [1, 2]; d C [-5, 5]; "
       "e C [-1, 1e+30]; f C [3, 3]; g C [-1e+30, 1e+30]; h C [-1e+30, 7]; i C [8, 8]"},
      {"infinities", with_tail("bounds x >= -INF y <= infinity x <= 1e30"), tail_model("; x C [-1e+30, 1e+30]")},
      {"strict signs", with_tail("bounds 1 < x < 2 y > -1"), tail_model("; x C [1, 2]; y C [-1, 1e+30]")},
      {"on one line", with_tail("bounds x <= 4 y free"), tail_model("; x C [0, 4]; y C [-1e+30, 1e+30]")},
      {"two lines for one variable", with_tail("bounds\nx <= 4\nx >= 1"), tail_model("; x C [1, 4]")},
      {"twice", with_tail("bounds\nx <= 4\nx <= 3\ny = 1\ny free"), tail_model("; x C [0, 3]; y C [-1e+30, 1e+30]"),
       "Warning: duplicate bounds for column x.\nWarning: duplicate bounds for column y.\n"},
      {"negative upper bound", with_tail("bounds x <= -2"), tail_model("; x C [0, -2]"),
       "Warning: lower bound 0 of variable x is above its upper bound -2.\n"},
      {"negative upper bound with a lower one", with_tail("bounds -4 <= x <= -2"), tail_model("; x C [-4, -2]")},
      {"variable of no expression", with_tail("bounds w <= 2"), "min 1 x 1 y 0 w; c: 1 x 1 y > 1; w C [0, 2]",
       "Warning: variable w of section Bounds at line 4 is in no expression.\n"},
      {"names like keywords", "min bin + free st c: bin >= 1 bounds bin <= 3 free free end",
       "min 1 bin 1 free; c: 1 bin > 1; bin C [0, 3]; free C [-1e+30, 1e+30]"},
      {"empty section", with_tail("bounds"), tail_model("")},
  });
}

TEST_F(LpParsing, Kinds) {
  const char* const kBinary = "; x B [0, 1]";
  const char* const kInteger = "; x I [0, 1e+30]";
  std::vector<Reading> readings;
  for (const char* word : {"binary", "Binaries", "BIN"}) {
    readings.push_back({word, with_tail(std::string(word) + " x"), tail_model(kBinary)});
  }
  for (const char* word : {"general", "Generals", "gen", "INTEGER", "integers", "int"}) {
    readings.push_back({word, with_tail(std::string(word) + " x"), tail_model(kInteger)});
  }
  for (const char* word : {"semi-continuous", "Semi-Continuous", "semicontinuous", "semi", "SEMIS"}) {
    readings.push_back(
        {word, with_tail("bounds 2 <= x <= 9\n" + std::string(word) + "\nx"), tail_model("; x S [2, 9]")});
  }
  check(readings);
  check({
      {"bounds of integers", with_tail("bounds x <= 4 gen x y"), tail_model("; x I [0, 4]; y I [0, 1e+30]")},
      {"bounds before binaries", with_tail("bounds x = 0 y <= 7 bin x y"), tail_model("; x B [0, 0]; y B [0, 1]")},
      {"bounds behind binaries", with_tail("bin x y bounds x = 0 y <= 7"), tail_model("; x B [0, 0]; y B [0, 1]")},
      {"semi-integer by two sections", with_tail("bounds x <= 9 gen x semi x"), tail_model("; x N [0, 9]")},
      {"semi-integer by its own", with_tail("bounds x <= 9 semi-integer x"), tail_model("; x N [0, 9]")},
      {"empty lists", with_tail("gen\nbin\nsemi"), tail_model("")},
      {"unknown variable", with_tail("gen w"), "min 1 x 1 y 0 w; c: 1 x 1 y > 1; w I [0, 1e+30]",
       "Warning: variable w of section Generals at line 4 is in no expression.\n"},
  });
}

TEST_F(LpParsing, Sets) {
  check({
      {"both types", with_tail("sos\ns1: S1:: x:1 y:2\nother: s2 :: y : 1.5 x : 3"),
       tail_model("; s1 S1 x:1 y:2; other S2 y:1.5 x:3")},
      {"without labels", with_tail("sos S1:: x:1 S2:: y:-1 x:2"), tail_model("; S1 x:1; S2 y:-1 x:2")},
      {"typed sections", with_tail("sos2 a: x:1 y:2 b: y:3 sos1 c: x:4"),
       tail_model("; a S2 x:1 y:2; b S2 y:3; c S1 x:4")},
      {"over lines", with_tail("sos\nset:\nS1\n::\nx\n:\n1\ny:2"), tail_model("; set S1 x:1 y:2")},
      {"among constraints", with_tail("set: S1:: x:1 S2:: y:2\nd: 3 x >= 1"),
       tail_model("; d: 3 x > 1; set S1 x:1; S2 y:2")},
      {"a variable called S1", "min S1 st c: S1 >= 1 sos S1:: S1:4 end", "min 1 S1; c: 1 S1 > 1; S1 S1:4"},
  });
}

TEST_F(LpParsing, QuadraticObjective) {
  check({
      {"terms", "min x + [ 2 x ^2 - 4 x * y + y^2 ] / 2 + z st c: x + y + z >= 1 end",
       "min 1 x 0 y 1 z; c: 1 x 1 y 1 z > 1; 2 x*x; -4 x*y; 1 y*y"},
      {"only quadratic", "max obj: [-x^2]/2\nst c: x >= 1 end", "max 0 x; c: 1 x > 1; -1 x*x"},
      {"minus before brackets", "min -[ x^2 - - 3 x*y ]/2 st c: x >= 1 end", "min 0 x 0 y; c: 1 x > 1; -1 x*x; -3 x*y"},
      {"two brackets", "min [ x^2 ]/2 + x + [ 2*x*x ]/2 st c: x >= 1 end", "min 1 x; c: 1 x > 1; 1 x*x; 2 x*x"},
  });
}

TEST_F(LpParsing, RangesByRemark) {
  const std::string rows = "min x + y st\n\\range\na: x + y - r = 0\n\\ range\r\nb: x - s = 0\n";
  check({
      {"merged", rows + "c: y >= 1\nbounds 1 <= r <= 4 -3 <= s <= -1 end",
       "min 1 x 1 y; a: 1 < 1 x 1 y < 4; b: -3 < 1 x < -1; c: 1 y > 1"},
      {"with sets and quadratic terms behind",
       "min x + [ z^2 ]/2 st\n\\range\na: x - r = 0\nb: y >= 1\nbounds r <= 4 sos S1:: y:1 z:2 end",
       "min 1 x 0 z 0 y; a: 0 < 1 x < 4; b: 1 y > 1; S1 y:1 z:2; 1 z*z"},
      {"used again", rows + "c: r + s >= 1\nbounds r <= 4 s <= 3 end",
       "min 1 x 1 y 0 r 0 s; a: 1 x 1 y -1 r = 0; b: 1 x -1 s = 0; c: 1 r 1 s > 1; r C [0, 4]; s C [0, 3]"},
      {"infinite or integer", rows + "bounds s <= 3 gen s end",
       "min 1 x 1 y 0 r 0 s; a: 1 x 1 y -1 r = 0; b: 1 x -1 s = 0; s I [0, 3]"},
      {"no remark", "min x st\n\\ranges\na: x - r = 0\nbounds r <= 4 end", "min 1 x 0 r; a: 1 x -1 r = 0; r C [0, 4]"},
      {"remark elsewhere", "min x st\n\\range\n\na: x - r = 0 \\range\nbounds r <= 4 end",
       "min 1 x 0 r; a: 1 x -1 r = 0; r C [0, 4]"},
  });
}

TEST_F(LpParsing, ProblemName) {
  for (const auto& [comment, name] :
       std::vector<std::pair<std::string, std::string>>{{"\\Problem name: plan 7\n", "plan 7"},
                                                        {"\\* Problem: plan *\\\n", "plan"},
                                                        {"\\ Problem name     : plan\r\n", "plan"},
                                                        {"\\Problems: none\n", ""},
                                                        {"", ""}}) {
    spit(file_, comment + "min x\n\\Problem name: late\nst c: x >= 1\nend\n");
    const LpParseResult result = parse_lp_file(file_);
    ASSERT_TRUE(result.ok) << comment;
    EXPECT_EQ(result.data.name, name) << comment;
  }
}

TEST_F(LpParsing, SizeLimits) {
  spit(file_, "min x + y + [ x^2 + y^2 ]/2 st a: x + y >= 1 b: x >= 0 end");
  for (const auto member :
       {&ReadLimits::rows, &ReadLimits::cols, &ReadLimits::nonzeros, &ReadLimits::quadratic_terms}) {
    ReadLimits limits;
    limits.*member = 1;
    EXPECT_FALSE(parse_lp_file(file_, limits).ok);
    limits.*member = 3;
    EXPECT_TRUE(parse_lp_file(file_, limits).ok);
  }
}

TEST(LpReader, AnnouncesAndNames) {
  RecordingEnv env;
  const TempDir dir;
  spit(dir.file("m.lp"), "\\Problem name: plan\nmin x st c: x + y >= 1 end\n");
  const auto model = env.read(dir.file("m"));
  ASSERT_NE(model, nullptr);
  EXPECT_NE(env.log().find("Read LP format model from file " + dir.file("m.lp") + "\nReading time = "),
            std::string::npos);
  EXPECT_NE(env.log().find("plan: 1 rows, 2 columns, 2 nonzeros\n"), std::string::npos);
}

}  // namespace
}  // namespace zorvex::testing
