// Factorization of the basis with its safeguards: growth of the factor space, repair of singular bases, the periodic
// accuracy check and the tightening of the Markowitz tolerance.
#include <algorithm>
#include <cmath>

#include "simplex/simplex_core.hpp"

namespace zorvex {

namespace {

constexpr Index kMaxSingularEvents = 5, kMaxTemporaryEvents = 100;
constexpr Index kMinRefactorInterval = 50;

// One rung of the ladder by which growth of the basic values or the relative residual tightens the tolerance.
struct Rung {
  double growth;    // largest |x_B| over largest |right-hand side|
  double residual;  // relative residual of B x = b
  double tolerance;
};
constexpr Rung kLadder[] = {
    {1e10, 1e-8, 0.5}, {1e9, 4e-9, 0.25}, {1e8, 1e-9, 0.125}, {1e7, 4e-10, 0.0625}, {1e6, 1e-10, 0.03125}};

double tolerance_for_violation(double violation) {
  if (violation > 1) return 0.5;
  if (violation > 0.1) return 0.25;
  if (violation > 0.01) return 0.125;
  if (violation > 0.001) return 0.0625;
  return 0.03125;
}

}  // namespace

template <class Real>
bool SimplexCore<Real>::factorize(SimplexOutcome& failure) {
  OperationStatistics::Timer timer(statistics, Operation::kFactor);
  for (;;) {
    switch (lu.factor(columns(), head, markowitz, *stop)) {
      case LuStatus::kOk:
        ++factor_count;
        factor_valid = true;
        work += static_cast<double>(lu.factor_nonzeros());
        timer.count(static_cast<double>(lu.factor_nonzeros()) / std::max<double>(1, static_cast<double>(m) * m));
        return true;
      case LuStatus::kInterrupted:
        factor_valid = false;
        failure = stop_reason();
        return false;
      case LuStatus::kSpaceTooSmall:
        lu.grow_space();
        break;
      case LuStatus::kSingular:
        factor_valid = false;
        if (!take_singular_basis()) {
          failure = SimplexOutcome::kNumeric;
          return false;
        }
        break;
    }
  }
}

// Puts another basis in the place of a singular one. False: there have been too many.
template <class Real>
bool SimplexCore<Real>::take_singular_basis() {
  if (temporary_fixings || singular_events <= kMaxSingularEvents) {
    log->sink().print("Warning: %d variables dropped from basis\n", static_cast<int>(lu.deficiencies().size()));
  }
  if (singular_events >= (temporary_fixings ? kMaxTemporaryEvents : kMaxSingularEvents)) return false;
  if (temporary_fixings && iterations == 0) {
    log->sink().write("Warning: starting basis discarded\n");
    ++singular_events;
    slack_basis();
    settle_nonbasic();
  } else {
    repair_singular_basis();
  }
  return true;
}

template <class Real>
void SimplexCore<Real>::repair_singular_basis() {
  const std::vector<LuDeficiency>& deficient = lu.deficiencies();
  const auto root = static_cast<Index>(std::sqrt(static_cast<double>(m)));
  const auto shrunk = static_cast<Index>(0.9 * refactor_interval);
  refactor_interval = std::min(refactor_interval, std::max(kMinRefactorInterval, std::min(root, shrunk)));
  markowitz = std::max(markowitz, singular_events == 0 ? 0.5 : 0.9);
  ++singular_events;
  for (const LuDeficiency& lost : deficient) {
    const Index leaving = head[lost.position];
    where[leaving] = -1;
    if (leaving < n) dropped.push_back(leaving);
    put_nonbasic(leaving, std::isfinite(work_lower[leaving]) ? Place::kLower : Place::kFree);
  }
  for (const LuDeficiency& lost : deficient) {
    const Index logical = n + lost.row;
    head[lost.position] = logical;
    where[logical] = lost.position;
    place[logical] = Place::kBasic;
    basic_lower[lost.position] = work_lower[logical];
    basic_upper[lost.position] = work_upper[logical];
  }
  std::erase_if(dropped, [this](Index var) { return is_basic(var); });
  weights_valid = false;
}

template <class Real>
void SimplexCore<Real>::compute_primal() {
  const OperationStatistics::Timer timer(statistics, Operation::kRecompute);
  const Real expected_violation = values_maintained ? sum_primal_infeasibility() : Real(0);
  Scattered<Real>& rhs = row_work_;
  rhs.clear();
  rhs.dense = true;
  for (Index var = 0; var < num_vars(); ++var) {
    if (!is_basic(var) && value[var] != 0) scatter_column(var, -value[var], rhs);
  }
  const bool check = factor_count % 5 == 4;
  std::vector<Real> kept;
  if (check) kept = rhs.value;
  Real largest_rhs = 0;
  using std::abs;
  for (const Real v : rhs.value) largest_rhs = std::max<Real>(largest_rhs, abs(v));
  if (m > 0) lu.ftran(rhs);
  Real largest_value = 0;
  for (Index position = 0; position < m; ++position) {
    basic_value[position] = rhs.value[position];
    largest_value = std::max<Real>(largest_value, abs(rhs.value[position]));
  }
  const double scale = std::max(1e-9, static_cast<double>(largest_rhs));
  double relative_residual = 0;
  if (check) {
    for (Index position = 0; position < m; ++position) {
      const Index var = head[position];
      const Real x = basic_value[position];
      if (x == 0) continue;
      if (var >= n) {
        kept[var - n] -= x;
      } else {
        for (Offset k = col_start[var]; k < col_start[var + 1]; ++k) kept[row_index[k]] -= matrix_value[k] * x;
      }
    }
    Real residual = 0;
    for (const Real r : kept) residual = std::max<Real>(residual, abs(r));
    if (residual > Tol::kResidual * std::max<Real>(Real(1), largest_rhs)) ++numeric_troubles;
    relative_residual = static_cast<double>(residual) / scale;
  }
  rhs.clear();
  work += static_cast<double>(col_start[n] + m);
  const Real drift = values_maintained ? sum_primal_infeasibility() - expected_violation : Real(0);
  values_maintained = true;
  tighten_markowitz(static_cast<double>(largest_value) / scale, relative_residual, static_cast<double>(drift));
}

// `drift` is the bound violation that recomputation brought to light: violations that the iterations knew of (the dual
// simplex lives with them) say nothing about accuracy.
template <class Real>
void SimplexCore<Real>::tighten_markowitz(double growth, double relative_residual, double drift) {
  double candidate = 1e-4;
  if (!tightened_last_time_ && drift > 1e-4) candidate = tolerance_for_violation(drift);
  for (const Rung& rung : kLadder) {
    if (growth > rung.growth || relative_residual > rung.residual) {
      candidate = std::max(candidate, rung.tolerance);
      break;
    }
  }
  tightened_last_time_ = candidate > markowitz;
  if (tightened_last_time_) {
    markowitz = candidate;
    log->sink().print("Warning: Markowitz tolerance tightened to %g\n", candidate);
  }
}

template class SimplexCore<double>;
template class SimplexCore<Extended>;

}  // namespace zorvex
