#include "simplex/simplex_core.hpp"

#include <algorithm>
#include <cmath>

#include "base/random_stream.hpp"

namespace zorvex {

namespace {
constexpr double kPerturbationUnit = 2.5e-3;  // relative widening of bounds of magnitude above one, over PerturbValue
}  // namespace

template <class Real>
void SimplexCore<Real>::prepare() {
  const std::size_t total = static_cast<std::size_t>(n) + static_cast<std::size_t>(m);
  where.resize(total);
  place.resize(total);
  value.resize(total);
  reduced_cost.assign(total, Real(0));
  head.resize(static_cast<std::size_t>(m));
  weight.assign(static_cast<std::size_t>(m), Real(1));
  basic_value.assign(static_cast<std::size_t>(m), Real(0));
  basic_lower.assign(static_cast<std::size_t>(m), Real(0));
  basic_upper.assign(static_cast<std::size_t>(m), Real(0));
  row_work_.resize(m);
  position_work_.resize(m);
  column_work_.resize(n);
  work_lower = lower;
  work_upper = upper;
  work_cost = cost;
  slack_basis();
}

template <class Real>
void SimplexCore<Real>::slack_basis() {
  for (Index var = 0; var < n; ++var) {
    where[var] = -1;
    place[var] = Place::kLower;
  }
  for (Index row = 0; row < m; ++row) {
    head[row] = n + row;
    where[n + row] = row;
    place[n + row] = Place::kBasic;
  }
  std::fill(weight.begin(), weight.end(), Real(1));
  weights_valid = true;
  factor_valid = false;
  rows_valid = false;
  values_maintained = false;
  warm = false;
  changed_bounds.clear();
}

template <class Real>
bool SimplexCore<Real>::has_basic_columns() const {
  return std::any_of(head.begin(), head.end(), [this](Index var) { return var < n; });
}

template <class Real>
void SimplexCore<Real>::begin_solve(double markowitz_tolerance, int space_steps) {
  markowitz = markowitz_tolerance;
  refactor_interval = std::max<Index>(20, static_cast<Index>(std::pow(static_cast<double>(m), 0.7)));
  factor_count = 0;
  singular_events = 0;
  numeric_troubles = 0;
  dropped.clear();
  values_maintained = false;
  iterations = 0;
  statistics.begin(log->sink());
  if (factor_valid && !log->sink().enabled()) return;
  Offset basis_nonzeros = 0;
  for (const Index var : head) basis_nonzeros += var < n ? col_start[var + 1] - col_start[var] : 1;
  if (!factor_valid) {
    const bool enough = lu.reserve(m, basis_nonzeros, space_steps);
    if (!enough) log->sink().write("Warning: insufficient memory, speed may be affected.\n");
  }
  log->sink().print("Column=%d, Row=%d, Nonzero=%d, FactSpace=%d\n", n, m, static_cast<int>(basis_nonzeros),
                    static_cast<int>(lu.factor_space()));
}

template <class Real>
void SimplexCore<Real>::put_nonbasic(Index var, Place where_to) {
  const Real low = work_lower[var];
  const Real up = work_upper[var];
  if (low == up) {
    where_to = Place::kFixed;
  } else if (where_to == Place::kLower && !std::isfinite(low)) {
    where_to = std::isfinite(up) ? Place::kUpper : Place::kFree;
  } else if (where_to == Place::kUpper && !std::isfinite(up)) {
    where_to = std::isfinite(low) ? Place::kLower : Place::kFree;
  } else if (where_to == Place::kFixed || where_to == Place::kBasic) {
    where_to = std::isfinite(low) ? Place::kLower : std::isfinite(up) ? Place::kUpper : Place::kFree;
  } else if (where_to == Place::kFree && std::isfinite(low) && std::isfinite(up)) {
    where_to = Place::kLower;
  } else if (where_to == Place::kFree && (std::isfinite(low) || std::isfinite(up))) {
    where_to = std::isfinite(low) ? Place::kLower : Place::kUpper;
  }
  place[var] = where_to;
  switch (where_to) {
    case Place::kLower:
    case Place::kFixed:
      value[var] = low;
      break;
    case Place::kUpper:
      value[var] = up;
      break;
    default:
      value[var] = 0;
  }
  if (rows_valid && var < n) rows.set_active(var, where_to != Place::kFixed);
}

template <class Real>
void SimplexCore<Real>::settle_nonbasic() {
  values_maintained = false;
  for (Index var = 0; var < num_vars(); ++var) {
    if (is_basic(var)) {
      place[var] = Place::kBasic;
      basic_lower[where[var]] = work_lower[var];
      basic_upper[where[var]] = work_upper[var];
      if (rows_valid && var < n) rows.set_active(var, false);
    } else {
      put_nonbasic(var, place[var]);
    }
  }
  if (!rows_valid) rebuild_rows();
}

template <class Real>
void SimplexCore<Real>::rebuild_rows() {
  std::vector<char> active(static_cast<std::size_t>(n));
  for (Index var = 0; var < n; ++var) active[var] = !is_basic(var) && place[var] != Place::kFixed;
  rows.build(columns(), active);
  rows_valid = true;
}

template <class Real>
void SimplexCore<Real>::perturb_bounds(std::uint64_t seed, double perturb_value) {
  const double least = kPerturbationUnit * perturb_value;
  RandomStream random(seed, "primal bound perturbation");
  using std::abs;
  for (Index var = 0; var < num_vars(); ++var) {
    const Real draw_low = Real(least * (1 + random.uniform()));
    const Real draw_up = Real(least * (1 + random.uniform()));
    if (lower[var] == upper[var]) continue;
    if (std::isfinite(lower[var])) work_lower[var] -= draw_low * std::max<Real>(1, abs(lower[var]));
    if (std::isfinite(upper[var])) work_upper[var] += draw_up * std::max<Real>(1, abs(upper[var]));
  }
}

template <class Real>
void SimplexCore<Real>::use_true_bounds() {
  work_lower = lower;
  work_upper = upper;
}

template <class Real>
void SimplexCore<Real>::scatter_column(Index var, Real multiplier, Scattered<Real>& vector) const {
  const auto add = [&](Index row, Real amount) {
    Real& target = vector.value[row];
    if (target == 0 && !vector.dense) vector.index.push_back(row);
    target += amount;
    if (target == 0) target = Tol::kTinyCancel;
  };
  if (var >= n) {
    add(var - n, multiplier);
    return;
  }
  for (Offset k = col_start[var]; k < col_start[var + 1]; ++k) add(row_index[k], multiplier * matrix_value[k]);
}

template <class Real>
Real SimplexCore<Real>::column_dot(Index var, const Real* dense) const {
  if (var >= n) return dense[var - n];
  Real sum = 0;
  for (Offset k = col_start[var]; k < col_start[var + 1]; ++k) sum += matrix_value[k] * dense[row_index[k]];
  return sum;
}

template <class Real>
void SimplexCore<Real>::compute_duals() {
  compute_duals_from(work_cost);
}

template <class Real>
void SimplexCore<Real>::compute_duals_from(const std::vector<Real>& costs) {
  const OperationStatistics::Timer timer(statistics, Operation::kRecompute);
  Scattered<Real>& y = position_work_;
  y.clear();
  for (Index position = 0; position < m; ++position) {
    const Real c = costs[head[position]];
    if (c != 0) {
      y.value[position] = c;
      y.index.push_back(position);
    }
  }
  lu.btran(y);
  for (Index var = 0; var < num_vars(); ++var) {
    reduced_cost[var] = is_basic(var) ? Real(0) : costs[var] - column_dot(var, y.value.data());
  }
  work += static_cast<double>(col_start[n] + m);
  y.clear();
}

template <class Real>
void SimplexCore<Real>::btran_unit(Index position, Scattered<Real>& rho) {
  OperationStatistics::Timer timer(statistics, Operation::kRow);
  rho.clear();
  rho.value[position] = 1;
  rho.index.push_back(position);
  lu.btran(rho);
  rho.pack(Tol::kDrop);
  const double count = static_cast<double>(rho.index.size());
  timer.count(count / std::max<double>(1, m));
  work += count;
}

template <class Real>
void SimplexCore<Real>::price(const Scattered<Real>& rho, Scattered<Real>& alpha) {
  OperationStatistics::Timer timer(statistics, Operation::kPrice);
  alpha.clear();
  const auto touched = static_cast<double>(rows.price(rho, alpha));
  work += touched;
  price_work += touched;
  alpha.pack(Tol::kDrop);
  timer.count(static_cast<double>(alpha.index.size()) / std::max<double>(1, n));
}

template <class Real>
void SimplexCore<Real>::ftran_column(Index var, Scattered<Real>& alpha) {
  OperationStatistics::Timer timer(statistics, Operation::kColumn);
  alpha.clear();
  scatter_column(var, Real(1), alpha);
  lu.ftran(alpha, true);
  timer.count(take_column(alpha));
}

template <class Real>
void SimplexCore<Real>::ftran_column_and(Index var, Scattered<Real>& alpha, Scattered<Real>& other) {
  OperationStatistics::Timer timer(statistics, Operation::kColumn);
  alpha.clear();
  scatter_column(var, Real(1), alpha);
  lu.ftran_pair(alpha, true, other);
  timer.count(take_column(alpha));
}

// Drops what is as good as zero in an entering column. Returns its density.
template <class Real>
double SimplexCore<Real>::take_column(Scattered<Real>& alpha) {
  alpha.pack(Tol::kDrop);
  const double count = static_cast<double>(alpha.index.size());
  work += count;
  return count / std::max<double>(1, m);
}

template <class Real>
bool SimplexCore<Real>::pivot(Index position, Index entering, Real entering_value, Place leaving_place,
                              Real pivot_value) {
  const OperationStatistics::Timer timer(statistics, Operation::kUpdate);
  const Index leaving = head[position];
  const LuUpdateStatus updated = lu.update(position, pivot_value);
  head[position] = entering;
  where[leaving] = -1;
  where[entering] = position;
  place[entering] = Place::kBasic;
  if (entering < n) rows.set_active(entering, false);
  basic_value[position] = entering_value;
  basic_lower[position] = work_lower[entering];
  basic_upper[position] = work_upper[entering];
  put_nonbasic(leaving, leaving_place);
  ++iterations;
  fresh = false;
  factor_valid = updated == LuUpdateStatus::kOk;
  return factor_valid;
}

template <class Real>
void SimplexCore<Real>::report_trouble() {
  ++numeric_troubles;
  factor_valid = false;
  if (markowitz < 0.5) {
    markowitz = 0.5;
    log->sink().write("Markowitz tolerance tightened to 0.5.\n");
  }
}

template <class Real>
bool SimplexCore<Real>::needs_refactor() const {
  return !factor_valid || lu.num_updates() >= refactor_interval || (lu.num_updates() > 10 && lu.wants_refactor());
}

// In nanoseconds, by a fit to 38 models (a quarter off in the mean): rows are priced in long runs, the entries of the
// vectors are looked at several times by updates, choices and ratio tests.
template <class Real>
double SimplexCore<Real>::effort() const {
  constexpr double kPrice = 1.7, kVector = 12.5, kSolve = 3.3, kFactor = 1.8;
  return kPrice * price_work + kVector * (work - price_work) + kSolve * static_cast<double>(lu.solve_work()) +
         kFactor * static_cast<double>(lu.factor_work());
}

template <class Real>
SolveStatus SimplexCore<Real>::poll() {
  const double spent = effort();
  stop->spend(spent - told_effort);
  told_effort = spent;
  return stop->poll();
}

template <class Real>
SimplexOutcome SimplexCore<Real>::stop_reason() const {
  switch (stop->poll()) {
    case SolveStatus::kTimeLimit:
      return SimplexOutcome::kTimeLimit;
    case SolveStatus::kInterrupted:
      return SimplexOutcome::kInterrupted;
    default:
      return SimplexOutcome::kIterationLimit;
  }
}

template <class Real>
Real SimplexCore<Real>::dual_infeasibility(Index var) const {
  const Real d = reduced_cost[var];
  switch (place[var]) {
    case Place::kLower:
      return d < -dual_tol ? -d : Real(0);
    case Place::kUpper:
      return d > dual_tol ? d : Real(0);
    case Place::kFree: {
      using std::abs;
      return abs(d) > dual_tol ? abs(d) : Real(0);
    }
    default:
      return 0;
  }
}

template <class Real>
Index SimplexCore<Real>::count_primal_infeasible() const {
  Index count = 0;
  for (Index k = 0; k < m; ++k) count += primal_infeasibility(k) > 0 ? 1 : 0;
  return count;
}

template <class Real>
Real SimplexCore<Real>::sum_primal_infeasibility() const {
  Real sum = 0;
  for (Index position = 0; position < m; ++position) sum += primal_infeasibility(position);
  return sum;
}

template <class Real>
Real SimplexCore<Real>::sum_dual_infeasibility() const {
  Real sum = 0;
  for (Index var = 0; var < num_vars(); ++var) sum += dual_infeasibility(var);
  return sum;
}

template <class Real>
Real SimplexCore<Real>::objective(const std::vector<Real>& costs) const {
  Real sum = 0;
  for (Index var = 0; var < num_vars(); ++var) {
    if (costs[var] != 0) sum += costs[var] * (is_basic(var) ? basic_value[where[var]] : value[var]);
  }
  return sum;
}

template class SimplexCore<double>;
template class SimplexCore<Extended>;

}  // namespace zorvex
