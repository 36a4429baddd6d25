#include "barrier/barrier_log.hpp"

#include <cmath>

namespace zorvex {

namespace {

void print_memory(LogSink& log, double nonzeros, double megabytes) {
  const double rounded = std::round(megabytes);
  if (rounded >= 1000) {
    log.print(" Factor NZ  : %.3e (roughly %.1f GBytes of memory)\n", nonzeros, rounded / 1000);
  } else if (rounded == 1) {
    log.print(" Factor NZ  : %.3e (roughly %.0f MByte of memory)\n", nonzeros, rounded);
  } else if (rounded == 0) {
    log.print(" Factor NZ  : %.3e\n", nonzeros);
  } else {
    log.print(" Factor NZ  : %.3e (roughly %.0f MBytes of memory)\n", nonzeros, rounded);
  }
}

void print_work(LogSink& log, const BarrierStatistics& statistics) {
  const double seconds = std::round(statistics.seconds_per_iteration);
  if (statistics.quadratic) {
    log.print(" Factor Ops : %.3e\n", statistics.factor_operations);
  } else if (seconds == 0) {
    log.print(" Factor Ops : %.3e (less than 1 second per iteration)\n", statistics.factor_operations);
  } else if (seconds == 1) {
    log.print(" Factor Ops : %.3e (roughly %.0f second per iteration)\n", statistics.factor_operations, seconds);
  } else {
    log.print(" Factor Ops : %.3e (roughly %.0f seconds per iteration)\n", statistics.factor_operations, seconds);
  }
}

}  // namespace

void print_statistics(LogSink& log, const BarrierStatistics& statistics) {
  log.write(statistics.quadratic ? "\nQ statistics:\n" : "\nBarrier statistics:\n");
  if (statistics.dense_cols > 0) log.print(" Dense cols : %d\n", statistics.dense_cols);
  if (statistics.free_vars > 0) log.print(" Free vars  : %d\n", statistics.free_vars);
  log.print(statistics.quadratic ? " Q NZ       : %.3e\n" : " AA' NZ     : %.3e\n", statistics.matrix_nonzeros);
  print_memory(log, statistics.factor_nonzeros, statistics.megabytes);
  print_work(log, statistics);
  log.print(" Threads    : %d\n", statistics.threads);
}

void print_iteration_header(LogSink& log, bool root) {
  if (root) log.write("Root barrier log...\n");
  log.write("\n                  Objective                Residual\n");
  log.write("Iter       Primal          Dual         Primal    Dual     Compl     Time\n");
}

void print_iteration(LogSink& log, int iteration, const Progress& progress, int sense, double seconds) {
  log.print(" %3d  %15.8e %15.8e  %.2e %.2e  %.2e  %4.0fs\n", iteration, sense * progress.primal_objective,
            sense * progress.dual_objective, progress.primal_residual, progress.dual_residual, progress.complementarity,
            std::floor(seconds));
}

void print_termination(LogSink& log, SolveStatus status, int error, int iterations, double seconds, double objective) {
  if (status == SolveStatus::kOptimal && error == 0) {
    log.print("\nBarrier solved model in %d iterations and %.2f seconds\n", iterations, seconds);
  } else {
    log.print("\nBarrier performed %d iterations in %.2f seconds\n", iterations, seconds);
  }
  if (error != 0) {
    log.write("Error termination\n\n");
    return;
  }
  switch (status) {
    case SolveStatus::kOptimal:
      log.print("Optimal objective %.8e\n", objective);
      break;
    case SolveStatus::kCutoff:
      log.write("Objective cutoff exceeded\n");
      break;
    case SolveStatus::kIterationLimit:
      log.write("Iteration limit exceeded\n");
      break;
    case SolveStatus::kTimeLimit:
      log.write("Time limit exceeded\n");
      break;
    case SolveStatus::kInterrupted:
      log.write("Optimization interrupted\n");
      break;
    case SolveStatus::kNumeric:
      log.write("Numerical trouble encountered\n");
      break;
    case SolveStatus::kSuboptimal:
      log.print("Sub-optimal termination - objective %.8e\n", objective);
      break;
    default:
      log.write("Unknown termination status\n");
  }
  log.write("\n");
}

void print_presolved_away(LogSink& log, SolveStatus status, double objective, double seconds) {
  log.print("Barrier solved model in 0 iterations and %.2f seconds\n", seconds);
  switch (status) {
    case SolveStatus::kOptimal:
      log.print("Optimal objective %.8e\n", objective);
      break;
    case SolveStatus::kInfeasible:
      log.write("Model is infeasible\n");
      break;
    case SolveStatus::kUnbounded:
      log.write("Model is unbounded\n");
      break;
    case SolveStatus::kInfOrUnbd:
      log.write("Model is infeasible or unbounded\n");
      break;
    default:
      break;
  }
}

}  // namespace zorvex
