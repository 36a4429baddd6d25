// Applies queued rows, columns, coefficient changes and deletions to the stored matrix in one pass.
#pragma once

#include <vector>

#include "base/types.hpp"
#include "model/model_data.hpp"
#include "model/pending_changes.hpp"

namespace zorvex {

// Where the rows and columns of the queue's index space (stored ones, then added ones) go.
struct Renumbering {
  std::vector<char> keep_row, keep_col;  // 0 where deleted
  std::vector<Index> new_row, new_col;   // -1 where deleted
  std::vector<double> row_sign;          // -1 where the row will be of sense '>'
  std::vector<double> flip;              // per stored row: factor on the values stored so far
  Index rows = 0, cols = 0;              // after the update
};

Renumbering plan_renumbering(const ModelData& data, const PendingChanges& changes);

// The matrix after the update; `old` is the stored one. Entries of a column keep their order: stored ones, those of
// added rows, those made by coefficient changes. Zeros disappear. Cost O(rows + columns + nonzeros + changes).
CompressedVectors rebuild_matrix(const CompressedVectors& old, const PendingChanges& changes, const Renumbering& plan);

// The transpose; `num_rows` bounds the indices. Entries of each new vector ascend. Cost O(nonzeros + num_rows).
CompressedVectors transpose(const CompressedVectors& vectors, Index num_rows);

}  // namespace zorvex
