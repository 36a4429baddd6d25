#include "opt/staged_engine.hpp"

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <utility>

#include "opt/race.hpp"

namespace zorvex {

namespace {

// A stop token with a budget of its own on top of the caller's.
class Budget {
 public:
  explicit Budget(const StopToken& stop)
      : stop_(stop), token_(stop.terminate_flag(), stop.deadline(), stop.hooks(), &gauge_) {}
  Budget(const Budget&) = delete;
  Budget& operator=(const Budget&) = delete;

  // From now on, beyond what was spent.
  void allow(double units) { limit_.store(gauge_.spent() + units); }
  // After `units` the solve goes on, but for what `decide` says: the budget from the beginning.
  void decide_after(double units, std::function<double()> decide) {
    gauge_.ask_at(units, [this, decide = std::move(decide)] { limit_.store(decide()); });
  }
  [[nodiscard]] const StopToken& token() const { return token_; }
  // The solve ended for lack of budget and nothing else.
  [[nodiscard]] bool ended(SolveStatus status) const {
    return status == SolveStatus::kInterrupted && gauge_.exceeded() && !stop_.stop_requested();
  }

 private:
  const StopToken& stop_;
  std::atomic<double> limit_{kInf};
  WorkGauge gauge_{limit_};
  StopToken token_;
};

}  // namespace

EngineAnswer StagedEngine::solve(const LpData& lp, const SimplexLimits& limits, const StopToken& stop, LogSink& log) {
  Budget budget(stop);
  auto simplex = std::make_unique<LpSolver>(lp, options_.simplex, log);
  SimplexLimits rest = limits;
  double iterations = 0;
  const auto run_simplex = [&] {
    rest.iterations = limits.iterations - iterations;
    const SolveStatus status = simplex->solve(rest, budget.token());
    iterations += simplex->iterations();
    return !budget.ended(status);
  };
  const auto simplex_answer = [&] {
    EngineAnswer answer = answer_of(*simplex);
    answer.iterations = iterations;
    return answer;
  };
  const bool is_boxed = lp.boxed_share() >= options_.boxed_share;
  const SimplexBudget& first = dual_form_ ? options_.dual_form : is_boxed ? options_.boxed : options_.unboxed;
  BarrierPrediction prediction;
  budget.decide_after(first.short_solve, [&] {
    prediction = predict_barrier(lp, options_.barrier.barrier, stop);
    return std::max(first.short_solve, first.barrier_share * prediction.work);
  });
  if (run_simplex()) return simplex_answer();

  log.print("Barrier after %d iterations of the dual simplex\n", static_cast<int>(iterations));
  budget.allow(options_.barrier_patience * prediction.work);
  rest.iterations = limits.iterations - iterations;
  BarrierEngineOptions barrier = options_.barrier;
  barrier.simplex_rescues = false;
  barrier.barrier.plan = prediction.plan;
  EngineAnswer answer = BarrierEngine(barrier).solve(lp, rest, budget.token(), log);
  iterations += answer.iterations;
  answer.iterations = iterations;
  answer.reported = false;
  if (decides(answer) || stop.stop_requested()) return answer;
  const int barrier_iterations = answer.barrier_iterations;

  // Afresh: an interrupted run has lost its perturbation, without which its basis is a poor one to go on from.
  log.print("Back to the dual simplex\n");
  simplex = std::make_unique<LpSolver>(lp, options_.simplex, log);
  budget.allow(kInf);
  run_simplex();
  answer = simplex_answer();
  answer.barrier_iterations = barrier_iterations;
  return answer;
}

}  // namespace zorvex
