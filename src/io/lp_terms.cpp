// Expressions and numbers of the LP format.
#include <array>
#include <cmath>

#include "io/lp_parser.hpp"
#include "io/mps_layout.hpp"
#include "io/number_text.hpp"

namespace zorvex {

namespace {

std::string_view skip_blanks(std::string_view text) {
  while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
  return text;
}

}  // namespace

double LpParser::signs(bool* any) {
  double sign = 1;
  *any = false;
  for (; at(LpToken::kPlus) || at(LpToken::kMinus); lexer_.advance()) {
    if (at(LpToken::kMinus)) sign = -sign;
    *any = true;
  }
  return sign;
}

bool LpParser::expression() {
  expression_.clear();
  bool ends = false;
  while (!ends) {
    bool any_sign = false;
    const double sign = signs(&any_sign);
    // Without a sign only the first term goes on: what follows is a label, a section or a new constraint.
    const bool may_start = any_sign || (expression_.empty() && batch_.size() == 0);
    if (may_start && at(LpToken::kOpen)) {
      if (!add_terms() || !bracket(sign)) return false;
    } else if (may_start && (at(LpToken::kNumber) || at(LpToken::kName))) {
      if (!any_sign && at(LpToken::kName) && header().section != LpSection::kNone) return true;
      if (!term(sign, &ends)) return false;
    } else if (any_sign) {
      return fail("a term is expected after the sign");
    } else {
      ends = true;
    }
  }
  return add_terms();
}

// Looks up the variables of the terms collected.
bool LpParser::add_terms() {
  std::array<Index, LpTermBatch::kSize> col;
  for (int k = 0; k < batch_.size(); ++k) {
    col[k] = columns_.column(batch_.name(k), batch_[k].key);
    expression_.prepare(col[k]);
  }
  for (int k = 0; k < batch_.size(); ++k) {
    if (!expression_.add(col[k], batch_[k].value)) note_duplicate(col[k], batch_[k].line, batch_[k].column);
  }
  batch_.clear();
  return columns_.size() <= limits_.cols || fail("too many variables");
}

// [number [*]] variable, or a number alone. `ends`: nothing can follow.
bool LpParser::term(double sign, bool* ends) {
  double value = sign;
  if (at_infinity() && expression_.empty() && batch_.size() == 0) {
    const LpToken next = lexer_.peek();
    if (next == LpToken::kLess || next == LpToken::kGreater || next == LpToken::kEqual) {
      expression_.add_constant(sign * kInf);
      lexer_.advance();
      *ends = true;
      return true;
    }
  }
  if (at(LpToken::kNumber)) {
    value *= token().value;
    if (!std::isfinite(value)) return fail("a finite number is expected");
    lexer_.advance();
    const bool product = at(LpToken::kStar);
    if (product) lexer_.advance();
    if (product && !at(LpToken::kName)) return fail("a variable is expected after '*'");
    const bool has_variable =
        at(LpToken::kName) && (product || header().section == LpSection::kNone) && (product || !lexer_.colon_follows());
    if (!has_variable) {
      expression_.add_constant(value);
      return true;
    }
  }
  if (token().text.size() > kMaxNameLength) return fail("name too long");
  batch_.add(data_.cols, token(), value);
  lexer_.advance();
  return !batch_.full() || add_terms();
}

bool LpParser::bracket(double sign) {
  if (!in_objective_) return fail("quadratic constraints are not supported");
  lexer_.advance();
  do {
    if (!bracket_term(sign)) return false;
  } while (at(LpToken::kPlus) || at(LpToken::kMinus));
  if (!expect(LpToken::kClose, "a sign or ']' is expected")) return false;
  if (!expect(LpToken::kSlash, "'/ 2' is expected behind ']'")) return false;
  if (!at(LpToken::kNumber) || token().value != 2) return fail("'/ 2' is expected behind ']'");
  lexer_.advance();
  return true;
}

// [signs] [number [*]] x ^ 2, or x * y instead.
bool LpParser::bracket_term(double sign) {
  bool any_sign = false;
  double value = sign * signs(&any_sign);
  if (at(LpToken::kNumber)) {
    value *= token().value;
    if (!std::isfinite(value)) return fail("a finite number is expected");
    lexer_.advance();
    if (at(LpToken::kStar)) lexer_.advance();
  }
  Index first = 0;
  if (!variable(&first)) return false;
  if (at(LpToken::kCaret)) {
    lexer_.advance();
    if (!at(LpToken::kNumber) || token().value != 2) return fail("the exponent 2 is expected");
    lexer_.advance();
    expression_.add_quadratic(first, first, value);
    return true;
  }
  Index second = 0;
  if (!expect(LpToken::kStar, "'^ 2' or '*' is expected in brackets") || !variable(&second)) return false;
  expression_.add_quadratic(first, second, value);
  return true;
}

LpParser::Relation LpParser::flipped(Relation relation) {
  if (relation == Relation::kLess) return Relation::kGreater;
  return relation == Relation::kGreater ? Relation::kLess : relation;
}

LpParser::Relation LpParser::relation() const {
  switch (token().kind) {
    case LpToken::kLess:
      return Relation::kLess;
    case LpToken::kEqual:
      return Relation::kEqual;
    case LpToken::kGreater:
      return Relation::kGreater;
    default:
      return Relation::kNone;
  }
}

bool LpParser::require_relation(Relation* found, const char* message) {
  *found = relation();
  if (*found == Relation::kNone) return fail(message);
  lexer_.advance();
  return true;
}

bool LpParser::number(double* value, bool sum, const char* message) {
  bool any_sign = false;
  const double sign = signs(&any_sign);
  if (at_infinity()) {
    *value = sign * kInf;
    lexer_.advance();
    return true;
  }
  if (!at(LpToken::kNumber)) return fail(message);
  *value = sign * token().value;
  if (sum) {
    add_constants_on_line(value);
  } else {
    lexer_.advance();
  }
  return true;
}

// From the number that is the current token on.
void LpParser::add_constants_on_line(double* value) {
  const std::string_view line = lexer_.rest();
  std::size_t taken = token().text.size();
  double sum = *value;
  std::string_view rest = skip_blanks(line.substr(taken));
  while (!rest.empty()) {
    double sign = 1;
    bool any_sign = false;
    for (; !rest.empty() && (rest.front() == '+' || rest.front() == '-'); rest = skip_blanks(rest.substr(1))) {
      if (rest.front() == '-') sign = -sign;
      any_sign = true;
    }
    const std::size_t length = lp_number_length(rest);
    double constant = 0;
    if (!any_sign || length == 0 || !parse_number(rest.substr(0, length), &constant)) return lexer_.advance();
    sum += sign * constant;
    rest = skip_blanks(rest.substr(length));
  }
  *value = sum;
  lexer_.skip(line.size());
}

bool LpParser::variable(Index* col) {
  if (!at(LpToken::kName)) return fail("a variable is expected");
  if (token().text.size() > kMaxNameLength) return fail("name too long");
  *col = columns_.column(token().text);
  if (columns_.size() > limits_.cols) return fail("too many variables");
  lexer_.advance();
  return true;
}

void LpParser::note_duplicate(Index col, long line, long column) {
  diagnostics_.warn(ReadWarning::kDuplicateNonzero,
                    format_text("Warning: variable %s again at line %ld, column %ld: its coefficients are added up.\n",
                                printable(data_.cols[col]).c_str(), line, column));
}

}  // namespace zorvex
