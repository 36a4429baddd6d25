// Compressed sparse column matrix, int32 indices, int64 offsets, and its row-wise twin by transposition.
#pragma once

#include <vector>

#include "base/types.hpp"

namespace zorvex {

// Columns are contiguous: the entries of column j are [start[j], start[j + 1]). Entries within a column are in any
// order but never duplicate. A row-wise matrix is the same struct with the roles of rows and columns exchanged.
struct SparseMatrix {
  Index num_rows = 0;
  Index num_cols = 0;
  std::vector<Offset> start{0};  // num_cols + 1 entries
  std::vector<Index> index;      // row of each entry
  std::vector<double> value;

  [[nodiscard]] Offset num_nonzeros() const { return start.back(); }
  [[nodiscard]] Offset begin(Index col) const { return start[col]; }
  [[nodiscard]] Offset end(Index col) const { return start[col + 1]; }
  [[nodiscard]] Index col_length(Index col) const { return static_cast<Index>(start[col + 1] - start[col]); }

  // Appends a column; indices must lie in [0, num_rows).
  void append_col(const Index* rows, const double* values, Index count);

  // Appends the rows of `rows` (a row-wise matrix: its columns are the new rows, its num_rows equals num_cols here).
  // Cost O(nnz of both).
  void append_rows(const SparseMatrix& rows);

  // Keeps the columns with keep_col[j] and rows with keep_row[i] != 0 in order; a null pointer keeps all.
  void compress(const char* keep_row, const char* keep_col);

  // The transpose, with entries of each new column in increasing index order. Cost O(nnz + rows + cols).
  [[nodiscard]] SparseMatrix transpose() const;
};

}  // namespace zorvex
