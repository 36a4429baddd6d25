#include "presolve/presolve_model.hpp"

#include <algorithm>
#include <cmath>

#include "base/tolerances.hpp"
#include "linalg/symmetric_matrix.hpp"

namespace zorvex {
PresolveModel::PresolveModel(const LpData& lp, const PresolveOptions& presolve_options)
    : matrix(lp.matrix),
      cost(lp.cost),
      col_lower(lp.col_lower),
      col_upper(lp.col_upper),
      row_lower(lp.row_lower),
      row_upper(lp.row_upper),
      offset(lp.offset),
      row_alive(row_lower.size(), 1),
      col_alive(cost.size(), 1),
      activity(row_lower.size()),
      options(presolve_options) {
  if (lp.is_quadratic()) quadratic = symmetric_from_lower(lp.quadratic);
  for (Index row = 0; row < num_rows(); ++row) activity[row] = fresh_activity(row);
}

Activity PresolveModel::fresh_activity(Index row, double* magnitude) const {
  Activity sum;
  double total = 0;
  for (const auto& entry : matrix.row(row)) {
    sum.add(entry.value, col_lower[entry.col], col_upper[entry.col], 1);
    total += std::abs(entry.value);
  }
  if (magnitude != nullptr) *magnitude = total;
  return sum;
}

double PresolveModel::rest_min(const PresolveMatrix::Entry& entry) const {
  Activity rest = activity[entry.row];
  rest.add(entry.value, col_lower[entry.col], col_upper[entry.col], -1);
  return rest.min();
}

double PresolveModel::rest_max(const PresolveMatrix::Entry& entry) const {
  Activity rest = activity[entry.row];
  rest.add(entry.value, col_lower[entry.col], col_upper[entry.col], -1);
  return rest.max();
}

double PresolveModel::implied_lower(const PresolveMatrix::Entry& entry) const {
  const double room = entry.value > 0 ? row_lower[entry.row] - rest_max(entry) : row_upper[entry.row] - rest_min(entry);
  return std::isfinite(room) ? room / entry.value : -kInf;
}

double PresolveModel::implied_upper(const PresolveMatrix::Entry& entry) const {
  const double room = entry.value > 0 ? row_upper[entry.row] - rest_min(entry) : row_lower[entry.row] - rest_max(entry);
  return std::isfinite(room) ? room / entry.value : kInf;
}

bool PresolveModel::lower_is_implied(const PresolveMatrix::Entry& entry) const {
  const double bound = col_lower[entry.col];
  return bound == -kInf || implied_lower(entry) >= bound - conclusion_slack(bound);
}

bool PresolveModel::upper_is_implied(const PresolveMatrix::Entry& entry) const {
  const double bound = col_upper[entry.col];
  return bound == kInf || implied_upper(entry) <= bound + conclusion_slack(bound);
}

double conclusion_slack(double bound) { return PresolveTolerances::kConclusion * std::max(1.0, std::abs(bound)); }

}  // namespace zorvex
