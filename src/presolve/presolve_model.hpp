// The model while presolve works on it. Reductions read it; only Changes writes.
//   Space    indices of the original model; dead rows and columns keep their slots.
#pragma once

#include <cmath>
#include <vector>

#include "base/tolerances.hpp"
#include "base/types.hpp"
#include "linalg/lp_data.hpp"
#include "presolve/presolve.hpp"
#include "presolve/presolve_matrix.hpp"

namespace zorvex {

// Range of a row's activity over the column bounds: the finite terms' sums and how many terms are infinite, where a
// term too large to reason about counts as infinite.
struct Activity {
  Extended finite_min = 0, finite_max = 0;
  Index infinite_min = 0, infinite_max = 0;

  [[nodiscard]] double min() const { return infinite_min > 0 ? -kInf : static_cast<double>(finite_min); }
  [[nodiscard]] double max() const { return infinite_max > 0 ? kInf : static_cast<double>(finite_max); }
  // Adds (sign 1) or takes back (sign -1) the term value * [lower, upper].
  void add(double value, double lower, double upper, int sign) {
    add_term(finite_min, infinite_min, value, value > 0 ? lower : upper, sign);
    add_term(finite_max, infinite_max, value, value > 0 ? upper : lower, sign);
  }

 private:
  static void add_term(Extended& sum, Index& infinite, double value, double bound, int sign) {
    const double size = std::abs(value * bound);
    if (size < PresolveTolerances::kHugeBound) {
      sum += sign * (Extended(value) * bound);
    } else {
      infinite += sign;
    }
  }
};

class PresolveModel {
 public:
  PresolveModel(const LpData& lp, const PresolveOptions& options);

  PresolveMatrix matrix;
  std::vector<double> cost, col_lower, col_upper, row_lower, row_upper;
  Extended offset;
  std::vector<char> row_alive, col_alive;
  SparseMatrix quadratic;          // all of Q, columns that are gone included; no columns when the model is linear
  std::vector<Activity> activity;  // kept up to date with every change
  PresolveOptions options;

  // Frees the matrix, which is most of the memory here and no business of postsolve's.
  void forget_matrix() { matrix = PresolveMatrix(SparseMatrix{}); }

  [[nodiscard]] Index num_rows() const { return static_cast<Index>(row_lower.size()); }
  [[nodiscard]] Index num_cols() const { return static_cast<Index>(cost.size()); }
  // The objective's curvature has to do with the column: its cost is not all there is to its reduced cost.
  [[nodiscard]] bool is_quadratic(Index col) const { return quadratic.num_cols > 0 && quadratic.col_length(col) > 0; }
  [[nodiscard]] bool is_equation(Index row) const { return row_lower[row] == row_upper[row]; }

  // Activity summed afresh, free of what the running sums have drifted; `magnitude` is the sum of |a_ij|.
  [[nodiscard]] Activity fresh_activity(Index row, double* magnitude = nullptr) const;
  // Activity range of the entry's row without the entry.
  [[nodiscard]] double rest_min(const PresolveMatrix::Entry& entry) const;
  [[nodiscard]] double rest_max(const PresolveMatrix::Entry& entry) const;
  // Bound on the entry's column that its row and the other columns' bounds imply; infinite if none.
  [[nodiscard]] double implied_lower(const PresolveMatrix::Entry& entry) const;
  [[nodiscard]] double implied_upper(const PresolveMatrix::Entry& entry) const;
  // True if the bound is infinite or the entry's row implies it.
  [[nodiscard]] bool lower_is_implied(const PresolveMatrix::Entry& entry) const;
  [[nodiscard]] bool upper_is_implied(const PresolveMatrix::Entry& entry) const;
};

// Slack allowed when a value is concluded to respect a bound; absolute.
[[nodiscard]] double conclusion_slack(double bound);

}  // namespace zorvex
