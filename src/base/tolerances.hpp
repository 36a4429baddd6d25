// Every numerical tolerance that is not a user parameter, named, with its unit and reason. One section per layer.
#pragma once

namespace zorvex {

// --- base/quality ---
// A recomputed dual value this small against the terms it is the sum of is rounding noise; relative.
inline constexpr double kDualNoise = 1e-9;

// --- env ---
// A number given as text counts as an integer when it is this close to one; absolute.
inline constexpr double kIntegerText = 1e-10;

// --- opt: figures of the closing report ---
// Objective and bound this close count as equal; absolute.
inline constexpr double kReportNoGap = 1e-10;
// No relative gap is printed for objectives of at most this magnitude.
inline constexpr double kReportMinObjective = 1e-6;

// --- presolve: all on unscaled data ---
struct PresolveTolerances {
  // Pivots smaller than this share of the largest entry of their row or column are not substituted on: what the solve
  // leaves of infeasibility would grow by the inverse in the substituted column or row.
  static constexpr double kPivotShare = 1e-3;
  // Sums that cancel to below this share of what was added become zero.
  static constexpr double kCancel = 1e-12;
  // Terms this large count as infinite in row activities: a unit in the last place of a running sum with such a term
  // would come near the feasibility tolerance.
  static constexpr double kHugeBound = 1e10;
  // How far a value may be off a bound that it is concluded to respect, absolute below 1, relative above: well inside
  // the feasibility tolerance, well outside rounding.
  static constexpr double kConclusion = 1e-9;
  // Relative difference below which two numbers are the same up to rounding.
  static constexpr double kSame = 1e-13;
  // Scaled entries of parallel rows or columns agree to this relative accuracy.
  static constexpr double kParallel = 1e-12;
  // Reduced costs of this size, against costs of size 1 and above relative, are what rounding leaves of zero.
  static constexpr double kCostNoise = 1e-11;
  // Sums of multiples of equations below this share of their terms vanish; multipliers have grown by elimination.
  static constexpr double kDependence = 1e-10;
  // Share of its terms below which an entry of A'y is forgiven in a proof of infeasibility; see farkas_gap.
  static constexpr double kProofDrop = 1e-9;
};

// --- barrier: on the scaled model unless said otherwise ---
struct BarrierTolerances {
  // Bounds this close, relative above 1, fix a column or make a row an equation; unscaled.
  static constexpr double kFixedWidth = 1e-12;
  // Pivots below this share of the diagonal they came from are what rounding left of zero.
  static constexpr double kDeadPivot = 1e-15;
  // The augmented system replaces the normal equations when it takes less than this share of the operations: its
  // supernodes are smaller.
  static constexpr double kAugmentedPays = 0.5;
  // Residuals of a Newton step that are always good enough; relative to the right-hand side above 1.
  static constexpr double kStepGoal = 1e-10;
  // Newton steps whose residual misses its goal by this factor are solved again with other regularization.
  static constexpr double kPoorStep = 10;
  // Regularization of kept columns and of rows that only they have entries in: to begin with, and its limits.
  static constexpr double kRegularization = 1e-8;
  static constexpr double kMinRegularization = 1e-13;
  static constexpr double kMaxRegularization = 1e-5;
  // Share of it that other columns and rows get, which have pivots of their own.
  static constexpr double kRegularizedShare = 1e-4;
  // Regularization of a row, relative to what the columns add up to on its diagonal: somewhat more than rounding leaves
  // where they cancel.
  static constexpr double kRowNoise = 4e-15;
  // Share of the way to the boundary that a step goes at most.
  static constexpr double kStepToBoundary = 0.9999;
  // Residuals, relative to the data, that count as converged; unscaled.
  static constexpr double kResidual = 1e-8;
  // A point whose relative residuals and gap are all below this is worth returning when progress ends.
  static constexpr double kUsable = 1e-4;
  // What rounding leaves of zero in a factorization of Q scaled to a unit diagonal.
  static constexpr double kConvexityNoise = 1e-12;
  // Smaller adjustments of Q's diagonal are not counted; unscaled.
  static constexpr double kCountedAdjustment = 1e-10;
  // Steps below this length make no progress.
  static constexpr double kTinyStep = 1e-5;
};

}  // namespace zorvex
