// Numerical thresholds of the simplex kernels, one set per number type. All are in scaled space unless said otherwise.
#pragma once

#include "base/types.hpp"

namespace zorvex {

template <class Real>
struct KernelTolerances;

template <>
struct KernelTolerances<double> {
  static constexpr double kDrop = 1e-14;           // results of solves below this become exact zeros
  static constexpr double kTinyCancel = 1e-50;     // stands for a sum that cancelled, so that its index stays listed
  static constexpr double kRatioPivot = 1e-9;      // smallest |alpha| looked at by a ratio test, fresh factors
  static constexpr double kRatioPivotAged = 1e-7;  // the same after many updates
  static constexpr double kResidual = 1e-7;        // residual of B x = b that counts as numerical trouble
  static constexpr double kPivotMismatch = 1e-7;   // relative disagreement of row-wise and column-wise pivot
  static constexpr double kMinWeight = 1e-4;       // dual edge weights never fall below
  static constexpr double kPivot = 3e-8;           // smallest pivot that an iteration accepts is ten times this
  static constexpr double kCurvature = 1e-10;      // share of a variable's curvature that counts as its own
};

template <>
struct KernelTolerances<Extended> {
  static constexpr Extended kDrop = 1e-18L;
  static constexpr Extended kTinyCancel = 1e-60L;
  static constexpr Extended kRatioPivot = 1e-12L;
  static constexpr Extended kRatioPivotAged = 1e-10L;
  static constexpr Extended kResidual = 1e-11L;
  static constexpr Extended kPivotMismatch = 1e-11L;
  static constexpr Extended kMinWeight = 1e-4L;
  static constexpr Extended kPivot = 1e-11L;
  static constexpr Extended kCurvature = 1e-13L;
};

// Internal feasibility tolerances are this share of the user's, so that unscaling leaves room.
inline constexpr double kToleranceShare = 0.1;
// Smallest part of it that can be asked for.
inline constexpr double kLeastAspiration = 1e-3;

}  // namespace zorvex
