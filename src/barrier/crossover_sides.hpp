// Which variables an interior point has at a bound and which off their bounds: the guess of the optimal partition that
// crossover starts from.
//   Rule    a variable is at the bound its reduced cost prices when its distance from there, relative to the size of
//           the primal solution, is below its reduced cost relative to the size of the dual one: on the central path
//           the products of the two are all equal, and the smaller factor tends to zero.
//   Space   the scaled space of the kernel; variables are columns, then logicals.
#pragma once

#include <vector>

#include "barrier/crossover.hpp"
#include "simplex/lp_kernel.hpp"

namespace zorvex {

enum class Side : std::int8_t { kLower, kUpper, kOff };

template <class Real>
struct CrossoverSides {
  std::vector<Side> side;    // a variable without bounds is always off them
  std::vector<Real> value;   // clipped to the bounds; at the bound itself for those not kOff
  std::vector<Real> dual;    // reduced costs; zero for those off their bounds
  std::vector<Real> margin;  // of those kOff: distance to the nearest bound over the reduced cost, in (0, inf]
};

// The kernel must be loaded with the LP of the point.
template <class Real>
CrossoverSides<Real> find_sides(const LpKernel<Real>& kernel, const InteriorPoint& point);

}  // namespace zorvex
