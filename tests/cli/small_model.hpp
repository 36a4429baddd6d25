// Hand-made models for tests of the program's parts.
#pragma once

#include <limits>
#include <string>
#include <vector>

#include "model_view.hpp"

namespace zorvex_cli {

inline constexpr double kInfinite = std::numeric_limits<double>::infinity();

inline int add_var(ModelView& model, char type, double lower, double upper, double obj = 0) {
  model.obj.push_back(obj);
  model.lower.push_back(lower);
  model.upper.push_back(upper);
  model.type.push_back(type);
  model.var_name.push_back("v" + std::to_string(model.obj.size()));
  return model.num_vars() - 1;
}

inline void add_row(ModelView& model, double lower, double upper, const std::vector<int>& vars,
                    const std::vector<double>& coefs) {
  if (model.row_start.empty()) model.row_start.push_back(0);
  model.row_lower.push_back(lower);
  model.row_upper.push_back(upper);
  model.row_name.push_back("r" + std::to_string(model.row_lower.size()));
  model.col_index.insert(model.col_index.end(), vars.begin(), vars.end());
  model.value.insert(model.value.end(), coefs.begin(), coefs.end());
  model.row_start.push_back(static_cast<int>(model.value.size()));
}

}  // namespace zorvex_cli
