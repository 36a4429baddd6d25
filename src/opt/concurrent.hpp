// The concurrent optimizer: dual simplex, barrier with crossover and primal simplex race on the presolved model.
//   Threads  one for each solver, in that order as far as they reach; the barrier gets those left over. With a single
//            thread the dual simplex runs alone, on the caller's.
//   Log      which solvers start and which one decided the model; their own logs are not shown.
//   Repeats  with `by_work` the same model, parameters and number of threads give the same answer, counts and log.
#pragma once

#include "barrier/barrier_engine.hpp"
#include "simplex/lp_engine.hpp"

namespace zorvex {

struct ConcurrentOptions {
  SimplexOptions simplex;
  BarrierEngineOptions barrier;
  int threads = 1;
  bool by_work = false;
};

class ConcurrentEngine final : public LpEngine {
 public:
  explicit ConcurrentEngine(const ConcurrentOptions& options) : options_(options) {}

  void set_sense(int sense) override {
    options_.simplex.sense = sense;
    options_.barrier.barrier.sense = options_.barrier.crossover.simplex.sense = sense;
  }
  EngineAnswer solve(const LpData& lp, const SimplexLimits& limits, const StopToken& stop, LogSink& log) override;
  [[nodiscard]] bool has_own_report() const override { return false; }
  void report_without_solve(SolveStatus, double, double, LogSink&) override {}

 private:
  ConcurrentOptions options_;
};

}  // namespace zorvex
