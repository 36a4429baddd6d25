#include "presolve/row_shape.hpp"

#include <algorithm>
#include <cmath>

namespace zorvex {

RowShape::RowShape(LpData& lp, Index longest, bool powers)
    : num_rows_(lp.row_lower.size()), num_cols_(lp.cost.size()), factor_(num_rows_, 1.0) {
  if (powers) scale_rows(lp);
  if (longest > 0 && !lp.is_quadratic()) cut_rows(lp, longest);
}

void RowShape::scale_rows(LpData& lp) {
  std::vector<double> largest(num_rows_, 0.0);
  for (std::size_t k = 0; k < lp.matrix.value.size(); ++k) {
    double& most = largest[lp.matrix.index[k]];
    most = std::max(most, std::abs(lp.matrix.value[k]));
  }
  for (std::size_t row = 0; row < num_rows_; ++row) {
    if (largest[row] > 0) factor_[row] = std::exp2(-std::floor(std::log2(largest[row])));
    lp.row_lower[row] *= factor_[row];
    lp.row_upper[row] *= factor_[row];
  }
  for (std::size_t k = 0; k < lp.matrix.value.size(); ++k) lp.matrix.value[k] *= factor_[lp.matrix.index[k]];
}

// Entries go to the pieces of their row in turn of the columns; all pieces of a row are about equally long.
void RowShape::cut_rows(LpData& lp, Index longest) {
  std::vector<Index> length(num_rows_, 0);
  for (const Index row : lp.matrix.index) ++length[row];
  std::vector<Index> piece_length(num_rows_, 0), first_piece(num_rows_, -1), owner;
  for (std::size_t row = 0; row < num_rows_; ++row) {
    if (length[row] <= longest) continue;
    const Index pieces = (length[row] - 1) / longest + 1;
    piece_length[row] = (length[row] - 1) / pieces + 1;
    first_piece[row] = static_cast<Index>(num_rows_ + owner.size());
    owner.insert(owner.end(), static_cast<std::size_t>(pieces), static_cast<Index>(row));
  }
  std::vector<Index> seen(num_rows_, 0);
  for (Index& row : lp.matrix.index) {
    if (first_piece[row] >= 0) row = first_piece[row] + seen[row]++ / piece_length[row];
  }
  lp.matrix.num_rows += static_cast<Index>(owner.size());
  lp.row_lower.resize(num_rows_ + owner.size(), 0.0);
  lp.row_upper.resize(num_rows_ + owner.size(), 0.0);
  for (std::size_t piece = 0; piece < owner.size(); ++piece) {
    const Index rows[] = {owner[piece], static_cast<Index>(num_rows_ + piece)};
    const double values[] = {1, -1};
    lp.matrix.append_col(rows, values, 2);
    lp.cost.push_back(0);
    lp.col_lower.push_back(-kInf);
    lp.col_upper.push_back(kInf);
  }
}

std::vector<double> RowShape::plain_multipliers(const std::vector<double>& y) const {
  std::vector<double> result(y.begin(), y.begin() + static_cast<std::ptrdiff_t>(num_rows_));
  for (std::size_t row = 0; row < num_rows_; ++row) result[row] *= factor_[row];
  return result;
}

// A piece's column is basic and its row is not, else the basis without them need not be one.
PresolvePoint RowShape::plain_point(const PresolvePoint& shaped) const {
  PresolvePoint plain = shaped;
  plain.pi = plain_multipliers(shaped.pi);
  plain.x.resize(num_cols_);
  plain.basis.head.clear();
  plain.basis.norm.clear();
  if (shaped.basis.empty()) return plain;
  for (std::size_t col = num_cols_; col < shaped.basis.col.size(); ++col) {
    if (shaped.basis.col[col] != BasisStatus::kBasic) plain.exact_basis = false;
  }
  for (std::size_t row = num_rows_; row < shaped.basis.row.size(); ++row) {
    if (shaped.basis.row[row] == BasisStatus::kBasic) plain.exact_basis = false;
  }
  plain.basis.col.resize(num_cols_);
  plain.basis.row.resize(num_rows_);
  return plain;
}

}  // namespace zorvex
