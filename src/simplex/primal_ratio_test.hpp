// How far the basic variables let a primal step go.
//   Shapes   alpha over basis positions, packed: along the step the basic variable of position k moves at the rate
//            -direction * alpha[k], direction being +1 or -1.
//   Units    scaled space; step lengths count from the present point, `own_range` is where the moving variables
//            themselves end the step.
//   Source   P. Harris, Math. Program. 5 (1973) 1-28 (two passes); I. Maros, "Computational Techniques of the Simplex
//            Method", Kluwer 2003, ch. 9 (phase 1 with several breakpoints a step).
#pragma once

#include <vector>

#include "simplex/simplex_core.hpp"

namespace zorvex {

// What ends the step.
template <class Real>
struct PrimalBlock {
  Index position = -1;  // of the basic variable that meets a bound; -1: `own_range` ends it, or nothing
  Real step = 0;
  bool to_upper = false;
  bool unbounded = false;
};

template <class Real>
class PrimalRatioTest {
 public:
  explicit PrimalRatioTest(const SimplexCore<Real>& core) : core_(core) {}

  // Basic variables may be infeasible; the sum of infeasibilities falls at the rate `slope` > 0 to begin with.
  PrimalBlock<Real> phase1(const Scattered<Real>& alpha, Real direction, Real own_range, Real slope);
  // Harris' test: bounds may be missed by the feasibility tolerance for the sake of a larger pivot.
  [[nodiscard]] PrimalBlock<Real> phase2(const Scattered<Real>& alpha, Real direction, Real own_range) const;

 private:
  struct Breakpoint {
    Index position;
    Real step;   // length at which the basic variable meets the bound
    Real alpha;  // magnitude of its rate
    bool to_upper;
  };

  const SimplexCore<Real>& core_;
  std::vector<Breakpoint> breakpoints_;
};

}  // namespace zorvex
