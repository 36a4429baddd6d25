// Bounds of continuous columns by binary ones that probing found and the relaxation violates.
//   Source   M. Savelsbergh, ORSA J. Computing 6 (1994) 445-454, section 2.4.
#include "mip/separator.hpp"

namespace zorvex {

namespace {

void separate(SeparationContext& context) {
  const std::vector<double>& x = context.relaxation.x;
  for (const ImpliedBound& implied : context.state.model.implied_bounds) {
    const double sign = implied.upper ? 1 : -1;
    if (sign * (x[implied.col] - implied.bound.at(x)) <= mip_tol::kCutViolation) continue;
    Cut cut;
    cut.type = CutType::kImpliedBound;
    cut.index = {implied.col, implied.bound.of};
    cut.value = {sign, -sign * implied.bound.slope};
    cut.rhs = sign * implied.bound.constant;
    context.found.push_back(std::move(cut));
  }
}

}  // namespace

extern const Separator kImpliedBoundSeparator;
const Separator kImpliedBoundSeparator{"implied bound", separate};

}  // namespace zorvex
