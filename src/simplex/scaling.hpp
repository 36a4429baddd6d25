// Row and column scale factors of an LP, powers of two so that scaling is exact.
//   Scaled matrix  row_scale[i] * a_ij * col_scale[j];   x = col_scale * x_scaled;   activity_scaled = row_scale *
//   activity. Source         A. Curtis, J. Reid's aim of unit geometric means, by alternating passes; R. Fourer, Math.
//   Program. 23
//                  (1982) 274-313, section on scaling.
#pragma once

#include <vector>

#include "base/log_sink.hpp"
#include "linalg/lp_data.hpp"

namespace zorvex {

struct Scaling {
  std::vector<double> row;  // num_rows
  std::vector<double> col;  // num_cols
};

// All ones when the matrix is already well scaled.
Scaling compute_scaling(const LpData& lp, bool only_largest = false);
Scaling unit_scaling(const LpData& lp);
// Factors for rows appended to the model (a row-wise matrix: its columns are the rows); the others stay.
void extend_scaling(Scaling& scaling, const SparseMatrix& rows);

// Diagnostic lines: largest and smallest magnitude of the nonzero costs, scaled and times `cost_factor`, and as given.
void report_costs(const LpData& lp, const Scaling& scaling, double cost_factor, LogSink& log);

}  // namespace zorvex
