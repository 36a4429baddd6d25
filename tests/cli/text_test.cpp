// Texts the program reads and writes: solution files, JSON, file names.
#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "file_name.hpp"
#include "json_text.hpp"
#include "session.hpp"
#include "solution_file.hpp"
#include "summary.hpp"
#include "zorvex.h"

namespace zorvex_cli {
namespace {

// "name=value ..." of what was read, or the error.
std::string read_back(const std::string& text, const std::vector<std::string>& names) {
  try {
    std::istringstream stream(text);
    const SolutionValues values = match_names(read_solution(stream, "f"), names, "f");
    std::ostringstream result;
    for (std::size_t k = 0; k < names.size(); ++k) {
      if (values.found[k]) result << names[k] << '=' << values.value[k] << ' ';
    }
    result << "missing " << values.missing;
    return result.str();
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.code, kExitFailed);
    return failure.what();
  }
}

TEST(SolutionFile, Table) {
  const std::vector<std::string> names = {"x", "y", "a b"};
  const std::pair<const char*, const char*> cases[] = {
      {"# Objective value = 3\nx 1\ny 2.5e-3\na b -4\n", "x=1 y=0.0025 a b=-4 missing 0"},
      {"\n  x\t+7  \r\n\ny 1e3", "x=7 y=1000 missing 1"},
      {"", "missing 3"},
      {"x\n", "f:1: expected a name and a value"},
      {"x 1\ny one\n", "f:2: 'one' is not a number"},
      {"x 1,5\n", "f:1: '1,5' is not a number"},
      {"x 1\nz 2\n", "f:2: the model has no variable 'z'"},
      {"x 1\ny 2\nx 1\n", "f:3: variable 'x' again"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(read_back(text, names), expected) << text;
  EXPECT_THROW(read_solution_file("/nowhere/none.sol"), Failure);
}

TEST(Json, EscapesAndNulls) {
  JsonObject json;
  json.add("text", std::string("a\"b\\c\n\x01"));
  json.add("count", 2000000);
  json.add("third", 1.0 / 3.0);
  json.add("large", 1e99);
  json.add("missing", std::nullopt);
  json.add("infinite", std::numeric_limits<double>::infinity());
  json.add("undefined", std::numeric_limits<double>::quiet_NaN());
  json.add("unbounded", -ZLP_INFINITY);
  EXPECT_EQ(json.text(),
            "{\n  \"text\": \"a\\\"b\\\\c\\u000a\\u0001\",\n  \"count\": 2000000,\n  \"third\": 0.3333333333333333,\n"
            "  \"large\": 1e+99,\n  \"missing\": null,\n  \"infinite\": null,\n  \"undefined\": null,\n"
            "  \"unbounded\": null\n}\n");
}

TEST(StatusName, MatchesTheHeader) {
  EXPECT_STREQ(status_name(ZLP_LOADED), "LOADED");
  EXPECT_STREQ(status_name(ZLP_INF_OR_UNBD), "INF_OR_UNBD");
  EXPECT_STREQ(status_name(ZLP_TIME_LIMIT), "TIME_LIMIT");
  EXPECT_STREQ(status_name(ZLP_SUBOPTIMAL), "SUBOPTIMAL");
  EXPECT_STREQ(status_name(14), "UNKNOWN");
  EXPECT_STREQ(status_name(-1), "UNKNOWN");
}

TEST(FileName, Suffix) {
  EXPECT_TRUE(has_suffix("a.sol", ".sol"));
  EXPECT_TRUE(has_suffix("A.SOL.gz", ".sol"));
  EXPECT_FALSE(has_suffix("a.sol.xz", ".sol"));
  EXPECT_FALSE(has_suffix("sol", ".sol"));
  EXPECT_FALSE(has_suffix("a.mps", ".sol"));
}

TEST(Settings, BadOnesAreUsageErrors) {
  const Env env = open_env();
  for (const char* bad : {"TimeLimit", "=1", "NoSuchParameter=1", "Method=nine", "Method=99"}) {
    try {
      apply_settings(env.get(), {bad});
      FAIL() << bad << " was accepted";
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.code, kExitUsage) << bad;
      EXPECT_NE(std::string(failure.what()).find(bad), std::string::npos) << failure.what();
    }
  }
  apply_settings(env.get(), {"time_limit=7.5", "LogFile="});
  double limit = 0;
  EXPECT_EQ(ZLPgetdblparam(env.get(), "TimeLimit", &limit), 0);
  EXPECT_EQ(limit, 7.5);
}

}  // namespace
}  // namespace zorvex_cli
