#include "simplex/dual_ratio_test.hpp"

#include <algorithm>
#include <cmath>

namespace zorvex {

namespace {
constexpr double kGrowth = 10;           // each round of the selection looks this much farther
constexpr double kGoodPivotShare = 0.1;  // an earlier group is taken only if the later ones hold no pivot this good
constexpr double kGoodPivot = 1.0;
constexpr double kNondegenerateShare =
    0.1;  // of a good pivot that counts as one where nondegenerate steps are preferred
}  // namespace

// By place: by what an entry of the pivot row is multiplied so that it is positive where the variable limits the step.
constexpr std::int8_t kToward[] = {0, 1, -1, 0, 0};

// Appends to `passed` the variables first + index[k] that limit the step with an entry above min_pivot. Without
// branches: which entries pass is hard to predict.
template <class Real>
void DualRatioTest<Real>::sift(const Place* place, Index first, const Scattered<Real>& entries, Real sign,
                               Real min_pivot, Result& result) {
  using std::abs;
  passed_.resize(passed_count_ + entries.index.size());
  std::size_t count = passed_count_;
  Real best = result.best_alpha;
  for (const Index k : entries.index) {
    const Place where = place[first + k];
    const Real directed = sign * entries.value[k];
    const Real limiting = where == Place::kFree ? abs(directed) : directed * kToward[static_cast<int>(where)];
    best = std::max(best, limiting);
    passed_[count] = {first + k, limiting};
    count += limiting > min_pivot ? 1 : 0;
  }
  result.best_alpha = best;
  passed_count_ = count;
}

template <class Real>
void DualRatioTest<Real>::collect(const SimplexCore<Real>& core, const Scattered<Real>& alpha_row,
                                  const Scattered<Real>& rho, Real sign, Real min_pivot, Result& result) {
  passed_count_ = 0;
  sift(core.place.data(), 0, alpha_row, sign, min_pivot, result);
  sift(core.place.data(), core.n, rho, sign, min_pivot, result);
  candidates_.resize(passed_count_);
  for (std::size_t k = 0; k < passed_count_; ++k) {
    const auto [var, alpha] = passed_[k];
    const Place place = core.place[var];
    const Real slack = core.reduced_cost[var] * kToward[static_cast<int>(place)];
    candidates_[k] = {var, alpha, slack, (std::max<Real>(slack, 0) + core.dual_tol) / alpha};
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
  const Real nondegenerate_good = nondegenerate_preferred_ ? Real(kNondegenerateShare) * good : good;
  std::size_t group = group_start_.size();
  std::size_t chosen = 0;
  std::size_t last = end;
  while (group-- > 0) {
    const std::size_t first = group_start_[group];
    chosen = first;
    for (std::size_t k = first; k < last; ++k) {
      if (candidates_[k].alpha > candidates_[chosen].alpha) chosen = k;
    }
    const bool degenerate = candidates_[chosen].slack <= core.dual_tol;
    if (candidates_[chosen].alpha >= (degenerate ? good : nondegenerate_good)) break;
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
