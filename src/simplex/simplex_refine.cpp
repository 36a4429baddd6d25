// Iterative refinement of the values that belong to a basis: residuals in extended precision, corrections by the
// factors at hand.
//   Source   J. Wilkinson, "Rounding Errors in Algebraic Processes", HMSO 1963, ch. 3; for simplex bases A. Gleixner,
//            D. Steffy, K. Wolter, INFORMS J. Comput. 28 (2016) 449-464.
#include <algorithm>
#include <cmath>

#include "simplex/simplex_core.hpp"

namespace zorvex {

namespace {
constexpr int kRefinements = 2;  // what the first leaves is mostly the rounding of the stored values
}  // namespace

template <class Real>
void SimplexCore<Real>::refine() {
  for (int round = 0; round < kRefinements; ++round) {
    refine_primal();
    refine_duals();
  }
}

// x_B += B^-1 (- A x - s).
template <class Real>
void SimplexCore<Real>::refine_primal() {
  std::vector<Extended> residual(static_cast<std::size_t>(m), 0);
  for (Index var = 0; var < num_vars(); ++var) {
    const Extended x = is_basic(var) ? basic_value[where[var]] : value[var];
    if (x == 0) continue;
    if (var >= n) {
      residual[var - n] -= x;
      continue;
    }
    for (Offset k = col_start[var]; k < col_start[var + 1]; ++k) residual[row_index[k]] -= x * matrix_value[k];
  }
  Scattered<Real>& correction = row_work_;
  correction.clear();
  correction.dense = true;
  for (Index row = 0; row < m; ++row) correction.value[row] = static_cast<Real>(residual[row]);
  lu.ftran(correction);
  for (Index position = 0; position < m; ++position) basic_value[position] += correction.value[position];
  correction.clear();
  work += static_cast<double>(col_start[n] + m);
}

// y += B^-T (c_B - B'y), with y kept as the negated reduced costs of the logicals; then the reduced costs of all
// columns.
template <class Real>
void SimplexCore<Real>::refine_duals() {
  std::vector<Extended> y(static_cast<std::size_t>(m), 0);
  for (Index row = 0; row < m; ++row) y[row] = -Extended(reduced_cost[n + row]);
  const auto exact_reduced_cost = [&](Index var) {
    if (var >= n) return Extended(cost[var]) - y[var - n];
    Extended d = cost[var];
    for (Offset k = col_start[var]; k < col_start[var + 1]; ++k) d -= y[row_index[k]] * matrix_value[k];
    return d;
  };
  Scattered<Real>& correction = position_work_;
  correction.clear();
  correction.dense = true;
  for (Index position = 0; position < m; ++position) {
    correction.value[position] = static_cast<Real>(exact_reduced_cost(head[position]));
  }
  lu.btran(correction);
  for (Index row = 0; row < m; ++row) y[row] = is_basic(n + row) ? Extended(0) : y[row] + correction.value[row];
  correction.clear();
  for (Index var = 0; var < num_vars(); ++var) {
    reduced_cost[var] = is_basic(var) ? Real(0) : static_cast<Real>(exact_reduced_cost(var));
  }
  work += 2 * static_cast<double>(col_start[n] + m);
}

template class SimplexCore<double>;
template class SimplexCore<Extended>;

}  // namespace zorvex
