#include "io/number_text.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

namespace zorvex {
namespace {

std::string formatted(double value) {
  char text[kNumberTextSize];
  const int length = format_number(value, text);
  EXPECT_EQ(std::strlen(text), static_cast<std::size_t>(length));
  return text;
}

TEST(FormatNumber, PicksTheShortFormOnlyWhenItIsExact) {
  EXPECT_EQ(formatted(0.1), "0.1");
  EXPECT_EQ(formatted(1.0 / 3), "3.3333333333333331e-01");
  EXPECT_EQ(formatted(1e30), "1e+30");
  EXPECT_EQ(formatted(999999), "999999");
  EXPECT_EQ(formatted(1000000), "1e+06");
  EXPECT_EQ(formatted(1234567), "1.2345670000000000e+06");
  EXPECT_EQ(formatted(-0.0), "-0");
  EXPECT_EQ(formatted(-17), "-17");
}

double random_double(std::mt19937_64& random) {
  switch (random() % 4) {
    case 0: {
      const std::uint64_t bits = random();
      double value;
      std::memcpy(&value, &bits, sizeof value);
      return std::isfinite(value) ? value : 1.5;
    }
    case 1:
      return static_cast<double>(static_cast<long long>(random() % 20000001) - 10000000);
    case 2:
      return static_cast<double>(random() % 1000000) / 1000;
    default:
      return static_cast<double>(random()) * 1e-12;
  }
}

// The C library is the reference for both directions.
TEST(FormatNumber, AgreesWithPrintf) {
  std::mt19937_64 random(20250101);
  for (int k = 0; k < 200000; ++k) {
    const double value = random_double(random);
    char expected[64];
    std::snprintf(expected, sizeof expected, "%g", value);
    if (std::strtod(expected, nullptr) != value) std::snprintf(expected, sizeof expected, "%.16e", value);
    ASSERT_EQ(formatted(value), expected);
  }
}

TEST(ParseNumber, AgreesWithStrtodOnRandomTexts) {
  std::mt19937_64 random(77);
  for (int k = 0; k < 300000; ++k) {
    char text[64];
    const double value = random_double(random);
    const char* formats[] = {"%.3f", "%.17g", "%g", "%.9e", "%.25e", "%+.1f"};
    const char* format = std::fabs(value) > 1e20 ? formats[1 + random() % 4] : formats[random() % 6];
    std::snprintf(text, sizeof text, format, value);
    double got = 0;
    ASSERT_TRUE(parse_number(text, &got)) << text;
    ASSERT_EQ(got, std::strtod(text, nullptr)) << text;
    const std::size_t length = std::strlen(text), plain = parse_plain_number(std::strcat(text, " x"), &got);
    const bool ordinary = std::strspn(text, "0123456789.") == length && length <= 15;
    ASSERT_TRUE(plain == length || (plain == 0 && !ordinary)) << text;
    ASSERT_EQ(got, std::strtod(text, nullptr)) << text;
    text[length] = 'e';
    ASSERT_EQ(parse_plain_number(text, &got), 0u) << text;
  }
}

struct ParseCase {
  const char* text;
  double value;
};

TEST(ParseNumber, TakesWhatFilesHold) {
  const ParseCase cases[] = {{"1.", 1},
                             {".5", 0.5},
                             {"+.5", 0.5},
                             {"-1.e+5", -1e5},
                             {"1.0D3", 1000},
                             {"1d-2", 0.01},
                             {"1E5", 1e5},
                             {"007", 7},
                             {"1e400", INFINITY},
                             {"-1e400", -INFINITY},
                             {"1e-400", 0},
                             {"inf", INFINITY},
                             {"-Infinity", -INFINITY},
                             {"+INF", INFINITY},
                             {"123456789012345678901234567890", 123456789012345678901234567890.0},
                             {"0.1e23", 1e22},
                             {"9007199254740993", 9007199254740992.0},
                             {"1e22", 1e22},
                             {"1e23", 1e23},
                             {"0e9999", 0}};
  for (const ParseCase& c : cases) {
    double got = -99;
    EXPECT_TRUE(parse_number(c.text, &got)) << c.text;
    EXPECT_EQ(got, c.value) << c.text;
  }
}

TEST(ParseNumber, RefusesTheRest) {
  for (const char* text : {"",    "+",   "-",   ".",   "e5",   "1e",      "1e+", "1e5.0", "0x10", "nan",   "NaN(1)",
                           "1,5", "1 2", "--1", "+-1", "1e5x", "infinit", "d3",  "1f",    "in",   "1e--3", "9/10"}) {
    double got;
    EXPECT_FALSE(parse_number(text, &got)) << text;
  }
}

}  // namespace
}  // namespace zorvex
