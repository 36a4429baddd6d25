// Primal-dual interior point method for linear and convex quadratic models.
//   Method   Mehrotra's predictor-corrector with Gondzio's centrality correctors on a scaled copy of the model in which
//            every row that is no equation has a slack; free and dense columns and columns of Q stay in a
//            quasi-definite augmented system, all others are eliminated into the normal equations.
//   Source   S. Mehrotra, SIAM J. Optim. 2 (1992) 575-601; J. Gondzio, Comput. Optim. Appl. 6 (1996) 137-156;
//            R. Vanderbei, SIAM J. Optim. 5 (1995) 100-113; A. Altman, J. Gondzio, Optim. Methods Softw. 11 (1999)
//            275-302.
#pragma once

#include <memory>

#include "base/log_sink.hpp"
#include "base/status.hpp"
#include "base/stop_token.hpp"
#include "linalg/lp_data.hpp"
#include "simplex/lp_solver.hpp"

namespace zorvex {

struct FactorPlan;

// Read once from the parameters; see the parameter table for meanings.
struct BarrierOptions {
  double primal_feasibility_tol = 1e-6;  // absolute, on unscaled rows and bounds
  double dual_feasibility_tol = 1e-6;    // absolute, on unscaled reduced costs
  double convergence_tol = 1e-8;         // BarConvTol: relative gap of the objectives
  int iteration_limit = 2000000000;      // BarIterLimit
  int correctors = -1;                   // BarCorrectors; -1 by the cost of a factorization against that of a solve
  int ordering = -1;                     // BarOrder: -1 whichever predicts less work, 0 AMD, 1 nested dissection
  int threads = 1;                       // at least 1
  bool alternative_scaling = false;      // linear models: largest entries to one, without regard to the smallest
  bool loose_steps = true;               // up to the bounds; otherwise well short of them
  bool dense_segments = false;           // larger dense blocks in the factor, with more explicit zeros
  double extra_regularization = 0;       // of the factor
  bool primal_start = true;              // the starting values solve a least-squares problem; otherwise near bounds
  bool dual_start = true;                // likewise the multipliers; otherwise zero
  double psd_tol = 1e-6;                 // PSDTol
  double cutoff = kInf;                  // a dual objective above it ends the solve (minimisation form)
  bool final_point = true;               // no crossover follows: converge to the absolute tolerances, too, if possible
  int sense = 1;                         // objective values are multiplied by it when printed
  bool root_log = false;                 // print the log as that of a root relaxation
  double log_start_time = 0;             // now_seconds() at which the surrounding solve began; 0: at the call
  std::shared_ptr<const FactorPlan> plan = nullptr;  // of a prediction for the same model; null: made anew
};

// `point` is in the space of the given model with the signs of LpPoint, d = c + Qx - A'pi. It is set whenever there was
// an iterate, whatever the status; nothing has judged it yet.
//   kOptimal      the convergence test holds
//   kSuboptimal   no further progress, yet usable: residuals small, gap open
//   kNumeric      no usable iterate; also the end of models without a feasible or bounded solution
//   kInfeasible   `farkas` proves it (checked on the given model)
//   kUnbounded    `ray` is an improving ray (checked; Q ray = 0) and `point` is feasible
//   kCutoff, kIterationLimit, kTimeLimit, kInterrupted
struct BarrierResult {
  SolveStatus status = SolveStatus::kLoaded;
  int error = 0;  // kErrorQNotPsd or kErrorOutOfMemory; no iteration was made then
  LpPoint point;
  double primal_objective = 0;  // minimisation form, offset included
  double dual_objective = 0;
  double primal_residual = 0;  // largest violation of a row or bound, unscaled, absolute
  double dual_residual = 0;
  int iterations = 0;
  double seconds = 0;
  std::vector<double> farkas;
  double farkas_violation = 0;
  std::vector<double> ray;
};

// Prints statistics block, iteration log and closing lines to `log`.
BarrierResult solve_barrier(const LpData& lp, const BarrierOptions& options, const StopToken& stop, LogSink& log);

// Effort that a solve would take, in units of the stop token, by the analysis of the factor for a typical number of
// iterations, and what the solve need not find out again. Infinite, without plan, when there is none to predict:
// stopped, or the model is obviously infeasible.
struct BarrierPrediction {
  double work = kInf;
  std::shared_ptr<const FactorPlan> plan;
};
BarrierPrediction predict_barrier(const LpData& lp, const BarrierOptions& options, const StopToken& stop);

}  // namespace zorvex
