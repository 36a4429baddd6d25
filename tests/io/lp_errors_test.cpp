// Broken LP-format files: each is refused with the place, what was expected and what stands there instead.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "io/io_fixture.hpp"

namespace zorvex::testing {
namespace {

struct BrokenFile {
  const char* what;
  std::string text;
  long line, column;
  std::string message;
  std::string found;  // "" at the end of the file
};

std::string with_rows(const std::string& rows) { return "min\nobj: x\nst\n" + rows; }       // rows from line 4
std::string with_tail(const std::string& tail) { return with_rows("c: x >= 1\n" + tail); }  // tail from line 5

const std::string kSense = "Minimize or Maximize is expected";
const std::string kSignOrSection = "a sign or a section is expected";
const std::string kTerm = "a term is expected after the sign";
const std::string kSignOrRelation = "a sign or a relation is expected";
const std::string kConstraint = "a constraint is expected";
const std::string kSide = "a number is expected as right-hand side";
const std::string kDirection = "one relation or two of one direction are expected";
const std::string kFinite = "a finite number is expected";
const std::string kBound = "a bound is expected";
const std::string kBoundNumber = "a number is expected as bound";
const std::string kVariable = "a variable is expected";
const std::string kMember = "a member and its weight are expected";
const std::string kSet = "a set with members is expected";
const std::string kHalf = "'/ 2' is expected behind ']'";

const std::vector<BrokenFile>& broken_files() {
  static const std::vector<BrokenFile> files = {
      {"empty file", "", 0, 1, kSense, ""},
      {"only comments", "\\ nothing\n\n", 2, 1, kSense, ""},
      {"no sense", "x + y\n", 1, 1, kSense, "x"},
      {"sense as a label", "min: x\n", 1, 1, kSense, "min"},
      {"constraints first", "\n  subject to\n", 2, 3, kSense, "subject"},
      {"MPS text", "NAME test\nROWS\n", 1, 1, kSense, "NAME"},
      {"two objectives", "min a: x\n b: y\nst\n", 2, 2, "only one objective is supported", "b"},
      {"missing sign", "min 3 x 4 y\n", 1, 9, kSignOrSection, "4"},
      {"two variables", "min x y\n", 1, 7, kSignOrSection, "y"},
      {"hanging sign", "min x +\nst\nx >= 1", 3, 1, kSignOrSection, "x"},
      {"sign at the end", "min x + 2 -", 1, 12, kTerm, ""},
      {"product without variable", "min 3 * 4\n", 1, 9, "a variable is expected after '*'", "4"},
      {"variable times number", "min x * 3\n", 1, 7, kSignOrSection, "*"},
      {"relation in the objective", "min x >= 3\n", 1, 7, kSignOrSection, ">="},
      {"number beyond the range", "min 1e999 x\n", 1, 5, kFinite, "1e999"},
      {"two points", "min 1.2.3 x\n", 1, 8, kSignOrSection, ".3"},
      {"lone point", "min . x\n", 1, 5, kSignOrSection, "."},
      {"zero byte", std::string("min x\0y\n", 8), 1, 6, kSignOrSection, "byte 0x00"},
      {"long name", "min " + std::string(256, 'n') + "\n", 1, 5, "name too long", std::string(200, 'n')},
      {"long label", with_rows(std::string(256, 'n') + ": x >= 1"), 4, 1, "name too long", std::string(200, 'n')},
      {"long name of a set", with_tail("sos " + std::string(256, 'n') + ": S1:: x:1"), 5, 5, "name too long",
       std::string(200, 'n')},
      {"bracket not closed", "min [ x^2\nst\n", 2, 1, "a sign or ']' is expected", "st"},
      {"no half", "min [ x^2 ]\nst\n", 2, 1, kHalf, "st"},
      {"another divisor", "min [ x^2 ] / 3\n", 1, 15, kHalf, "3"},
      {"cube", "min [ x ^ 3 ] / 2\n", 1, 11, "the exponent 2 is expected", "3"},
      {"linear term in brackets", "min [ x + y^2 ] / 2\n", 1, 9, "'^ 2' or '*' is expected in brackets", "+"},
      {"number times number", "min [ 2 * 3 ] / 2\n", 1, 11, kVariable, "3"},
      {"empty brackets", "min [ ] / 2\n", 1, 7, kVariable, "]"},
      {"quadratic constraint", with_rows("c: x + [ x^2 ] <= 1"), 4, 8, "quadratic constraints are not supported", "["},
      {"no relation", with_rows("c: x + y 3"), 4, 10, kSignOrRelation, "3"},
      {"new label instead of a relation", with_rows("c: x + y\nd: x >= 1"), 5, 1, kSignOrRelation, "d"},
      {"end instead of a relation", with_rows("c: x + y\nend"), 5, 1, kSignOrRelation, "end"},
      {"no side", with_rows("c: x >=\nend"), 5, 1, kSide, "end"},
      {"variable as side", with_rows("c: x >= y"), 4, 9, kSide, "y"},
      {"cut off in a row", with_rows("c: x >= -"), 4, 10, kSide, ""},
      {"relation twice", with_rows("c: x >= >= 1"), 4, 9, kSide, ">="},
      {"relation at the start", with_rows(">= 1"), 4, 1, kConstraint, ">="},
      {"unnamed equation of nothing", with_rows("= 3"), 4, 1, kConstraint, "="},
      {"relation behind a row", with_rows("c: x >= 1 <= 2"), 4, 11, kConstraint, "<="},
      {"range in two directions", with_rows("c: 1 <= x >= 2"), 4, 11, kDirection, ">="},
      {"equation as a range", with_rows("c: 1 = x = 2"), 4, 10, kDirection, "="},
      {"range upside down", with_rows("c: 5 <= x <= 3"), 4, 14, "the lower side of a range is above its upper side",
       "3"},
      {"infinite equation", with_rows("c: x = inf"), 4, 8, kFinite, "infinity"},
      {"side at the wrong infinity", with_rows("c: x <= -inf"), 4, 9, kFinite, "-infinity"},
      {"label twice", with_rows("c: x >= 1\nc: x <= 4"), 5, 1, "constraint name used before", "c"},
      {"double colon", with_rows("c:: x >= 1"), 4, 1, "S1 or S2 is expected before '::'", "c"},
      {"indicator", with_rows("c: x = 1 -> y <= 3"), 4, 10, "indicator constraints are not supported", "->"},
      {"unknown character", with_rows("c: x >= 1 ] 2"), 4, 11, kConstraint, "]"},
      {"section of another kind", with_tail("general constraints\n g: z = max(x, y)"), 5, 1,
       "a section of this kind is not supported", "general"},
      {"second objective sense", with_tail("maximize x"), 5, 10, kSignOrRelation, "x"},
      {"bound without a number", with_tail("bounds x <= y"), 5, 13, kBoundNumber, "y"},
      {"bound without a relation", with_tail("bounds x 3"), 5, 10, "a relation or 'free' is expected", "3"},
      {"bound without a variable", with_tail("bounds 1 <= 3"), 5, 13, kVariable, "3"},
      {"bound with a coefficient", with_tail("bounds 2 x <= 3"), 5, 10, "a relation is expected", "x"},
      {"bound with a label", with_tail("bounds b: x <= 3"), 5, 9, "a relation or 'free' is expected", ":"},
      {"bounds in two directions", with_tail("bounds 1 <= x >= 0"), 5, 15, kDirection, ">="},
      {"lower bound at infinity", with_tail("bounds x >= inf"), 5, 13, kFinite, "infinity"},
      {"upper bound at minus infinity", with_tail("bounds -inf >= x"), 5, 8, kFinite, "-infinity"},
      {"fixed at infinity", with_tail("bounds x = inf"), 5, 12, kFinite, "infinity"},
      {"stray sign in bounds", with_tail("bounds ] x"), 5, 8, kBound, "]"},
      {"number in a list", with_tail("binaries x 3"), 5, 12, kVariable, "3"},
      {"colon in a list", with_tail("generals x : y"), 5, 12, kVariable, ":"},
      {"set of no type", with_tail("sos s: x:1"), 5, 8, "S1:: or S2:: is expected before members", "x"},
      {"set of type three", with_tail("sos s: S3:: x:1"), 5, 8, "S1 or S2 is expected before '::'", "S3"},
      {"set without members", with_tail("sos s: S1::\nend"), 6, 1, kSet, "end"},
      {"label without a set", with_tail("sos1 s:\nend"), 6, 1, kMember, "end"},
      {"member without weight", with_tail("sos S1:: x y:2"), 5, 10, kMember, "x"},
      {"weight that is no number", with_tail("sos S1:: x:+y"), 5, 13, "a weight is expected", "y"},
      {"infinite weight", with_tail("sos S1:: x:-inf"), 5, 10, "a finite weight is expected behind a member", "x"},
      {"member twice", with_tail("sos S1:: x:1 y:2 x:3"), 5, 18, "a member that is not in the set yet is expected",
       "x"},
      {"text behind the end", with_tail("end\nc2: x <= 2"), 6, 1, "nothing is expected after End", "c2"},
  };
  return files;
}

TEST(BrokenLp, EachWithItsMessage) {
  const TempDir dir;
  RecordingEnv env;
  for (const BrokenFile& broken : broken_files()) {
    spit(dir.file("m.lp"), broken.text);
    env.clear_log();
    int code = 0;
    EXPECT_EQ(env.read(dir.file("m.lp"), &code), nullptr) << broken.what;
    EXPECT_EQ(code, 10012) << broken.what;
    const bool plain = broken.found.empty() || broken.found.starts_with("byte");
    const std::string found = broken.found.empty() ? "end of file" : plain ? broken.found : "'" + broken.found + "'";
    const std::string text = "rror at line " + std::to_string(broken.line) + ", column " +
                             std::to_string(broken.column) + ": " + broken.message + ", found " + found + "\n";
    EXPECT_TRUE(env.log().ends_with("E" + text)) << broken.what << "\n" << env.log();
    EXPECT_EQ(env.error(), "LP read e" + text) << broken.what;
  }
}

TEST(BrokenLp, DamagedStream) {
  const TempDir dir;
  RecordingEnv env;
  spit(dir.file("m.lp"), "min x st c: x >= 1 end\n");
  const auto model = env.read(dir.file("m.lp"));
  ASSERT_EQ(ZLPwrite(model.get(), dir.file("p.lp.gz").c_str()), 0);
  const std::string packed = slurp(dir.file("p.lp.gz"));
  spit(dir.file("p.lp.gz"), packed.substr(0, packed.size() - 12));
  env.clear_log();
  EXPECT_EQ(env.read(dir.file("p.lp.gz")), nullptr);
  EXPECT_NE(env.log().find("Error: cannot read file"), std::string::npos) << env.log();
}

}  // namespace
}  // namespace zorvex::testing
