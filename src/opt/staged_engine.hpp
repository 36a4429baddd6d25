// The automatic choice for linear models: the dual simplex within a budget, which depends on what the barrier is
// predicted to cost; then the barrier with crossover, within a multiple of its prediction; then the dual simplex to the
// end, afresh. Whichever method suits a model, a small multiple of its effort is spent.
//   Effort   counted, not timed: the same model and parameters take the same way in every run.
//   Log      that of the solves that run, with a line at each change.
#pragma once

#include "barrier/barrier_engine.hpp"
#include "simplex/lp_engine.hpp"

namespace zorvex {

// What the dual simplex may cost before the barrier has its turn.
struct SimplexBudget {
  double short_solve;    // effort below which nothing else is thought of
  double barrier_share;  // times the prediction of the barrier, where that is more
};

struct StagedOptions {
  SimplexOptions simplex;
  BarrierEngineOptions barrier;  // with crossover
  // The dual simplex makes long steps where most columns have two bounds, and is seldom worth much patience elsewhere:
  // measured on the netlib problems and the relaxations of 120 mixed-integer models.
  double boxed_share = 0.6;  // of the columns from which a model counts as boxed
  SimplexBudget boxed{5e8, 1};
  SimplexBudget unboxed{8e7, 0.1};
  SimplexBudget dual_form{5e8, 1};  // hardly a column of a dual has two bounds
  double barrier_patience = 4;      // times its prediction that the barrier may cost
};

class StagedEngine final : public LpEngine {
 public:
  explicit StagedEngine(const StagedOptions& options) : options_(options) {}

  void set_sense(int sense) override {
    options_.simplex.sense = sense;
    options_.barrier.barrier.sense = options_.barrier.crossover.simplex.sense = sense;
  }
  void set_dual_form(bool dual_form) override { dual_form_ = dual_form; }
  EngineAnswer solve(const LpData& lp, const SimplexLimits& limits, const StopToken& stop, LogSink& log) override;
  [[nodiscard]] bool has_own_report() const override { return false; }
  void report_without_solve(SolveStatus, double, double, LogSink&) override {}

 private:
  StagedOptions options_;
  bool dual_form_ = false;
};

}  // namespace zorvex
