// Thresholds of the basis factorization that depend on the number type. All of them act on scaled coefficients, whose
// typical magnitude is one.
#pragma once

#include "base/types.hpp"

namespace zorvex {

template <class Real>
struct LuTraits;

template <>
struct LuTraits<double> {
  static constexpr double kAbsolutePivot = 1e-11;  // smaller entries never become pivots
  static constexpr double kTiny = 1e-14;           // smaller entries become exact zeros in factors and solves
  static constexpr double kPlaceholder = 1e-100;   // keeps a cancelled entry of a sparse vector in its index list
  static constexpr double kUpdateMismatch = 1e-6;  // largest relative error of an updated pivot
};

template <>
struct LuTraits<Extended> {
  static constexpr Extended kAbsolutePivot = 1e-14L;
  static constexpr Extended kTiny = 1e-18L;
  static constexpr Extended kPlaceholder = 1e-100L;
  static constexpr Extended kUpdateMismatch = 1e-8L;
};

}  // namespace zorvex
