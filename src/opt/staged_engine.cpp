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
  // At `units` from the beginning, or as soon as they are spent, `decide` is called: to set limits or be asked again.
  void decide_at(double units, std::function<void()> decide) { gauge_.ask_at(units, std::move(decide)); }
  // From the beginning.
  void limit_to(double units) { limit_.store(units); }
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

bool StagedEngine::deserves_patience(const LpData& lp, const LpSolver& simplex) const {
  if (dual_form_) return true;
  const bool is_boxed = lp.boxed_share() >= options_.boxed_share;
  return simplex.infeasible_share() <= (is_boxed ? options_.boxed_infeasible : options_.unboxed_infeasible);
}

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
  BarrierPrediction prediction;
  const auto limit_simplex = [&](const SimplexBudget& simplex_budget) {
    prediction = predict_barrier(lp, options_.barrier.barrier, stop);
    budget.limit_to(std::max(simplex_budget.effort, simplex_budget.barrier_share * prediction.work));
  };
  budget.decide_at(options_.impatient.effort, [&] {
    if (!deserves_patience(lp, *simplex)) return limit_simplex(options_.impatient);
    budget.decide_at(options_.patient.effort, [&] { limit_simplex(options_.patient); });
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
