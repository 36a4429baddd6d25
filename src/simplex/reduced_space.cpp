#include "simplex/reduced_space.hpp"

#include <algorithm>
#include <cmath>

namespace zorvex {

namespace {
constexpr Index kPollInterval = 16;  // variables between two looks at the clock
}  // namespace

template <class Real>
void ReducedSpace<Real>::reset() {
  slot_.assign(static_cast<std::size_t>(core_.num_vars()), -1);
  variables_.clear();
  hessian_.clear();
  column_.resize(core_.m);
  multipliers_.resize(core_.m);
  product_.assign(static_cast<std::size_t>(core_.n), Real(0));
  valid_ = false;
  updates_ = 0;
}

template <class Real>
bool ReducedSpace<Real>::refill() {
  const auto is_superbasic = [&](Index var) { return !core_.is_basic(var) && core_.place[var] == Place::kFree; };
  if (valid_) {
    for (Index slot = static_cast<Index>(variables_.size()); slot-- > 0;) {
      if (!is_superbasic(variables_[slot])) remove(slot);
    }
    if (hessian_.diagonal_ratio() <= KernelTolerances<Real>::kCurvature) valid_ = false;
  }
  if (!valid_) {
    for (const Index var : variables_) slot_[var] = -1;
    variables_.clear();
    hessian_.clear();
    valid_ = true;
    updates_ = 0;
  }
  std::vector<Real> r;
  Index looked_at = 0;
  for (Index var = 0; var < core_.num_vars(); ++var) {
    if (contains(var) || !is_superbasic(var)) continue;
    if (++looked_at % kPollInterval == 0 && core_.poll() != SolveStatus::kLoaded) {
      valid_ = false;
      return false;
    }
    const Real own = products(var, r);
    Real excess = own;
    for (const Real entry : r) excess -= entry * entry;
    if (own > 0 && excess > KernelTolerances<Real>::kCurvature * own) {
      hessian_.append(r, excess);
      slot_[var] = static_cast<Index>(variables_.size());
      variables_.push_back(var);
    }
  }
  return true;
}

template <class Real>
Real ReducedSpace<Real>::products(Index var, std::vector<Real>& r) {
  r.assign(variables_.size(), Real(0));
  core_.ftran_column(var, column_);
  std::fill(product_.begin(), product_.end(), Real(0));
  Offset touched = var < core_.n ? form_.add_column(var, Real(1), product_) : 0;
  for (const Index k : column_.index) {
    if (core_.head[k] < core_.n) touched += form_.add_column(core_.head[k], -column_.value[k], product_);
  }
  core_.work += static_cast<double>(touched);
  if (touched == 0) return 0;
  multipliers_.clear();
  multipliers_.dense = true;
  for (Index k = 0; k < core_.m; ++k) {
    multipliers_.value[k] = core_.head[k] < core_.n ? product_[core_.head[k]] : Real(0);
  }
  if (core_.m > 0) core_.lu.btran(multipliers_);
  const auto product_with = [&](Index other) {
    return (other < core_.n ? product_[other] : Real(0)) - core_.column_dot(other, multipliers_.value.data());
  };
  for (std::size_t j = 0; j < variables_.size(); ++j) r[j] = product_with(variables_[j]);
  core_.work += static_cast<double>(core_.m) + static_cast<double>(r.size() * r.size());
  const Real own = product_with(var);
  hessian_.solve_transposed(r);
  return own;
}

template <class Real>
void ReducedSpace<Real>::solve(std::vector<Real>& x) const {
  hessian_.solve_transposed(x);
  hessian_.solve(x);
}

template <class Real>
void ReducedSpace<Real>::append(Index var, const std::vector<Real>& r, Real excess) {
  hessian_.append(r, excess);
  slot_[var] = static_cast<Index>(variables_.size());
  variables_.push_back(var);
  ++updates_;
}

template <class Real>
void ReducedSpace<Real>::drop_from_list(Index slot) {
  slot_[variables_[slot]] = -1;
  variables_.erase(variables_.begin() + slot);
  for (std::size_t j = static_cast<std::size_t>(slot); j < variables_.size(); ++j) {
    slot_[variables_[j]] = static_cast<Index>(j);
  }
  ++updates_;
}

template <class Real>
void ReducedSpace<Real>::remove(Index slot) {
  if (valid_) hessian_.remove(slot);
  drop_from_list(slot);
}

template <class Real>
void ReducedSpace<Real>::exchange(Index slot, std::vector<Real>& row) {
  if (valid_) {
    const Real pivot = row[slot];
    for (Real& entry : row) entry = -entry / pivot;
    hessian_.exchange(slot, row);
  }
  drop_from_list(slot);
}

template class ReducedSpace<double>;
template class ReducedSpace<Extended>;

}  // namespace zorvex
