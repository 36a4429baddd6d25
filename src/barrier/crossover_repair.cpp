// Repair of crossover bases that are nearly singular: the part of CrossoverPush that makes the basic solution stay
// where the interior point is.

#include <algorithm>
#include <cmath>

#include "barrier/crossover_push.hpp"

namespace zorvex {

namespace {
constexpr double kDisplacement = 1e-2;   // of a basic variable from its start value, relative above 1
constexpr double kAmplification = 1e4;   // of errors of a row in a variable: what makes a basis nearly singular
constexpr double kMismatch = 1e-6;       // relative disagreement of a pivot by row and by column
constexpr double kShareOfRows = 0.05;    // so many exchanges at most, ...
constexpr double kAlwaysExchanges = 50;  // ... but always this many
}  // namespace

// The basic solution and the interior point satisfy the same equations but for small residuals. Where they are far
// apart, their difference is nearly a null vector of the basis, so the variable that is displaced most depends on the
// others; the logical of the row whose errors it amplifies most takes its place.
template <class Real>
SolveStatus CrossoverPush<Real>::remove_near_dependencies() {
  const double most = std::max(kAlwaysExchanges, kShareOfRows * core_.m);
  for (int exchanges = 0; exchanges < most; ++exchanges) {
    const Index position = most_displaced();
    if (position < 0) break;
    if (const SolveStatus status = check_limits(); status != SolveStatus::kLoaded) return status;
    if (!exchange_for_logical(position)) {
      if (core_.lu.num_updates() == 0) break;
      if (const SolveStatus status = refactor(); status != SolveStatus::kLoaded) return status;
    } else if (core_.needs_refactor()) {
      if (const SolveStatus status = refactor(); status != SolveStatus::kLoaded) return status;
    }
  }
  return SolveStatus::kLoaded;
}

// -1: all are close to where they started.
template <class Real>
Index CrossoverPush<Real>::most_displaced() const {
  using std::abs;
  Index worst = -1;
  Real largest = Real(kDisplacement);
  for (Index position = 0; position < core_.m; ++position) {
    const Real start = sides_.value[core_.head[position]];
    const Real displacement = abs(core_.basic_value[position] - start) / (1 + abs(start));
    if (!(displacement > largest)) continue;
    largest = displacement;
    worst = position;
  }
  return worst;
}

// False when no row's errors are amplified, or the pivot cannot be trusted.
template <class Real>
bool CrossoverPush<Real>::exchange_for_logical(Index position) {
  using std::abs;
  core_.btran_unit(position, rho_);
  Index entering = -1;
  Real largest = Real(kAmplification);
  for (const Index row : rho_.index) {
    if (core_.is_basic(core_.n + row) || abs(rho_.value[row]) <= largest) continue;
    largest = abs(rho_.value[row]);
    entering = core_.n + row;
  }
  if (entering < 0) return false;
  core_.ftran_column(entering, alpha_);
  const Real pivot = alpha_.value[position];
  if (abs(pivot - rho_.value[entering - core_.n]) > Real(kMismatch) * abs(pivot)) return false;
  const Index leaving = core_.head[position];
  const Real step = (core_.basic_value[position] - sides_.value[leaving]) / pivot;
  move_basics(step);
  core_.pivot(position, entering, core_.value[entering] + step, own_place(leaving), pivot);
  pending_primal_[entering] = pending_dual_[leaving] = 0;
  pending_dual_[entering] = sides_.side[entering] != Side::kOff;
  if (sides_.side[leaving] == Side::kOff) place_off(leaving);
  return true;
}

template SolveStatus CrossoverPush<double>::remove_near_dependencies();
template SolveStatus CrossoverPush<Extended>::remove_near_dependencies();

}  // namespace zorvex
