// Broken files: each is refused with its own message, in the log and as the error text.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "io/io_fixture.hpp"
#include "io/mps_reader.hpp"

namespace zorvex::testing {
namespace {

struct BrokenFile {
  const char* what;
  std::string text;
  std::string log;
  std::string error;
};

std::string line_log(int line, const std::string& text) {
  return "Error at line " + std::to_string(line) + ":\n" + text + "\n";
}
std::string line_error(int line, const std::string& text) { return "MPS read e" + line_log(line, text).substr(1); }
BrokenFile bad_line(const char* what, const std::string& text, int line, const std::string& shown) {
  return {what, text, line_log(line, shown), line_error(line, shown)};
}
BrokenFile not_right(const char* what, const std::string& text, int line) {
  const std::string middle = std::to_string(line) + " not right or no ENDATA";
  return {what, text, "Error: line " + middle + ".\n", "MPS reader: line " + middle + "\n"};
}

const char kNoRows[] = "Error: no row section.\n";
const char kNoRowsText[] = "MPS reader: no row section\n";
const char kNoColumns[] = "Error: no column section.\n";
const char kNoColumnsText[] = "MPS reader: no column section\n";
const char kEmpty[] = "Error: no columns or no nonzeros.\n";
const char kEmptyText[] = "MPS reader: no columns or no nonzeros\n";
const char kNoConstraints[] = "Error: no constraints.\n";
const char kNoConstraintsText[] = "MPS reader: no constraints in MPS file\n";
const char kNotFree[] = "Error: not free format mps file.\n";
const char kNotFreeText[] = "MPS reader: not free format\n";

// Eight lines: NAME, ROWS with c, r1, r2, COLUMNS with x and y; `tail` starts at line 9.
std::string with_tail(const std::string& tail) {
  return "NAME t\nROWS\n N c\n L r1\n G r2\nCOLUMNS\n x r1 1 c 2\n y r2 1\n" + tail;
}
// COLUMNS at line 4; `columns` starts at line 5.
std::string with_columns(const std::string& columns) { return "ROWS\n N c\n L r1\nCOLUMNS\n" + columns + "ENDATA\n"; }

std::vector<BrokenFile> structure_cases() {
  return {
      {"empty file", "", kNoRows, kNoRowsText},
      {"only comments", "* nothing\n\n* at all\n", kNoRows, kNoRowsText},
      {"only a name", "NAME t\n", kNoRows, kNoRowsText},
      {"end at once", "ENDATA\n", kNoRows, kNoRowsText},
      {"columns first", "NAME t\nCOLUMNS\n x r 1\n", kNoRows, kNoRowsText},
      {"sides first", "NAME t\nRHS\n B r 1\n", kNoRows, kNoRowsText},
      {"no columns", "ROWS\n N c\n L r\nENDATA\n", kNoColumns, kNoColumnsText},
      {"sides before columns", "ROWS\n N c\n L r\nRHS\n B r 1\nENDATA\n", kNoColumns, kNoColumnsText},
      {"bounds before columns", "ROWS\n N c\n L r\nBOUNDS\n UP B x 1\nENDATA\n", kNoColumns, kNoColumnsText},
      {"no constraints", "ROWS\n N c\nCOLUMNS\n x c 1\nENDATA\n", kNoConstraints, kNoConstraintsText},
      {"empty rows", "ROWS\nCOLUMNS\n x c 1\nENDATA\n", kNoConstraints, kNoConstraintsText},
      {"empty columns", with_columns(""), kEmpty, kEmptyText},
      {"only markers", with_columns(" M 'MARKER' 'INTORG'\n"), kEmpty, kEmptyText},
      not_right("truncated in rows", "NAME t\nROWS\n N c\n L r1\n", 4),
      not_right("truncated in columns", "NAME t\nROWS\n N c\n L r1\nCOLUMNS\n x r1 1\n", 6),
      not_right("no end", with_tail("RHS\n B r1 1\n"), 10),
      not_right("unknown section", with_tail("CONES\n x y\nENDATA\n"), 9),
      not_right("section in small letters", "NAME t\nrows\n N c\n", 2),
      not_right("quadratic constraint", with_tail("QCMATRIX r1\n x x 1\nENDATA\n"), 9),
      not_right("quadratic section of a row", with_tail("QSECTION r1\n x x 1\nENDATA\n"), 9),
      not_right("indicators", with_tail("INDICATORS\n IF r1 x 1\nENDATA\n"), 9),
      not_right("words behind a section", with_tail("RHS r1 5\nENDATA\n"), 9),
      not_right("data in the first column", "ROWS\n N c\n L r1\nCOLUMNS\nx r1 1\nENDATA\n", 5),
      not_right("data before any section", "NAME t\n x r1 1\nROWS\n", 2),
      not_right("data behind the name", "NAME t\nOBJSENSE MAX\n x r1 1\nROWS\n", 3),
      not_right("rows after columns", with_tail("ROWS\n L r9\nENDATA\n"), 9),
      not_right("objective name after columns", with_tail("OBJNAME\n c\nENDATA\n"), 9),
      not_right("not text of any kind", "%PDF-1.4 something\n", 1),
  };
}

std::vector<BrokenFile> line_cases() {
  const std::string long_name(256, 'n');
  return {
      bad_line("row without a name", "ROWS\n N\n", 2, " N"),
      bad_line("unknown row type", "ROWS\n X c\n", 2, " X c"),
      bad_line("row type of two letters", "ROWS\n LE c\n", 2, " LE c"),
      bad_line("row given twice", "ROWS\n N c\n L r\n G r\n", 4, " G r"),
      bad_line("constraint named like the objective", "ROWS\n N c\n L c\n", 3, " L c"),
      bad_line("row name too long", "ROWS\n N " + long_name + "\n", 2, " N " + long_name.substr(0, 197)),
      {"rows with blanks outside the fixed columns", "ROWS\n N  cost\n L  a long row name\n", kNotFree, kNotFreeText},
      bad_line("column without entries", with_columns(" x\n"), 5, " x"),
      bad_line("entry without a number", with_columns(" x r1\n"), 5, " x r1"),
      bad_line("second entry without a number", with_columns(" x c 1 r1\n"), 5, " x c 1 r1"),
      bad_line("letters for a number", with_columns(" x r1 one\n"), 5, " x r1 one"),
      bad_line("number with a comma", with_columns(" x r1 1,5\n"), 5, " x r1 1,5"),
      bad_line("fraction", with_columns(" x r1 9/10\n"), 5, " x r1 9/10"),
      bad_line("two signs", with_columns(" x r1 --1\n"), 5, " x r1 --1"),
      bad_line("hexadecimal number", with_columns(" x r1 0x10\n"), 5, " x r1 0x10"),
      bad_line("not a number", with_columns(" x r1 nan\n"), 5, " x r1 nan"),
      bad_line("infinite coefficient", with_columns(" x r1 inf\n"), 5, " x r1 inf"),
      bad_line("coefficient out of range", with_columns(" x r1 1e999\n"), 5, " x r1 1e999"),
      bad_line("name between pairs", with_columns(" x c d 1\n"), 5, " x c d 1"),
      bad_line("column name too long", with_columns(" " + long_name + " r1 1\n"), 5, " " + long_name.substr(0, 199)),
      bad_line("integer and continuous", with_columns(" M 'MARKER' 'INTORG'\n x r1 1\n M 'MARKER' 'INTEND'\n x c 1\n"),
               8, " x c 1"),
      bad_line("control characters", with_columns(" x r1 1\x01\x02 c\n"), 5, " x r1 1?? c"),
      bad_line("zero byte", with_columns(std::string(" x r1\0 1\n", 9)), 5, " x r1? 1"),
      bad_line("side without a number", with_tail("RHS\n foo\nENDATA\n"), 10, " foo"),
      bad_line("side is no number", with_tail("RHS\n B r1 x\nENDATA\n"), 10, " B r1 x"),
      bad_line("infinite the wrong way", with_tail("RHS\n B r1 -inf\nENDATA\n"), 10, " B r1 -inf"),
      bad_line("infinite constant", with_tail("RHS\n B c inf\nENDATA\n"), 10, " B c inf"),
      bad_line("range is no number", with_tail("RANGES\n R r1 x\nENDATA\n"), 10, " R r1 x"),
      bad_line("range with too few words", with_tail("RANGES\n R\nENDATA\n"), 10, " R"),
      bad_line("unknown bound type", with_tail("BOUNDS\n XX B x 1\nENDATA\n"), 10, " XX B x 1"),
      bad_line("unknown bound type, unknown column", with_tail("BOUNDS\n BI B z 1\nENDATA\n"), 10, " BI B z 1"),
      bad_line("bound without a column", with_tail("BOUNDS\n UP\nENDATA\n"), 10, " UP"),
      bad_line("bound without a number", with_tail("BOUNDS\n LO B x\nENDATA\n"), 10, " LO B x"),
      bad_line("bound is no number", with_tail("BOUNDS\n UP B x abc\nENDATA\n"), 10, " UP B x abc"),
      bad_line("bound with too many words", with_tail("BOUNDS\n UP B x 1 2\nENDATA\n"), 10, " UP B x 1 2"),
      bad_line("lower bound plus infinity", with_tail("BOUNDS\n LO B x inf\nENDATA\n"), 10, " LO B x inf"),
      bad_line("upper bound minus infinity", with_tail("BOUNDS\n UP B x -inf\nENDATA\n"), 10, " UP B x -inf"),
      bad_line("fixed at infinity", with_tail("BOUNDS\n FX B x inf\nENDATA\n"), 10, " FX B x inf"),
      bad_line("member before any set", with_tail("SOS\n x 1\nENDATA\n"), 10, " x 1"),
      bad_line("unknown member", with_tail("SOS\n S1 a\n z 1\nENDATA\n"), 11, " z 1"),
      bad_line("member twice", with_tail("SOS\n S1 a\n x 1\n x 2\nENDATA\n"), 12, " x 2"),
      bad_line("weight is no number", with_tail("SOS\n S1 a\n x w\nENDATA\n"), 11, " x w"),
      bad_line("words behind a set", with_tail("SOS\n S1 a ERROR\n x 1\nENDATA\n"), 10, " S1 a ERROR"),
      bad_line("quadratic term with two words", with_tail("QUADOBJ\n x 1\nENDATA\n"), 10, " x 1"),
      bad_line("quadratic term is no number", with_tail("QUADOBJ\n x y z\nENDATA\n"), 10, " x y z"),
      bad_line("unknown first variable", with_tail("QUADOBJ\n z x 1\nENDATA\n"), 10,
               "variable name in the quadratic section not found\n"),
      bad_line("unknown second variable", with_tail("QMATRIX\n x z 1\nENDATA\n"), 10,
               "variable name in the quadratic section not found\n"),
      {"half a matrix", with_tail("QMATRIX\n x y 1\nENDATA\n"), "Error: qmatrix isn't symmetric\n",
       "Qmatrix isn't symmetric\n"},
      {"halves that differ", with_tail("QMATRIX\n x y 1\n y x 2\nENDATA\n"), "Error: qmatrix isn't symmetric\n",
       "Qmatrix isn't symmetric\n"},
      {"term given twice", with_tail("QUADOBJ\n x x 1\n x y 2\n x x 1\nENDATA\n"),
       "Error: duplicate quadratic elements\n", "Duplicate quadratic elements\n"},
      {"term in two sections", with_tail("QUADOBJ\n x x 1\nQMATRIX\n x x 1\nENDATA\n"),
       "Error: duplicate quadratic elements\n", "Duplicate quadratic elements\n"},
      bad_line("fixed layout, bad number",
               "ROWS\n N  COST\n L  A B\nCOLUMNS\n    X         A B              1x0.\nENDATA\n", 5,
               "    X         A B              1x0."),
      bad_line("fixed layout, text between fields",
               "ROWS\n N  COST\n L  A B\nCOLUMNS\n    X         A B     ?          1.\nENDATA\n", 5,
               "    X         A B     ?          1."),
  };
}

TEST(BrokenMps, EachHasItsMessage) {
  const TempDir dir;
  const std::string path = dir.file("m.mps");
  std::vector<BrokenFile> cases = structure_cases();
  for (BrokenFile& c : line_cases()) cases.push_back(std::move(c));
  EXPECT_GE(cases.size(), 60u);
  for (const BrokenFile& c : cases) {
    spit(path, c.text);
    RecordingEnv env;
    int code = 0;
    EXPECT_EQ(env.read(path, &code), nullptr) << c.what;
    EXPECT_EQ(code, 10012) << c.what;
    EXPECT_TRUE(env.log().ends_with(c.log)) << c.what << "\n" << env.log();
    EXPECT_EQ(env.log().find("Error"), env.log().size() - c.log.size()) << c.what << "\n" << env.log();
    EXPECT_EQ(env.error(), c.error) << c.what;
  }
}

TEST(BrokenMps, SizeLimits) {
  const TempDir dir;
  const std::string path = dir.file("m.mps");
  spit(path, with_tail("QUADOBJ\n x x 1\n x y 1\nENDATA\n"));
  ReadLimits rows, cols, nonzeros, terms;
  rows.rows = cols.cols = terms.quadratic_terms = 1;
  nonzeros.nonzeros = 2;
  const struct {
    ReadLimits limits;
    const char* what;
  } cases[] = {{rows, "constraints"}, {cols, "variables"}, {nonzeros, "nonzeros"}, {terms, "q terms"}};
  EXPECT_TRUE(parse_mps_file(path).ok);
  for (const auto& c : cases) {
    const MpsParseResult result = parse_mps_file(path, c.limits);
    EXPECT_FALSE(result.ok) << c.what;
    EXPECT_EQ(result.diagnostics.error().log, std::string("Warning: number of ") + c.what + " exceeds two billion\n");
    EXPECT_EQ(result.diagnostics.error().text,
              std::string("MPS reader: number of ") + c.what + " exceeds two billion\n");
  }
}

TEST(BrokenMps, MissingAndDamagedFiles) {
  const TempDir dir;
  RecordingEnv env;
  EXPECT_EQ(read_mps(env.get(), dir.file("none.mps")), nullptr);
  EXPECT_EQ(env.log(), "Error: file " + dir.file("none.mps") + " not found\n");
  EXPECT_EQ(env.error(), "File " + dir.file("none.mps") + " not found\n");
  env.clear_log();
  spit(dir.file("plain.mps.gz"), with_tail("ENDATA\n"));
  int code = 0;
  EXPECT_EQ(env.read(dir.file("plain.mps.gz"), &code), nullptr);
  EXPECT_EQ(code, 10012);
  EXPECT_EQ(env.log(), "Error: cannot read file " + dir.file("plain.mps.gz") + ": not in gzip format\n");
}

TEST(BrokenMps, FloodsOfWarningsAreCounted) {
  const TempDir dir;
  std::string text = "ROWS\n N c\n L r\nCOLUMNS\n x r 1\n";
  for (int i = 0; i < 5000; ++i) text += " x u" + std::to_string(i) + " 1\n";
  spit(dir.file("m.mps"), text + "ENDATA\n");
  RecordingEnv env;
  EXPECT_NE(env.read(dir.file("m.mps")), nullptr);
  EXPECT_LT(env.log().size(), 10000u);
  EXPECT_NE(env.log().find("Warning: 4900 more warnings of these kinds.\n"), std::string::npos);
}

}  // namespace
}  // namespace zorvex::testing
