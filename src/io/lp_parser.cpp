#include "io/lp_parser.hpp"

#include <algorithm>
#include <cmath>

#include "io/mps_layout.hpp"

namespace zorvex {

namespace {

constexpr double kRhsInfinity = 1e30;  // sides at or beyond it are infinite

}  // namespace

bool LpParser::fail_infinite(const LpLexeme& place, double value) {
  LpLexeme shown = place;
  shown.text = value > 0 ? "infinity" : "-infinity";
  return diagnostics_.fail_at(shown, "a finite number is expected");
}

bool LpParser::expect(LpToken kind, const char* message) {
  if (!at(kind)) return fail(message);
  lexer_.advance();
  return true;
}

// What follows decides: a colon makes it a label, a relation a variable; a sign goes only with sections that can start
// with one.
LpKeyword LpParser::header() {
  if (!at(LpToken::kName)) return {};
  const std::string_view rest = lexer_.rest();
  const LpKeyword keyword = lp_keyword(rest);
  const bool is_sense = keyword.section == LpSection::kMinimize || keyword.section == LpSection::kMaximize;
  if (keyword.section == LpSection::kNone || (is_sense && has_sense_)) return {};
  std::size_t next = keyword.length;
  while (next < rest.size() && is_blank(rest[next])) ++next;
  if (next == rest.size()) return keyword;
  const bool takes_sign = is_sense || keyword.section == LpSection::kConstraints ||
                          keyword.section == LpSection::kBounds || keyword.section == LpSection::kLazyConstraints ||
                          keyword.section == LpSection::kUserCuts;
  const std::string_view excluded = takes_sign ? ":<>=*^" : ":<>=*^+-";
  return excluded.find(rest[next]) == std::string_view::npos ? keyword : LpKeyword{};
}

bool LpParser::parse() {
  if (!objective_sense() || !objective()) return false;
  while (!ended_ && !at(LpToken::kEnd)) {
    const LpKeyword keyword = header();
    if (keyword.section == LpSection::kNone) return fail("a section is expected");
    if (!section(keyword)) return false;
  }
  return end_of_file() && finish();
}

bool LpParser::section(const LpKeyword& keyword) {
  const auto special = [this](const char* what) {
    diagnostics_.warn(ReadWarning::kSpecialConstraints,
                      format_text("Warning: %s at line %ld are read as constraints.\n", what, token().line));
  };
  if (keyword.section == LpSection::kLazyConstraints) special("lazy constraints");
  if (keyword.section == LpSection::kUserCuts) special("user cuts");
  if (keyword.section == LpSection::kUnsupported) return fail("a section of this kind is not supported");
  lexer_.skip(keyword.length);
  switch (keyword.section) {
    case LpSection::kConstraints:
    case LpSection::kLazyConstraints:
    case LpSection::kUserCuts:
      return constraints();
    case LpSection::kBounds:
      return bounds();
    case LpSection::kGenerals:
      return kinds(LpColumns::kGeneral, "Generals");
    case LpSection::kBinaries:
      return kinds(LpColumns::kBinary, "Binaries");
    case LpSection::kSemicontinuous:
      return kinds(LpColumns::kSemicontinuous, "Semi-continuous");
    case LpSection::kSemiinteger:
      return kinds(LpColumns::kSemicontinuous | LpColumns::kGeneral, "Semi-integer");
    case LpSection::kSos:
      return sos_section(0);
    case LpSection::kSos1:
      return sos_section(1);
    case LpSection::kSos2:
      return sos_section(2);
    default:
      ended_ = true;
      return true;
  }
}

bool LpParser::end_of_file() {
  if (ended_) return at(LpToken::kEnd) || fail("nothing is expected after End");
  diagnostics_.warn(ReadWarning::kNoEnd, "Warning: the file has no End, it may have been cut off.\n");
  return true;
}

bool LpParser::objective_sense() {
  const LpKeyword keyword = header();
  if (keyword.section != LpSection::kMinimize && keyword.section != LpSection::kMaximize) {
    return fail("Minimize or Maximize is expected");
  }
  has_sense_ = true;
  data_.maximize = keyword.section == LpSection::kMaximize;
  lexer_.skip(keyword.length);
  return true;
}

bool LpParser::objective() {
  if (at(LpToken::kName) && header().section == LpSection::kNone && lexer_.peek() == LpToken::kColon) {
    lexer_.advance();
    lexer_.advance();
  }
  in_objective_ = true;
  if (!expression()) return false;
  in_objective_ = false;
  for (const LpExpression::Term& term : expression_.terms()) data_.obj[term.col] = term.value;
  data_.objective_constant = expression_.constant();
  data_.quadratic = expression_.quadratic();
  if (static_cast<Offset>(data_.quadratic.size()) > limits_.quadratic_terms) return fail("too many quadratic terms");
  if (at(LpToken::kEnd) || header().section != LpSection::kNone) return true;
  const bool is_label = at(LpToken::kName) && lexer_.peek() == LpToken::kColon;
  return fail(is_label ? "only one objective is supported" : "a sign or a section is expected");
}

bool LpParser::constraints() {
  while (!at(LpToken::kEnd) && header().section == LpSection::kNone) {
    if (!constraint()) return false;
  }
  return true;
}

bool LpParser::constraint() {
  label_ = -1;
  is_range_by_remark_ = lexer_.has_range_remark();
  if (at(LpToken::kName)) {
    if (lexer_.peek() == LpToken::kColon && !constraint_label()) return false;
    if (at(LpToken::kName) && lexer_.peek() == LpToken::kDoubleColon) return sos_of_line();
  }
  if (!expression()) return false;
  // A labelled row may be empty: "c: = 0".
  if (expression_.empty() && label_ < 0) return fail("a constraint is expected");
  if (expression_.empty()) return single_row();
  return expression_.terms().empty() ? reversed_row() : single_row();
}

bool LpParser::constraint_label() {
  const LpLexeme label = token();
  if (label.text.size() > kMaxNameLength) return fail("name too long");
  const Index known = data_.rows.size();
  label_ = data_.rows.insert(label.text);
  if (label_ < known) return fail("constraint name used before");
  lexer_.advance();
  lexer_.advance();
  return true;
}

// expression relation number
bool LpParser::single_row() {
  Relation sign;
  if (!require_relation(&sign, "a sign or a relation is expected")) return false;
  const LpLexeme place = token();
  double rhs = 0;
  if (!number(&rhs, true, "a number is expected as right-hand side")) return false;
  if (at(LpToken::kArrow)) return fail("indicator constraints are not supported");
  const char sense = sense_of(sign);
  if (std::isinf(rhs) && sense != (rhs > 0 ? '<' : '>')) return fail_infinite(place, rhs);
  if (is_range_by_remark_ && !expression_.terms().empty()) {
    range_pairs_.push_back({data_.num_rows(), expression_.terms().back().col});
  }
  return finish_row(sense, rhs - expression_.constant());
}

// number relation expression [relation number]
bool LpParser::reversed_row() {
  const double first = expression_.constant();
  Relation left;
  if (!require_relation(&left, "a sign or a relation is expected")) return false;
  if (std::isinf(first) && left != (first < 0 ? Relation::kLess : Relation::kGreater)) {
    return fail("another relation with an infinite side is expected before");
  }
  if (!expression()) return false;
  if (expression_.empty()) return fail("an expression is expected");
  const Relation right = relation();
  if (right != Relation::kNone) return range_row(left, right, first);
  return finish_row(sense_of(flipped(left)), first - expression_.constant());
}

// The current token is the second relation.
bool LpParser::range_row(Relation left, Relation right, double first) {
  if (right != left || left == Relation::kEqual) return fail("one relation or two of one direction are expected");
  lexer_.advance();
  const std::string text(token().text);
  const LpLexeme place = {LpToken::kNumber, text, 0, token().line, token().column};
  double second = 0;
  if (!number(&second, true, "a number is expected as right-hand side")) return false;
  const double constant = expression_.constant();
  const double lower = (left == Relation::kLess ? first : second) - constant;
  const double upper = (left == Relation::kLess ? second : first) - constant;
  if (lower > upper || lower == kInf || upper == -kInf) {
    return diagnostics_.fail_at(place, "the lower side of a range is above its upper side");
  }
  const bool has_lower = lower > -kRhsInfinity, has_upper = upper < kRhsInfinity;
  if (has_lower && has_upper) data_.ranges.push_back({data_.num_rows(), lower, upper});
  return has_lower && !has_upper ? finish_row('>', lower) : finish_row('<', upper);
}

bool LpParser::finish_row(char sense, double rhs) {
  data_.sense.push_back(sense);
  data_.rhs.push_back(std::clamp(rhs, -kRhsInfinity, kRhsInfinity));
  data_.row_name.push_back(label_);
  columns_.add_row(expression_);
  if (data_.num_rows() > limits_.rows) return fail("too many constraints");
  return columns_.num_nonzeros() <= limits_.nonzeros || fail("too many nonzeros");
}

bool LpParser::finish() {
  columns_.finish();
  merge_lp_ranges(range_pairs_, &data_);
  data_.name = lexer_.problem_name().substr(0, kMaxNameLength);
  for (Index col = 0; col < data_.cols.size(); ++col) {
    if (data_.lower[col] <= data_.upper[col]) continue;
    diagnostics_.warn(ReadWarning::kEmptyDomain,
                      format_text("Warning: lower bound %g of variable %s is above its upper bound %g.\n",
                                  data_.lower[col], printable(data_.cols[col]).c_str(), data_.upper[col]));
  }
  return true;
}

}  // namespace zorvex
