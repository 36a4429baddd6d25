// How far one number of a model may move, the others as they are, before an optimal basis stops being optimal.
//   Space    unscaled, minimisation form; infinite limits are IEEE infinities. The limits enclose the present value.
//   Meaning  cost: the basis stays dual feasible. Bounds and sides: it stays primal feasible, nonbasic variables moving
//            with the bound they rest on. A bound that is not in use may move until it meets the variable, and never
//            beyond the opposite bound. A row's sides move together; an equation has one.
//   Cost     one FTRAN for each nonbasic variable.
#pragma once

#include <vector>

#include "simplex/basis_inverse.hpp"

namespace zorvex {

struct Range {
  double low, up;
};

struct SensitivityRanges {
  std::vector<Range> cost, lower, upper;  // num_cols: values
  std::vector<Range> side_shift;          // num_rows: amounts by which the sides may move, low <= 0 <= up
};

// `basis` is optimal and `inverse` its factored form; `x` and `pi` are the point and the prices that belong to it.
template <class Real>
[[nodiscard]] SensitivityRanges sensitivity_ranges(const LpData& lp, const Basis& basis, BasisInverse<Real>& inverse,
                                                   const std::vector<double>& x, const std::vector<double>& pi);

}  // namespace zorvex
