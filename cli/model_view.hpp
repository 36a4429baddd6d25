// A whole model fetched through the C interface, in the user's terms; infinite bounds and sides are IEEE infinities.
#pragma once

#include <string>
#include <vector>

#include "session.hpp"

namespace zorvex_cli {

struct Sos {
  int type = 1;
  std::vector<int> member;  // by increasing weight, so that neighbours in the list are neighbours in the set
};

struct ModelView {
  std::string name;
  int sense = 1;  // 1 minimise, -1 maximise
  double obj_con = 0;

  // One entry a variable.
  std::vector<double> obj, lower, upper;
  std::vector<char> type;  // 'C', 'B', 'I', 'S', 'N'
  std::vector<std::string> var_name;

  // Rows: row_lower <= a'x <= row_upper; entries of row i are [row_start[i], row_start[i + 1]).
  std::vector<double> row_lower, row_upper;
  std::vector<std::string> row_name;
  std::vector<int> row_start, col_index;
  std::vector<double> value;

  std::vector<Sos> sos;

  // Objective terms 1/2 * q_value * x[q_first] * x[q_second].
  std::vector<int> q_first, q_second;
  std::vector<double> q_value;

  [[nodiscard]] int num_vars() const { return static_cast<int>(obj.size()); }
  [[nodiscard]] int num_rows() const { return static_cast<int>(row_lower.size()); }
  [[nodiscard]] bool is_integer(int var) const { return type[var] == 'I' || type[var] == 'B' || type[var] == 'N'; }
  [[nodiscard]] bool is_semicontinuous(int var) const { return type[var] == 'S' || type[var] == 'N'; }
  [[nodiscard]] bool is_binary(int var) const;
};

ModelView fetch_model(ZLPmodel* model);
std::vector<std::string> fetch_names(ZLPmodel* model, const char* attribute, int count);

}  // namespace zorvex_cli
