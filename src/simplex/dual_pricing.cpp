#include "simplex/dual_pricing.hpp"

#include <algorithm>
#include <cmath>
#include <functional>
#include <new>

namespace zorvex {

namespace {
constexpr Index kAutomaticRows = 15000;   // smaller models never change their pricing by themselves
constexpr double kPartialExponent = 0.6;  // length of the partial list as a power of the row count
constexpr Index kMinPartialSize = 20;
constexpr double kShortListFactor = 15;
constexpr std::size_t kMinHot = 64;   // rows made hot at once, at least; up to twice as many all are
constexpr double kHotFactor = 3;      // times the root of the list's length: balances choices against refills
constexpr double kSamePrice = 1e-14;  // relative difference of prices that counts as rounding
}  // namespace

template <class Real>
void DualPricing<Real>::begin(int pricing) {
  mode_ = pricing == 0   ? DualPricingMode::kRowCount
          : pricing == 2 ? DualPricingMode::kDevex
                         : DualPricingMode::kSteepestEdge;
  locked_ = pricing != -1;
  full_pricing_ = true;
  norm_work_ = row_work_ = list_length_sum_ = list_count_ = 0;
  const auto m = static_cast<std::size_t>(core_.m);
  if (infeasibility_.size() != m) {
    infeasibility_.assign(m, Real(0));
    state_.assign(m, kUnlisted);
    list_.clear();
    hot_list_.clear();
  }
  if (mode_ == DualPricingMode::kRowCount) start_partial();
  if (pricing == 3) reset_weights();
}

template <class Real>
void DualPricing<Real>::start_partial() {
  full_pricing_ = false;
  const auto size = static_cast<Index>(std::pow(static_cast<double>(core_.m), kPartialExponent));
  partial_size_ = std::max(kMinPartialSize, size);
  reset_weights();
}

template <class Real>
void DualPricing<Real>::recompute() {
  cool_all();
  for (const Index position : list_) state_[position] = kUnlisted;
  list_.clear();
  rejected_.clear();
  refresh_all();
  if (full_pricing_ || static_cast<Index>(list_.size()) <= partial_size_) return;
  std::nth_element(list_.begin(), list_.begin() + partial_size_, list_.end(), [this](Index a, Index b) {
    return infeasibility_[a] > infeasibility_[b] || (infeasibility_[a] == infeasibility_[b] && a < b);
  });
  for (auto left_out = list_.begin() + partial_size_; left_out != list_.end(); ++left_out)
    state_[*left_out] = kUnlisted;
  list_.resize(static_cast<std::size_t>(partial_size_));
}

// Without branches: they would be hard to predict. Few rows have to move up.
template <class Real>
bool DualPricing<Real>::measure(Index k) {
  const Real value = core_.basic_value[k];
  const Real above = std::max<Real>(core_.basic_lower[k] - value, value - core_.basic_upper[k]);
  const Real distance = std::max<Real>(above, 0);
  const bool violated = distance > core_.primal_tol;
  const Real violation = distance * static_cast<Real>(violated);
  const Real price = violation * violation;
  infeasibility_[k] = price;
  const State state = state_[k];
  return (violated & (state == kUnlisted)) | ((state != kHot) & (price > hot_price_ * core_.weight[k]));
}

template <class Real>
void DualPricing<Real>::refresh(std::span<const Index> positions) {
  chosen_.resize(std::max(chosen_.size(), positions.size()));
  std::size_t count = 0;
  for (const Index k : positions) {
    chosen_[count] = k;
    count += static_cast<std::size_t>(measure(k));
  }
  move_up(count);
}

template <class Real>
void DualPricing<Real>::refresh_all() {
  chosen_.resize(std::max(chosen_.size(), static_cast<std::size_t>(core_.m)));
  std::size_t count = 0;
  for (Index k = 0; k < core_.m; ++k) {
    chosen_[count] = k;
    count += static_cast<std::size_t>(measure(k));
  }
  move_up(count);
}

template <class Real>
void DualPricing<Real>::move_up(std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const Index k = chosen_[i];
    if (state_[k] == kUnlisted) list_.push_back(k);
    state_[k] = kCold;
    if (!(infeasibility_[k] > hot_price_ * core_.weight[k])) continue;
    state_[k] = kHot;
    hot_list_.push_back(k);
  }
}

template <class Real>
void DualPricing<Real>::reject(Index position) {
  rejected_.push_back(position);
  infeasibility_[position] = 0;
}

template <class Real>
bool DualPricing<Real>::list_is_short() {
  const auto length = static_cast<double>(list_.size());
  list_length_sum_ += length;
  list_count_ += 1;
  return length == 0 || length < kShortListFactor * list_length_sum_ / list_count_ || length < core_.iterations;
}

template <class Real>
void DualPricing<Real>::cool_all() {
  for (const Index position : hot_list_) state_[position] = kCold;
  hot_list_.clear();
  hot_price_ = std::numeric_limits<Real>::infinity();
}

