#include "io/read_diagnostics.hpp"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace zorvex {

void ReadDiagnostics::warn(ReadWarning kind, std::string text) {
  if (++count_[static_cast<int>(kind)] <= kMaxPerKind) warnings_.push_back(std::move(text));
}

void ReadDiagnostics::warn_once(ReadWarning kind, std::string text) {
  if (std::find(warnings_.begin(), warnings_.end(), text) == warnings_.end()) warn(kind, std::move(text));
}

bool ReadDiagnostics::fail(std::string log, std::string text, long line) {
  if (!failed_) {
    failed_ = true;
    error_ = {std::move(log), std::move(text)};
    error_line_ = line;
  }
  return false;
}

std::vector<std::string> ReadDiagnostics::warnings() const {
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
