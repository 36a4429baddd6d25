// Words on lines of at most kWidth characters, one blank before each.
#pragma once

#include <string_view>

#include "io/text_writer.hpp"

namespace zorvex {

class LpLineWriter {
 public:
  explicit LpLineWriter(ModelStream* stream) : out_(stream) {}

  static constexpr std::size_t kWidth = 255;

  // Words that hold together stay on one line as long as one line can hold them.
  LpLineWriter& word(std::string_view text) {
    if (used_ + 1 + text.size() > kWidth) end_line();
    out_ << ' ' << text;
    used_ += 1 + text.size();
    return *this;
  }
  // " - 2.5 x"; without a sign when `first` and positive; without the number when it is one.
  LpLineWriter& term(double value, std::string_view name, bool first);
  LpLineWriter& number(double value) {
    char text[kNumberTextSize];
    return word({text, static_cast<std::size_t>(format_number(value, text))});
  }
  void end_line() {
    out_ << '\n';
    used_ = 0;
  }
  // A line of its own.
  void line(std::string_view text) {
    if (used_ > 0) end_line();
    out_ << text << '\n';
  }
  bool flush() { return out_.flush(); }

 private:
  TextWriter out_;
  std::size_t used_ = 0;  // characters on the current line
};

inline LpLineWriter& LpLineWriter::term(double value, std::string_view name, bool first) {
  const bool negative = value < 0;
  char digits[kNumberTextSize];
  std::size_t length = 0;
  if (value != 1 && value != -1) length = static_cast<std::size_t>(format_number(negative ? -value : value, digits));
  if (used_ + 4 + length + name.size() > kWidth) end_line();
  if (negative || !first) word(negative ? "-" : "+");
  if (length > 0) word({digits, length});
  return word(name);
}

}  // namespace zorvex
