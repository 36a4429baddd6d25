#include "simplex/primal_ratio_test.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zorvex {

namespace {
constexpr double kGoodPivotShare = 0.1;
}  // namespace

// Long-step test: passes breakpoints while the sum of infeasibilities still falls, then takes a good pivot among the
// last ones passed.
template <class Real>
PrimalBlock<Real> PrimalRatioTest<Real>::phase1(const Scattered<Real>& alpha, Real direction, Real own_range,
                                                Real slope) {
  using std::abs;
  breakpoints_.clear();
  const Real tolerance = core_.primal_tol;
  for (const Index k : alpha.index) {
    const Real rate = -direction * alpha.value[k];  // of the basic variable
    const Real magnitude = abs(rate);
    if (magnitude <= KernelTolerances<Real>::kRatioPivot) continue;
    const Real x = core_.basic_value[k];
    const Real low = core_.basic_lower[k];
    const Real up = core_.basic_upper[k];
    if (rate > 0) {
      if (x < low - tolerance) breakpoints_.push_back({k, (low - x) / magnitude, magnitude, false});
      if (x <= up + tolerance && std::isfinite(up)) {
        breakpoints_.push_back({k, std::max<Real>(0, up - x) / magnitude, magnitude, true});
      }
    } else {
      if (x > up + tolerance) breakpoints_.push_back({k, (x - up) / magnitude, magnitude, true});
      if (x >= low - tolerance && std::isfinite(low)) {
        breakpoints_.push_back({k, std::max<Real>(0, x - low) / magnitude, magnitude, false});
      }
    }
  }
  // A heap: the few breakpoints that are passed come out in order, at the back.
  const auto later = [](const Breakpoint& a, const Breakpoint& b) {
    return a.step > b.step || (a.step == b.step && a.position > b.position);
  };
  std::make_heap(breakpoints_.begin(), breakpoints_.end(), later);
  Real largest = 0;
  auto heap_end = breakpoints_.end();
  while (heap_end != breakpoints_.begin() && slope > 0 && breakpoints_.front().step < own_range) {
    slope -= breakpoints_.front().alpha;
    largest = std::max(largest, breakpoints_.front().alpha);
    std::pop_heap(breakpoints_.begin(), heap_end--, later);
  }
  PrimalBlock<Real> block;
  if (slope > 0 && std::isfinite(own_range)) {
    block.step = own_range;
    return block;
  }
  if (heap_end == breakpoints_.end()) {
    block.unbounded = true;
    return block;
  }
  // The last one passed has a good pivot, or one of those before.
  auto chosen = heap_end;
  while (chosen->alpha < Real(kGoodPivotShare) * largest) ++chosen;
  block.position = chosen->position;
  block.step = chosen->step;
  block.to_upper = chosen->to_upper;
  return block;
}

template <class Real>
PrimalBlock<Real> PrimalRatioTest<Real>::phase2(const Scattered<Real>& alpha, Real direction, Real own_range) const {
  using std::abs;
  const Real tolerance = core_.primal_tol;
  Real relaxed = std::numeric_limits<Real>::infinity();
  const auto distance = [&](Index k, Real rate) {
    return rate > 0 ? core_.basic_upper[k] - core_.basic_value[k] : core_.basic_value[k] - core_.basic_lower[k];
  };
  for (const Index k : alpha.index) {
    const Real rate = -direction * alpha.value[k];
    if (abs(rate) <= KernelTolerances<Real>::kRatioPivot) continue;
    relaxed = std::min<Real>(relaxed, std::max<Real>(distance(k, rate) + tolerance, 0) / abs(rate));
  }
  PrimalBlock<Real> block;
  if (own_range <= relaxed && std::isfinite(own_range)) {
    block.step = own_range;
    return block;
  }
  if (!std::isfinite(relaxed)) {
    block.unbounded = true;
    return block;
  }
  Real best = 0;
  for (const Index k : alpha.index) {
    const Real rate = -direction * alpha.value[k];
    const Real magnitude = abs(rate);
    if (magnitude <= KernelTolerances<Real>::kRatioPivot || magnitude <= best) continue;
    const Real gap = distance(k, rate);
    if (gap > relaxed * magnitude) continue;
    best = magnitude;
    block.position = k;
    block.step = std::max<Real>(0, gap / magnitude);
    block.to_upper = rate > 0;
  }
  return block;
}

template class PrimalRatioTest<double>;
template class PrimalRatioTest<Extended>;

}  // namespace zorvex
