// Odd but legal forms: each file is written out in a canonical form after reading.
#include <gtest/gtest.h>

#include <string>

#include "io/io_fixture.hpp"
#include "io/mps_reader.hpp"

namespace zorvex::testing {
namespace {

// "min 3: x=1 y=2 | r1 < 4: x=1 | x C [0,1e+30]" and so on.
std::string canonical(const ModelData& data) {
  std::string out = (data.sense < 0 ? "max " : "min ") + number(data.obj_con) + ":";
  for (Index j = 0; j < data.num_cols(); ++j) {
    if (data.obj[j] != 0) out += " " + data.var_names[j] + "=" + number(data.obj[j]);
  }
  for (Index i = 0; i < data.num_rows(); ++i) {
    out += " | " + data.constr_names[i] + " ";
    if (data.is_range(i)) out += number(data.range_lower[i]) + " ";
    out += std::string(1, data.row_sense[i]) + " " + number(data.user_rhs(i) + 0.0) + ":";
    for (Index j = 0; j < data.num_cols(); ++j) {
      for (Offset k = data.matrix.begin(j); k < data.matrix.end(j); ++k) {
        if (data.matrix.index[k] == i) {
          out += " " + data.var_names[j] + "=" + number(data.row_sign(i) * data.matrix.value[k]);
        }
      }
    }
  }
  out += " |";
  for (Index j = 0; j < data.num_cols(); ++j) {
    out += std::string(" ") + data.var_names[j] + " " + data.vtype[j] + "[" + number(data.lb[j]) + "," +
           number(data.ub[j]) + "]";
  }
  for (const SosConstraint& set : data.sos) {
    out += " | " + (set.name.empty() ? "" : set.name + " ") + "S" + std::to_string(set.type);
    for (std::size_t k = 0; k < set.member.size(); ++k) {
      out += " " + data.var_names[set.member[k]] + ":" + number(set.weight[k]);
    }
  }
  for (const QuadraticTerm& term : data.quadratic) {
    out += " | " + data.var_names[term.first] + "*" + data.var_names[term.second] + " " + number(term.value);
  }
  return out;
}

struct FormCase {
  const char* what;
  std::string text;
  std::string model;
  std::string warning = {};  // text that the log must hold; the log must be free of warnings when empty
};

// A small model around the parts under test: rows r1 (L), r2 (G), r3 (E), columns x and y.
std::string with_columns(const std::string& columns, const std::string& tail) {
  return "NAME t\nROWS\n N c\n L r1\n G r2\n E r3\nCOLUMNS\n" + columns + tail + "ENDATA\n";
}
std::string with_tail(const std::string& tail) { return with_columns(" x c 1 r1 1\n x r2 1\n y r3 1\n", tail); }
std::string with_bounds(const std::string& bounds) { return with_tail("BOUNDS\n" + bounds); }
std::string with_integer(const std::string& bounds) {
  return with_columns(" M 'MARKER' 'INTORG'\n x c 1 r1 1\n x r2 1\n M 'MARKER' 'INTEND'\n y r3 1\n",
                      "BOUNDS\n" + bounds);
}

const char kRows[] = "min 0: x=1 | r1 < 0: x=1 | r2 > 0: x=1 | r3 = 0: y=1 |";
std::string rows_and(const std::string& bounds) { return std::string(kRows) + " " + bounds; }

void check(const std::vector<FormCase>& cases) {
  const TempDir dir;
  const std::string path = dir.file("m.mps");
  for (const FormCase& c : cases) {
    spit(path, c.text);
    RecordingEnv env;
    const Model model = env.read(path);
    ASSERT_NE(model, nullptr) << c.what << "\n" << env.log();
    EXPECT_EQ(canonical(model->data), c.model) << c.what;
    if (c.warning.empty()) {
      EXPECT_EQ(env.log().find("Warning"), std::string::npos) << c.what << "\n" << env.log();
    } else {
      EXPECT_NE(env.log().find(c.warning), std::string::npos) << c.what << "\n" << env.log();
    }
  }
}

TEST(MpsForms, LinesAndHeaders) {
  const std::string plain = rows_and("x C[0,1e+30] y C[0,1e+30]");
  std::string crlf;
  for (const char c : with_tail("")) {
    if (c == '\n') crlf += '\r';
    crlf += c;
  }
  std::string tabs = with_tail("");
  for (char& c : tabs) {
    if (c == ' ' && &c != &tabs[4]) c = '\t';
  }
  check({
      {"carriage returns", crlf, plain},
      {"tabs", tabs, plain},
      {"blank lines and comments",
       "* first\n\n   \t\nNAME t\n*ROWS\nROWS\n\n N c\n L r1\n G r2\n*x\n E r3\nCOLUMNS\n"
       " x c 1 r1 1\n\n x r2 1\n y r3 1\n* last\nENDATA\nrubbish behind\n",
       plain},
      {"no newline at the end", "ROWS\n N c\n L r1\nCOLUMNS\n x r1 1\nENDATA", "min 0: | r1 < 0: x=1 | x C[0,1e+30]"},
      {"longer keyword", "ROWS\n N c\n L r1\nCOLUMBUS\n x r1 1\nENDATA\n", "min 0: | r1 < 0: x=1 | x C[0,1e+30]"},
      {"trailing comments",
       "ROWS\n N c $ cost\n L r1 *c\nCOLUMNS\n x c 1 $ a b c\n x r1 1 *5\nRHS\n R r1 4 $ x y\n r1 4 "
       "$z\nBOUNDS\n UP B x 3 $ three\n FR B y $\nENDATA\n",
       "min 0: x=1 | r1 < 4: x=1 | x C[0,3]", "duplicate row r1 in rhs section"},
      {"names like sections and comments", "ROWS\n N c\n L RHS\n L $r\nCOLUMNS\n ROWS c 1 $r 2\n ROWS RHS 3\nENDATA\n",
       "min 0: ROWS=1 | RHS < 0: ROWS=3 | $r < 0: ROWS=2 | ROWS C[0,1e+30]"},
      {"remarks behind the name", "NAME t and other words\nROWS\n N c\n L r\nCOLUMNS\n x r 1\nENDATA\n",
       "min 0: | r < 0: x=1 | x C[0,1e+30]"},
      {"objective constant", "NAME t with objcon=        -2.5\nROWS\n N c\n L r\nCOLUMNS\n x r 1\nENDATA\n",
       "min -2.5: | r < 0: x=1 | x C[0,1e+30]"},
      {"unnamed with constant", "NAME  with objcon=           7\nROWS\n N c\n L r\nCOLUMNS\n x r 1\nENDATA\n",
       "min 7: | r < 0: x=1 | x C[0,1e+30]"},
      {"more pairs on a line", "ROWS\n N c\n L r1\n L r2\nCOLUMNS\n x c 1 r1 2 r2 3\nRHS\n r1 1 r2 2 c 3\nENDATA\n",
       "min -3: x=1 | r1 < 1: x=2 | r2 < 2: x=3 | x C[0,1e+30]"},
      {"number forms", "ROWS\n N c\n L r1\nCOLUMNS\n x c 1.5D+02 r1 .5\n y c +1.e+1\nENDATA\n",
       "min 0: x=150 y=10 | r1 < 0: x=0.5 | x C[0,1e+30] y C[0,1e+30]"},
  });
}

TEST(MpsForms, Objective) {
  const std::string head = "ROWS\n N c\n L r\nCOLUMNS\n x c 1 r 1\nENDATA\n";
  const std::string max = "max 0: x=1 | r < 0: x=1 | x C[0,1e+30]";
  const std::string min = "min 0: x=1 | r < 0: x=1 | x C[0,1e+30]";
  check({
      {"next line", "NAME\nOBJSENSE\n    MAX\n" + head, max},
      {"next line, first column", "NAME\nOBJSENSE\nMAXIMIZE\n" + head, max},
      {"same line", "NAME\nOBJSENSE max\n" + head, max},
      {"before the name", "OBJSENSE\n Maximise\nNAME\n" + head, max},
      {"comment between", "OBJSENSE\n* no\n\n MAX\n" + head, max},
      {"minimum", "OBJSENSE\n MIN\n" + head, min},
      {"any other word", "OBJSENSE minimax\n" + head, min},
      {"no word", "OBJSENSE\n" + head, min},
      {"section of its own", "NAME\nMAX\n" + head, max},
      {"section of its own, min", "NAME\nMINIMIZE\n" + head, min},
      {"named objective", "OBJNAME\n d\nROWS\n N c\n N d\n L r\nCOLUMNS\n x c 1 d 2\n x r 1\nENDATA\n",
       "min 0: x=2 | r < 0: x=1 | x C[0,1e+30]"},
      {"named on the line", "OBJNAME d\nROWS\n N c\n N d\n L r\nCOLUMNS\n x c 1 d 2\n x r 1\nENDATA\n",
       "min 0: x=2 | r < 0: x=1 | x C[0,1e+30]"},
      {"name of nothing", "OBJNAME r\n" + head, min, "Warning: objective row r is not an N row.\n"},
      {"several", "ROWS\n N c\n N d\n L r\nCOLUMNS\n x c 1 d 2\n x r 1\nRHS\n d 5 r 2\nENDATA\n",
       "min 0: x=1 | r < 2: x=1 | x C[0,1e+30]",
       "Warning: more than one unconstrainted rows,\nthe first one is used for objective.\n"},
      {"none", "ROWS\n L r\nCOLUMNS\n x r 1\nENDATA\n", "min 0: | r < 0: x=1 | x C[0,1e+30]",
       "Warning: no objective.\n"},
      {"constant", with_tail("RHS\n B c 3\n B r1 4\n"),
       "min -3: x=1 | r1 < 4: x=1 | r2 > 0: x=1 | r3 = 0: y=1 | x C[0,1e+30] y C[0,1e+30]"},
      {"two constants",
       "NAME a with objcon=10\n" + std::string("ROWS\n N c\n L r\nCOLUMNS\n x c 1 r 1\nRHS\n B c 3\nENDATA\n"),
       "min 7: x=1 | r < 0: x=1 | x C[0,1e+30]"},
  });
}

TEST(MpsForms, RightHandSidesAndRanges) {
  const std::string tail = " | x C[0,1e+30] y C[0,1e+30]";
  const auto model = [&](const std::string& r1, const std::string& r2, const std::string& r3) {
    return "min 0: x=1 | r1 " + r1 + ": x=1 | r2 " + r2 + ": x=1 | r3 " + r3 + ": y=1" + tail;
  };
  check({
      {"no set name", with_tail("RHS\n r1 4\n r2 5 r3 6\n"), model("< 4", "> 5", "= 6")},
      {"first set counts", with_tail("RHS\n A r1 4\n B r1 5 r2 6\n A r3 7\n"), model("< 4", "> 0", "= 7"),
       "Warning: RHS has several sets, only A is used.\n"},
      {"given twice", with_tail("RHS\n A r1 4\n A r1 5\n"), model("< 4", "> 0", "= 0"),
       "Warning: duplicate row r1 in rhs section.\n"},
      {"unknown row", with_tail("RHS\n A zz 4 r1 1\n"), model("< 1", "> 0", "= 0"),
       "Warning: row name zz in rhs section not defined.\n"},
      {"infinite sides", with_tail("RHS\n A r1 inf r2 -Inf\n"), model("< 1e+30", "> -1e+30", "= 0")},
      {"ranges, positive", with_tail("RHS\n A r1 4 r2 4\n A r3 4\nRANGES\n R r1 3 r2 3\n R r3 3\n"),
       model("1 < 4", "4 < 7", "4 < 7")},
      {"ranges, negative", with_tail("RHS\n A r1 4 r2 4\n A r3 4\nRANGES\n R r1 -3 r2 -3\n R r3 -3\n"),
       model("1 < 4", "4 < 7", "1 < 4")},
      {"ranges, zero", with_tail("RHS\n A r1 4 r2 4\n A r3 4\nRANGES\n R r1 0 r2 0\n R r3 0\n"),
       model("= 4", "= 4", "= 4")},
      {"ranges before sides", with_tail("RANGES\n r1 3\nRHS\n r1 4\n"), model("1 < 4", "> 0", "= 0")},
      {"infinite ranges", with_tail("RHS\n A r1 4 r3 4\nRANGES\n R r1 inf r3 -1e30\n"), model("< 4", "> 0", "< 4")},
      {"range given twice", with_tail("RANGES\n r1 3\n r1 4\n"), model("-3 < 0", "> 0", "= 0"),
       "Warning: duplicate range row r1.\n"},
      {"range of the objective", with_tail("RANGES\n c 3\n"), model("< 0", "> 0", "= 0")},
      {"first range set", with_tail("RANGES\n A r1 3\n B r2 3\n"), model("-3 < 0", "> 0", "= 0"),
       "Warning: RANGES has several sets, only A is used.\n"},
  });
}

TEST(MpsForms, Bounds) {
  const auto x = [](const std::string& bound) { return rows_and("x " + bound + " y C[0,1e+30]"); };
  check({
      {"lower", with_bounds(" LO B x 2\n"), x("C[2,1e+30]")},
      {"upper", with_bounds(" UP B x 2\n"), x("C[0,2]")},
      {"fixed", with_bounds(" FX B x 2\n"), x("C[2,2]")},
      {"free", with_bounds(" FR B x\n"), x("C[-1e+30,1e+30]")},
      {"free with a number", with_bounds(" FR B x 0\n"), x("C[-1e+30,1e+30]")},
      {"free without a set", with_bounds(" FR x\n"), x("C[-1e+30,1e+30]")},
      {"free, number, no set", with_bounds(" FR x 3\n"), x("C[-1e+30,1e+30]")},
      {"lower without a set", with_bounds(" LO x 3\n"), x("C[3,1e+30]")},
      {"minus infinity", with_bounds(" MI B x\n UP B x 3\n"), x("C[-1e+30,3]")},
      {"plus infinity", with_bounds(" PL B x\n"), x("C[0,1e+30]")},
      {"binary", with_bounds(" BV B x\n"), x("B[0,1]")},
      {"integer lower", with_bounds(" LI B x 2\n"), x("I[2,1e+30]")},
      {"integer upper", with_bounds(" UI B x 2\n"), x("I[0,2]")},
      {"infinite by value", with_bounds(" UP B x 1e30\n LO B x -1E+30\n"), x("C[-1e+30,1e+30]")},
      {"infinite by word", with_bounds(" UP B x Inf\n LO B x -infinity\n"), x("C[-1e+30,1e+30]")},
      {"semicontinuous", with_bounds(" LO B x 2\n SC B x 9\n"), x("S[2,9]")},
      {"semicontinuous, order", with_bounds(" SC B x 9\n LO B x 2\n"), x("S[2,9]")},
      {"semicontinuous, open", with_bounds(" SC B x\n"), x("S[0,1e+30]")},
      {"semicontinuous, no set", with_bounds(" SC x 4\n"), x("S[0,4]")},
      {"semi-integer", with_bounds(" SI B x 9\n"), x("N[0,9]")},
      {"negative upper", with_bounds(" UP B x -2\n"), x("C[-1e+30,-2]"), "negative upper bound for column x"},
      {"negative upper, lower set", with_bounds(" LO B x 0\n UP B x -2\n"), x("C[0,-2]")},
      {"negative upper, lower after", with_bounds(" UP B x -2\n LO B x -5\n"), x("C[-5,-2]"),
       "negative upper bound for column x"},
      {"zero upper", with_bounds(" UP B x 0\n"), x("C[0,0]")},
      {"twice", with_bounds(" UP B x 2\n UP B x 3\n"), x("C[0,3]"), "Warning: duplicate bounds for column x.\n"},
      {"sets", with_bounds(" UP B x 2\n LO D x 1\n"), x("C[0,2]"),
       "Warning: BOUNDS has several sets, only B is used.\n"},
      {"unknown", with_bounds(" UP B z 2\n"), x("C[0,1e+30]"), "Warning: column name z in bound section not defined\n"},
      {"empty section", with_bounds(""), x("C[0,1e+30]")},
      {"marked, no bound", with_integer(""), x("B[0,1]")},
      {"marked, lower", with_integer(" LO B x 0\n"), x("I[0,1e+30]")},
      {"marked, upper", with_integer(" UP B x 7\n"), x("I[0,7]")},
      {"marked, upper one", with_integer(" UP B x 1\n"), x("B[0,1]")},
      {"marked, plus infinity", with_integer(" PL B x\n"), x("I[0,1e+30]")},
      {"marked, integer lower", with_integer(" LI B x 0\n"), x("I[0,1e+30]")},
      {"marked, free", with_integer(" FR B x\n"), x("I[-1e+30,1e+30]")},
      {"marked, semicontinuous", with_integer(" SC B x 6\n"), x("N[0,6]")},
  });
}

TEST(MpsForms, Columns) {
  const std::string bounds = " | x C[0,1e+30] y C[0,1e+30]";
  check({
      {"nonzeros given twice", with_columns(" x r1 1 r1 2\n y r3 1\n", ""),
       "min 0: | r1 < 0: x=3 | r2 > 0: | r3 = 0: y=1" + bounds,
       "Warning: duplicate nonzeros for column x and row r1.\n"},
      {"costs given twice", with_columns(" x c 1 c 2\n y r3 1\n", ""),
       "min 0: x=3 | r1 < 0: | r2 > 0: | r3 = 0: y=1" + bounds,
       "Warning: duplicate nonzeros for column x and row c.\n"},
      {"undefined row", with_columns(" x r1 1 zz 2\n y r3 1\n", ""),
       "min 0: | r1 < 0: x=1 | r2 > 0: | r3 = 0: y=1" + bounds,
       "Warning: row name zz in column section at line 8 not defined.\n"},
      {"taken up again", with_columns(" x r1 1\n y r3 1\n x r2 4 c 2\n y r1 5\n", ""),
       "min 0: x=2 | r1 < 0: x=1 y=5 | r2 > 0: x=4 | r3 = 0: y=1" + bounds},
      {"taken up again, twice the same", with_columns(" x r1 1\n y r3 1\n x r1 4\n", ""),
       "min 0: | r1 < 0: x=5 | r2 > 0: | r3 = 0: y=1" + bounds,
       "Warning: duplicate nonzeros for column x and row r1.\n"},
      {"explicit zero", with_columns(" x r1 0 r2 1\n y r3 1\n", ""),
       "min 0: | r1 < 0: | r2 > 0: x=1 | r3 = 0: y=1" + bounds},
      {"markers out of order", with_columns(" M 'MARKER' 'INTEND'\n x r1 1\n M 'MARKER' 'ODD'\n y r3 1\n", ""),
       "min 0: | r1 < 0: x=1 | r2 > 0: | r3 = 0: y=1" + bounds, "Warning: marker at line 10 is wrong.\n"},
      {"block never closed", with_columns(" x r1 1\n M 'MARKER' 'INTORG'\n y r3 1\n", ""),
       "min 0: | r1 < 0: x=1 | r2 > 0: | r3 = 0: y=1 | x C[0,1e+30] y B[0,1]"},
  });
}

TEST(MpsForms, SpecialOrderedSetsAndQuadraticTerms) {
  const std::string model = rows_and("x C[0,1e+30] y C[0,1e+30]");
  check({
      {"sets", with_tail("SOS\n S1 a\n x 3\n y 4\n S2 b\n y 1\n"), model + " | a S1 x:3 y:4 | b S2 y:1"},
      {"set names and priorities", with_tail("SOS\n S1 SOS a 5\n    SOS x 3\n    SOS y 4\n"),
       model + " | a S1 x:3 y:4"},
      {"no weights", with_tail("SETS\n S2 a\n y\n x\n"), model + " | a S2 y:1 x:2"},
      {"column named like a type", "ROWS\n N c\n L r\nCOLUMNS\n    S1 r 1\nSOS\n S2 a\n    S1 8\nENDATA\n",
       "min 0: | r < 0: S1=1 | S1 C[0,1e+30] | a S2 S1:8"},
      {"triangle", with_tail("QUADOBJ\n x x 2\n x y 3\n"), model + " | x*x 2 | x*y 6"},
      {"triangle named", with_tail("QSECTION c\n x y 3\n y y 1\n"), model + " | x*y 6 | y*y 1"},
      {"both orders", with_tail("QUADOBJ\n x y 1\n y x 2\n"), model + " | x*y 2 | y*x 4"},
      {"two pairs on a line", with_tail("QUADOBJ\n x x 1 y 2\n"), model + " | x*x 1 | x*y 4"},
      {"full", with_tail("QMATRIX\n x x 2\n x y 3\n y x 3\n"), model + " | x*x 2 | x*y 6"},
  });
}

// A line with its fields where the fixed layout wants them.
std::string fixed(const char* f1, const char* f2, const char* f3, const char* n1 = "", const char* f5 = "",
                  const char* n2 = "") {
  char line[128];
  std::snprintf(line, sizeof line, " %-2s %-8s  %-8s  %12s   %-8s  %12s\n", f1, f2, f3, n1, f5, n2);
  return line;
}

TEST(MpsForms, FixedLayout) {
  const std::string head = "NAME          T\nROWS\n N  COST\n L  A B\n";
  const std::string two_rows = "ROWS\n N  COST\n L  R\n L  S\nCOLUMNS\n";
  check({
      {"blanks in row names", head + " G  C\nCOLUMNS\n" + fixed("", "X", "A B", "1.", "C", "2.") + "ENDATA\n",
       "min 0: | A B < 0: X=1 | C > 0: X=2 | X C[0,1e+30]"},
      {"blanks in column names and bounds",
       two_rows + fixed("", "X 1", "COST", "1.", "R", "2.") + fixed("", "X 2", "R", "3.") + "RHS\n" +
           fixed("", "", "R", "4.") + "BOUNDS\n" + fixed("UP", "", "X 2", "5.") + fixed("FR", "BND", "X 1") +
           "ENDATA\n",
       "min 0: X 1=1 | R < 4: X 1=2 X 2=3 | S < 0: | X 1 C[-1e+30,1e+30] X 2 C[0,5]"},
      {"names that free layout would take for pairs",
       two_rows + fixed("", "X 1 2", "R", "3.") + fixed("", "X 1 3", "S", "1.") + "ENDATA\n",
       "min 0: | R < 0: X 1 2=3 | S < 0: X 1 3=1 | X 1 2 C[0,1e+30] X 1 3 C[0,1e+30]"},
      {"column name only once",
       two_rows + fixed("", "X", "R", "1.") + fixed("", "", "S", "2.", "COST", "3.") + "ENDATA\n",
       "min 0: X=3 | R < 0: X=1 | S < 0: X=2 | X C[0,1e+30]"},
      {"markers",
       head + "COLUMNS\n    MARKER                 'MARKER'                 'INTORG'\n" + fixed("", "X", "A B", "1.") +
           "    MARKER                 'MARKER'                 'INTEND'\nENDATA\n",
       "min 0: | A B < 0: X=1 | X B[0,1]"},
      {"comments and card numbers",
       head + "COLUMNS\n" + fixed("", "X", "A B", "1.", "$ text") +
           "    Y         A B                 2.   COST                1.           00000012\nENDATA\n",
       "min 0: Y=1 | A B < 0: X=1 Y=2 | X C[0,1e+30] Y C[0,1e+30]"},
      {"ranges, sets and quadratic terms",
       head + "COLUMNS\n" + fixed("", "X Y", "A B", "1.") + fixed("", "Z", "A B", "1.") + "RANGES\n" +
           fixed("", "RNG", "A B", "2.") + "SOS\n S1 s0\n    X Y          1\n    Z            2\nQUADOBJ\n" +
           fixed("", "X Y", "X Y", "3.") + "    Z         X Y       1.2345678901234567e+01\nENDATA\n",
       "min 0: | A B -2 < 0: X Y=1 Z=1 | X Y C[0,1e+30] Z C[0,1e+30] | s0 S1 X Y:1 Z:2 | X Y*X Y 3 | Z*X Y "
       "2.4691357802469135e+01"},
  });
}

}  // namespace
}  // namespace zorvex::testing
