#include "barrier/crossover_sides.hpp"

#include <algorithm>
#include <cmath>

namespace zorvex {

namespace {

constexpr double kOnBound = 1e-11;       // relative distance at which a variable is on its bound whatever the duals say
constexpr double kSmallestDual = 1e-30;  // stands for a reduced cost of zero in ratios

// Mean magnitude of the entries that are not zero, one when there are none.
template <class Real>
Real typical(const std::vector<Real>& values) {
  using std::abs;
  Real sum = 0;
  Offset count = 0;
  for (const Real v : values) {
    if (v == 0 || !std::isfinite(v)) continue;
    sum += abs(v);
    ++count;
  }
  return count > 0 ? sum / static_cast<Real>(count) : Real(1);
}

// Values and reduced costs of all variables, scaled.
template <class Real>
void scale_point(const LpKernel<Real>& kernel, const InteriorPoint& point, CrossoverSides<Real>& sides) {
  const SimplexCore<Real>& core = kernel.core();
  const Scaling& scaling = kernel.scaling();
  const auto finite = [](double v) { return std::isfinite(v) ? Real(v) : Real(0); };
  for (Index col = 0; col < core.n; ++col) {
    sides.value[col] = finite(point.x[col]) / Real(scaling.col[col]);
    sides.dual[col] = finite(point.reduced_cost[col]) * Real(scaling.col[col]);
  }
  for (Index row = 0; row < core.m; ++row) {
    sides.value[core.n + row] = -finite(point.row_activity[row]) * Real(scaling.row[row]);
    sides.dual[core.n + row] = -finite(point.pi[row]) / Real(scaling.row[row]);
  }
}

}  // namespace

template <class Real>
CrossoverSides<Real> find_sides(const LpKernel<Real>& kernel, const InteriorPoint& point) {
  using std::abs;
  const SimplexCore<Real>& core = kernel.core();
  const auto total = static_cast<std::size_t>(core.num_vars());
  CrossoverSides<Real> sides;
  sides.side.assign(total, Side::kOff);
  sides.value.resize(total);
  sides.dual.resize(total);
  sides.margin.assign(total, Real(0));
  scale_point(kernel, point, sides);
  const Real exchange = typical(sides.dual) / typical(sides.value);  // of distances for reduced costs
  for (Index var = 0; var < core.num_vars(); ++var) {
    const Real low = core.lower[var];
    const Real up = core.upper[var];
    Real& x = sides.value[var];
    Real& d = sides.dual[var];
    x = std::min(std::max(x, low), up);
    const Real below = x - low;
    const Real above = up - x;
    const bool upper = above < below;
    const Real distance = upper ? above : below;
    const Real slack = upper ? -d : d;
    if (std::isfinite(distance) &&
        (low == up || distance <= Real(kOnBound) * (1 + abs(upper ? up : low)) || distance * exchange < slack)) {
      sides.side[var] = upper ? Side::kUpper : Side::kLower;
      x = upper ? up : low;
      continue;
    }
    sides.margin[var] = distance * exchange / std::max<Real>(abs(d), Real(kSmallestDual));
    d = 0;
  }
  return sides;
}

template CrossoverSides<double> find_sides(const LpKernel<double>&, const InteriorPoint&);
template CrossoverSides<Extended> find_sides(const LpKernel<Extended>&, const InteriorPoint&);

}  // namespace zorvex
