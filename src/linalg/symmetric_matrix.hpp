// A symmetric matrix from its lower triangle.
#pragma once

#include "linalg/sparse_matrix.hpp"

namespace zorvex {

// Both triangles of the square matrix whose lower one, diagonal included, is given. Columns need not be in row order in
// `lower`; they are not in the result.
[[nodiscard]] SparseMatrix symmetric_from_lower(const SparseMatrix& lower);

}  // namespace zorvex
