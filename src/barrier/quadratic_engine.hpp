// The quadratic simplex as an engine of the LP driver. Models on which it ends without an answer that stands up to the
// check go to the barrier.
#pragma once

#include "barrier/barrier_engine.hpp"

namespace zorvex {

class QuadraticSimplexEngine final : public LpEngine {
 public:
  // `start` may be empty. The barrier's options serve the case that the simplex fails; its psd_tol serves both.
  QuadraticSimplexEngine(const SimplexOptions& simplex, const BarrierEngineOptions& barrier, Basis start)
      : simplex_(simplex), barrier_(barrier), start_(std::move(start)) {}

  void set_sense(int sense) override {
    simplex_.sense = barrier_.barrier.sense = barrier_.crossover.simplex.sense = sense;
  }
  EngineAnswer solve(const LpData& lp, const SimplexLimits& limits, const StopToken& stop, LogSink& log) override;
  [[nodiscard]] bool admits_presolve(const LpData& lp, const StopToken& stop) override;
  [[nodiscard]] bool has_own_report() const override { return false; }
  void report_without_solve(SolveStatus, double, double, LogSink&) override {}

 private:
  SimplexOptions simplex_;
  BarrierEngineOptions barrier_;
  Basis start_;
};

}  // namespace zorvex
