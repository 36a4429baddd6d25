// The steps of the quadratic simplex: directions, their lengths, and what becomes of the variable that ends them.
#include <algorithm>
#include <cmath>
#include <limits>

#include "simplex/quadratic_simplex.hpp"

namespace zorvex {

namespace {
constexpr double kGradientGoal = 1e-3;  // share of the dual tolerance to which Newton steps lower the reduced gradient
constexpr double kGoodProgress = 0.5;   // share of the reduced gradient that a Newton step may leave
constexpr double kLossyStep = 1e-3;     // a factor that leaves more ...
constexpr Index kLossyUpdates = 20;     // ... is computed anew after so many updates, ...
constexpr int kPoorSteps = 3;           // ... or when it makes so many poor steps in a row, whatever its age
constexpr int kMaxPoorSteps = 25;
constexpr int kConfirmations = 2;
constexpr double kGoodPivotShare = 0.9;  // of the largest; smaller ones ruin the factor in few exchanges
constexpr double kSmallRate = 1e-11;     // against the largest one: rounding
constexpr double kFlatness = 64;         // units of rounding below which the curvature of a direction is none
constexpr int kMaxTroubles = 20;
}  // namespace

// The sum of infeasibilities falls along one variable; as the simplex does it, but superbasic variables take part.
template <class Real>
typename QuadraticSimplex<Real>::Step QuadraticSimplex<Real>::phase1_step() {
  using std::abs;
  if (core_.sum_primal_infeasibility() == 0) return Step::kRebuild;
  price();
  const Index entering = choose_entering();
  if (entering < 0) return Step::kNoEntering;
  core_.ftran_column(entering, alpha_);
  const Real direction = core_.reduced_cost[entering] < 0 ? Real(1) : Real(-1);
  const Real range = direction > 0 ? core_.work_upper[entering] - core_.value[entering]
                                   : core_.value[entering] - core_.work_lower[entering];
  const PrimalBlock<Real> block = ratio_test_.phase1(alpha_, direction, range, abs(core_.reduced_cost[entering]));
  if (block.unbounded) {  // impossible in exact arithmetic: the sum of infeasibilities is bounded
    reject(entering);
    return core_.fresh ? Step::kContinue : Step::kRebuild;
  }
  const Real pivot = block.position < 0 ? Real(1) : alpha_.value[block.position];
  if (abs(pivot) < 10 * core_.pivot_tol) {
    reject(entering);
    return core_.fresh ? Step::kContinue : Step::kRebuild;
  }
  for (const Index k : alpha_.index) core_.basic_value[k] -= block.step * direction * alpha_.value[k];
  const Real value = core_.value[entering] + direction * block.step;
  core_.fresh = false;
  if (block.position < 0) {
    rest_at_bound(entering, direction > 0);
    ++core_.iterations;
    return Step::kContinue;
  }
  // The superbasic variables' directions change with the basis; the factor follows where it is one of them that enters.
  if (space_.contains(entering)) {
    core_.btran_unit(block.position, rho_);
    row_.clear();
    for (const Index var : space_.variables()) row_.push_back(core_.column_dot(var, rho_.value.data()));
    space_.exchange(space_.slot(entering), row_);
  } else {
    space_.invalidate();
  }
  core_.pivot(block.position, entering, value, block.to_upper ? Place::kUpper : Place::kLower, pivot);
  return Step::kContinue;
}

// The reduced gradient is as small as it has to be, or as it gets.
template <class Real>
bool QuadraticSimplex<Real>::is_subspace_optimal() {
  using std::abs;
  Real largest = 0;
  for (const Index var : space_.variables()) {
    core_.reduced_cost[var] = reduced_cost_of(var);
    largest = std::max<Real>(largest, abs(core_.reduced_cost[var]));
  }
  core_.work += 4 * static_cast<double>(space_.variables().size());
  if (largest <= Real(kGradientGoal) * core_.dual_tol) return true;
  // Computed anew, the gradient of what was an optimum is as large as before: that is rounding.
  if (confirming_ && confirmations_ > kConfirmations) return true;
  const bool poor = last_gradient_ > 0 && largest > Real(kGoodProgress) * last_gradient_;
  if (poor && largest <= core_.dual_tol) return true;
  poor_steps_ = poor ? poor_steps_ + 1 : 0;
  lossy_ = largest > core_.dual_tol && last_gradient_ > 0 && largest > Real(kLossyStep) * last_gradient_;
  last_gradient_ = largest;
  return false;
}

template <class Real>
typename QuadraticSimplex<Real>::Step QuadraticSimplex<Real>::newton_step() {
  if (poor_steps_ > kMaxPoorSteps) return Step::kFailed;
  if ((lossy_ && space_.updates() >= kLossyUpdates) || (poor_steps_ >= kPoorSteps && space_.updates() > 0)) {
    space_.invalidate();
    last_gradient_ = 0;
    poor_steps_ = 0;
    return Step::kRebuild;
  }
  moving_ = space_.variables();
  rate_.clear();
  for (const Index var : moving_) rate_.push_back(-core_.reduced_cost[var]);
  space_.solve(rate_);
  set_direction();
  if (!(slope_ < 0)) return trouble();
  return take_step();
}

// A nonbasic variable joins the superbasic ones. At the minimum of their space the Newton direction of the larger space
// is conjugate to the smaller one: no solve with the new factor is needed, and none could be had without curvature.
template <class Real>
typename QuadraticSimplex<Real>::Step QuadraticSimplex<Real>::enter(Index var) {
  if (static_cast<Index>(space_.variables().size()) >= ReducedSpace<Real>::kMostVariables) return Step::kTooLarge;
  const Real direction = core_.reduced_cost[var] < 0 ? Real(1) : Real(-1);
  space_.products(var, column_products_);
  moving_ = space_.variables();
  moving_.push_back(var);
  rate_ = column_products_;
  space_.solve_upper(rate_);
  for (Real& rate : rate_) rate *= -direction;
  rate_.push_back(direction);
  set_direction();
  if (!(slope_ < 0)) {
    reject(var);
    return core_.fresh ? Step::kContinue : Step::kRebuild;
  }
  const Real own = rate_.back();
  space_.append(var, column_products_, is_flat() ? Real(0) : curvature_ / (own * own));
  core_.place[var] = Place::kFree;
  last_gradient_ = 0;
  poor_steps_ = 0;
  return take_step();
}

// What follows from moving_ and rate_: largest rate one, the basic variables, curvature and slope.
template <class Real>
void QuadraticSimplex<Real>::set_direction() {
  using std::abs;
  Real largest = 0;
  for (const Real rate : rate_) largest = std::max<Real>(largest, abs(rate));
  std::fill(curved_.begin(), curved_.end(), Real(0));
  alpha_.clear();
  slope_ = curvature_ = magnitude_ = 0;
  Offset touched = core_.n;
  for (std::size_t i = 0; i < moving_.size(); ++i) {
    rate_[i] /= largest;
    const Index var = moving_[i];
    if (rate_[i] == 0) continue;
    slope_ += core_.reduced_cost[var] * rate_[i];
    core_.scatter_column(var, rate_[i], alpha_);
    if (var < core_.n) touched += form_.add_column(var, rate_[i], curved_);
  }
  if (core_.m > 0) core_.lu.ftran(alpha_);
  alpha_.pack(KernelTolerances<Real>::kDrop);
  for (const Index k : alpha_.index) {
    if (core_.head[k] < core_.n) touched += form_.add_column(core_.head[k], -alpha_.value[k], curved_);
  }
  const auto add = [&](Index col, Real rate) {
    curvature_ += rate * curved_[col];
    magnitude_ += abs(rate) * form_.root_diagonal(col);
  };
  for (std::size_t i = 0; i < moving_.size(); ++i) {
    if (moving_[i] < core_.n) add(moving_[i], rate_[i]);
  }
  for (const Index k : alpha_.index) {
    if (core_.head[k] < core_.n) add(core_.head[k], -alpha_.value[k]);
  }
  core_.work += static_cast<double>(touched) + static_cast<double>(moving_.size() * moving_.size());
}

template <class Real>
bool QuadraticSimplex<Real>::is_flat() const {
  const Real rounding = Real(kFlatness) * std::numeric_limits<Real>::epsilon();
  return curvature_ <= rounding * magnitude_ * magnitude_;
}

// Along the direction to the minimum or to the first bound, whichever comes first.
template <class Real>
typename QuadraticSimplex<Real>::Step QuadraticSimplex<Real>::take_step() {
  constexpr Real kInfinite = std::numeric_limits<Real>::infinity();
  Real range = kInfinite;
  std::size_t first = 0;
  for (std::size_t i = 0; i < moving_.size(); ++i) {
    using std::abs;
    if (rate_[i] == 0) continue;
    const Index var = moving_[i];
    const Real room =
        rate_[i] > 0 ? core_.work_upper[var] - core_.value[var] : core_.value[var] - core_.work_lower[var];
    const Real length = std::max<Real>(room, 0) / abs(rate_[i]);
    if (length < range) {
      range = length;
      first = i;
    }
  }
  const PrimalBlock<Real> block = ratio_test_.phase2(alpha_, Real(1), range);
  const Real minimum = is_flat() ? kInfinite : -slope_ / curvature_;
  if (block.unbounded && !std::isfinite(minimum)) {
    core_.proof.assign(static_cast<std::size_t>(core_.num_vars()), Real(0));
    for (std::size_t i = 0; i < moving_.size(); ++i) core_.proof[moving_[i]] = rate_[i];
    for (const Index k : alpha_.index) core_.proof[core_.head[k]] = -alpha_.value[k];
    space_.invalidate();
    return Step::kUnbounded;
  }
  if (block.unbounded || minimum <= block.step) {
    move(minimum);
    ++core_.iterations;
    degenerate_steps_ = 0;
    return Step::kContinue;
  }
  move(block.step);
  last_gradient_ = 0;
  poor_steps_ = 0;
  degenerate_steps_ = block.step > core_.primal_tol ? 0 : degenerate_steps_ + 1;
  if (block.position >= 0) return make_nonbasic(block.position, block.to_upper);
  rest_at_bound(moving_[first], rate_[first] > 0);
  ++core_.iterations;
  return Step::kContinue;
}

template <class Real>
void QuadraticSimplex<Real>::move(Real step) {
  core_.fresh = confirming_ = false;
  if (step == 0) return;
  for (const Index k : alpha_.index) core_.basic_value[k] -= step * alpha_.value[k];
  for (std::size_t i = 0; i < moving_.size(); ++i) core_.value[moving_[i]] += step * rate_[i];
  for (std::size_t j = 0; j < gradient_.size(); ++j) gradient_[j] += step * curved_[j];
}

// A nonbasic variable, superbasic or not, to one of its bounds.
template <class Real>
void QuadraticSimplex<Real>::rest_at_bound(Index var, bool upper) {
  if (space_.contains(var)) space_.remove(space_.slot(var));
  core_.put_nonbasic(var, upper ? Place::kUpper : Place::kLower);
}

// Of the superbasic variables whose entries in row_ are no less than `least`, which one of them is.
template <class Real>
Index QuadraticSimplex<Real>::farthest_from_bounds(Real least) const {
  Index slot = -1;
  Real farthest = 0;
  for (std::size_t j = 0; j < row_.size(); ++j) {
    using std::abs;
    const Index var = space_.variables()[j];
    if (abs(row_[j]) < least) continue;
    const Real distance =
        std::min<Real>(core_.value[var] - core_.work_lower[var], core_.work_upper[var] - core_.value[var]);
    if (slot >= 0 && !(distance > farthest)) continue;
    farthest = distance;
    slot = static_cast<Index>(j);
  }
  return slot;
}

// The basic variable in `position` has met a bound: a superbasic one takes its place, of those with a good pivot the
// one farthest from its bounds.
template <class Real>
typename QuadraticSimplex<Real>::Step QuadraticSimplex<Real>::make_nonbasic(Index position, bool to_upper) {
  using std::abs;
  core_.btran_unit(position, rho_);
  row_.clear();
  Real largest = 0;
  for (const Index var : space_.variables()) {
    row_.push_back(core_.column_dot(var, rho_.value.data()));
    largest = std::max<Real>(largest, abs(row_.back()));
  }
  if (largest < 10 * core_.pivot_tol) return trouble();
  const Index slot = farthest_from_bounds(Real(kGoodPivotShare) * largest);
  const Index entering = space_.variables()[slot];
  core_.ftran_column(entering, column_);
  const Real pivot = column_.value[position];
  if (abs(row_[slot] - pivot) > KernelTolerances<Real>::kPivotMismatch * (1 + abs(pivot))) return trouble();
  space_.exchange(slot, row_);
  core_.pivot(position, entering, core_.value[entering], to_upper ? Place::kUpper : Place::kLower, pivot);
  return Step::kContinue;
}

template <class Real>
typename QuadraticSimplex<Real>::Step QuadraticSimplex<Real>::trouble() {
  if (++troubles_ > kMaxTroubles) return Step::kFailed;
  space_.invalidate();
  core_.report_trouble();
  return Step::kRebuild;
}

template class QuadraticSimplex<double>;
template class QuadraticSimplex<Extended>;

}  // namespace zorvex
