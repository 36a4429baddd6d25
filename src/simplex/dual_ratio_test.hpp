// Dual ratio test with bound flipping: how far the dual step can go while the dual objective still rises, which
// variable enters, and which boxed variables change sides on the way.
//   Source   I. Maros, EJOR 149 (2003) 35-51; A. Koberstein, "The dual simplex method", thesis, Paderborn 2005, ch. 6;
//            tolerances within a group of breakpoints as P. Harris, Math. Program. 5 (1973) 1-28.
#pragma once

#include <vector>

#include "simplex/simplex_core.hpp"

namespace zorvex {

template <class Real>
struct DualCandidate {
  Index var;
  Real alpha;  // pivot row entry, signed so that the reduced cost of `var` moves towards its bound: > 0
  Real slack;  // |reduced cost| in its right direction; may be slightly negative
  Real ratio;  // dual step at which the reduced cost has passed its bound by the dual tolerance
};

template <class Real>
class DualRatioTest {
 public:
  struct Result {
    Index entering = -1;  // -1: the dual objective can rise without end
    Real alpha = 0;       // signed pivot row entry of the entering variable
    Real best_alpha = 0;  // largest |alpha| over all candidates, however small
  };

  // `infeasibility` > 0 is the leaving variable's distance from its bound; `above` tells that it lies above its upper
  // bound. alpha_row holds the pivot row over the columns, rho over the logicals, both sparse.
  Result choose(const SimplexCore<Real>& core, const Scattered<Real>& alpha_row, const Scattered<Real>& rho, bool above,
                Real infeasibility, Real min_pivot);

  // Of groups of breakpoints with a positive step a poorer pivot will do, if an earlier one had the step zero.
  void prefer_nondegenerate(bool preferred) { nondegenerate_preferred_ = preferred; }

  // After choose(): the boxed variables that change sides, and the candidates passed by tolerance within the last
  // group, whose reduced costs may end slightly infeasible.
  [[nodiscard]] const std::vector<Index>& flips() const { return flips_; }
  [[nodiscard]] const std::vector<Index>& group() const { return group_; }

 private:
  struct Passed {
    Index var;
    Real alpha;
  };
  void sift(const Place* place, Index first, const Scattered<Real>& entries, Real sign, Real min_pivot, Result& result);
  void collect(const SimplexCore<Real>& core, const Scattered<Real>& alpha_row, const Scattered<Real>& rho, Real sign,
               Real min_pivot, Result& result);
  std::size_t select_reachable(const SimplexCore<Real>& core, Real slope);

  std::vector<Passed> passed_;
  std::size_t passed_count_ = 0;
  std::vector<DualCandidate<Real>> candidates_;
  std::vector<std::size_t> group_start_;
  std::vector<Index> flips_, group_;
  bool nondegenerate_preferred_ = false;
};

}  // namespace zorvex
