// Reads the text of an LP-format file into ParsedModel. Knows neither environment nor model.
//   Objective    Minimize or Maximize, optional label, terms, constants, quadratic terms in "[ ... ] / 2": inside the
//                brackets "q x ^ 2" and "q x * y" stand for 1/2 q x x and 1/2 q x y.
//   Constraints  Subject To; label optional. "expression relation number", "number relation expression [relation
//                number]". Constants of the expression move to the other side. Constants behind the right-hand side are
//                added to it where they fill the rest of its line. '<' and '>' mean '<=' and '>='. Lazy constraints and
//                user cuts are read as constraints, with a warning.
//                Rows with the remark of lp_ranges.hpp become ranges.
//   Bounds       "x <= u", "l <= x <= u" and the like, "x = v", "x free"; 0 and infinity by default. A negative upper
//                bound without a lower one leaves the lower bound at 0, as the other tools of the field have it, with a
//                warning.
//   Kinds        Generals, Binaries, Semi-continuous, Semi-integer: names up to the next section. A variable that is
//                general and semi-continuous is semi-integer. Bounds given to a binary variable stay as far as they lie
//                in [0, 1], whichever section comes first.
//   SOS          "[name:] S1:: x:1 y:2", also among the constraints; under SOS1 and SOS2 without the type. The numbers
//   are
//                weights, which give the members their order.
//   Twice        terms of one variable are added up; of bounds the last one counts; each with a warning. A label given
//                twice is an error.
//   Variables    exist in the order in which they first occur, also in Bounds or in a list of a kind (with a warning).
//   Cost         one pass; O(1) per token.
#pragma once

#include <string>

#include "io/lp_columns.hpp"
#include "io/lp_diagnostics.hpp"
#include "io/lp_expression.hpp"
#include "io/lp_keywords.hpp"
#include "io/lp_lexer.hpp"
#include "io/lp_ranges.hpp"
#include "io/lp_term_batch.hpp"
#include "io/parsed_model.hpp"

namespace zorvex {

class LpParser {
 public:
  LpParser(ModelStream* stream, const ReadLimits& limits) : lexer_(stream), limits_(limits), columns_(&data_) {}

  // Parses up to End. False after an error, which stands in diagnostics().
  bool parse();

  // After parse() returned true. The parser is empty afterwards.
  [[nodiscard]] ParsedModel take_data() { return std::move(data_); }
  [[nodiscard]] const LpDiagnostics& diagnostics() const { return diagnostics_; }

 private:
  enum class Relation { kNone, kLess, kEqual, kGreater };
  static Relation flipped(Relation relation);
  static char sense_of(Relation relation) {
    return relation == Relation::kEqual ? '=' : relation == Relation::kLess ? '<' : '>';
  }

  [[nodiscard]] const LpLexeme& token() const { return lexer_.current(); }
  [[nodiscard]] bool at(LpToken kind) const { return token().kind == kind; }
  bool fail(const std::string& message) { return diagnostics_.fail_at(token(), message); }
  // An infinite value that started at `place`.
  bool fail_infinite(const LpLexeme& place, double value);
  bool expect(LpToken kind, const char* message);

  // The section that the current token opens; kNone when it is not a keyword here.
  [[nodiscard]] LpKeyword header();
  bool section(const LpKeyword& keyword);
  bool end_of_file();

  bool objective_sense();
  bool objective();
  bool constraints();
  bool constraint();
  bool constraint_label();
  bool single_row();
  bool reversed_row();
  bool finish_row(char sense, double rhs);
  bool range_row(Relation left, Relation right, double first);

  bool bounds();
  bool bound();
  bool bound_after_name(Index col);
  bool set_bound(Index col, Relation relation, double value, const LpLexeme& place);
  void warn_duplicate_bound(Index col);
  bool kinds(unsigned char kind, const char* section);

  // Where a list of sets stands. `type`: of sets without one of their own, 0 for none; `labelled`: behind a label.
  struct SosState {
    int type;
    bool open = false, labelled = false;
    std::string label = {};
  };
  bool sos_section(int type);
  bool sos_of_line();
  bool sos_item(SosState* state);
  bool sos_member(SosState* state, const LpLexeme& name);
  bool open_sos(SosState* state, int type);
  bool close_sos(SosState* state);

  // Terms, constants and brackets up to whatever cannot be a part of them.
  bool expression();
  bool term(double sign, bool* ends);
  bool add_terms();
  bool bracket(double sign);
  bool bracket_term(double sign);
  double signs(bool* any);
  [[nodiscard]] Relation relation() const;  // that the current token is
  bool require_relation(Relation* found, const char* message);
  // A signed number or infinity, with the constants that follow it on its line when `sum`.
  bool number(double* value, bool sum, const char* message);
  void add_constants_on_line(double* value);
  bool at_infinity() { return at(LpToken::kName) && is_lp_infinity(token().text); }
  // The variable that the current token names; moves on.
  bool variable(Index* col);
  // As variable(), for sections in which a new one is suspicious.
  bool listed_variable(Index* col, const char* section);
  Index column_of_list(const LpLexeme& name, const char* section);
  void note_duplicate(Index col, long line, long column);
  bool finish();

  LpLexer lexer_;
  ReadLimits limits_;
  LpDiagnostics diagnostics_;
  ParsedModel data_;
  LpColumns columns_;
  LpExpression expression_;
  LpTermBatch batch_;  // terms still to be added to expression_
  std::vector<LpRangePair> range_pairs_;
  bool is_range_by_remark_ = false;  // of the constraint being read
  Index label_ = -1;                 // of the constraint being read: its name in data_.rows
  std::vector<Index> sos_of_col_;    // last set (1-based) that a variable was put into
  bool has_sense_ = false;
  bool in_objective_ = false;
  bool ended_ = false;
};

}  // namespace zorvex
