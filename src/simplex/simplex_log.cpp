#include "simplex/simplex_log.hpp"

#include <cmath>

#include "base/stop_token.hpp"

namespace zorvex {

double SimplexLog::elapsed() const { return now_seconds() - settings_.start_time + settings_.carried_time; }

bool SimplexLog::due(double iteration) const {
  if (settings_.display_iterations == 0 || settings_.root) return due();
  return sink_.enabled() && iteration >= last_iteration_ + settings_.display_iterations;
}

bool SimplexLog::due() const {
  if (!sink_.enabled()) return false;
  const double time = elapsed();
  if (settings_.root && time < settings_.display_interval) return false;
  return std::floor(time / settings_.display_interval) != std::floor(last_time_ / settings_.display_interval);
}

void SimplexLog::header() {
  if (header_printed_) return;
  header_printed_ = true;
  if (settings_.root) sink_.write("\nRoot simplex log...\n\n");
  sink_.write("Iteration    Objective       Primal Inf.    Dual Inf.      Time\n");
}

void SimplexLog::tell(double iteration, double objective, double primal_inf, double dual_inf) {
  if (!watched()) return;
  last_told_ = iteration;
  settings_.hooks->simplex({iteration, objective / settings_.cost_factor + settings_.offset, primal_inf, dual_inf});
}

void SimplexLog::iteration(double iteration, double objective, double primal_inf, double dual_inf, bool force) {
  if (force || iteration != last_told_) tell(iteration, objective, primal_inf, dual_inf);
  if (!sink_.enabled() || iteration == last_iteration_) return;
  const double time = elapsed();
  if (settings_.root && time < settings_.display_interval) return;
  if (!force && iteration != 0 && !due(iteration)) return;
  header();
  sink_.print(" %7.0f   %14.7e  %13.6e  %13.6e %6.0fs\n", iteration,
              settings_.sense * (objective / settings_.cost_factor + settings_.offset), primal_inf, dual_inf,
              std::floor(time));
  last_time_ = time;
  last_iteration_ = iteration;
}

void SimplexLog::crossover(Kind kind, double count, double primal_inf, double dual_inf) {
  if (!sink_.enabled()) return;
  const double time = elapsed();
  if (!crossover_header_printed_) {
    crossover_header_printed_ = true;
    sink_.write(settings_.root ? "\nRoot crossover log...\n\n" : "Crossover log...\n\n");
  }
  const bool push = kind >= Kind::kPrimalPush;
  if (push && last_push_ != Kind::kIteration && last_push_ != kind) sink_.write("\n");
  const double seconds = std::floor(time);
  switch (kind) {
    case Kind::kFreeVariables:
      sink_.print(" %7.0f      handle free variables                     %6.0fs\n", count, seconds);
      break;
    case Kind::kCrossoverBasis:
      sink_.print(" %7.0f variables added to crossover basis                   %6.0fs\n", count, seconds);
      break;
    case Kind::kPrimalPush:
      sink_.print(" %7d PPushes remaining with PInf %12.7e            %6.0fs\n", static_cast<int>(count), primal_inf,
                  seconds);
      break;
    case Kind::kDualPush:
      sink_.print(" %7d DPushes remaining with DInf %12.7e            %6.0fs\n", static_cast<int>(count), dual_inf,
                  seconds);
      break;
    case Kind::kPushDone:
      sink_.print("  Push phase complete: Pinf %12.7e, Dinf %12.7e %6.0fs\n\n", primal_inf, dual_inf, seconds);
      break;
    case Kind::kIteration:
      break;
  }
  if (push) last_push_ = kind;
  last_time_ = time;
}

}  // namespace zorvex
