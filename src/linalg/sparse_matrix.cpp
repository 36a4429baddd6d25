#include "linalg/sparse_matrix.hpp"

#include <cassert>

namespace zorvex {

void SparseMatrix::append_col(const Index* rows, const double* values, Index count) {
  index.insert(index.end(), rows, rows + count);
  value.insert(value.end(), values, values + count);
  start.push_back(static_cast<Offset>(index.size()));
  ++num_cols;
}

void SparseMatrix::append_rows(const SparseMatrix& rows) {
  assert(rows.num_rows == num_cols);
  std::vector<Offset> added(static_cast<std::size_t>(num_cols), 0);
  for (const Index col : rows.index) ++added[col];
  std::vector<Offset> new_start(start.size());
  new_start[0] = 0;
  for (Index col = 0; col < num_cols; ++col) new_start[col + 1] = new_start[col] + (end(col) - begin(col)) + added[col];
  index.resize(static_cast<std::size_t>(new_start[num_cols]));
  value.resize(static_cast<std::size_t>(new_start[num_cols]));
  // Shift old entries outward from the last column, leaving each column's gap behind its old entries.
  std::vector<Offset>& next = added;
  for (Index col = num_cols - 1; col >= 0; --col) {
    const Offset length = end(col) - begin(col);
    for (Offset k = length - 1; k >= 0; --k) {
      index[new_start[col] + k] = index[start[col] + k];
      value[new_start[col] + k] = value[start[col] + k];
    }
    next[col] = new_start[col] + length;
  }
  for (Index row = 0; row < rows.num_cols; ++row) {
    for (Offset k = rows.begin(row); k < rows.end(row); ++k) {
      const Offset slot = next[rows.index[k]]++;
      index[slot] = num_rows + row;
      value[slot] = rows.value[k];
    }
  }
  start = std::move(new_start);
  num_rows += rows.num_cols;
}

void SparseMatrix::compress(const char* keep_row, const char* keep_col) {
  std::vector<Index> new_row(static_cast<std::size_t>(num_rows));
  Index rows_kept = 0;
  for (Index row = 0; row < num_rows; ++row) new_row[row] = keep_row == nullptr || keep_row[row] ? rows_kept++ : -1;
  Offset out = 0;
  Index cols_kept = 0;
  for (Index col = 0; col < num_cols; ++col) {
    const Offset first = begin(col);
    const Offset last = end(col);
    if (keep_col != nullptr && !keep_col[col]) continue;
    start[cols_kept++] = out;  // never overtakes an unread start
    for (Offset k = first; k < last; ++k) {
      if (new_row[index[k]] < 0) continue;
      index[out] = new_row[index[k]];
      value[out++] = value[k];
    }
  }
  start[cols_kept] = out;
  start.resize(static_cast<std::size_t>(cols_kept) + 1);
  index.resize(static_cast<std::size_t>(out));
  value.resize(static_cast<std::size_t>(out));
  num_rows = rows_kept;
  num_cols = cols_kept;
}

SparseMatrix SparseMatrix::transpose() const {
  SparseMatrix result;
  result.num_rows = num_cols;
  result.num_cols = num_rows;
  result.start.assign(static_cast<std::size_t>(num_rows) + 1, 0);
  result.index.resize(index.size());
  result.value.resize(value.size());
  for (const Index row : index) ++result.start[row + 1];
  for (Index row = 0; row < num_rows; ++row) result.start[row + 1] += result.start[row];
  std::vector<Offset> next(result.start.begin(), result.start.end() - 1);
  for (Index col = 0; col < num_cols; ++col) {
    for (Offset k = begin(col); k < end(col); ++k) {
      const Offset slot = next[index[k]]++;
      result.index[slot] = col;
      result.value[slot] = value[k];
    }
  }
  return result;
}

}  // namespace zorvex
