#include "io/lp_lexer.hpp"

#include <array>

#include "io/lp_ranges.hpp"
#include "io/mps_layout.hpp"
#include "io/number_text.hpp"

namespace zorvex {

namespace {

enum : unsigned char { kInName = 1, kStartsName = 2, kIsDigit = 4 };

constexpr std::array<unsigned char, 256> kClasses = [] {
  std::array<unsigned char, 256> classes{};
  for (int c = 0x80; c < 256; ++c) classes[c] = kInName | kStartsName;
  for (int c = 'a'; c <= 'z'; ++c) classes[c] = classes[c - 'a' + 'A'] = kInName | kStartsName;
  for (const char c : std::string_view("!\"#$%&'(),;?@_`{|}~")) classes[static_cast<int>(c)] = kInName | kStartsName;
  for (int c = '0'; c <= '9'; ++c) classes[c] = kInName | kIsDigit;
  classes['.'] = classes['/'] = kInName;
  return classes;
}();

bool has_class(char c, unsigned char wanted) { return (kClasses[static_cast<unsigned char>(c)] & wanted) != 0; }

const char* skip_digits(const char* p, const char* end) {
  while (p < end && has_class(*p, kIsDigit)) ++p;
  return p;
}

const char* skip_blanks(const char* p, const char* end) {
  while (p < end && (*p == ' ' || *p == '\t' || *p == '\r')) ++p;
  return p;
}

// The end of the name that starts at `p`.
const char* end_of_name(const char* p, const char* end) {
  int open = 0;
  for (; p < end; ++p) {
    if (has_class(*p, kInName)) continue;
    if (*p == '[') {
      ++open;
    } else if (*p == ']' && open > 0) {
      --open;
    } else {
      break;
    }
  }
  return p;
}

}  // namespace

std::size_t lp_number_length(std::string_view text) {
  const char* begin = text.data();
  const char* end = begin + text.size();
  const char* p = skip_digits(begin, end);
  std::size_t digits = static_cast<std::size_t>(p - begin);
  if (p < end && *p == '.') {
    const char* fraction = p + 1;
    p = skip_digits(fraction, end);
    digits += static_cast<std::size_t>(p - fraction);
  }
  if (digits == 0) return 0;
  if (p < end && (*p == 'e' || *p == 'E')) {
    const char* exponent = p + 1;
    if (exponent < end && (*exponent == '+' || *exponent == '-')) ++exponent;
    const char* last = skip_digits(exponent, end);
    if (last > exponent) p = last;
  }
  return static_cast<std::size_t>(p - begin);
}

bool is_lp_name_character(char c) { return has_class(c, kInName); }

bool is_lp_name(std::string_view text) {
  if (text.empty() || !has_class(text.front(), kStartsName)) return false;
  return end_of_name(text.data(), text.data() + text.size()) == text.data() + text.size();
}

void LpLexer::advance() {
  if (has_next_) {
    current_ = next_;
    has_next_ = false;
    return;
  }
  scan(&current_);
  seen_token_ = true;
}

LpToken LpLexer::peek() {
  if (!has_next_) {
    scan(&next_);
    has_next_ = true;
  }
  return next_.kind;
}

bool LpLexer::colon_follows() {
  if (!has_next_) {
    const char* p = skip_blanks(at_, end_);
    if (p < end_) return *p == ':' && (p + 1 == end_ || p[1] != ':');
  }
  return peek() == LpToken::kColon;
}

bool LpLexer::next_line() {
  // A token that is being looked past outlives its line.
  if (seen_token_ && current_.text.data() != held_.data()) {
    held_ = current_.text;
    current_.text = held_;
  }
  std::string_view line;
  if (!lines_.next(&line)) return false;
  begin_ = at_ = line.data();
  end_ = begin_ + line.size();
  const std::size_t comment = line.find('\\');
  if (comment != std::string_view::npos) {
    end_ = begin_ + comment;
    if (line.substr(0, comment).empty() && trim(line.substr(comment + 1)) == kLpRangeRemark) {
      remark_line_ = lines_.line_number();
    }
    if (!seen_token_ && problem_name_.empty()) note_comment(line.substr(comment + 1));
  }
  return true;
}

void LpLexer::note_comment(std::string_view comment) {
  comment = trim(comment);
  if (comment.starts_with("*")) comment = trim(comment.substr(1));
  if (comment.ends_with("*\\")) comment = trim(comment.substr(0, comment.size() - 2));
  if (!comment.starts_with("Problem")) return;
  comment = trim(comment.substr(7));
  if (comment.starts_with("name")) comment = trim(comment.substr(4));
  if (comment.starts_with(":")) problem_name_ = trim(comment.substr(1));
}

void LpLexer::scan(LpLexeme* token) {
  for (;;) {
    at_ = skip_blanks(at_, end_);
    if (at_ < end_) break;
    const long behind = end_ - begin_ + 1;
    if (!next_line()) {
      begin_ = at_ = end_ = nullptr;
      *token = {LpToken::kEnd, {}, 0, lines_.line_number(), behind};
      return;
    }
  }
  token->line = lines_.line_number();
  token->column = at_ - begin_ + 1;
  const char c = *at_;
  if (has_class(c, kStartsName)) return scan_name(token);
  if (has_class(c, kIsDigit) || c == '.') return scan_number(token);
  scan_sign(token);
}

void LpLexer::scan_name(LpLexeme* token) {
  const char* end = end_of_name(at_, end_);
  token->kind = LpToken::kName;
  token->text = {at_, static_cast<std::size_t>(end - at_)};
  at_ = end;
}

void LpLexer::scan_number(LpLexeme* token) {
  const std::string_view text(at_, static_cast<std::size_t>(end_ - at_));
  token->kind = LpToken::kNumber;
  if (const std::size_t plain = parse_plain_number(text, &token->value); plain > 0) {
    token->text = text.substr(0, plain);
    at_ += plain;
    return;
  }
  std::size_t length = lp_number_length(text);
  if (length == 0 || !parse_number(text.substr(0, length), &token->value)) {
    token->kind = LpToken::kUnknown;
    length = 1;
  } else if (length + 1 < text.size() && text[length] == '/') {
    const std::size_t divisor_length = lp_number_length(text.substr(length + 1));
    double divisor = 0;
    if (divisor_length > 0 && parse_number(text.substr(length + 1, divisor_length), &divisor)) {
      token->value /= divisor;
      length += 1 + divisor_length;
    }
  }
  token->text = text.substr(0, length);
  at_ += length;
}

void LpLexer::scan_sign(LpLexeme* token) {
  const char second = at_ + 1 < end_ ? at_[1] : '\0';
  std::size_t length = 1;
  const auto pair = [&length](LpToken kind) {
    length = 2;
    return kind;
  };
  token->kind = [&] {
    switch (*at_) {
      case '+':
        return LpToken::kPlus;
      case '-':
        return second == '>' ? pair(LpToken::kArrow) : LpToken::kMinus;
      case '*':
        return LpToken::kStar;
      case '/':
        return LpToken::kSlash;
      case '^':
        return LpToken::kCaret;
      case '[':
        return LpToken::kOpen;
      case ']':
        return LpToken::kClose;
      case ':':
        return second == ':' ? pair(LpToken::kDoubleColon) : LpToken::kColon;
      case '<':
        return second == '=' ? pair(LpToken::kLess) : LpToken::kLess;
      case '>':
        return second == '=' ? pair(LpToken::kGreater) : LpToken::kGreater;
      case '=':
        if (second == '<') return pair(LpToken::kLess);
        return second == '>' ? pair(LpToken::kGreater) : LpToken::kEqual;
      default:
        return LpToken::kUnknown;
    }
  }();
  token->text = {at_, length};
  at_ += length;
}

}  // namespace zorvex
