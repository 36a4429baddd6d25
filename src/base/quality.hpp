// The independent judge of every answer: violations of a point, of duals, of proofs, summed in long double from the
// original data. Shares no numbers with the solvers.
#pragma once

#include <cmath>
#include <span>

#include "base/types.hpp"

namespace zorvex {

// Non-owning view of a minimisation model in original, unscaled space, infinities as IEEE inf.
// Signs: a row is row_lower <= a'x <= row_upper.
struct ProblemView {
  Index num_rows = 0;
  Index num_cols = 0;
  const Offset* start = nullptr;  // column-wise, num_cols + 1
  const Index* index = nullptr;
  const double* value = nullptr;
  const double* cost = nullptr;
  const double* col_lower = nullptr;
  const double* col_upper = nullptr;
  const double* row_lower = nullptr;
  const double* row_upper = nullptr;
};

// A maximum, where it is attained, and the sum. An amount that is not a number counts as infinite: whatever produced it
// proves nothing.
struct Violation {
  double max = 0;
  double sum = 0;
  Index at = -1;  // -1 when there is no violation

  void add(double amount, Index where) {
    if (std::isnan(amount)) amount = kInf;
    if (!(amount > 0)) return;
    sum += amount;
    if (amount > max) {
      max = amount;
      at = where;
    }
  }
};

struct PrimalQuality {
  Violation bound;       // columns outside their bounds
  Violation row;         // activities outside their row's range
  Violation residual;    // |given activity - recomputed activity|, 0 when no activities are given
  double objective = 0;  // cost'x, without offset
};

// `activity` may be empty. Infinite entries of x violate infinitely, also where the bound is infinite.
PrimalQuality measure_primal(const ProblemView& problem, std::span<const double> x, std::span<const double> activity);

struct DualQuality {
  Violation sign;             // reduced costs of the wrong sign for the bounds that exist (rows: at num_cols + row)
  Violation residual;         // |cost - A'pi - reduced_cost|
  Violation complementarity;  // |d_j| * distance to the bound it prices, likewise |pi_i| * slack
  Violation promise;          // |d_j| of the wrong sign and beyond noise * largest |x_k|, |pi_i| * largest |activity|
  double objective = 0;       // bound proven by pi and the recomputed reduced costs, without offset; -inf if none
};

// d = cost - A'pi. A positive d_j needs a finite lower bound, a negative one a finite upper bound; pi_i > 0 needs a
// finite row_lower, pi_i < 0 a finite row_upper. `sign`, `complementarity` and `objective` use the recomputed d.
// `x` may be empty: then complementarity and promise are not measured; `reduced_cost` may be empty: then `residual` is
// 0. Terms of the wrong sign are not part of complementarity: no bound says how far the variable may go. Promise is
// what the objective gains if it goes as far as the largest one, at least 1. In `objective` a wrong-signed d_j or pi_i
// costs -inf unless it is noise, |d_j| <= kDualNoise * max(1, |c_j|, max |a_ij pi_i|); it is in `sign` either way.
DualQuality measure_dual(const ProblemView& problem, std::span<const double> pi, std::span<const double> reduced_cost,
                         std::span<const double> x);

// Farkas proof of primal infeasibility. With z = A'y, every x within its bounds has z'x <= sup, every feasible row
// activity r has y'r >= inf; the proof holds when inf - sup > 0. Entries of z with |z_j| <= drop * max|a_ij y_i| are
// treated as zero only where the bound they would need is infinite. Returns inf - sup divided by max|y|, or -inf when
// an infinite bound is hit, y is zero or anything is not a number.
double farkas_gap(const ProblemView& problem, std::span<const double> y, double drop);

// Improving ray: returns -cost'r / max|r| when r respects the recession cone of columns and rows within `tolerance`
// (relative to max|r|, rows relative to the largest |a_ij r_j| too), else -inf (also for r = 0 or NaN). Positive means
// the objective falls.
double ray_descent(const ProblemView& problem, std::span<const double> r, double tolerance);

}  // namespace zorvex
