// The barrier as an engine of the LP driver: interior point, then crossover to a basis when one is wanted; models on
// which the interior point method ends without a usable point go to the simplex.
#pragma once

#include "barrier/barrier.hpp"
#include "barrier/crossover.hpp"
#include "simplex/lp_engine.hpp"

namespace zorvex {

struct BarrierEngineOptions {
  BarrierOptions barrier;
  CrossoverOptions crossover;   // crossover == 0: none
  bool simplex_rescues = true;  // a linear model on which the barrier fails is solved by simplex; else kNumeric
};

class BarrierEngine final : public LpEngine {
 public:
  explicit BarrierEngine(const BarrierEngineOptions& options) : options_(options) {}

  void set_sense(int sense) override { options_.barrier.sense = options_.crossover.simplex.sense = sense; }
  EngineAnswer solve(const LpData& lp, const SimplexLimits& limits, const StopToken& stop, LogSink& log) override;
  [[nodiscard]] bool admits_presolve(const LpData& lp, const StopToken& stop) override;
  void report_without_solve(SolveStatus status, double objective, double seconds, LogSink& log) override;

 private:
  BarrierEngineOptions options_;
};

}  // namespace zorvex
