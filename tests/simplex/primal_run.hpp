// The primal simplex alone on a model as it is, without the ways around it that the solver knows.
#pragma once

#include "simplex/lp_kernel.hpp"

namespace zorvex {

struct PrimalRun {
  explicit PrimalRun(const LpData& lp) {
    kernel.load(lp, unit_scaling(lp), 1);
    core().stop = &stop;
    core().log = &log;
    core().begin_solve(0.1, kUsualSpaceSteps);
  }
  SimplexCore<double>& core() { return kernel.core(); }

  QuietLog quiet;
  SimplexLog log{quiet, {}};
  StopToken stop;
  LpKernel<double> kernel;
  PrimalSimplex<double> primal{kernel.core()};
};

}  // namespace zorvex
