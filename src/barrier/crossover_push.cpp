#include "barrier/crossover_push.hpp"

#include <algorithm>
#include <cmath>

namespace zorvex {

namespace {
constexpr double kLeastRate = 1e-6;       // entries of a column or row that can stop a push, and become pivots
constexpr double kNoReducedCost = 1e-13;  // of a basic variable: nothing to push
constexpr double kMismatch = 1e-6;        // relative disagreement of the pivot by row and by column
}  // namespace

template <class Real>
CrossoverPush<Real>::CrossoverPush(SimplexCore<Real>& core, SimplexLog& log) : core_(core), log_(log) {}

template <class Real>
Place CrossoverPush<Real>::own_place(Index var) const {
  return sides_.side[var] == Side::kUpper ? Place::kUpper : Place::kLower;
}

template <class Real>
Real CrossoverPush<Real>::own_bound(Index var) const {
  return sides_.side[var] == Side::kUpper ? core_.work_upper[var] : core_.work_lower[var];
}

template <class Real>
void CrossoverPush<Real>::place_off(Index var) {
  pending_primal_[var] = 1;
  core_.place[var] = Place::kFree;
  core_.value[var] = sides_.value[var];
}

template <class Real>
SolveStatus CrossoverPush<Real>::start(const CrossoverBasis<Real>& basis, CrossoverSides<Real> sides) {
  sides_ = std::move(sides);
  const auto total = static_cast<std::size_t>(core_.num_vars());
  pending_dual_.assign(total, 0);
  pending_primal_.assign(total, 0);
  alpha_.resize(core_.m);
  rho_.resize(core_.m);
  row_.resize(core_.n);
  core_.use_true_bounds();
  core_.use_true_costs();
  core_.rows_valid = core_.factor_valid = core_.weights_valid = core_.warm = false;
  std::fill(core_.where.begin(), core_.where.end(), Index(-1));
  Index position = 0;
  for (Index var = 0; var < core_.num_vars(); ++var) {
    if (basis.basic[var]) {
      core_.place[var] = Place::kBasic;
      core_.head[position] = var;
      core_.where[var] = position++;
    } else {
      core_.put_nonbasic(var, own_place(var));
    }
  }
  const SolveStatus factored = factorize();  // with repairs: only now is it known what is basic
  if (factored != SolveStatus::kLoaded) return factored;
  for (Index var = 0; var < core_.num_vars(); ++var) {
    const bool off = sides_.side[var] == Side::kOff;
    core_.reduced_cost[var] = sides_.dual[var];
    if (!core_.is_basic(var)) {
      if (off) place_off(var);
    } else {
      pending_dual_[var] = !off;
    }
  }
  core_.rebuild_rows();
  core_.values_maintained = false;
  core_.compute_primal();
  const SolveStatus status = remove_near_dependencies();
  for (Index p = 0; p < core_.m; ++p) set_position_bounds(p);
  return status == SolveStatus::kLoaded ? check_limits() : status;
}

// Bound and basic variables are held where they are; the bounds of others give way to their values.
template <class Real>
void CrossoverPush<Real>::set_position_bounds(Index position) {
  const Index var = core_.head[position];
  const Real x = core_.basic_value[position];
  if (bound_and_basic(var)) {
    core_.basic_lower[position] = core_.basic_upper[position] = x;
    return;
  }
  core_.basic_lower[position] = core_.work_lower[var] = std::min(core_.work_lower[var], x);
  core_.basic_upper[position] = core_.work_upper[var] = std::max(core_.work_upper[var], x);
}

template <class Real>
SolveStatus CrossoverPush<Real>::check_limits() {
  const SolveStatus asked = core_.poll();
  if (asked != SolveStatus::kLoaded) return asked;
  return core_.iterations >= core_.iteration_limit ? SolveStatus::kIterationLimit : SolveStatus::kLoaded;
}

template <class Real>
SolveStatus CrossoverPush<Real>::factorize() {
  SimplexOutcome failure = SimplexOutcome::kNumeric;
  if (core_.factorize(failure)) return SolveStatus::kLoaded;
  return failure == SimplexOutcome::kNumeric ? SolveStatus::kNumeric : core_.stop->poll();
}

template <class Real>
SolveStatus CrossoverPush<Real>::refactor() {
  const SolveStatus factored = factorize();
  if (factored != SolveStatus::kLoaded) return factored;
  core_.compute_primal();
  for (Index position = 0; position < core_.m; ++position) {
    const Index var = core_.head[position];
    const bool held = bound_and_basic(var);
    core_.basic_lower[position] = held ? core_.basic_value[position] : core_.work_lower[var];
    core_.basic_upper[position] = held ? core_.basic_value[position] : core_.work_upper[var];
  }
  return SolveStatus::kLoaded;
}

// --- primal pushes ---

template <class Real>
SolveStatus CrossoverPush<Real>::push_primal() {
  std::vector<Index> list;
  for (Index var = 0; var < core_.num_vars(); ++var) {
    if (pending_primal_[var] && !core_.is_basic(var)) list.push_back(var);
  }
  std::stable_sort(list.begin(), list.end(), [&](Index a, Index b) { return sides_.margin[a] < sides_.margin[b]; });
  for (std::size_t k = 0; k < list.size(); ++k) {
    report(SimplexLog::Kind::kPrimalPush, static_cast<double>(list.size() - k), k == 0);
    if (const SolveStatus status = check_limits(); status != SolveStatus::kLoaded) return status;
    if (core_.needs_refactor()) {
      if (const SolveStatus status = refactor(); status != SolveStatus::kLoaded) return status;
    }
    push_variable(list[k]);
  }
  report(SimplexLog::Kind::kPrimalPush, 0, true);
  return SolveStatus::kLoaded;
}

// To the nearer bound, or to the other one if only that can be reached; a variable without bounds goes to zero.
template <class Real>
void CrossoverPush<Real>::push_variable(Index var) {
  pending_primal_[var] = 0;
  ++pushes_;
  core_.ftran_column(var, alpha_);
  const Real x = core_.value[var];
  const Real down = core_.work_lower[var] - x;
  const Real up = core_.work_upper[var] - x;
  const bool free = !std::isfinite(down) && !std::isfinite(up);
  const Real near = free ? -x : up < -down ? up : down;
  const Real far = up < -down ? down : up;
  const Block block = block_of_move(near);
  Real distance = near;
  if (block.position >= 0) {
    distance = far;
    if (free || !std::isfinite(far) || block_of_move(far).position >= 0) {
      enter_off(var, block);
      return;
    }
  }
  move_basics(distance);
  core_.put_nonbasic(var, free ? Place::kFree : distance == up ? Place::kUpper : Place::kLower);
}

// Two passes: the step that bounds relaxed by the tolerance allow, then the largest pivot among what blocks up to
// there.
template <class Real>
typename CrossoverPush<Real>::Block CrossoverPush<Real>::block_of_move(Real distance) const {
  using std::abs;
  const Real direction = distance < 0 ? Real(-1) : Real(1);
  const auto gap = [&](Index k, Real rate) {
    const Real room =
        rate > 0 ? core_.basic_upper[k] - core_.basic_value[k] : core_.basic_value[k] - core_.basic_lower[k];
    return std::max<Real>(room, 0);
  };
  Real relaxed = abs(distance);
  bool blocked = false;
  for (const Index k : alpha_.index) {
    const Real rate = -direction * alpha_.value[k];
    if (abs(rate) <= Real(kLeastRate)) continue;
    const Real limit = (gap(k, rate) + core_.primal_tol) / abs(rate);
    if (limit >= relaxed) continue;
    relaxed = limit;
    blocked = true;
  }
  Block block;
  if (!blocked) return block;
  Real best = 0;
  Real best_rate = 1;
  for (const Index k : alpha_.index) {
    const Real rate = -direction * alpha_.value[k];
    if (abs(rate) <= std::max<Real>(best, Real(kLeastRate)) || gap(k, rate) > relaxed * abs(rate)) continue;
    best = abs(rate);
    best_rate = rate;
    block.position = k;
  }
  const Index leaving = core_.head[block.position];
  block.to_upper = best_rate > 0;
  const Real target = bound_and_basic(leaving) ? own_bound(leaving)
                      : block.to_upper         ? core_.basic_upper[block.position]
                                               : core_.basic_lower[block.position];
  block.step = direction * (target - core_.basic_value[block.position]) / best_rate;
  return block;
}

// The variable of alpha_ moves by `step`.
template <class Real>
void CrossoverPush<Real>::move_basics(Real step) {
  if (step == 0) return;
  for (const Index k : alpha_.index) core_.basic_value[k] -= step * alpha_.value[k];
}

template <class Real>
void CrossoverPush<Real>::enter_off(Index var, const Block& block) {
  const Index leaving = core_.head[block.position];
  const Place place = bound_and_basic(leaving) ? own_place(leaving) : block.to_upper ? Place::kUpper : Place::kLower;
  pending_dual_[leaving] = 0;
  move_basics(block.step);
  core_.pivot(block.position, var, core_.value[var] + block.step, place, alpha_.value[block.position]);
}

// --- dual pushes ---

template <class Real>
SolveStatus CrossoverPush<Real>::push_dual() {
  using std::abs;
  std::vector<Index> list;
  for (Index var = 0; var < core_.num_vars(); ++var) {
    if (bound_and_basic(var) && core_.is_basic(var)) list.push_back(var);
  }
  for (std::size_t k = 0; k < list.size(); ++k) {
    report(SimplexLog::Kind::kDualPush, static_cast<double>(list.size() - k), k == 0);
    if (const SolveStatus status = check_limits(); status != SolveStatus::kLoaded) return status;
    if (core_.needs_refactor()) {
      if (const SolveStatus status = refactor(); status != SolveStatus::kLoaded) return status;
    }
    const Index var = list[k];
    if (!core_.is_basic(var)) continue;  // a repair of the basis has removed it
    if (push_reduced_cost(var) || core_.lu.num_updates() == 0) continue;
    // The factors have aged too much for this pivot.
    if (const SolveStatus status = refactor(); status != SolveStatus::kLoaded) return status;
    if (core_.is_basic(var)) (void)push_reduced_cost(var);
  }
  report(SimplexLog::Kind::kDualPush, 0, true);
  return SolveStatus::kLoaded;
}

// False: row and column disagree on the pivot, nothing has changed.
template <class Real>
bool CrossoverPush<Real>::push_reduced_cost(Index var) {
  using std::abs;
  const Index position = core_.where[var];
  const Real d = core_.reduced_cost[var];
  Real step = abs(d);
  if (step > Real(kNoReducedCost)) {
    core_.btran_unit(position, rho_);
    core_.price(rho_, row_);
    const Real direction = d < 0 ? Real(-1) : Real(1);
    const Index entering = block_of_dual(direction, step);
    if (entering >= 0) {
      if (!exchange(position, entering)) return false;
      move_duals(direction * step);
      core_.reduced_cost[var] = d - direction * step;
      core_.reduced_cost[entering] = 0;
      ++pushes_;
      return true;
    }
    move_duals(d);
    ++pushes_;
  }
  core_.reduced_cost[var] = 0;
  pending_dual_[var] = 0;
  set_position_bounds(position);
  return true;
}

// Calls visit(variable, entry) for the nonbasic variables of the pivot row that can enter the basis.
template <class Real>
template <class Visit>
void CrossoverPush<Real>::visit_pivot_row(Visit&& visit) const {
  const auto look = [&](Index var, Real entry) {
    if (!core_.is_basic(var) && core_.place[var] != Place::kFixed) visit(var, entry);
  };
  for (const Index col : row_.index) look(col, row_.value[col]);
  for (const Index row : rho_.index) look(core_.n + row, rho_.value[row]);
}

// Room of a reduced cost that moves at `rate`, infinite when nothing bounds it.
template <class Real>
Real CrossoverPush<Real>::dual_ratio(Index var, Real rate) const {
  const Real d = core_.reduced_cost[var];
  switch (core_.place[var]) {
    case Place::kLower:
      return rate < 0 ? std::max<Real>(d, 0) : std::numeric_limits<Real>::infinity();
    case Place::kUpper:
      return rate > 0 ? std::max<Real>(-d, 0) : std::numeric_limits<Real>::infinity();
    default:
      return 0;
  }
}

// The variable whose reduced cost stops a move of the basic one's by at most `step` against `direction`, or -1. As
// block_of_move, in two passes; `step` becomes the length that can be gone.
template <class Real>
Index CrossoverPush<Real>::block_of_dual(Real direction, Real& step) const {
  using std::abs;
  Real relaxed = step;
  bool blocked = false;
  visit_pivot_row([&](Index var, Real entry) {
    if (abs(entry) <= Real(kLeastRate)) return;
    const Real limit = (dual_ratio(var, -direction * entry) + core_.dual_tol) / abs(entry);
    if (limit >= relaxed) return;
    relaxed = limit;
    blocked = true;
  });
  if (!blocked) return -1;
  Index entering = -1;
  Real best = Real(kLeastRate);
  Real best_ratio = 0;
  visit_pivot_row([&](Index var, Real entry) {
    const Real ratio = dual_ratio(var, -direction * entry);
    if (abs(entry) <= best || ratio > relaxed * abs(entry)) return;
    best = abs(entry);
    best_ratio = ratio / best;
    entering = var;
  });
  step = std::min(step, best_ratio);
  return entering;
}

// The reduced cost of the basic variable falls by `step`.
template <class Real>
void CrossoverPush<Real>::move_duals(Real step) {
  if (step == 0) return;
  for (const Index col : row_.index) {
    if (!core_.is_basic(col)) core_.reduced_cost[col] -= step * row_.value[col];
  }
  for (const Index row : rho_.index) {
    if (!core_.is_basic(core_.n + row)) core_.reduced_cost[core_.n + row] -= step * rho_.value[row];
  }
}

// The bound and basic variable of the position leaves for its bound, `entering` takes its place. False when the pivot
// cannot be trusted.
template <class Real>
bool CrossoverPush<Real>::exchange(Index position, Index entering) {
  using std::abs;
  core_.ftran_column(entering, alpha_);
  const Real pivot = alpha_.value[position];
  const Real by_row = entering < core_.n ? row_.value[entering] : rho_.value[entering - core_.n];
  if (abs(pivot - by_row) > Real(kMismatch) * (1 + abs(pivot)) || abs(pivot) <= Real(kLeastRate) / 2) return false;
  const Index leaving = core_.head[position];
  const Real step = (core_.basic_value[position] - own_bound(leaving)) / pivot;
  move_basics(step);
  pending_dual_[leaving] = 0;
  pending_primal_[entering] = 0;
  core_.pivot(position, entering, core_.value[entering] + step, own_place(leaving), pivot);
  return true;
}

// --- end and log ---

template <class Real>
SolveStatus CrossoverPush<Real>::finish() {
  core_.use_true_bounds();
  core_.use_true_costs();
  core_.settle_nonbasic();
  if (core_.lu.num_updates() > 0 || !core_.factor_valid) {
    if (const SolveStatus status = refactor(); status != SolveStatus::kLoaded) return status;
  } else {
    core_.compute_primal();
  }
  core_.compute_duals();
  primal_infeasibilities_ = dual_infeasibilities_ = 0;
  for (Index position = 0; position < core_.m; ++position) {
    core_.basic_lower[position] = core_.work_lower[core_.head[position]];
    core_.basic_upper[position] = core_.work_upper[core_.head[position]];
    if (core_.primal_infeasibility(position) > 0) ++primal_infeasibilities_;
  }
  for (Index var = 0; var < core_.num_vars(); ++var) {
    if (!core_.is_basic(var) && core_.dual_infeasibility(var) > 0) ++dual_infeasibilities_;
  }
  if (!log_.settings().root || log_.due()) {
    log_.crossover(SimplexLog::Kind::kPushDone, 0, static_cast<double>(core_.sum_primal_infeasibility()),
                   static_cast<double>(core_.sum_dual_infeasibility()));
  }
  return check_limits();
}

// Violation of the true bounds by basic variables.
template <class Real>
Real CrossoverPush<Real>::sum_outside_bounds() const {
  Real sum = 0;
  for (Index position = 0; position < core_.m; ++position) {
    const Index var = core_.head[position];
    const Real x = core_.basic_value[position];
    sum += std::max<Real>(0, std::max<Real>(core_.lower[var] - x, x - core_.upper[var]));
  }
  return sum;
}

template <class Real>
void CrossoverPush<Real>::report(SimplexLog::Kind kind, double left, bool force) {
  if (!log_.sink().enabled() || !(log_.due() || (force && !log_.settings().root))) return;
  if (kind == SimplexLog::Kind::kPrimalPush) {
    log_.crossover(kind, left, static_cast<double>(sum_outside_bounds()), 0);
    return;
  }
  using std::abs;
  Real sum = core_.sum_dual_infeasibility();
  for (Index position = 0; position < core_.m; ++position) sum += abs(core_.reduced_cost[core_.head[position]]);
  log_.crossover(kind, left, 0, static_cast<double>(sum));
}

template class CrossoverPush<double>;
template class CrossoverPush<Extended>;

}  // namespace zorvex
