// A method other than simplex that can solve the presolved model. The driver knows engines only through this interface,
// so that methods which stand above the simplex in the layers can be plugged in by the optimize driver.
#pragma once

#include <vector>

#include "base/log_sink.hpp"
#include "base/status.hpp"
#include "base/stop_token.hpp"
#include "linalg/basis.hpp"
#include "linalg/lp_data.hpp"
#include "simplex/lp_solver.hpp"

namespace zorvex {

// What an engine found out about the model it was given, in that model's space, signs as in LpPoint.
//   kOptimal      `point` with `basis`; or without a basis: an interior point that is yet to be judged.
//   kSuboptimal   `point` is the best there is; with `basis`: the best that doubles can store.
//   kInfeasible   `farkas` is a checked proof; kUnbounded: `ray` is checked and `point` feasible.
//   limits        whatever there is.
struct EngineAnswer {
  SolveStatus status = SolveStatus::kLoaded;
  int error = 0;  // error code; status means nothing when it is set
  LpPoint point;
  Basis basis;
  double iterations = 0;  // of the simplex, pushes of a crossover included
  int barrier_iterations = 0;
  std::vector<double> farkas;
  double farkas_violation = 0;
  std::vector<double> ray;
  bool extended_precision = false;
  bool nearly_optimal = false;  // kSuboptimal: see LpSolver::nearly_optimal()
  bool reported = false;        // the closing lines are in the log already
};

// What a solver found out by its last solve.
EngineAnswer answer_of(const LpSolver& solver);

class LpEngine {
 public:
  virtual ~LpEngine() = default;
  // +1 or -1: objective values in the log are multiplied by it. For models that are not in the user's sense.
  virtual void set_sense(int sense) = 0;
  // True: the models to come are duals of what the user wants solved, and have the shape of one. False at first.
  virtual void set_dual_form(bool) {}
  virtual EngineAnswer solve(const LpData& lp, const SimplexLimits& limits, const StopToken& stop, LogSink& log) = 0;
  // False: presolve must leave the model alone, which is then the engine's to solve or to refuse.
  [[nodiscard]] virtual bool admits_presolve(const LpData&, const StopToken&) { return true; }
  // Presolve left nothing to solve: `objective` is in the user's sense. Closing lines of the engine's own kind, if
  // it has any.
  [[nodiscard]] virtual bool has_own_report() const { return true; }
  virtual void report_without_solve(SolveStatus status, double objective, double seconds, LogSink& log) = 0;
};

}  // namespace zorvex
