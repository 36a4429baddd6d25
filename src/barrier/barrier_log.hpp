// The lines that the barrier writes: statistics block, iterations, closing lines.
#pragma once

#include "barrier/interior_point.hpp"
#include "barrier/newton_system.hpp"
#include "base/log_sink.hpp"
#include "base/status.hpp"

namespace zorvex {

// What the statistics block shows.
struct BarrierStatistics {
  bool quadratic = false;
  int dense_cols = 0;
  int free_vars = 0;
  double matrix_nonzeros = 0;  // half of those of A A' with its diagonal, or those of Q in both triangles
  double factor_nonzeros = 0;
  double factor_operations = 0;
  double megabytes = 0;
  double seconds_per_iteration = 0;
  int threads = 1;
};

void print_statistics(LogSink& log, const BarrierStatistics& statistics);
void print_iteration_header(LogSink& log, bool root);
// Objectives in the user's sense.
void print_iteration(LogSink& log, int iteration, const Progress& progress, int sense, double seconds);
// `objective` in the user's sense; `error` is the code of a solve that failed, 0 otherwise.
void print_termination(LogSink& log, SolveStatus status, int error, int iterations, double seconds, double objective);
// Closing lines when presolve left nothing to iterate on.
void print_presolved_away(LogSink& log, SolveStatus status, double objective, double seconds);

}  // namespace zorvex
