#include "row_classes.hpp"

#include <gtest/gtest.h>

#include "small_model.hpp"

namespace zorvex_cli {
namespace {

// Variables by position: 0 to 4 binary (0 as 'B', the others as integers in [0, 1]), 5 and 6 integer, 7 and 8
// continuous.
ModelView nine_variables() {
  ModelView model;
  add_var(model, 'B', 0, 1);
  for (int k = 0; k < 4; ++k) add_var(model, 'I', 0, 1);
  for (int k = 0; k < 2; ++k) add_var(model, 'I', 0, 20);
  for (int k = 0; k < 2; ++k) add_var(model, 'C', 0, kInfinite);
  return model;
}

struct Case {
  const char* what;
  double lower;
  std::vector<int> vars;
  std::vector<double> coefs;
  double upper;
  RowClass expected;
};

constexpr double kNone = kInfinite;

const Case kCases[] = {
    {"no entries", 0, {}, {}, 1, RowClass::kEmpty},
    {"no side", -kNone, {0, 1}, {1, 1}, kNone, RowClass::kFree},
    {"one entry", 1, {7}, {2}, 1, RowClass::kSingleton},
    {"x + y = 4 continuous", 4, {7, 8}, {1, 1}, 4, RowClass::kAggregation},
    {"x - y <= 3 continuous", -kNone, {7, 8}, {2, -2}, 3, RowClass::kPrecedence},
    {"x - y <= 0 binary and continuous", -kNone, {0, 7}, {1, -1}, 0, RowClass::kVariableBound},
    {"x - 9 b <= 0", -kNone, {7, 0}, {1, -9}, 0, RowClass::kVariableBound},
    {"sum = 1", 1, {0, 1, 2}, {1, 1, 1}, 1, RowClass::kSetPartitioning},
    {"sum = 1 scaled", 3, {0, 1, 2}, {3, 3, 3}, 3, RowClass::kSetPartitioning},
    {"sum <= 1", -kNone, {0, 1, 2}, {1, 1, 1}, 1, RowClass::kSetPacking},
    {"a + b - c <= 0 is a + b + (1 - c) <= 1", -kNone, {0, 1, 2}, {1, 1, -1}, 0, RowClass::kSetPacking},
    {"-a - b >= -1", -1, {0, 1}, {-1, -1}, kNone, RowClass::kSetPacking},
    {"sum >= 1", 1, {0, 1, 2, 3}, {1, 1, 1, 1}, kNone, RowClass::kSetCovering},
    {"sum = 2 of 4", 2, {0, 1, 2, 3}, {1, 1, 1, 1}, 2, RowClass::kCardinality},
    {"sum <= 2 of 4", -kNone, {0, 1, 2, 3}, {1, 1, 1, 1}, 2, RowClass::kInvariantKnapsack},
    {"sum >= 2 of 5, at most 3 complements", 2, {0, 1, 2, 3, 4}, {1, 1, 1, 1, 1}, kNone, RowClass::kInvariantKnapsack},
    {"sum = 1.5 fits no binary point", 1.5, {0, 1, 2}, {1, 1, 1}, 1.5, RowClass::kGeneral},
    {"weighted equality", 7, {0, 1, 2}, {2, 3, 5}, 7, RowClass::kEqualityKnapsack},
    {"bin with its own capacity", -kNone, {0, 1, 2}, {2, 3, -7}, 0, RowClass::kBinPacking},
    {"weighted at most", -kNone, {0, 1, 2}, {2, 3, 5}, 8, RowClass::kKnapsack},
    {"weighted at least", 4, {0, 1, 2}, {2, 3, 4}, kNone, RowClass::kKnapsack},
    {"weights not whole", -kNone, {0, 1, 2}, {2.5, 3, 4}, 8, RowClass::kGeneral},
    {"integers at most", -kNone, {0, 5, 6}, {2, 3, 5}, 8, RowClass::kIntegerKnapsack},
    {"integers equal", 8, {0, 5, 6}, {2, 3, 5}, 8, RowClass::kGeneral},
    {"binaries and continuous", -kNone, {0, 1, 7}, {2, 3, 1.5}, 8, RowClass::kMixedBinary},
    {"integer and continuous", -kNone, {0, 5, 7}, {2, 3, 1.5}, 8, RowClass::kGeneral},
    {"range over binaries", 1, {0, 1, 2}, {1, 1, 1}, 2, RowClass::kGeneral},
};

TEST(RowClasses, Table) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.what);
    ModelView model = nine_variables();
    add_row(model, c.lower, c.upper, c.vars, c.coefs);
    EXPECT_STREQ(row_class_name(classify_row(model, 0)), row_class_name(c.expected));
  }
}

TEST(RowClasses, CountsAddUp) {
  ModelView model = nine_variables();
  for (const Case& c : kCases) add_row(model, c.lower, c.upper, c.vars, c.coefs);
  int total = 0;
  for (const int count : count_row_classes(model)) total += count;
  EXPECT_EQ(total, model.num_rows());
  EXPECT_EQ(count_row_classes(model)[static_cast<int>(RowClass::kSetPacking)], 3);
}

}  // namespace
}  // namespace zorvex_cli
