#include "io/number_text.hpp"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <system_error>

namespace zorvex {

namespace {

// Powers of ten that are exact doubles: a mantissa below 2^53 times or over one of them is rounded once, hence exact
// (W. Clinger, "How to read floating point numbers accurately", PLDI 1990).
constexpr std::array<double, 23> kPowerOfTen{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                             1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr int kMaxExactPower = 22;
constexpr std::uint64_t kMaxExactMantissa = std::uint64_t{1} << 53;
constexpr int kMaxFastDigits = 18;  // their value fits 64 bits

bool is_digit(char c) { return static_cast<unsigned char>(c - '0') < 10; }

bool is_infinity_word(std::string_view text) {
  constexpr std::string_view kWord = "infinity";
  if (text.size() != 3 && text.size() != kWord.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if ((text[i] | 0x20) != kWord[i]) return false;
  }
  return true;
}

// Everything that the fast path leaves over; `text` has no sign.
bool parse_exactly(std::string_view text, double* value) {
  if (is_infinity_word(text)) {
    *value = std::numeric_limits<double>::infinity();
    return true;
  }
  if (text.empty() || !(is_digit(text.front()) || text.front() == '.')) return false;
  std::string copy(text);
  for (char& c : copy) {
    if (c == 'd' || c == 'D') c = 'e';
  }
  const char* end = copy.data() + copy.size();
  const auto result = std::from_chars(copy.data(), end, *value);
  if (result.ptr != end) return false;
  if (result.ec == std::errc::result_out_of_range) {
    const std::size_t exponent = copy.find_first_of("eE");
    const bool tiny = exponent == std::string::npos ? copy.front() == '.' || copy.front() == '0'
                                                    : exponent + 1 < copy.size() && copy[exponent + 1] == '-';
    *value = tiny ? 0.0 : std::numeric_limits<double>::infinity();
    return true;
  }
  return result.ec == std::errc();
}

struct Scanned {
  std::uint64_t mantissa = 0;
  int exponent = 0;
  bool complete = false;  // all of the text was taken and the fields above are its value
};

// Digits, point and exponent of ordinary numbers. Incomplete for anything long or unusual.
Scanned scan(const char* p, const char* end) {
  Scanned out;
  const char* start = p;
  while (p < end && is_digit(*p)) out.mantissa = out.mantissa * 10 + static_cast<unsigned>(*p++ - '0');
  std::ptrdiff_t digits = p - start;
  if (p < end && *p == '.') {
    const char* fraction = ++p;
    while (p < end && is_digit(*p)) out.mantissa = out.mantissa * 10 + static_cast<unsigned>(*p++ - '0');
    out.exponent = static_cast<int>(fraction - p);
    digits += p - fraction;
  }
  if (digits == 0 || digits > kMaxFastDigits) return out;
  if (p < end) {
    const char letter = static_cast<char>(*p | 0x20);
    if (letter != 'e' && letter != 'd') return out;
    ++p;
    const bool negative = p < end && *p == '-';
    if (p < end && (*p == '-' || *p == '+')) ++p;
    const char* first = p;
    int exponent = 0;
    while (p < end && p - first < 4 && is_digit(*p)) exponent = exponent * 10 + (*p++ - '0');
    if (p == first || p != end) return out;
    out.exponent += negative ? -exponent : exponent;
  }
  out.complete = true;
  return out;
}

}  // namespace

int format_number(double value, char* text) {
  char* limit = text + kNumberTextSize - 1;
  // Small integers are the bulk of all models; "%g" prints up to six digits without an exponent.
  if (std::fabs(value) < 1e6 && value == std::trunc(value) && !(value == 0 && std::signbit(value))) {
    char* end = std::to_chars(text, limit, static_cast<int>(value)).ptr;
    *end = '\0';
    return static_cast<int>(end - text);
  }
  char* end = std::to_chars(text, limit, value, std::chars_format::general, 6).ptr;
  double back = 0;
  std::from_chars(text, end, back);
  if (back != value && !std::isnan(value)) {
    end = std::to_chars(text, limit, value, std::chars_format::scientific, 16).ptr;
  }
  *end = '\0';
  return static_cast<int>(end - text);
}

std::size_t parse_plain_number(std::string_view text, double* value) {
  const char* p = text.data();
  const char* const end = p + text.size();
  std::uint64_t mantissa = 0;
  while (p < end && is_digit(*p)) mantissa = mantissa * 10 + static_cast<unsigned>(*p++ - '0');
  std::ptrdiff_t digits = p - text.data(), decimals = 0;
  if (digits > 0 && p < end && *p == '.') {
    const char* fraction = ++p;
    while (p < end && is_digit(*p)) mantissa = mantissa * 10 + static_cast<unsigned>(*p++ - '0');
    decimals = p - fraction;
    digits += decimals;
  }
  if (digits == 0 || digits > kMaxFastDigits || mantissa >= kMaxExactMantissa || p == end || *p != ' ') return 0;
  *value = static_cast<double>(mantissa) / kPowerOfTen[static_cast<std::size_t>(decimals)];
  return static_cast<std::size_t>(p - text.data());
}

bool parse_number(std::string_view text, double* value) {
  const char* p = text.data();
  const char* end = p + text.size();
  const bool negative = p < end && *p == '-';
  if (p < end && (*p == '-' || *p == '+')) ++p;
  const Scanned number = scan(p, end);
  double result;
  if (number.complete && number.mantissa < kMaxExactMantissa && std::abs(number.exponent) <= kMaxExactPower) {
    const auto mantissa = static_cast<double>(number.mantissa);
    result = number.exponent < 0 ? mantissa / kPowerOfTen[-number.exponent] : mantissa * kPowerOfTen[number.exponent];
  } else if (!parse_exactly(std::string_view(p, static_cast<std::size_t>(end - p)), &result)) {
    return false;
  }
  *value = negative ? -result : result;
  return true;
}

}  // namespace zorvex
