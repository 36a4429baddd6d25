// Sifting: a model with many more columns than rows is solved over a growing working set of columns; the others are
// priced against the sub-problem's duals.
//   Method  beside the sub-problem's duals, duals that are feasible for the whole model are kept and moved towards
//           them; the columns that stop that move first join the working set. Their objective is the bound that the
//           log shows.
//   Errors  the last step is a simplex solve of the whole model, from the basis found when that is any good, with its
//           check: whatever sifting did, the answer is as sound as that of the simplex.
//   Source  R. Bixby, J. Gregory, I. Lustig, R. Marsten, D. Shanno, Oper. Res. 40 (1992) 885-897.
#pragma once

#include "barrier/barrier.hpp"
#include "simplex/lp_engine.hpp"
#include "simplex/lp_solver.hpp"

namespace zorvex {

enum class SiftMethod { kPrimal = 0, kDual = 1, kBarrier = 2 };

struct SiftingOptions {
  int sifting = -1;      // parameter Sifting: 2 adds twice the columns of 1
  int sift_method = -1;  // parameter SiftMethod, a SiftMethod or -1 for primal simplex, the fastest where measured
  SimplexOptions simplex = {};
  BarrierOptions barrier = {};  // of sub-problems by barrier
};

// What the parameter Sifting asks for: 0 never; -1 where sifting was measured to pay; 1 and 2 always, as far as
// sifting_is_possible.
bool sifting_is_wanted(const LpData& lp, int sifting);

// Logs why not when the model has too few columns for a working set to be a small part of it.
bool sifting_is_possible(const LpData& lp, LogSink& log);

// Solves `lp` to the end. limits.iterations counts all pivots.
EngineAnswer run_sifting(const LpData& lp, const SiftingOptions& options, const SimplexLimits& limits,
                         const StopToken& stop, LogSink& log);

// Sifting where it is wanted and possible, else the simplex.
class SiftingEngine final : public LpEngine {
 public:
  explicit SiftingEngine(const SiftingOptions& options) : options_(options) {}

  void set_sense(int sense) override { options_.simplex.sense = options_.barrier.sense = sense; }
  EngineAnswer solve(const LpData& lp, const SimplexLimits& limits, const StopToken& stop, LogSink& log) override;
  [[nodiscard]] bool has_own_report() const override { return false; }
  void report_without_solve(SolveStatus, double, double, LogSink&) override {}

 private:
  SiftingOptions options_;
};

}  // namespace zorvex
