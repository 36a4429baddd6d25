// Models compared as data, whatever the file formats they went through.
#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "model/model_data.hpp"

namespace zorvex::testing {

// Entries of a column by row.
inline std::vector<std::pair<Index, double>> sorted_column(const ModelData& data, Index col) {
  std::vector<std::pair<Index, double>> entries;
  for (Offset k = data.matrix.begin(col); k < data.matrix.end(col); ++k) {
    entries.emplace_back(data.matrix.index[k], data.matrix.value[k]);
  }
  std::sort(entries.begin(), entries.end());
  return entries;
}

inline bool same_sos(const SosConstraint& a, const SosConstraint& b) {
  return a.type == b.type && a.member == b.member && a.weight == b.weight;
}

inline bool same_terms(const ModelData& a, const ModelData& b) {
  const double sign = a.sense == b.sense ? 1 : -1;
  return std::equal(a.quadratic.begin(), a.quadratic.end(), b.quadratic.begin(), b.quadratic.end(),
                    [sign](const QuadraticTerm& x, const QuadraticTerm& y) {
                      return x.first == y.first && x.second == y.second && x.value == sign * y.value;
                    });
}

// What differs between two models, "" when nothing does. Objectives are compared in minimisation form; the order of
// the entries of a column does not count. `names`: names count too.
inline std::string difference(const ModelData& a, const ModelData& b, bool names) {
  if (a.num_rows() != b.num_rows() || a.num_cols() != b.num_cols()) return "sizes";
  if (a.row_sense != b.row_sense) return "senses";
  if (a.rhs != b.rhs) return "right-hand sides";
  if (a.range_lower != b.range_lower) return "ranges";
  if (a.lb != b.lb || a.ub != b.ub) return "bounds";
  if (a.vtype != b.vtype) return "types";
  if (a.obj_con * a.sense != b.obj_con * b.sense) return "constants";
  for (Index col = 0; col < a.num_cols(); ++col) {
    if (a.min_cost(col) != b.min_cost(col)) return "cost of column " + std::to_string(col);
    if (sorted_column(a, col) != sorted_column(b, col)) return "column " + std::to_string(col);
    if (names && a.var_names[col] != b.var_names[col]) return "name of column " + std::to_string(col);
  }
  for (Index row = 0; names && row < a.num_rows(); ++row) {
    if (a.constr_names[row] != b.constr_names[row]) return "name of row " + std::to_string(row);
  }
  if (!std::equal(a.sos.begin(), a.sos.end(), b.sos.begin(), b.sos.end(), same_sos)) return "special ordered sets";
  return same_terms(a, b) ? "" : "quadratic terms";
}

}  // namespace zorvex::testing
