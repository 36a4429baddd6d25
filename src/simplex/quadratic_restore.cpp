// From the active set of an optimum to that of a neighbouring problem, whose bounds make a few variables infeasible:
// one after the other goes to its bound while the superbasic variables keep the objective least. Nonbasic variables
// whose reduced costs are about to change their sign on the way become superbasic.
//   Form     u is the multiplier of the bound that is approached, zero at the start; reduced costs that count are those
//            of c + Qx less u times the entries of the infeasible variable's tableau row.
//   Source   D. Goldfarb, A. Idnani, Math. Program. 27 (1983) 1-33.
#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "simplex/quadratic_simplex.hpp"

namespace zorvex {

namespace {
constexpr int kRestoringSteps = 40;        // before phase 1 has its turn ...
constexpr double kRestoringShare = 0.2;    // ... and per row
constexpr int kDualSteps = 30;             // on the way to one bound
constexpr double kSuperbasicPivot = 1e-3;  // at least, for a superbasic variable to become basic
constexpr double kGoodPivotShare = 0.5;    // of the largest
constexpr double kNoEntry = 1e-11;         // in the row of a superbasic variable: rounding
}  // namespace

// Basic or superbasic; -1 when all are within their bounds.
template <class Real>
Index QuadraticSimplex<Real>::most_infeasible() const {
  Index worst = -1;
  Real most = core_.primal_tol;
  const auto look_at = [&](Index var, Real value) {
    const Real distance = std::max<Real>(core_.work_lower[var] - value, value - core_.work_upper[var]);
    if (distance <= most) return;
    most = distance;
    worst = var;
  };
  for (Index k = 0; k < core_.m; ++k) look_at(core_.head[k], core_.basic_value[k]);
  for (const Index var : space_.variables()) look_at(var, core_.value[var]);
  return worst;
}

// With the factor of the present space. What is left infeasible is for phase 1.
template <class Real>
void QuadraticSimplex<Real>::restore_feasibility() {
  const double steps = kRestoringSteps + kRestoringShare * core_.m;
  for (int step = 0; step < steps && !core_.needs_refactor(); ++step) {
    const Index var = most_infeasible();
    if (var < 0 || core_.poll() != SolveStatus::kLoaded || !drive_out(var)) break;
    if (!space_.valid() && !space_.refill()) break;
  }
  for (std::size_t slot = space_.variables().size(); slot-- > 0;) {
    const Index var = space_.variables()[slot];
    const bool above = core_.value[var] >= core_.work_upper[var];
    if (above || core_.value[var] <= core_.work_lower[var]) rest_at_bound(var, above);
  }
  core_.values_maintained = false;
}

// `var` to the bound that it violates. False when nothing lets it get there.
template <class Real>
bool QuadraticSimplex<Real>::drive_out(Index var) {
  const Index position = core_.where[var];
  if (position >= 0) {
    core_.btran_unit(position, rho_);
  } else {
    rho_.clear();
  }
  Real multiplier = 0;
  for (int step = 0; step < kDualSteps; ++step) {
    const Real value = position >= 0 ? core_.basic_value[position] : core_.value[var];
    const bool above = value > core_.work_upper[var];
    const Real distance = above ? value - core_.work_upper[var] : core_.work_lower[var] - value;
    if (distance <= 0) return false;  // overshot: rounding
    const Real rate = set_dual_direction(var, above ? Real(1) : Real(-1));
    const Real full = rate > 0 ? distance / rate : std::numeric_limits<Real>::infinity();
    Real limit = full;
    const Index entering = first_to_change_sign(above ? multiplier : -multiplier, above ? Real(1) : Real(-1), limit);
    if (entering < 0 && !std::isfinite(full)) return false;
    if (direction_scale_ > 0) move(limit * direction_scale_);
    multiplier += limit;
    if (entering < 0) return position < 0 ? (rest_at_bound(var, above), true) : exchange_out(position, above);
    const Real own = space_.products(entering, column_products_);
    Real excess = own;
    for (const Real entry : column_products_) excess -= entry * entry;
    if (!(own > 0 && excess > KernelTolerances<Real>::kCurvature * own)) {
      return position >= 0 && exchange_for(position, entering, above);
    }
    space_.append(entering, column_products_, excess);
    core_.place[entering] = Place::kFree;
    ++core_.iterations;
  }
  return false;
}

// Per unit of its multiplier: the superbasic variables move so that their reduced costs stay zero. Returns by how much
// the variable approaches its bound; direction_scale_ is what the direction has to be multiplied by, 0 if there is
// none.
template <class Real>
Real QuadraticSimplex<Real>::set_dual_direction(Index var, Real sign) {
  using std::abs;
  row_.clear();
  moving_ = space_.variables();
  for (const Index other : moving_) row_.push_back(entry_in_row(var, other));
  rate_ = row_;
  space_.solve(rate_);
  Real rate = 0;
  direction_scale_ = 0;
  for (std::size_t i = 0; i < rate_.size(); ++i) {
    rate += row_[i] * rate_[i];
    rate_[i] *= core_.is_basic(var) ? sign : -sign;
    direction_scale_ = std::max<Real>(direction_scale_, abs(rate_[i]));
  }
  if (rate <= Real(kNoEntry) * direction_scale_) direction_scale_ = 0;
  if (direction_scale_ == 0) return 0;
  set_direction();
  return rate;
}

// Of the infeasible variable's row: that of its position, or of itself when it is superbasic.
template <class Real>
Real QuadraticSimplex<Real>::entry_in_row(Index var, Index other) const {
  if (core_.is_basic(var)) return core_.column_dot(other, rho_.value.data());
  return other == var ? Real(1) : Real(0);
}

// The nonbasic variable whose reduced cost changes its sign first, before the multiplier has grown by `limit`, which
// becomes where that is; -1 if none. Of those that the dual tolerance makes equals, the one that changes fastest.
template <class Real>
Index QuadraticSimplex<Real>::first_to_change_sign(Real multiplier, Real sign, Real& limit) {
  using std::abs;
  compute_multipliers();
  price();
  column_.clear();
  column_.dense = true;
  for (Index k = 0; k < core_.m; ++k) {
    column_.value[k] = direction_scale_ > 0 && core_.head[k] < core_.n ? curved_[core_.head[k]] : Real(0);
  }
  if (core_.m > 0 && direction_scale_ > 0) core_.lu.btran(column_);
  core_.work += 2 * static_cast<double>(core_.col_start[core_.n]);
  struct Candidate {
    Index var;
    Real room, speed;
  };
  std::vector<Candidate> candidates;
  Real relaxed = limit;
  for (Index var = 0; var < core_.num_vars(); ++var) {
    if (core_.is_basic(var) || space_.contains(var) || core_.work_lower[var] == core_.work_upper[var]) continue;
    const Real entry = core_.column_dot(var, rho_.value.data());
    Real speed = -sign * entry;
    if (direction_scale_ > 0) {
      const Real own = var < core_.n ? curved_[var] : Real(0);
      speed += direction_scale_ * (own - core_.column_dot(var, column_.value.data()));
    }
    if (abs(speed) < 10 * core_.pivot_tol) continue;
    const Place place = core_.place[var];
    if (place != Place::kFree && (speed < 0) != (place == Place::kLower)) continue;
    const Real cost = core_.reduced_cost[var] - multiplier * entry;
    const Real room = place == Place::kFree ? Real(0) : std::max<Real>(0, place == Place::kLower ? cost : -cost);
    candidates.push_back({var, room, abs(speed)});
    relaxed = std::min<Real>(relaxed, (room + core_.dual_tol) / abs(speed));
  }
  Index best = -1;
  Real fastest = 0, step = limit;
  for (const Candidate& candidate : candidates) {
    if (candidate.room > relaxed * candidate.speed || candidate.speed <= fastest) continue;
    if (candidate.room >= limit * candidate.speed) continue;
    fastest = candidate.speed;
    best = candidate.var;
    step = candidate.room / candidate.speed;
  }
  limit = step;
  return best;
}

// The basic variable in `position` has come to its bound: a superbasic one takes its place.
template <class Real>
bool QuadraticSimplex<Real>::exchange_out(Index position, bool to_upper) {
  using std::abs;
  Real largest = 0;
  for (const Real entry : row_) largest = std::max<Real>(largest, abs(entry));
  if (largest < Real(kSuperbasicPivot)) return false;
  const Index slot = farthest_from_bounds(Real(kGoodPivotShare) * largest);
  const Index entering = space_.variables()[slot];
  core_.ftran_column(entering, column_);
  const Real pivot = column_.value[position];
  if (abs(row_[slot] - pivot) > KernelTolerances<Real>::kPivotMismatch * (1 + abs(pivot))) return false;
  space_.exchange(slot, row_);
  core_.pivot(position, entering, core_.value[entering], to_upper ? Place::kUpper : Place::kLower, pivot);
  return true;
}

// `entering` brings no curvature: it takes the infeasible variable all the way and its place, too.
template <class Real>
bool QuadraticSimplex<Real>::exchange_for(Index position, Index entering, bool to_upper) {
  using std::abs;
  Real largest = 0;
  for (const Real entry : row_) largest = std::max<Real>(largest, abs(entry));
  const Real entry = core_.column_dot(entering, rho_.value.data());
  core_.ftran_column(entering, column_);
  const Real pivot = column_.value[position];
  if (abs(pivot) < 10 * core_.pivot_tol) return false;
  if (abs(entry - pivot) > KernelTolerances<Real>::kPivotMismatch * (1 + abs(pivot))) return false;
  const Real bound = to_upper ? core_.basic_upper[position] : core_.basic_lower[position];
  const Real step = (core_.basic_value[position] - bound) / pivot;
  if (largest > Real(kNoEntry)) space_.invalidate();
  for (const Index k : column_.index) core_.basic_value[k] -= step * column_.value[k];
  core_.pivot(position, entering, core_.value[entering] + step, to_upper ? Place::kUpper : Place::kLower, pivot);
  if (!core_.factor_valid || (!space_.valid() && !space_.refill())) return false;
  compute_gradient();
  to_space_minimum();
  return true;
}

template class QuadraticSimplex<double>;
template class QuadraticSimplex<Extended>;

}  // namespace zorvex
