#include "json_text.hpp"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "zorvex.h"

namespace zorvex_cli {

namespace {

// Quotes, backslashes and control characters escaped; bytes beyond ASCII are passed on as they are (UTF-8).
std::string quoted(const std::string& text) {
  std::string result = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      result += '\\';
      result += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      std::array<char, 8> escape{};
      std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(c));
      result += escape.data();
    } else {
      result += c;
    }
  }
  return result + "\"";
}

}  // namespace

void JsonObject::add_raw(const std::string& key, const std::string& value) {
  members_ += (members_.empty() ? "  " : ",\n  ") + quoted(key) + ": " + value;
}

void JsonObject::add(const std::string& key, const std::string& text) { add_raw(key, quoted(text)); }

void JsonObject::add(const std::string& key, std::optional<double> value) {
  if (!value || !std::isfinite(*value) || std::fabs(*value) >= ZLP_INFINITY) {
    add_raw(key, "null");
    return;
  }
  constexpr double kExactWhole = 9007199254740992.0;  // 2^53
  std::array<char, 64> digits{};
  const bool whole = std::fabs(*value) < kExactWhole && *value == std::floor(*value);
  const auto format = whole ? std::chars_format::fixed : std::chars_format::general;
  char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), *value, format).ptr;
  add_raw(key, std::string(digits.data(), end));
}

}  // namespace zorvex_cli
