#include "simplex/dual_ratio_test.hpp"

#include <algorithm>
#include <cmath>

namespace zorvex {

namespace {
constexpr double kGrowth = 10;           // each round of the selection looks this much farther
constexpr double kGoodPivotShare = 0.1;  // an earlier group is taken only if the later ones hold no pivot this good
constexpr double kGoodPivot = 1.0;
}  // namespace

template <class Real>
void DualRatioTest<Real>::collect(const SimplexCore<Real>& core, const Scattered<Real>& alpha_row,
                                  const Scattered<Real>& rho, Real sign, Real min_pivot, Result& result) {
  using std::abs;
  candidates_.clear();
  const auto consider = [&](Index var, Real entry) {
    const Place place = core.place[var];
    if (place == Place::kBasic || place == Place::kFixed) return;
    const Real magnitude = abs(entry);
    const Real directed = sign * entry;
    const bool limits = place == Place::kFree || (place == Place::kLower ? directed > 0 : directed < 0);
    if (!limits) return;
    result.best_alpha = std::max(result.best_alpha, magnitude);
    if (magnitude <= min_pivot) return;
    const Real d = core.reduced_cost[var];
    const Real slack = place == Place::kFree ? Real(0) : place == Place::kLower ? d : -d;
    candidates_.push_back({var, magnitude, slack, (std::max<Real>(slack, 0) + core.dual_tol) / magnitude});
  };
  if (alpha_row.dense) {
    for (Index col = 0; col < core.n; ++col) {
      if (alpha_row.value[col] != 0) consider(col, alpha_row.value[col]);
    }
  } else {
    for (const Index col : alpha_row.index) consider(col, alpha_row.value[col]);
  }
  for (const Index row : rho.index) {
    if (rho.value[row] != 0) consider(core.n + row, rho.value[row]);
  }
}

// Moves the candidates whose breakpoints the step can reach before the slope runs out to the front and returns their
// number. Rounds of geometrically growing step lengths replace a full sort.
template <class Real>
std::size_t DualRatioTest<Real>::select_reachable(const SimplexCore<Real>& core, Real slope) {
  std::size_t front = 0;
  Real step = 0;
  Real next_step = std::numeric_limits<Real>::infinity();
  for (const auto& c : candidates_) next_step = std::min(next_step, c.ratio);
  while (front < candidates_.size() && slope >= 0) {
    step = Real(kGrowth) * next_step;
    next_step = std::numeric_limits<Real>::infinity();
    for (std::size_t i = front; i < candidates_.size(); ++i) {
      const DualCandidate<Real> c = candidates_[i];
      if (c.ratio <= step) {
        slope -= c.alpha * (core.work_upper[c.var] - core.work_lower[c.var]);  // -inf when not boxed
        std::swap(candidates_[i], candidates_[front++]);
      } else {
        next_step = std::min(next_step, c.ratio);
      }
    }
  }
  return front;
}

template <class Real>
typename DualRatioTest<Real>::Result DualRatioTest<Real>::choose(const SimplexCore<Real>& core,
                                                                 const Scattered<Real>& alpha_row,
                                                                 const Scattered<Real>& rho, bool above,
                                                                 Real infeasibility, Real min_pivot) {
  Result result;
  flips_.clear();
  group_.clear();
  const Real sign = above ? Real(1) : Real(-1);
  collect(core, alpha_row, rho, sign, min_pivot, result);
  if (candidates_.empty()) return result;
  const std::size_t reachable = select_reachable(core, infeasibility);
  if (reachable == 0) return result;  // values that are not numbers: the caller recomputes
  std::sort(candidates_.begin(), candidates_.begin() + static_cast<std::ptrdiff_t>(reachable),
            [](const DualCandidate<Real>& a, const DualCandidate<Real>& b) {
              return a.ratio < b.ratio || (a.ratio == b.ratio && a.var < b.var);
            });
  // Harris groups: all neighbours whose exact breakpoint lies before the group's relaxed bound.
  group_start_.clear();
  Real slope = infeasibility;
  Real largest = 0;
  std::size_t i = 0;
  while (i < reachable && slope >= 0) {
    group_start_.push_back(i);
    const Real bound = candidates_[i].ratio;
    do {  // the first belongs to its own group even where its slack is so large that the tolerance is lost in it
      const DualCandidate<Real>& c = candidates_[i];
      slope -= c.alpha * (core.work_upper[c.var] - core.work_lower[c.var]);
      largest = std::max(largest, c.alpha);
      ++i;
    } while (i < reachable && candidates_[i].slack <= bound * candidates_[i].alpha);
  }
  const std::size_t end = i;
  // From the last group backwards, the first that holds a good pivot.
  const Real good = std::min<Real>(Real(kGoodPivotShare) * largest, Real(kGoodPivot));
  std::size_t group = group_start_.size();
  std::size_t chosen = 0;
  std::size_t last = end;
  while (group-- > 0) {
    const std::size_t first = group_start_[group];
    chosen = first;
    for (std::size_t k = first; k < last; ++k) {
      if (candidates_[k].alpha > candidates_[chosen].alpha) chosen = k;
    }
    if (candidates_[chosen].alpha >= good) break;
    last = first;
  }
  const std::size_t first = group_start_[group];
  for (std::size_t k = 0; k < first; ++k) flips_.push_back(candidates_[k].var);
  for (std::size_t k = first; k < last; ++k) group_.push_back(candidates_[k].var);
  result.entering = candidates_[chosen].var;
  result.alpha = result.entering < core.n ? alpha_row.value[result.entering] : rho.value[result.entering - core.n];
  return result;
}

template class DualRatioTest<double>;
template class DualRatioTest<Extended>;

}  // namespace zorvex
