// The bounds that the primal simplex works with where they are not the true ones: widened at random against degenerate
// steps, and shifted to where a basic variable is when rounding or the tolerance of the ratio test took it past them.
#include <algorithm>
#include <cmath>

#include "base/random_stream.hpp"
#include "simplex/primal_simplex.hpp"

namespace zorvex {

namespace {
// Amounts are relative to bounds of magnitude above one. Widening, over PerturbValue: 5e-5 in all needed a third fewer
// iterations than 5e-6 on ramos3 and sandon, and 2e-4 a quarter fewer than 5e-5 on brazil3 and cvs16r128-89, where 100
// other models are no different; steps of the feasibility tolerance's size are lost in the ratio test.
constexpr double kWideningUnit = 1;
constexpr double kMaxShift = 2e-4;          // farthest from its true bound that a violation is taken for rounding
constexpr double kNegligibleExcess = 0.01;  // share of the tolerance
}  // namespace

// Every variable has its own amounts, as large again as the least at most. Nonbasic variables keep the bound that they
// are at until they enter, so that a feasible basis stays so. Logicals of equations keep theirs for good: leaving at a
// widened bound, where they would stay, they could make the equations contradict each other.
template <class Real>
void PrimalSimplex<Real>::perturb_bounds() {
  RandomStream random(options_.seed, "primal bound perturbation");
  using std::abs;
  const auto draw = [&](Real bound) {
    const double amount = kWideningUnit * options_.perturb_value * (1 + random.uniform());
    return std::isfinite(bound) ? Real(amount) * std::max<Real>(1, abs(bound)) : Real(0);
  };
  const auto total = static_cast<std::size_t>(core_.num_vars());
  widening_low_.assign(total, Real(0));
  widening_up_.assign(total, Real(0));
  perturbed_ = bounds_changed_ = true;
  for (Index var = 0; var < core_.num_vars(); ++var) {
    if (core_.lower[var] == core_.upper[var]) continue;
    widening_low_[var] = draw(core_.lower[var]);
    widening_up_[var] = draw(core_.upper[var]);
    if (core_.is_basic(var) || core_.place[var] == Place::kUpper) widen(var, false);
    if (core_.is_basic(var) || core_.place[var] == Place::kLower) widen(var, true);
  }
}

template <class Real>
void PrimalSimplex<Real>::widen(Index var, bool upper) {
  if (upper) {
    core_.work_upper[var] = std::max(core_.work_upper[var], core_.upper[var] + widening_up_[var]);
  } else {
    core_.work_lower[var] = std::min(core_.work_lower[var], core_.lower[var] - widening_low_[var]);
  }
  if (!core_.is_basic(var)) return;
  core_.basic_lower[core_.where[var]] = core_.work_lower[var];
  core_.basic_upper[core_.where[var]] = core_.work_upper[var];
}

// Before the basic variable leaves for a bound that it is beyond: the bound comes to where the variable is, else the
// values would no longer solve the equations. A variable without room between its true bounds stays without.
template <class Real>
void PrimalSimplex<Real>::shift_for_leaving(Index position, bool to_upper) {
  const Index var = core_.head[position];
  const Real bound = to_upper ? core_.basic_upper[position] : core_.basic_lower[position];
  const Real x = core_.basic_value[position];
  const Real excess = to_upper ? x - bound : bound - x;
  if (!options_.may_perturb || excess <= core_.primal_tol * Real(kNegligibleExcess)) return;
  bounds_changed_ = true;
  const bool fixed = core_.lower[var] == core_.upper[var];
  if (to_upper || fixed) core_.work_upper[var] = x;
  if (!to_upper || fixed) core_.work_lower[var] = x;
}

// Violations that came up in a feasible basis: the tolerance of the ratio test and rounding left them. Going back to
// phase 1 for their sake would undo what phase 2 has gained, time and again.
template <class Real>
void PrimalSimplex<Real>::absorb_violations() {
  using std::abs;
  for (Index position = 0; position < core_.m; ++position) {
    if (core_.primal_infeasibility(position) == 0) continue;
    const Index var = core_.head[position];
    const Real x = core_.basic_value[position];
    const bool below = x < core_.basic_lower[position];
    const Real true_bound = below ? core_.lower[var] : core_.upper[var];
    if (abs(x - true_bound) > Real(kMaxShift) * std::max<Real>(1, abs(true_bound))) continue;
    (below ? core_.work_lower[var] : core_.work_upper[var]) = x;
    (below ? core_.basic_lower[position] : core_.basic_upper[position]) = x;
    bounds_changed_ = true;
  }
}

// The basic values no longer fit.
template <class Real>
void PrimalSimplex<Real>::restore_bounds() {
  core_.use_true_bounds();
  core_.settle_nonbasic();
  bounds_changed_ = perturbed_ = was_feasible_ = false;
}

template class PrimalSimplex<double>;
template class PrimalSimplex<Extended>;

}  // namespace zorvex
