// The variables of an LP-format file, in the order in which they first occur, and its rows, turned into columns at the
// end.
#pragma once

#include <vector>

#include "io/lp_expression.hpp"
#include "io/parsed_model.hpp"

namespace zorvex {

class LpColumns {
 public:
  explicit LpColumns(ParsedModel* data) : data_(data) {}

  // The variable of that name, made if there is none.
  Index column(std::string_view name) { return column(name, data_->cols.prepare(name)); }
  Index column(std::string_view name, const NameTable::Key& key);
  [[nodiscard]] Index size() const { return data_->cols.size(); }

  // Bounds and kinds as the sections give them. Bits of `given`: kLowerGiven, kUpperGiven.
  enum : unsigned char { kLowerGiven = 1, kUpperGiven = 2, kGeneral = 4, kBinary = 8, kSemicontinuous = 16 };
  void mark(Index col, unsigned char bits) { given_[col] |= bits; }
  [[nodiscard]] bool has(Index col, unsigned char bit) const { return (given_[col] & bit) != 0; }

  // Appends a row; the coefficients of `expression` that are not zero become its entries.
  void add_row(const LpExpression& expression);
  [[nodiscard]] Offset num_nonzeros() const { return static_cast<Offset>(index_.size()); }

  // Types, bounds of binary variables, and the matrix by columns, rows ascending in each. O(rows + nonzeros).
  void finish();

 private:
  void settle_types();
  void transpose();

  ParsedModel* data_;
  std::vector<unsigned char> given_;
  std::vector<Offset> row_start_{0};  // row-wise matrix
  std::vector<Index> index_;
  std::vector<double> value_;
};

}  // namespace zorvex
