// The tokens of an LP-format file.
//   Text     '\' starts a comment up to the end of its line; line ends mean no more than blanks.
//   Names    letters, digits, bytes from 0x80 on and any of !"#$%&'(),./;?@_`{|}~ ; the first is neither a digit nor a
//            point nor a slash. A bracket that follows without a blank belongs to the name up to its partner: x[1,2].
//   Numbers  digits with an optional point and an exponent only where digits follow it: "2e3x" is 2000 x, "2ex" is
//            2 ex. "26/10" without blanks is a quotient.
//   Signs    '<' '=<' '<=' are one token, as are '>' '=>' '>='.
//   Cost     one pass over the lines of a LineReader; the text of a token is never copied, except for one that has been
//            looked past across a line end.
#pragma once

#include <string>
#include <string_view>

#include "io/line_reader.hpp"

namespace zorvex {

enum class LpToken : unsigned char {
  kEnd,  // of the file
  kName,
  kNumber,
  kPlus,
  kMinus,
  kStar,
  kSlash,
  kCaret,
  kOpen,
  kClose,
  kColon,
  kDoubleColon,
  kLess,
  kGreater,
  kEqual,
  kArrow,
  kUnknown,  // a character that starts no token
};

struct LpLexeme {
  LpToken kind = LpToken::kEnd;
  std::string_view text;      // valid until the lexer moves on
  double value = 0;           // of a number; infinite when it is beyond the range of doubles
  long line = 0, column = 0;  // from 1; columns count bytes
};

class LpLexer {
 public:
  explicit LpLexer(ModelStream* stream) : lines_(stream) { advance(); }

  [[nodiscard]] const LpLexeme& current() const { return current_; }
  void advance();

  // The kind of the token behind the current one.
  [[nodiscard]] LpToken peek();
  // Whether that is a colon; does not scan a token for it on the same line.
  [[nodiscard]] bool colon_follows();

  // The line from the start of the current token on, without its comment; only before peek() of the same token.
  [[nodiscard]] std::string_view rest() const {
    return {current_.text.data(), static_cast<std::size_t>(end_ - current_.text.data())};
  }
  // Goes to the token behind the first `length` bytes of rest().
  void skip(std::size_t length) {
    at_ = current_.text.data() + length;
    advance();
  }

  // Whether the line before that of the current token is just the comment kLpRangeRemark.
  [[nodiscard]] bool has_range_remark() const { return remark_line_ > 0 && remark_line_ + 1 == current_.line; }

  // The name that a comment before the first token gives the problem, as "\Problem name: NAME".
  [[nodiscard]] const std::string& problem_name() const { return problem_name_; }

 private:
  bool next_line();
  void scan(LpLexeme* token);
  void scan_name(LpLexeme* token);
  void scan_number(LpLexeme* token);
  void scan_sign(LpLexeme* token);
  void note_comment(std::string_view comment);

  LineReader lines_;
  const char* begin_ = nullptr;  // of the current line
  const char* at_ = nullptr;
  const char* end_ = nullptr;  // of its part before a comment
  LpLexeme current_, next_;
  bool has_next_ = false;
  bool seen_token_ = false;
  std::string held_;  // text of the current token when its line is gone
  std::string problem_name_;
  long remark_line_ = 0;  // the last one
};

// The length of the number at the front of `text`, without sign; 0 when there is none.
[[nodiscard]] std::size_t lp_number_length(std::string_view text);

// Whether a text is one name as the lexer understands it.
[[nodiscard]] bool is_lp_name(std::string_view text);
[[nodiscard]] bool is_lp_name_character(char c);

}  // namespace zorvex
