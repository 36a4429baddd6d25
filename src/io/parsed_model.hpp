// What a model file says, before it becomes a model.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "base/types.hpp"
#include "io/name_table.hpp"

namespace zorvex {

inline constexpr std::size_t kMaxNameLength = 255;  // of models, rows and columns

// Counts beyond which a file is refused.
struct ReadLimits {
  static constexpr Offset kTwoBillion = 2'000'000'000;
  Offset rows = kTwoBillion, cols = kTwoBillion, nonzeros = kTwoBillion, quadratic_terms = kTwoBillion;
};

// The row lower <= a'x <= upper; either side may be infinite.
struct ParsedRange {
  Index row;
  double lower, upper;
};

struct ParsedSos {
  int type = 1;  // 1 or 2
  std::vector<Index> member;
  std::vector<double> weight;
  std::string name;
};

// Adds 1/2 * value * x[first] * x[second] to the objective.
struct ParsedQuadraticTerm {
  Index first;
  Index second;
  double value;
};

// Rows are the constraints; an objective row and further unconstrained rows are not among them. Row arrays have
// num_rows() entries, column arrays cols.size(). Infinite bounds are IEEE infinities.
struct ParsedModel {
  std::string name;
  bool maximize = false;
  double objective_constant = 0;

  NameTable rows;                   // names of rows, all different
  std::vector<Index> row_name;      // per row: its name in `rows`, -1 for none; empty when row i has name i
  std::vector<char> sense;          // '<', '>', '='
  std::vector<double> rhs;          // 0 where none was given
  std::vector<ParsedRange> ranges;  // take the place of sense and right-hand side of their rows

  NameTable cols;
  std::vector<double> obj, lower, upper;
  std::vector<char> vtype;  // 'C', 'B', 'I', 'S', 'N'

  std::vector<Offset> start{0};  // column-wise matrix without duplicates; explicit zeros may occur
  std::vector<Index> index;
  std::vector<double> value;

  std::vector<ParsedSos> sos;
  std::vector<ParsedQuadraticTerm> quadratic;

  [[nodiscard]] Index num_rows() const { return static_cast<Index>(sense.size()); }
};

}  // namespace zorvex
