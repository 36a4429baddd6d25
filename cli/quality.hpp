// Violations of a point, recomputed in extended precision from the model alone.
#pragma once

#include <string>
#include <vector>

#include "model_view.hpp"

namespace zorvex_cli {

struct Violation {
  long double max = 0;
  long double sum = 0;
  int count = 0;  // amounts above the tolerance
  int at = -1;    // where max is attained; -1 when there is no violation

  void add(long double amount, int where, long double tolerance);
};

struct PointQuality {
  long double objective = 0;
  Violation bound;       // variables outside their bounds; semicontinuous ones also at 0
  Violation constraint;  // rows outside their sides
  Violation integrality;
  Violation sos;  // sum of what must be zero given the largest allowed group of neighbours; at: SOS index

  [[nodiscard]] bool is_feasible() const {
    return bound.count == 0 && constraint.count == 0 && integrality.count == 0 && sos.count == 0;
  }
};

// `tolerance` for bounds, rows and SOS, `integer_tolerance` for integrality; both absolute.
PointQuality measure_point(const ModelView& model, const std::vector<double>& x, double tolerance,
                           double integer_tolerance);

}  // namespace zorvex_cli
