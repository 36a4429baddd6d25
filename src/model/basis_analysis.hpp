// What can be asked about the basis that a solve ended with. Implemented by the optimize driver, which keeps an object
// with the results; computed at the first question and kept.
//   Units    user terms: user objective sense and row signs; infinite limits are +-1e100.
//   Errors   std::bad_alloc.
#pragma once

#include <vector>

namespace zorvex {

// In the order of the attributes.
enum class SensitivityLimit {
  kObjLow,
  kObjUp,
  kLowerLow,
  kLowerUp,
  kUpperLow,
  kUpperUp,
  kRhsLow,
  kRhsUp,
};
inline constexpr int kNumSensitivityLimits = 8;

class BasisAnalysis {
 public:
  virtual ~BasisAnalysis() = default;

  // False when the basis has no usable inverse; the condition numbers need a true one.
  virtual bool has_inverse() = 0;
  virtual double kappa() = 0;     // estimate in the 1-norm
  virtual double n2_kappa() = 0;  // in the 2-norm
  // One value per variable or constraint; null when the solution is not an optimal basic one.
  virtual const std::vector<double>* limits(SensitivityLimit which) = 0;
};

}  // namespace zorvex
