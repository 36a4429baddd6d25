// What an MPS file says, before it becomes a model.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "base/types.hpp"
#include "io/name_table.hpp"

namespace zorvex {

inline constexpr std::size_t kMaxNameLength = 255;  // of models, rows and columns

struct MpsSos {
  int type = 1;  // 1 or 2
  std::vector<Index> member;
  std::vector<double> weight;
};

// Adds 1/2 * value * x[first] * x[second] to the objective.
struct MpsQuadraticTerm {
  Index first;
  Index second;
  double value;
};

// Rows are the constraints; the objective row and further unconstrained rows are not among them. Row arrays have
// rows.size() entries, column arrays cols.size(). Infinite bounds are IEEE infinities.
struct MpsData {
  std::string name;
  bool maximize = false;
  double objective_constant = 0;

  NameTable rows;
  std::vector<char> sense;    // '<', '>', '='
  std::vector<double> rhs;    // 0 where none was given
  std::vector<double> range;  // empty without a RANGES entry; NaN for rows without one

  NameTable cols;
  std::vector<double> obj, lower, upper;
  std::vector<char> vtype;  // 'C', 'B', 'I', 'S', 'N'

  std::vector<Offset> start{0};  // column-wise matrix without duplicates; explicit zeros may occur
  std::vector<Index> index;
  std::vector<double> value;

  std::vector<MpsSos> sos;
  std::vector<MpsQuadraticTerm> quadratic;
};

}  // namespace zorvex
