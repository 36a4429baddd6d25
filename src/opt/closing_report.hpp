// The block that ends the log of every MIP solve.
#pragma once

#include <string>

#include "base/log_sink.hpp"
#include "base/status.hpp"

namespace zorvex {

// Objective and bound are in the user's sense; a magnitude of 1e100 means that there is none.
struct ClosingFigures {
  double nodes = 0;
  double iterations = 0;
  double seconds = 0;
  int threads = 1;
  int processors = 1;
  SolveStatus status = SolveStatus::kLoaded;
  int error = 0;         // code the solve ended with
  double tolerance = 0;  // MIPGap
  double objective = 1e100;
  double bound = -1e100;
};

void print_closing_report(LogSink& log, const ClosingFigures& figures);

// Relative gap in percent, "-" when it cannot be told.
std::string gap_text(double objective, double bound);

}  // namespace zorvex
