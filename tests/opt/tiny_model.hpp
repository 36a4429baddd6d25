// Small models written as dense tables, built through the public interface only, and what one reads back from them.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <type_traits>
#include <vector>

#include "support/scratch.hpp"
#include "support/session.hpp"

namespace zorvex::testing {

struct Row {
  std::vector<double> coefficient;
  char sense;
  double rhs;
};

// Empty lb, ub, types: 0, infinity, 'C'.
struct Tiny {
  int sense = 1;
  std::vector<double> obj;
  std::vector<Row> rows;
  std::vector<double> lb = {}, ub = {};
  std::string types = {};
  double obj_con = 0;
};

// The code of ZLPloadmodel; *model is null on failure.
inline int load_tiny(ZLPenv* env, const Tiny& tiny, ZLPmodel** model) {
  const int num_vars = static_cast<int>(tiny.obj.size());
  std::vector<int> begin, index;
  std::vector<double> value, rhs;
  std::string sense;
  for (const Row& row : tiny.rows) {
    sense += row.sense;
    rhs.push_back(row.rhs);
  }
  for (int col = 0; col < num_vars; ++col) {
    begin.push_back(static_cast<int>(index.size()));
    for (std::size_t row = 0; row < tiny.rows.size(); ++row) {
      if (tiny.rows[row].coefficient[col] == 0) continue;
      index.push_back(static_cast<int>(row));
      value.push_back(tiny.rows[row].coefficient[col]);
    }
  }
  begin.push_back(static_cast<int>(index.size()));
  return ZLPloadmodel(env, model, "tiny", num_vars, static_cast<int>(rhs.size()), tiny.sense, tiny.obj_con,
                      tiny.obj.data(), sense.c_str(), rhs.data(), begin.data(), nullptr, index.data(), value.data(),
                      tiny.lb.empty() ? nullptr : tiny.lb.data(), tiny.ub.empty() ? nullptr : tiny.ub.data(),
                      tiny.types.empty() ? nullptr : tiny.types.c_str(), nullptr, nullptr);
}

inline Model build(ZLPenv* env, const Tiny& tiny) {
  ZLPmodel* model = nullptr;
  EXPECT_EQ(0, load_tiny(env, tiny, &model)) << ZLPgeterrormsg(env);
  return Model(model);
}

// A parameter and its value as a parameter file has it.
struct Setting {
  Setting(const char* parameter, const char* text) : name(parameter), value(text) {}
  template <class Number>
  requires std::is_arithmetic_v<Number> Setting(const char* parameter, Number number) : name(parameter) {
    char text[32];
    std::snprintf(text, sizeof text, "%.17g", static_cast<double>(number));
    value = text;
  }
  const char* name;
  std::string value;
};

inline void set(ZLPmodel* model, const std::vector<Setting>& settings) {
  for (const Setting& setting : settings) {
    EXPECT_EQ(0, ZLPsetparam(ZLPgetenv(model), setting.name, setting.value.c_str())) << setting.name;
  }
}

inline Model build(ZLPenv* env, const Tiny& tiny, const std::vector<Setting>& settings) {
  Model model = build(env, tiny);
  set(model.get(), settings);
  return model;
}

// What the optimization prints.
inline std::string log_of(ZLPmodel* model) {
  set(model, {{"OutputFlag", "1"}});
  return printed([&] { EXPECT_EQ(0, ZLPoptimize(model)); });
}

inline int int_attr(ZLPmodel* model, const char* name) {
  int value = -99;
  EXPECT_EQ(0, ZLPgetintattr(model, name, &value)) << name << ": " << ZLPgetmerrormsg(model);
  return value;
}

inline double dbl_attr(ZLPmodel* model, const char* name) {
  double value = std::nan("");
  EXPECT_EQ(0, ZLPgetdblattr(model, name, &value)) << name << ": " << ZLPgetmerrormsg(model);
  return value;
}

inline std::vector<double> dbl_array(ZLPmodel* model, const char* name, const char* count_name) {
  std::vector<double> values(static_cast<std::size_t>(int_attr(model, count_name)));
  EXPECT_EQ(0, ZLPgetdblattrarray(model, name, 0, static_cast<int>(values.size()), values.data())) << name;
  return values;
}

inline void expect_near(const std::vector<double>& expected, const std::vector<double>& found, double tolerance) {
  ASSERT_EQ(expected.size(), found.size());
  for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_NEAR(expected[i], found[i], tolerance) << "element " << i;
}

// Primal feasible, dual feasible, complementary: as the model itself measures it, in long double from its own data.
inline void expect_lp_quality(ZLPmodel* model) {
  for (const char* name : {"BoundVio", "ConstrVio", "DualVio", "DualResidual"}) {
    EXPECT_LE(dbl_attr(model, name), 1.001e-6) << name;
  }
  EXPECT_LE(dbl_attr(model, "ComplVioSum"), 1e-6 * std::max(1.0, std::abs(dbl_attr(model, "ObjVal"))));
}

inline void expect_mip_quality(ZLPmodel* model) {
  for (const char* name : {"BoundVio", "ConstrVio"}) EXPECT_LE(dbl_attr(model, name), 1.001e-6) << name;
  EXPECT_LE(dbl_attr(model, "IntVio"), 1.001e-5);
}

// Binary columns and equations with coefficients from a fixed sequence, the distance to the right-hand sides to be
// minimised: small, and still far too hard to finish, so that every limit can stop it.
inline Tiny market_split(int num_rows, int num_binaries) {
  Tiny tiny;
  const int num_vars = num_binaries + 2 * num_rows;
  unsigned state = 12345;
  const auto next = [&state] {
    state = state * 1664525U + 1013904223U;
    return static_cast<double>((state >> 16) % 100);
  };
  tiny.obj.assign(static_cast<std::size_t>(num_binaries), 0.0);
  tiny.obj.resize(static_cast<std::size_t>(num_vars), 1.0);
  tiny.types = std::string(static_cast<std::size_t>(num_binaries), 'B') +
               std::string(static_cast<std::size_t>(2 * num_rows), 'C');
  for (int row = 0; row < num_rows; ++row) {
    Row line{std::vector<double>(static_cast<std::size_t>(num_vars), 0.0), '=', 0};
    double sum = 0;
    for (int col = 0; col < num_binaries; ++col) sum += line.coefficient[col] = next();
    line.coefficient[num_binaries + 2 * row] = 1;
    line.coefficient[num_binaries + 2 * row + 1] = -1;
    line.rhs = std::floor(sum / 2);
    tiny.rows.push_back(std::move(line));
  }
  return tiny;
}

}  // namespace zorvex::testing
