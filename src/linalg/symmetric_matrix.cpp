#include "linalg/symmetric_matrix.hpp"

namespace zorvex {

SparseMatrix symmetric_from_lower(const SparseMatrix& lower) {
  const SparseMatrix rows = lower.transpose();  // its columns are the rows of the triangle
  SparseMatrix full;
  full.num_rows = lower.num_rows;
  std::vector<Index> index;
  std::vector<double> value;
  for (Index col = 0; col < lower.num_cols; ++col) {
    index.assign(rows.index.begin() + rows.begin(col), rows.index.begin() + rows.end(col));
    value.assign(rows.value.begin() + rows.begin(col), rows.value.begin() + rows.end(col));
    for (Offset k = lower.begin(col); k < lower.end(col); ++k) {
      if (lower.index[k] == col) continue;
      index.push_back(lower.index[k]);
      value.push_back(lower.value[k]);
    }
    full.append_col(index.data(), value.data(), static_cast<Index>(index.size()));
  }
  return full;
}

}  // namespace zorvex