// Forgets feasible rows and heats those of the largest prices.
template <class Real>
void DualPricing<Real>::heat_best() {
  cool_all();
  prices_.clear();
  std::size_t kept = 0;
  for (const Index position : list_) {
    if (infeasibility_[position] == 0) {
      state_[position] = kUnlisted;
      continue;
    }
    list_[kept++] = position;
    prices_.push_back(infeasibility_[position] / core_.weight[position]);
  }
  list_.resize(kept);
  const auto wanted = std::max(kMinHot, static_cast<std::size_t>(kHotFactor * std::sqrt(static_cast<double>(kept))));
  Real strict = 0;
  hot_price_ = 0;
  if (kept > 2 * wanted) {
    const auto nth = prices_.begin() + static_cast<std::ptrdiff_t>(wanted);
    std::nth_element(prices_.begin(), nth, prices_.end(), std::greater<Real>());
    strict = *nth * (1 + Real(kSamePrice));
    hot_price_ = *nth * (1 - Real(kSamePrice));
  }
  heat(strict, kept);
  heat(hot_price_, wanted);  // of rows that share the price as many as are wanted: all may share it
}

// Cold rows above `price` become hot, in the order of the list, until there are `most`.
template <class Real>
void DualPricing<Real>::heat(Real price, std::size_t most) {
  for (const Index position : list_) {
    if (hot_list_.size() >= most) return;
    if (state_[position] == kHot || !(infeasibility_[position] > price * core_.weight[position])) continue;
    state_[position] = kHot;
    hot_list_.push_back(position);
  }
}

template <class Real>
Index DualPricing<Real>::best_of(std::vector<Index>& list, State lower, Real floor) {
  const std::vector<Real>& weight = core_.weight;
  Index best = -1;
  Real best_value = 0;
  Real best_weight = 1;
  std::size_t kept = 0;
  for (const Index position : list) {
    const Real value = infeasibility_[position];
    if (!(value > floor * weight[position])) {
      state_[position] = lower;
      continue;
    }
    list[kept++] = position;
    if (value * best_weight > best_value * weight[position]) {
      best = position;
      best_value = value;
      best_weight = weight[position];
    }
  }
  list.resize(kept);
  return best;
}

template <class Real>
Index DualPricing<Real>::choose() {
  if (full_pricing_) {
    const Index best = best_of(hot_list_, kCold, hot_price_);
    if (best >= 0 || list_.empty()) return best;
    heat_best();
    return best_of(hot_list_, kCold, hot_price_);
  }
  const Index best = best_of(list_, kUnlisted, 0);
  if (!list_is_short()) return best;
  core_.log->sink().write("Full pricing\n");
  full_pricing_ = true;
  const std::vector<Index> rejected = rejected_;
  recompute();
  for (const Index position : rejected) reject(position);
  return choose();
}

template <class Real>
void DualPricing<Real>::update_weights(Index position, const Scattered<Real>& alpha, const Scattered<Real>& tau,
                                       Real rho_norm) {
  if (mode_ == DualPricingMode::kRowCount) return;
  Real* weight = core_.weight.data();
  const Real* entry = alpha.value.data();
  const Real pivot = entry[position];
  const Real leaving_weight = (mode_ == DualPricingMode::kSteepestEdge ? rho_norm : weight[position]) / (pivot * pivot);
  if (mode_ == DualPricingMode::kSteepestEdge) {
    const Real* inner = tau.value.data();
    const Real twice = 2 / pivot;
    for_each_entry(alpha, [=](Index k) {
      const Real updated = weight[k] + entry[k] * (entry[k] * leaving_weight - twice * inner[k]);
      weight[k] = std::max(updated, KernelTolerances<Real>::kMinWeight);
    });
  } else {
    for_each_entry(alpha, [=](Index k) { weight[k] = std::max(weight[k], entry[k] * entry[k] * leaving_weight); });
  }
  weight[position] = std::max(leaving_weight, KernelTolerances<Real>::kMinWeight);
}

template <class Real>
void DualPricing<Real>::reset_weights() {
  std::fill(core_.weight.begin(), core_.weight.end(), Real(1));
  core_.weights_valid = true;
  cool_all();
}

template <class Real>
void DualPricing<Real>::switch_to(DualPricingMode mode) {
  mode_ = mode;
  reset_weights();
}

// All that the lists may come to hold, before anything changes: the mode is not left half way.
template <class Real>
bool DualPricing<Real>::reserve_row_counts() {
  const auto m = static_cast<std::size_t>(core_.m);
  try {
    list_.reserve(m);
    rejected_.reserve(m);
    chosen_.resize(std::max(chosen_.size(), m));
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

template <class Real>
void DualPricing<Real>::reconsider_mode(double iterations) {
  if (locked_ || core_.m < kAutomaticRows || core_.n > 3 * static_cast<Offset>(core_.m)) return;
  if (core_.factor_count % 3 != 0) return;
  if (mode_ == DualPricingMode::kRowCount) {
    const bool troubled = core_.singular_events > 2 && core_.numeric_troubles > 0;
    if (troubled || iterations > 3.0 * core_.m) {
      switch_to(DualPricingMode::kSteepestEdge);
      full_pricing_ = true;
      locked_ = true;
      core_.log->sink().write("simplex pricing changes to steepest edge\n");
    }
    return;
  }
  core_.log->sink().diagnose("Norm_Num = %g, Row_Num=%g\n", norm_work_, row_work_);
  if (!(norm_work_ > 3 * row_work_)) return;
  if (!reserve_row_counts()) {
    core_.log->sink().write("Out of memory in DChangePrice().\n");
    return;
  }
  switch_to(DualPricingMode::kRowCount);
  start_partial();
}

template class DualPricing<double>;
template class DualPricing<Extended>;

}  // namespace zorvex
