// Pricing of the primal simplex beyond devex: steepest edge weights and partial pricing.
#include <algorithm>
#include <cmath>

#include "simplex/primal_simplex.hpp"

namespace zorvex {

namespace {
constexpr double kExactWeightWork = 2e6;  // columns times nonzeros up to which the weights of a basis are computed
constexpr double kSectionExponent = 0.6;  // length of a section as a power of the number of variables
constexpr double kMinSection = 20;
constexpr double kDevexMistake = 3;  // a weight so many times the exact one counts as poor
constexpr int kPoorWeights = 3;      // and so many of them renew the reference framework
constexpr double kMinDevexWeight = 1e-4;
}  // namespace

// Runs from slacks are long: there steepest edge saves half of the devex iterations. It starts with unit weights: the
// exact ones 1 + ||a_j||^2 of the slack basis hold columns with many entries back for long, which costs more than it
// brings in the sum (bley_xs1noM 17600 iterations for 4700, ns1116954 8700 for 3400; but ns1606230 6900 for 13100,
// neos-1601936 4900 for 11700, and 4% more on the medium LPs). Square roots of the exact weights lose bley_xs1noM.
// Others, often a short clean-up, use steepest edge when asked to; their exact weights are computed where they cost
// little.
template <class Real>
void PrimalSimplex<Real>::start_weights() {
  weights_started_ = true;
  const bool slack_basis = !core_.has_basic_columns();
  if (options_.pricing < 0) steepest_edge_ = slack_basis;
  if (!steepest_edge_) reset_reference();
  if (options_.pricing != 1) return;
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
    weight_[var] = norm;
  }
  alpha_.clear();
}

// With the entering column in alpha_, before the basis changes.
template <class Real>
void PrimalSimplex<Real>::prepare_weight_update(Index entering) {
  if (!steepest_edge_) {
    measure_in_reference(entering);
    return;
  }
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

// The exact devex weight of the entering variable. Weights found far above it bring on a new reference framework.
template <class Real>
void PrimalSimplex<Real>::measure_in_reference(Index entering) {
  if (poor_weights_ > kPoorWeights) reset_reference();
  entering_norm_ = in_reference_[entering] ? Real(1) : Real(0);
  for (const Index k : alpha_.index) {
    if (in_reference_[core_.head[k]]) entering_norm_ += alpha_.value[k] * alpha_.value[k];
  }
  if (weight_[entering] > Real(kDevexMistake) * entering_norm_) ++poor_weights_;
  entering_norm_ = std::max<Real>(entering_norm_, Real(kMinDevexWeight));
}

// The nonbasic variables become the reference framework, in which all weights are one.
template <class Real>
void PrimalSimplex<Real>::reset_reference() {
  std::fill(weight_.begin(), weight_.end(), Real(1));
  in_reference_.resize(weight_.size());
  for (Index var = 0; var < core_.num_vars(); ++var) in_reference_[var] = !core_.is_basic(var);
  poor_weights_ = 0;
}

// The edge of the variable loses `ratio` times the entering one. Rounding never takes it below what that leaves.
template <class Real>
Real PrimalSimplex<Real>::updated_weight(Index var, Real ratio) const {
  const Real product = core_.column_dot(var, tau_.value.data());
  const Real weight = weight_[var] + ratio * (ratio * entering_norm_ - 2 * product);
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
