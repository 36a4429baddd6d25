// A quiet environment and short spellings for building and reading models in tests.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "zorvex.h"

namespace zorvex::test {

class ModelTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(ZLPloadenv(&env_, nullptr), 0);
    ASSERT_EQ(ZLPsetintparam(env_, "OutputFlag", 0), 0);
  }
  void TearDown() override {
    if (model_ != nullptr) {
      EXPECT_EQ(ZLPfreemodel(model_), 0);
    }
    ZLPfreeenv(env_);
  }

  // `cols` columns with objective 1, bounds [0, inf) and `rows` rows: sense by turns '<', '>', '=', right-hand side
  // 10 * (row + 1), coefficient of column j in row i: 1 + i + 10 * j where i + j is even.
  void make_model(int rows, int cols) {
    ASSERT_EQ(ZLPnewmodel(env_, &model_, "small", cols, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
    for (int i = 0; i < rows; ++i) {
      std::vector<int> index;
      std::vector<double> value;
      for (int j = i % 2; j < cols; j += 2) {
        index.push_back(j);
        value.push_back(1.0 + i + 10 * j);
      }
      ASSERT_EQ(ZLPaddconstr(model_, static_cast<int>(index.size()), index.data(), value.data(), "<>="[i % 3],
                             10.0 * (i + 1), nullptr),
                0);
    }
    ASSERT_EQ(ZLPupdatemodel(model_), 0);
  }

  [[nodiscard]] std::string message() const { return ZLPgetmerrormsg(model_); }
  int get_int(const char* name) {
    int value = -12345;
    EXPECT_EQ(ZLPgetintattr(model_, name, &value), 0) << name;
    return value;
  }
  double get_dbl(const char* name) {
    double value = -12345;
    EXPECT_EQ(ZLPgetdblattr(model_, name, &value), 0) << name;
    return value;
  }
  double get_dbl(const char* name, int index) {
    double value = -12345;
    EXPECT_EQ(ZLPgetdblattrelement(model_, name, index, &value), 0) << name;
    return value;
  }
  int get_int(const char* name, int index) {
    int value = -12345;
    EXPECT_EQ(ZLPgetintattrelement(model_, name, index, &value), 0) << name;
    return value;
  }
  char get_char(const char* name, int index) {
    char value = '?';
    EXPECT_EQ(ZLPgetcharattrelement(model_, name, index, &value), 0) << name;
    return value;
  }
  std::string get_str(const char* name, int index) {
    const char* value = nullptr;
    EXPECT_EQ(ZLPgetstrattrelement(model_, name, index, &value), 0) << name;
    return value == nullptr ? "(null)" : value;
  }
  double coefficient(int row, int col) {
    double value = -12345;
    EXPECT_EQ(ZLPgetcoeff(model_, row, col, &value), 0);
    return value;
  }
  void update() { ASSERT_EQ(ZLPupdatemodel(model_), 0); }

  ZLPenv* env_ = nullptr;
  ZLPmodel* model_ = nullptr;
};

}  // namespace zorvex::test
