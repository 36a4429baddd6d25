#include "opt/closing_report.hpp"

#include <array>
#include <cmath>
#include <cstdio>

#include "base/tolerances.hpp"
#include "env/parameter_table.hpp"

namespace zorvex {

namespace {

bool exists(double value) { return std::abs(value) < kParameterInfinity; }

std::string value_text(double value) {
  if (!exists(value)) return "-";
  std::array<char, 32> text;
  std::snprintf(text.data(), text.size(), "%.12e", value);
  return text.data();
}

void print_status_line(LogSink& log, const ClosingFigures& figures) {
  switch (figures.status) {
    case SolveStatus::kOptimal:
      return log.print("Optimal solution found (tolerance %.2e)\n", figures.tolerance);
    case SolveStatus::kInfeasible:
      return log.write("Model is infeasible\n");
    case SolveStatus::kInfOrUnbd:
      return log.write("Model is infeasible or unbounded\n");
    case SolveStatus::kUnbounded:
      return log.write("Model is unbounded\n");
    case SolveStatus::kCutoff:
      return log.write("Model objective exceeds cutoff\n");
    case SolveStatus::kIterationLimit:
      return log.write("Iteration limit reached\n");
    case SolveStatus::kNodeLimit:
      return log.write("Node limit reached\n");
    case SolveStatus::kTimeLimit:
      return log.write("Time limit reached\n");
    case SolveStatus::kSolutionLimit:
      return log.write("Solution limit reached\n");
    case SolveStatus::kInterrupted:
      if (figures.error != kOk) return log.print("Solve interrupted (error code %d)\n", figures.error);
      return log.write("Solve interrupted\n");
    default:
      return;
  }
}

}  // namespace

std::string gap_text(double objective, double bound) {
  if (!exists(objective) || !exists(bound)) return "-";
  if (std::abs(objective - bound) < kReportNoGap) return "0.0%";
  if (!(std::abs(objective) > kReportMinObjective)) return "-";
  std::array<char, 400> text;  // a gap of 1e300 has that many digits
  std::snprintf(text.data(), text.size(), "%.4f%%", 100 * std::abs((objective - bound) / objective));
  return text.data();
}

void print_closing_report(LogSink& log, const ClosingFigures& figures) {
  log.print("\nExplored %.0f nodes (%.0f simplex iterations) in %.2f seconds\n", figures.nodes, figures.iterations,
            figures.seconds);
  log.print("Thread count was %d (of %d available processors)\n", figures.threads, figures.processors);
  log.write("\n");
  print_status_line(log, figures);
  log.print("Best objective %s, best bound %s, gap %s\n", value_text(figures.objective).c_str(),
            value_text(figures.bound).c_str(), gap_text(figures.objective, figures.bound).c_str());
}

}  // namespace zorvex
