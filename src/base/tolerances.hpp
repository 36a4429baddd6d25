// Every numerical tolerance that is not a user parameter, named, with its unit and reason. One section per layer.
#pragma once

namespace zorvex {

// --- base/quality ---
// A recomputed dual value this small against the terms it is the sum of is rounding noise; relative.
inline constexpr double kDualNoise = 1e-9;

// --- env ---
// A number given as text counts as an integer when it is this close to one; absolute.
inline constexpr double kIntegerText = 1e-10;

// --- presolve: all on unscaled original data ---
struct PresolveTolerances {
  // Pivots smaller than this share of the largest entry of their row (or column) are not substituted on: the multiplier
  // would blow up what the solve leaves of feasibility in the substituted row or column.
  static constexpr double kPivotShare = 1e-3;
  // Entries created by a substitution that cancel to below this share of the terms they came from become zero.
  static constexpr double kCancel = 1e-12;
  // Bounds or activities larger than this are never used to conclude anything: one unit in the last place of a sum that
  // holds them is worth more than the feasibility tolerance.
  static constexpr double kHugeBound = 1e9;
  // A value used for an exact conclusion (redundant row, implied-free column) may be off by this much relative to the
  // largest term of its sum.
  static constexpr double kActivityNoise = 1e-11;
  // Two rows or columns are parallel when their scaled entries agree to this relative accuracy.
  static constexpr double kParallel = 1e-12;
  // Relative change of a coefficient or bound below which two doubles are the same number up to rounding.
  static constexpr double kSame = 1e-13;
};

}  // namespace zorvex
