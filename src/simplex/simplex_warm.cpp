// Warm starts of the simplex core: after a few changes of bounds or of the basic set, factors, values and reduced costs
// are carried over by updates.
#include <algorithm>
#include <cmath>

#include "simplex/simplex_core.hpp"

namespace zorvex {

namespace {
constexpr double kExchangePivot = 1e-5;  // smallest pivot of an exchange, absolute and relative to its column
}  // namespace

// With y = -(reduced costs of the logicals), as logicals cost nothing.
template <class Real>
Real SimplexCore<Real>::exact_reduced_cost(Index col) const {
  Real d = work_cost[col];
  for (Offset k = col_start[col]; k < col_start[col + 1]; ++k) {
    d += matrix_value[k] * reduced_cost[n + row_index[k]];
  }
  return d;
}

template <class Real>
bool SimplexCore<Real>::follow_bounds(Index var, Scattered<Real>& moved) {
  const Real before = value[var];
  Place wanted = place[var];
  if (var < n && !rows.is_active(var)) reduced_cost[var] = exact_reduced_cost(var);
  if (wanted == Place::kFixed) wanted = reduced_cost[var] < 0 ? Place::kUpper : Place::kLower;
  put_nonbasic(var, wanted);
  if (dual_infeasibility(var) > 0) {
    const bool to_upper = reduced_cost[var] < 0;
    if (!std::isfinite(to_upper ? work_upper[var] : work_lower[var])) return false;
    put_nonbasic(var, to_upper ? Place::kUpper : Place::kLower);
  }
  if (value[var] != before) scatter_column(var, before - value[var], moved);
  return true;
}

template <class Real>
bool SimplexCore<Real>::absorb_bound_changes() {
  Scattered<Real>& moved = row_work_;
  moved.clear();
  bool ok = true;
  for (const Index var : changed_bounds) {
    work_lower[var] = lower[var];
    work_upper[var] = upper[var];
    if (is_basic(var)) {
      basic_lower[where[var]] = lower[var];
      basic_upper[where[var]] = upper[var];
    } else {
      ok = follow_bounds(var, moved) && ok;
    }
  }
  changed_bounds.clear();
  if (ok && !moved.index.empty()) {
    lu.ftran(moved);
    moved.pack(Tol::kDrop);
    for (const Index position : moved.index) basic_value[position] += moved.value[position];
    work += static_cast<double>(moved.index.size());
  }
  moved.clear();
  return ok;
}

template <class Real>
Real SimplexCore<Real>::restore_true_costs() {
  Scattered<Real>& y = position_work_;
  y.clear();
  Real infeasibility = 0;
  for (Index var = 0; var < num_vars(); ++var) {
    if (work_cost[var] == cost[var]) continue;
    const Real change = cost[var] - work_cost[var];
    work_cost[var] = cost[var];
    if (is_basic(var)) {
      y.value[where[var]] = change;
      y.index.push_back(where[var]);
    } else {
      reduced_cost[var] += change;
      infeasibility += dual_infeasibility(var);
    }
  }
  if (y.index.empty()) return infeasibility;
  lu.btran(y);
  y.pack(Tol::kDrop);
  price(y, column_work_);
  for (const Index col : column_work_.index) reduced_cost[col] -= column_work_.value[col];
  for (const Index row : y.index) {
    if (!is_basic(n + row)) reduced_cost[n + row] -= y.value[row];
  }
  y.clear();
  return sum_dual_infeasibility();
}

// Each entering variable takes the leaving position where its column is largest. One that finds no good pivot waits
// until others have gone in.
template <class Real>
bool SimplexCore<Real>::exchange_basis(const std::vector<char>& basic, Index max_updates) {
  std::vector<Index> leaving;  // positions
  std::vector<Index> entering;
  for (Index position = 0; position < m; ++position) {
    if (!basic[head[position]]) leaving.push_back(position);
  }
  if (static_cast<Index>(leaving.size()) > max_updates) return false;
  for (Index var = 0; var < num_vars(); ++var) {
    if (basic[var] && !is_basic(var)) entering.push_back(var);
  }
  using std::abs;
  Scattered<Real>& alpha = row_work_;
  std::size_t waited = 0;
  while (!entering.empty()) {
    if (waited == entering.size()) return false;
    const Index var = entering.front();
    entering.erase(entering.begin());
    ftran_column(var, alpha);
    std::size_t best = 0;
    for (std::size_t k = 1; k < leaving.size(); ++k) {
      if (abs(alpha.value[leaving[k]]) > abs(alpha.value[leaving[best]])) best = k;
    }
    Real largest = 1;
    for (const Index position : alpha.index) largest = std::max<Real>(largest, abs(alpha.value[position]));
    const Index position = leaving[best];
    const Real pivot = alpha.value[position];
    alpha.clear();
    if (abs(pivot) < Real(kExchangePivot) * largest) {
      entering.push_back(var);
      ++waited;
      continue;
    }
    if (lu.update(position, pivot) != LuUpdateStatus::kOk) return false;
    where[head[position]] = -1;
    head[position] = var;
    where[var] = position;
    leaving.erase(leaving.begin() + static_cast<std::ptrdiff_t>(best));
    waited = 0;
  }
  return true;
}

template class SimplexCore<double>;
template class SimplexCore<Extended>;

}  // namespace zorvex
