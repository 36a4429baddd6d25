#include "presolve/line_shape.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zorvex {

namespace {

// Of `pieces` about equally long ones.
struct Cut {
  Index pieces, piece_length;
  Cut(Index length, Index longest) : pieces((length - 1) / longest + 1), piece_length((length - 1) / pieces + 1) {}
};

// Free columns without cost and equations with zero, to go with the columns and rows that the matrix has.
void fill_up(LpData& lp) {
  const auto rows = static_cast<std::size_t>(lp.matrix.num_rows), cols = static_cast<std::size_t>(lp.matrix.num_cols);
  lp.row_lower.resize(rows, 0.0);
  lp.row_upper.resize(rows, 0.0);
  lp.cost.resize(cols, 0.0);
  lp.col_lower.resize(cols, -kInf);
  lp.col_upper.resize(cols, kInf);
}

}  // namespace

LineShape::LineShape(LpData& lp, Index longest_row, Index longest_col, bool powers)
    : num_rows_(lp.row_lower.size()), num_cols_(lp.cost.size()), factor_(num_rows_, 1.0) {
  if (powers) scale_rows(lp);
  if (lp.is_quadratic()) return;
  if (longest_row > 0) cut_rows(lp, longest_row);
  if (longest_col > 0) cut_cols(lp, longest_col);
}

void LineShape::scale_rows(LpData& lp) {
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
void LineShape::cut_rows(LpData& lp, Index longest) {
  std::vector<Index> length(num_rows_, 0);
  for (const Index row : lp.matrix.index) ++length[row];
  std::vector<Index> piece_length(num_rows_, 0), first_piece(num_rows_, -1), owner;
  for (std::size_t row = 0; row < num_rows_; ++row) {
    if (length[row] <= longest) continue;
    const Cut cut(length[row], longest);
    piece_length[row] = cut.piece_length;
    first_piece[row] = static_cast<Index>(num_rows_ + owner.size());
    owner.insert(owner.end(), static_cast<std::size_t>(cut.pieces), static_cast<Index>(row));
  }
  std::vector<Index> seen(num_rows_, 0);
  for (Index& row : lp.matrix.index) {
    if (first_piece[row] >= 0) row = first_piece[row] + seen[row]++ / piece_length[row];
  }
  lp.matrix.num_rows += static_cast<Index>(owner.size());
  for (std::size_t piece = 0; piece < owner.size(); ++piece) {
    const Index rows[] = {owner[piece], static_cast<Index>(num_rows_ + piece)};
    const double values[] = {1, -1};
    lp.matrix.append_col(rows, values, 2);
  }
  fill_up(lp);
}

// The first piece stays where the column is.
void LineShape::cut_cols(LpData& lp, Index longest) {
  const auto cut_of = [&](Index col) { return Cut(std::max<Index>(lp.matrix.col_length(col), 1), longest); };
  Index joint = lp.matrix.num_rows;  // the next row that joins two pieces
  SparseMatrix cols, copies;
  cols.num_rows = joint;
  for (Index col = 0; col < lp.matrix.num_cols; ++col) cols.num_rows += cut_of(col).pieces - 1;
  copies.num_rows = cols.num_rows;
  for (Index col = 0; col < lp.matrix.num_cols; ++col) {
    const Cut cut = cut_of(col);
    Offset from = lp.matrix.begin(col);
    for (Index piece = 0; piece < cut.pieces; ++piece) {
      const Offset until = std::min(from + cut.piece_length, lp.matrix.end(col));
      std::vector<Index> index(lp.matrix.index.begin() + from, lp.matrix.index.begin() + until);
      std::vector<double> value(lp.matrix.value.begin() + from, lp.matrix.value.begin() + until);
      const auto join = [&](Index row, double coefficient) {
        index.push_back(row);
        value.push_back(coefficient);
      };
      if (piece > 0) join(joint++, -1);
      if (piece + 1 < cut.pieces) join(joint, 1);
      (piece > 0 ? copies : cols).append_col(index.data(), value.data(), static_cast<Index>(index.size()));
      from = until;
    }
  }
  for (Index copy = 0; copy < copies.num_cols; ++copy) {
    const Offset at = copies.begin(copy);
    cols.append_col(copies.index.data() + at, copies.value.data() + at, copies.col_length(copy));
  }
  lp.matrix = std::move(cols);
  fill_up(lp);
}

std::vector<double> LineShape::plain_multipliers(const std::vector<double>& y) const {
  std::vector<double> result(y.begin(), y.begin() + static_cast<std::ptrdiff_t>(num_rows_));
  for (std::size_t row = 0; row < num_rows_; ++row) result[row] *= factor_[row];
  return result;
}

// The columns of pieces and copies are basic and their rows are not, else the basis without them need not be one.
PresolvePoint LineShape::plain_point(const PresolvePoint& shaped) const {
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
