// The iteration log shared by dual simplex, primal simplex and crossover: which lines are due and how they look.
// Whoever listens to the solve hears of the same iterations and of those in between at which the figures were known
// anyway.
#pragma once

#include "base/log_sink.hpp"
#include "base/solve_hooks.hpp"
#include "base/types.hpp"

namespace zorvex {

class SimplexLog {
 public:
  enum class Kind {
    kIteration = 0,
    kFreeVariables = 1,
    kCrossoverBasis = 2,
    kPrimalPush = 3,
    kDualPush = 4,
    kPushDone = 5
  };

  struct Settings {
    double start_time = 0;        // now_seconds() when the solve began
    double carried_time = 0;      // seconds added to the elapsed time
    double display_interval = 5;  // seconds
    int display_iterations = 0;   // lines are so many iterations apart; 0: by time
    bool root = false;            // the log of a root relaxation
    bool crossover = false;       // iteration lines follow a crossover log
    int sense = 1;                // objectives are multiplied by it
    double cost_factor = 1;       // the solver's objective is this times the model's ...
    double offset = 0;            // ... without its constant
    SolveHooks* hooks = nullptr;  // told only while the sink is enabled: sub-solves keep silent
  };

  SimplexLog(LogSink& sink, const Settings& settings) : sink_(sink), settings_(settings) {}

  // True when an unforced line could be printed now, or one of this iteration: callers skip computing its figures
  // otherwise.
  [[nodiscard]] bool due() const;
  [[nodiscard]] bool due(double iteration) const;
  // True when somebody wants the figures whether or not a line is due.
  [[nodiscard]] bool watched() const { return settings_.hooks != nullptr && sink_.enabled(); }

  // Iteration line; `iteration` includes the offset of earlier phases.
  void iteration(double iteration, double objective, double primal_inf, double dual_inf, bool force);

  // Crossover lines. `count` is the number of variables left (kinds 1 to 4), `primal_inf` and `dual_inf` as the kind
  // shows.
  void crossover(Kind kind, double count, double primal_inf, double dual_inf);

  [[nodiscard]] LogSink& sink() const { return sink_; }
  [[nodiscard]] const Settings& settings() const { return settings_; }

 private:
  [[nodiscard]] double elapsed() const;
  void header();
  void tell(double iteration, double objective, double primal_inf, double dual_inf);

  LogSink& sink_;
  Settings settings_;
  bool header_printed_ = false;
  bool crossover_header_printed_ = false;
  double last_time_ = -1;
  double last_iteration_ = -1;
  double last_told_ = -1;  // iteration
  Kind last_push_ = Kind::kIteration;
};

}  // namespace zorvex
