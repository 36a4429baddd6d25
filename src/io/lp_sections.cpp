// Bounds, kinds of variables and special ordered sets of the LP format.
#include <cmath>
#include <utility>

#include "io/lp_parser.hpp"

namespace zorvex {

bool LpParser::bounds() {
  while (!at(LpToken::kEnd) && header().section == LpSection::kNone) {
    if (!bound()) return false;
  }
  return true;
}

// [number relation] variable [relation number], variable free
bool LpParser::bound() {
  if (at(LpToken::kName) && !at_infinity()) {
    Index col = 0;
    return listed_variable(&col, "Bounds") && bound_after_name(col);
  }
  double value = 0;
  const LpLexeme place = token();
  if (!number(&value, false, "a bound is expected")) return false;
  Relation left;
  if (!require_relation(&left, "a relation is expected")) return false;
  Index col = 0;
  if (!listed_variable(&col, "Bounds")) return false;
  if (!set_bound(col, flipped(left), value, place)) return false;
  const Relation right = relation();
  if (right == Relation::kNone) return true;
  if (right != left || left == Relation::kEqual) return fail("one relation or two of one direction are expected");
  lexer_.advance();
  const LpLexeme second = token();
  return number(&value, false, "a number is expected as bound") && set_bound(col, right, value, second);
}

bool LpParser::bound_after_name(Index col) {
  if (at(LpToken::kName) && is_lp_free(token().text)) {
    lexer_.advance();
    if (columns_.has(col, LpColumns::kLowerGiven | LpColumns::kUpperGiven)) warn_duplicate_bound(col);
    data_.lower[col] = -kInf;
    data_.upper[col] = kInf;
    columns_.mark(col, LpColumns::kLowerGiven | LpColumns::kUpperGiven);
    return true;
  }
  Relation sign;
  if (!require_relation(&sign, "a relation or 'free' is expected")) return false;
  const LpLexeme place = token();
  double value = 0;
  return number(&value, false, "a number is expected as bound") && set_bound(col, sign, value, place);
}

bool LpParser::set_bound(Index col, Relation sign, double value, const LpLexeme& place) {
  const bool lower = sign != Relation::kLess;
  const bool upper = sign != Relation::kGreater;
  if (std::isinf(value) && ((lower && value > 0) || (upper && value < 0))) {
    return fail_infinite(place, value);
  }
  if ((lower && columns_.has(col, LpColumns::kLowerGiven)) || (upper && columns_.has(col, LpColumns::kUpperGiven))) {
    warn_duplicate_bound(col);
  }
  if (lower) data_.lower[col] = value;
  if (upper) data_.upper[col] = value;
  columns_.mark(
      col, static_cast<unsigned char>((lower ? LpColumns::kLowerGiven : 0) | (upper ? LpColumns::kUpperGiven : 0)));
  return true;
}

void LpParser::warn_duplicate_bound(Index col) {
  diagnostics_.warn(ReadWarning::kDuplicateBound,
                    format_text("Warning: duplicate bounds for column %s.\n", printable(data_.cols[col]).c_str()));
}

bool LpParser::listed_variable(Index* col, const char* section) {
  if (!at(LpToken::kName)) return fail("a variable is expected");
  if (token().text.size() > kMaxNameLength) return fail("name too long");
  *col = column_of_list(token(), section);
  lexer_.advance();
  return columns_.size() <= limits_.cols || fail("too many variables");
}

Index LpParser::column_of_list(const LpLexeme& name, const char* section) {
  const Index known = columns_.size();
  const Index col = columns_.column(name.text);
  if (col == known) {
    diagnostics_.warn(ReadWarning::kUnusedVariable,
                      format_text("Warning: variable %s of section %s at line %ld is in no expression.\n",
                                  printable(name.text).c_str(), section, name.line));
  }
  return col;
}

bool LpParser::kinds(unsigned char kind, const char* section) {
  while (!at(LpToken::kEnd) && header().section == LpSection::kNone) {
    Index col = 0;
    if (!listed_variable(&col, section)) return false;
    columns_.mark(col, kind);
  }
  return true;
}

// Sets up to the next section.
bool LpParser::sos_section(int type) {
  SosState state{type};
  while (at(LpToken::kName) && (state.labelled || header().section == LpSection::kNone)) {
    if (!sos_item(&state)) return false;
  }
  return close_sos(&state);
}

// A set among the constraints ends with its line: a label and a coefficient look like a member and its weight.
bool LpParser::sos_of_line() {
  SosState state{0};
  if (label_ >= 0) state.label = data_.rows[label_];
  const long line = token().line;
  while (at(LpToken::kName) && token().line == line) {
    if (!sos_item(&state)) return false;
  }
  return close_sos(&state);
}

// "S1 ::", "label :" or "variable : weight"
bool LpParser::sos_item(SosState* state) {
  const LpToken next = lexer_.peek();
  if (next == LpToken::kDoubleColon) {
    const std::string_view name = token().text;
    const bool is_type = name.size() == 2 && (name[0] == 'S' || name[0] == 's') && (name[1] == '1' || name[1] == '2');
    if (!is_type) return fail("S1 or S2 is expected before '::'");
    state->labelled = false;
    if (!open_sos(state, name[1] - '0')) return false;
    lexer_.advance();
    lexer_.advance();
    return true;
  }
  if (next != LpToken::kColon) return fail("a member and its weight are expected");
  const std::string name(token().text);
  const LpLexeme place = {LpToken::kName, name, 0, token().line, token().column};
  lexer_.advance();
  lexer_.advance();
  if (!at(LpToken::kName)) return sos_member(state, place);
  if (!close_sos(state)) return false;
  if (name.size() > kMaxNameLength) return diagnostics_.fail_at(place, "name too long");
  state->labelled = true;
  state->label = name;
  return true;
}

bool LpParser::open_sos(SosState* state, int type) {
  if (!close_sos(state)) return false;
  state->open = true;
  data_.sos.emplace_back();
  data_.sos.back().type = type;
  data_.sos.back().name = std::exchange(state->label, {});
  return true;
}

// Ends the set being read, if any.
bool LpParser::close_sos(SosState* state) {
  const bool empty = state->labelled || (state->open && data_.sos.back().member.empty());
  state->open = state->labelled = false;
  return !empty || fail("a set with members is expected");
}

bool LpParser::sos_member(SosState* state, const LpLexeme& name) {
  if (!state->open) {
    if (state->type == 0) return diagnostics_.fail_at(name, "S1:: or S2:: is expected before members");
    state->labelled = false;
    if (!open_sos(state, state->type)) return false;
  }
  double weight = 0;
  if (!number(&weight, false, "a weight is expected")) return false;
  if (!std::isfinite(weight)) return diagnostics_.fail_at(name, "a finite weight is expected behind a member");
  if (name.text.size() > kMaxNameLength) return diagnostics_.fail_at(name, "name too long");
  const Index col = column_of_list(name, "SOS");
  sos_of_col_.resize(static_cast<std::size_t>(columns_.size()), 0);
  const auto set = static_cast<Index>(data_.sos.size());
  if (sos_of_col_[col] == set) return diagnostics_.fail_at(name, "a member that is not in the set yet is expected");
  sos_of_col_[col] = set;
  data_.sos.back().member.push_back(col);
  data_.sos.back().weight.push_back(weight);
  return true;
}

}  // namespace zorvex
