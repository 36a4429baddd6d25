#include "presolve/presolve_matrix.hpp"

#include <algorithm>
#include <cmath>

namespace zorvex {

PresolveMatrix::PresolveMatrix(const SparseMatrix& matrix)
    : row_first_(static_cast<std::size_t>(matrix.num_rows), -1),
      col_first_(static_cast<std::size_t>(matrix.num_cols), -1),
      row_length_(static_cast<std::size_t>(matrix.num_rows), 0),
      col_length_(static_cast<std::size_t>(matrix.num_cols), 0),
      row_magnitude_(static_cast<std::size_t>(matrix.num_rows), 0) {
  entries_.reserve(static_cast<std::size_t>(matrix.num_nonzeros()) + 16);
  for (Index col = 0; col < matrix.num_cols; ++col) {
    for (Offset k = matrix.begin(col); k < matrix.end(col); ++k) {
      if (matrix.value[k] != 0) insert(matrix.index[k], col, matrix.value[k]);
    }
  }
}

void PresolveMatrix::link(Index node) {
  Entry& entry = entries_[node];
  entry.previous_in_row = entry.previous_in_col = -1;
  entry.next_in_row = row_first_[entry.row];
  entry.next_in_col = col_first_[entry.col];
  if (entry.next_in_row >= 0) entries_[entry.next_in_row].previous_in_row = node;
  if (entry.next_in_col >= 0) entries_[entry.next_in_col].previous_in_col = node;
  row_first_[entry.row] = col_first_[entry.col] = node;
  ++row_length_[entry.row];
  ++col_length_[entry.col];
}

Index PresolveMatrix::insert(Index row, Index col, double value) {
  Index node;
  if (free_.empty()) {
    node = static_cast<Index>(entries_.size());
    entries_.emplace_back();
  } else {
    node = free_.back();
    free_.pop_back();
  }
  entries_[node].row = row;
  entries_[node].col = col;
  link(node);
  set_value(node, value);
  return node;
}

void PresolveMatrix::erase(Index node) {
  const Entry& entry = entries_[node];
  (entry.previous_in_row >= 0 ? entries_[entry.previous_in_row].next_in_row : row_first_[entry.row]) =
      entry.next_in_row;
  (entry.previous_in_col >= 0 ? entries_[entry.previous_in_col].next_in_col : col_first_[entry.col]) =
      entry.next_in_col;
  if (entry.next_in_row >= 0) entries_[entry.next_in_row].previous_in_row = entry.previous_in_row;
  if (entry.next_in_col >= 0) entries_[entry.next_in_col].previous_in_col = entry.previous_in_col;
  --row_length_[entry.row];
  --col_length_[entry.col];
  free_.push_back(node);
}

void PresolveMatrix::set_value(Index node, double value) {
  entries_[node].value = value;
  double& magnitude = row_magnitude_[entries_[node].row];
  magnitude = std::max(magnitude, std::abs(value));
}

}  // namespace zorvex
