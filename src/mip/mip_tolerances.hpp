// Every numerical tolerance of branch and cut that is not a user parameter, with its unit and reason.
#pragma once

namespace zorvex::mip_tol {

// Values at or beyond this are "none": an incumbent of kNone means no solution, a bound of -kNone no bound.
inline constexpr double kNone = 1e100;
// Start values at or beyond this are undefined (the marker itself is 1e101).
inline constexpr double kUndefinedStart = 1e101;

// --- log ---
inline constexpr double kGapZero = 1e-10;      // |incumbent - bound| shown as 0.0%; objective units
inline constexpr double kGapIncumbent = 1e-6;  // |incumbent| below which no relative gap is shown
inline constexpr double kGapImproveIncumbent = 5e99;
inline constexpr double kTimeImproveIncumbent = 1e99;

// --- propagation ---
inline constexpr double kRowFeasibility = 1e-6;    // activity beyond a row side, scaled by max(1, |side|): infeasible
inline constexpr double kIntegerRounding = 1e-6;   // a derived bound this close to an integer counts as that integer
inline constexpr double kBoundCross = 1e-7;        // lower above upper by more than this (relative): infeasible
inline constexpr double kMinTightening = 0.05;     // share of the range a continuous bound must gain
inline constexpr double kMinTighteningAbs = 1e-3;  // and at least this much, scaled by max(1, |bound|)
inline constexpr double kContinuousRelax = 1e-7;   // derived continuous bounds are moved outward, relative
inline constexpr double kHugeBound = 1e8;          // derived continuous bounds beyond this are not used
inline constexpr double kTinyCoefficient = 1e-9;   // entries below this derive no bounds
inline constexpr double kObjectiveSlack = 1e-9;    // cost beyond the cutoff, scaled by max(1, |cutoff|): of no interest

// --- preparation ---
inline constexpr double kCoefficientGain = 1e-3;  // tightening below this share of the coefficient is not worth it
inline constexpr double kGcdTolerance = 1e-9;     // relative distance of a cost from a multiple of the granularity
inline constexpr double kRedundantRow = 1e-9;     // activity inside a row side by this much, scaled: redundant

// --- pruning ---
inline constexpr double kCutoffDelta = 1e-7;       // a node must beat the incumbent by this, scaled by max(1, |z|)
inline constexpr double kGranularitySlack = 1e-6;  // share of the objective granularity left for LP noise
inline constexpr double kReducedCost = 1e-7;       // reduced costs below this fix nothing
inline constexpr double kReducedCostRelax = 1e-6;  // steps are rounded down after adding this

// --- integrality beyond the user's tolerance ---
inline constexpr double kExactlyIntegral = 1e-9;  // below this a value is an integer up to the noise of the LP

inline constexpr double kCleanFeasibility = 1e-9;  // violation up to which a candidate solution is taken as it is

// --- branching ---
inline constexpr double kScoreEps = 1e-6;  // keeps products of gains positive
inline constexpr double kInfeasibleScore = 1e6;

// --- cuts ---
inline constexpr double kCutDrop = 1e-9;           // smaller coefficients (relative to the largest) are relaxed away
inline constexpr double kCutDynamism = 1e6;        // largest over smallest coefficient kept in a cut
inline constexpr double kCutViolation = 1e-4;      // minimum violation divided by the norm
inline constexpr double kCutRhsRelax = 1e-9;       // right-hand sides are moved outward by this, relative
inline constexpr double kCutFractionality = 0.01;  // distance of f0 from 0 and 1 needed for rounding cuts
inline constexpr double kCutParallel = 0.98;       // cosine above which two cuts are not taken together

}  // namespace zorvex::mip_tol
