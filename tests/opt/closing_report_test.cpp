#include "opt/closing_report.hpp"

#include <gtest/gtest.h>

#include "base/types.hpp"
#include "support/text_log.hpp"

namespace zorvex {
namespace {

TEST(ClosingReport, Gap) {
  const struct {
    double objective, bound;
    const char* text;
  } cases[] = {
      {0, 0, "0.0%"},          {100, 99, "1.0000%"}, {99, 100, "1.0101%"},   {-100, -99, "1.0000%"},
      {1e100, 5, "-"},         {5, -1e100, "-"},     {1e100, 1e100, "-"},    {1e-7, 1, "-"},
      {1e-6, 1, "-"},          {2e-6, 2e-6, "0.0%"}, {1, 1 + 5e-11, "0.0%"}, {1, 1 + 2e-10, "0.0000%"},
      {1, 151, "15000.0000%"}, {1, -1, "200.0000%"}, {-kInf, 1, "-"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.text, gap_text(c.objective, c.bound)) << c.objective << " " << c.bound;
}

TEST(ClosingReport, StatusLines) {
  const struct {
    SolveStatus status;
    int error;
    const char* line;
  } cases[] = {
      {SolveStatus::kLoaded, 0, ""},
      {SolveStatus::kOptimal, 0, "Optimal solution found (tolerance 1.00e-04)\n"},
      {SolveStatus::kInfeasible, 0, "Model is infeasible\n"},
      {SolveStatus::kInfOrUnbd, 0, "Model is infeasible or unbounded\n"},
      {SolveStatus::kUnbounded, 0, "Model is unbounded\n"},
      {SolveStatus::kCutoff, 0, "Model objective exceeds cutoff\n"},
      {SolveStatus::kIterationLimit, 0, "Iteration limit reached\n"},
      {SolveStatus::kNodeLimit, 0, "Node limit reached\n"},
      {SolveStatus::kTimeLimit, 0, "Time limit reached\n"},
      {SolveStatus::kSolutionLimit, 0, "Solution limit reached\n"},
      {SolveStatus::kInterrupted, 0, "Solve interrupted\n"},
      {SolveStatus::kInterrupted, 10001, "Solve interrupted (error code 10001)\n"},
      {SolveStatus::kNumeric, 0, ""},
      {SolveStatus::kSuboptimal, 0, ""},
  };
  for (const auto& c : cases) {
    ClosingFigures figures;
    figures.nodes = 7;
    figures.iterations = 1234567;
    figures.seconds = 1.006;
    figures.threads = 1;
    figures.processors = 4;
    figures.tolerance = 1e-4;
    figures.status = c.status;
    figures.error = c.error;
    figures.objective = 12.5;
    TextLog log;
    print_closing_report(log, figures);
    EXPECT_EQ(std::string("\nExplored 7 nodes (1234567 simplex iterations) in 1.01 seconds\n"
                          "Thread count was 1 (of 4 available processors)\n\n") +
                  c.line + "Best objective 1.250000000000e+01, best bound -, gap -\n",
              log.text());
  }
}

}  // namespace
}  // namespace zorvex
