// Solves one continuous model from start to finish: presolve, simplex or another engine, postsolve, clean-up on the
// original model, final check, and the log lines around them. No claim leaves here unchecked against the model as
// given.
#pragma once

#include <functional>
#include <vector>

#include "base/log_sink.hpp"
#include "base/status.hpp"
#include "base/stop_token.hpp"
#include "linalg/basis.hpp"
#include "linalg/lp_data.hpp"
#include "presolve/presolve.hpp"
#include "simplex/lp_engine.hpp"
#include "simplex/lp_solver.hpp"

namespace zorvex {

struct LpDriverOptions {
  SimplexOptions simplex;
  PresolveOptions presolve;
  double iteration_limit = kInf;
  double cutoff = kInf;                               // minimisation form
  int method = -1;                                    // parameter Method
  int sense = 1;                                      // +1 or -1: objective values are multiplied by it when printed
  std::function<void(const LpData&)> dump_presolved;  // debugging: called with the presolved model when set
  bool want_proofs = false;  // parameter InfUnbdInfo: Farkas proof and ray are wanted in the result
  bool check_solution = true;
  LpEngine* engine =
      nullptr;  // solves instead of the simplex when set, except where simplex has to clean up; not owned
};

struct LpDriverResult {
  SolveStatus status = SolveStatus::kLoaded;
  int error = 0;         // error code, 0 when none
  double objective = 0;  // minimisation form, offset included; +-1e100 as the log prints it when undecided
  double iterations = 0;
  double seconds = 0;
  int barrier_iterations = 0;
  bool nearly_optimal = false;  // kSuboptimal: see LpSolver::nearly_optimal()
  bool has_point = false;       // point holds values of the original model (also after limits, when there are some)
  LpPoint point;
  Basis basis;  // of the original model; empty if none
  bool has_basis = false;
  bool extended_precision = false;
  std::vector<double> farkas;  // kInfeasible: see LpSolver::farkas(); empty if presolve decided and none was wanted
  double farkas_violation = 0;
  std::vector<double> ray;  // kUnbounded
};

// A quadratic model needs an engine that can solve it; presolve runs only
// where the engine admits it. `warm_start` may be null; engines
// ignore it. The log gets presolve lines, iteration log, summary and status line; pass a QuietLog to
// suppress them (sub-solves).
LpDriverResult solve_lp(const LpData& lp, const LpDriverOptions& options, const Basis* warm_start,
                        const StopToken& stop, LogSink& log);

}  // namespace zorvex
