// Numbers in text files, in both directions and independent of the locale.
#pragma once

#include <cstddef>
#include <string_view>

namespace zorvex {

inline constexpr int kNumberTextSize = 32;  // holds every formatted number and its terminator

// Writes `value` as "%g" would, or as "%.16e" would when the short form does not read back to the same double.
// Returns the length; `text` has kNumberTextSize bytes and is terminated.
int format_number(double value, char* text);

// Reads the whole of `text` as a decimal number: optional sign, digits with an optional point, optional exponent
// after e, E, d or D (Fortran's). "inf" and "infinity" in any case give IEEE infinities, as do numbers beyond the
// range of doubles; too small ones give zero. The result is the nearest double. False for anything else, NaN included.
[[nodiscard]] bool parse_number(std::string_view text, double* value);

// The bulk of the numbers of a file in one pass: digits with an optional point at the front of `text`, before a blank,
// whose value takes no more than one rounding. Returns their length, or 0 for anything else.
[[nodiscard]] std::size_t parse_plain_number(std::string_view text, double* value);

}  // namespace zorvex
