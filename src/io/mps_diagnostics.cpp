#include "io/mps_diagnostics.hpp"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace zorvex {

void MpsDiagnostics::warn(MpsWarning kind, std::string text) {
  if (++count_[static_cast<int>(kind)] <= kMaxPerKind) warnings_.push_back(std::move(text));
}

void MpsDiagnostics::warn_once(MpsWarning kind, std::string text) {
  if (std::find(warnings_.begin(), warnings_.end(), text) == warnings_.end()) warn(kind, std::move(text));
}

bool MpsDiagnostics::fail(std::string log, std::string text, long line) {
  if (!failed_) {
    failed_ = true;
    error_ = {std::move(log), std::move(text)};
    error_line_ = line;
  }
  return false;
}

bool MpsDiagnostics::fail_at_line(long line, std::string_view content) {
  const std::string text(content);
  return fail(format_text("Error at line %ld:\n%s\n", line, text.c_str()),
              format_text("MPS read error at line %ld:\n%s\n", line, text.c_str()), line);
}

bool MpsDiagnostics::fail_not_right(long line) {
  return fail(format_text("Error: line %ld not right or no ENDATA.\n", line),
              format_text("MPS reader: line %ld not right or no ENDATA\n", line), line);
}

bool MpsDiagnostics::fail_not_free(long line) {
  return fail("Error: not free format mps file.\n", "MPS reader: not free format\n", line);
}

long MpsDiagnostics::undefined_names() const {
  return count_[static_cast<int>(MpsWarning::kUndefinedRowInColumns)] +
         count_[static_cast<int>(MpsWarning::kUndefinedRowInRhs)] +
         count_[static_cast<int>(MpsWarning::kUndefinedRowInRanges)] +
         count_[static_cast<int>(MpsWarning::kUndefinedColumn)];
}

std::vector<std::string> MpsDiagnostics::warnings() const {
  std::vector<std::string> all = warnings_;
  long dropped = 0;
  for (const long count : count_) dropped += count > kMaxPerKind ? count - kMaxPerKind : 0;
  if (dropped > 0) all.push_back(format_text("Warning: %ld more warnings of these kinds.\n", dropped));
  return all;
}

std::string format_text(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  va_end(arguments);
  std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  return text;
}

std::string printable(std::string_view text) {
  constexpr std::size_t kMaxShown = 200;
  while (!text.empty() && static_cast<unsigned char>(text.back()) <= ' ') text.remove_suffix(1);
  std::string shown(text.substr(0, kMaxShown));
  for (char& c : shown) {
    if (static_cast<unsigned char>(c) < ' ' && c != '\t') c = '?';
    if (c == '\x7f') c = '?';
  }
  return shown;
}

}  // namespace zorvex
