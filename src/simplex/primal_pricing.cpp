// Pricing of the primal simplex beyond devex: steepest edge weights and partial pricing.
#include <algorithm>
#include <cmath>

#include "simplex/primal_simplex.hpp"

namespace zorvex {

namespace {
constexpr double kExactWeightWork = 2e6;  // columns times nonzeros up to which the weights of a basis are computed
constexpr double kSectionExponent = 0.6;  // length of a section as a power of the number of variables
constexpr double kMinSection = 20;
}  // namespace

// Weights 1 + ||B^-1 a_j||^2 of the start basis, where they cost little; all one else. Runs from slacks are long: there
// steepest edge saves a third of the devex iterations, and its weights come for free. Others, often a short clean-up,
// use it when asked to.
template <class Real>
void PrimalSimplex<Real>::start_weights() {
  weights_started_ = true;
  const bool slack_basis = !core_.has_basic_columns();
  if (options_.pricing < 0) steepest_edge_ = slack_basis;
  if (!steepest_edge_ || options_.pricing == 3) return;
  const double cost = static_cast<double>(core_.n) * static_cast<double>(core_.lu.factor_nonzeros() + core_.m);
  if (!slack_basis && cost > kExactWeightWork) return;
  for (Index var = 0; var < core_.num_vars(); ++var) {
    if (core_.is_basic(var)) continue;
    alpha_.clear();
    core_.scatter_column(var, Real(1), alpha_);
    if (!slack_basis) core_.lu.ftran(alpha_);
    alpha_.pack(0);
    Real norm = 1;
    for (const Index k : alpha_.index) norm += alpha_.value[k] * alpha_.value[k];
    reference_[var] = norm;
  }
  alpha_.clear();
}

// With the entering column in alpha_, before the basis changes.
template <class Real>
void PrimalSimplex<Real>::prepare_weight_update() {
  tau_.clear();
  entering_norm_ = 1;
  for (const Index k : alpha_.index) {
    tau_.value[k] = alpha_.value[k];
    entering_norm_ += alpha_.value[k] * alpha_.value[k];
  }
  tau_.index = alpha_.index;
  core_.lu.btran(tau_);
  core_.work += static_cast<double>(tau_.dense ? core_.m : static_cast<Index>(tau_.index.size()));
}

// The edge of the variable loses `ratio` times the entering one. Rounding never takes it below what that leaves.
template <class Real>
Real PrimalSimplex<Real>::updated_weight(Index var, Real ratio) const {
  const Real product = core_.column_dot(var, tau_.value.data());
  const Real weight = reference_[var] + ratio * (ratio * entering_norm_ - 2 * product);
  return std::max<Real>(weight, 1 + ratio * ratio);
}

// The most infeasible candidate of the next section that has any.
template <class Real>
Index PrimalSimplex<Real>::choose_from_section() {
  std::size_t kept = 0;
  for (const Index var : candidates_) {
    if (core_.is_basic(var) || core_.dual_infeasibility(var) == 0) {
      listed_[var] = 0;
    } else {
      candidates_[kept++] = var;
    }
  }
  candidates_.resize(kept);
  const double wanted = std::pow(static_cast<double>(core_.num_vars()), kSectionExponent);
  const auto length = static_cast<std::size_t>(std::max(kMinSection, wanted));
  Index best = -1;
  Real most = 0;
  for (std::size_t seen = 0; seen < kept && (best < 0 || seen < length); ++seen) {
    const Index var = candidates_[(section_ + seen) % kept];
    const Real infeasibility = core_.dual_infeasibility(var);
    if (infeasibility <= most || std::find(rejected_.begin(), rejected_.end(), var) != rejected_.end()) continue;
    best = var;
    most = infeasibility;
  }
  if (kept > 0) section_ = (section_ + length) % kept;
  return best;
}

template class PrimalSimplex<double>;
template class PrimalSimplex<Extended>;

}  // namespace zorvex
