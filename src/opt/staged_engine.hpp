// The automatic choice for linear models: the dual simplex as long as it has not cost much more than the barrier is
// predicted to; then the barrier with crossover, within a multiple of its prediction; then the dual simplex to the end,
// afresh. Whichever method suits a model, a small multiple of its effort is spent.
//   Effort   counted, not timed: the same model and parameters take the same way in every run.
//   Log      that of the solves that run, with a line at each change.
#pragma once

#include "barrier/barrier_engine.hpp"
#include "simplex/lp_engine.hpp"

namespace zorvex {

struct StagedOptions {
  SimplexOptions simplex;
  BarrierEngineOptions barrier;  // with crossover
  double short_solve = 6e7;      // effort of the simplex below which nothing else is thought of
  double simplex_share = 1.5;    // times the prediction of the barrier that the simplex may cost
  double small_model = 1e7;      // rows times nonzeros up to which the barrier is not analysed at all
  double barrier_patience = 4;   // times its prediction that the barrier may cost
};

class StagedEngine final : public LpEngine {
 public:
  explicit StagedEngine(const StagedOptions& options) : options_(options) {}

  void set_sense(int sense) override {
    options_.simplex.sense = sense;
    options_.barrier.barrier.sense = options_.barrier.crossover.simplex.sense = sense;
  }
  EngineAnswer solve(const LpData& lp, const SimplexLimits& limits, const StopToken& stop, LogSink& log) override;
  [[nodiscard]] bool has_own_report() const override { return false; }
  void report_without_solve(SolveStatus, double, double, LogSink&) override {}

 private:
  StagedOptions options_;
};

}  // namespace zorvex
