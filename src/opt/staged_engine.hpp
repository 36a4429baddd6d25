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
  double effort;
  double barrier_share;  // times the prediction of the barrier, where that is more
};

struct StagedOptions {
  SimplexOptions simplex;
  BarrierEngineOptions barrier;  // with crossover
  // The dual simplex makes long steps where most columns have two bounds, and comes to its end soon where it keeps most
  // rows feasible on its way, as on multicommodity flows; elsewhere it is seldom worth much patience. Measured on the
  // netlib problems, the relaxations of 75 mixed-integer models and generated families (bench/growth).
  double boxed_share = 0.6;  // of the columns from which a model counts as boxed
  // Shares of infeasible rows up to which the simplex deserves patience.
  double boxed_infeasible = 0.45;
  double unboxed_infeasible = 0.1;
  SimplexBudget impatient{8e7, 0.1};  // its effort is when the rows are looked at
  SimplexBudget patient{5e8, 1};      // and for every dual, hardly a column of which has two bounds
  double barrier_patience = 4;        // times its prediction that the barrier may cost
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
  [[nodiscard]] bool deserves_patience(const LpData& lp, const LpSolver& simplex) const;

  StagedOptions options_;
  bool dual_form_ = false;
};

}  // namespace zorvex
