#include "base/log_sink.hpp"

#include <cstdarg>
#include <cstdio>
#include <string>

namespace zorvex {

namespace {

std::string format_text(const char* format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, again);
  va_end(again);
  if (length <= 0) return {};
  std::string text(static_cast<std::size_t>(length), '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  return text;
}

}  // namespace

void LogSink::print(const char* format, ...) {
  if (!enabled()) return;
  va_list arguments;
  va_start(arguments, format);
  const std::string text = format_text(format, arguments);
  va_end(arguments);
  write(text.c_str());
}

void LogSink::diagnose(const char* format, ...) {
  if (!enabled() || !diagnostics()) return;
  va_list arguments;
  va_start(arguments, format);
  const std::string text = format_text(format, arguments);
  va_end(arguments);
  write(text.c_str());
}

}  // namespace zorvex
