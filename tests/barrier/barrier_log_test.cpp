// The lines of the barrier, byte for byte.
#include "barrier/barrier_log.hpp"
#include "support/text_log.hpp"

#include <gtest/gtest.h>

#include <string>

namespace zorvex {
namespace {

BarrierStatistics sample() {
  BarrierStatistics statistics;
  statistics.matrix_nonzeros = 1234;
  statistics.factor_nonzeros = 5678;
  statistics.factor_operations = 91011;
  statistics.threads = 2;
  return statistics;
}

TEST(BarrierLog, StatisticsOfALinearModel) {
  TextLog log;
  print_statistics(log, sample());
  EXPECT_EQ(log.text(),
            "\nBarrier statistics:\n"
            " AA' NZ     : 1.234e+03\n"
            " Factor NZ  : 5.678e+03\n"
            " Factor Ops : 9.101e+04 (less than 1 second per iteration)\n"
            " Threads    : 2\n");
}

TEST(BarrierLog, StatisticsOfAQuadraticModel) {
  BarrierStatistics statistics = sample();
  statistics.quadratic = true;
  statistics.dense_cols = 3;
  statistics.free_vars = 4;
  statistics.megabytes = 12.4;
  statistics.seconds_per_iteration = 100;
  TextLog log;
  print_statistics(log, statistics);
  EXPECT_EQ(log.text(),
            "\nQ statistics:\n"
            " Dense cols : 3\n"
            " Free vars  : 4\n"
            " Q NZ       : 1.234e+03\n"
            " Factor NZ  : 5.678e+03 (roughly 12 MBytes of memory)\n"
            " Factor Ops : 9.101e+04\n"
            " Threads    : 2\n");
}

TEST(BarrierLog, UnitsOfMemoryAndTime) {
  struct Case {
    double megabytes, seconds;
    const char *memory, *work;
  };
  constexpr Case kCases[] = {
      {0.4, 0.4, " Factor NZ  : 5.678e+03\n", " (less than 1 second per iteration)\n"},
      {1.0, 1.2, " Factor NZ  : 5.678e+03 (roughly 1 MByte of memory)\n", " (roughly 1 second per iteration)\n"},
      {0.5, 0.5, " (roughly 1 MByte of memory)\n", " (roughly 1 second per iteration)\n"},
      {1.6, 1.6, " (roughly 2 MBytes of memory)\n", " (roughly 2 seconds per iteration)\n"},
      {999.4, 75, " (roughly 999 MBytes of memory)\n", " (roughly 75 seconds per iteration)\n"},
      {999.6, 75, " (roughly 1.0 GBytes of memory)\n", " (roughly 75 seconds per iteration)\n"},
      {1500, 75, " (roughly 1.5 GBytes of memory)\n", " (roughly 75 seconds per iteration)\n"},
  };
  for (const Case& each : kCases) {
    BarrierStatistics statistics = sample();
    statistics.megabytes = each.megabytes;
    statistics.seconds_per_iteration = each.seconds;
    TextLog log;
    print_statistics(log, statistics);
    EXPECT_NE(log.text().find(each.memory), std::string::npos) << log.text();
    EXPECT_NE(log.text().find(each.work), std::string::npos) << log.text();
  }
}

TEST(BarrierLog, IterationLines) {
  Progress progress;
  progress.primal_objective = 12.5;
  progress.dual_objective = -3;
  progress.primal_residual = 1e-3;
  progress.dual_residual = 2.5;
  progress.complementarity = 1e10;
  TextLog log;
  print_iteration_header(log, true);
  print_iteration(log, 7, progress, -1, 3.99);
  EXPECT_EQ(log.text(),
            "Root barrier log...\n"
            "\n"
            "                  Objective                Residual\n"
            "Iter       Primal          Dual         Primal    Dual     Compl     Time\n"
            "   7  -1.25000000e+01  3.00000000e+00  1.00e-03 2.50e+00  1.00e+10     3s\n");
}

TEST(BarrierLog, ClosingLines) {
  struct Case {
    SolveStatus status;
    int error;
    const char* text;
  };
  constexpr Case kCases[] = {
      {SolveStatus::kOptimal, 0,
       "\nBarrier solved model in 9 iterations and 1.50 seconds\nOptimal objective 2.25000000e+00\n\n"},
      {SolveStatus::kCutoff, 0, "\nBarrier performed 9 iterations in 1.50 seconds\nObjective cutoff exceeded\n\n"},
      {SolveStatus::kIterationLimit, 0,
       "\nBarrier performed 9 iterations in 1.50 seconds\nIteration limit exceeded\n\n"},
      {SolveStatus::kTimeLimit, 0, "\nBarrier performed 9 iterations in 1.50 seconds\nTime limit exceeded\n\n"},
      {SolveStatus::kInterrupted, 0, "\nBarrier performed 9 iterations in 1.50 seconds\nOptimization interrupted\n\n"},
      {SolveStatus::kNumeric, 0, "\nBarrier performed 9 iterations in 1.50 seconds\nNumerical trouble encountered\n\n"},
      {SolveStatus::kSuboptimal, 0,
       "\nBarrier performed 9 iterations in 1.50 seconds\n"
       "Sub-optimal termination - objective 2.25000000e+00\n\n"},
      {SolveStatus::kLoaded, kErrorQNotPsd, "\nBarrier performed 9 iterations in 1.50 seconds\nError termination\n\n"},
      {SolveStatus::kLoaded, 0, "\nBarrier performed 9 iterations in 1.50 seconds\nUnknown termination status\n\n"},
  };
  for (const Case& each : kCases) {
    TextLog log;
    print_termination(log, each.status, each.error, 9, 1.5, 2.25);
    EXPECT_EQ(log.text(), each.text);
  }
}

TEST(BarrierLog, ClosingLinesWhenPresolveDecided) {
  constexpr std::pair<SolveStatus, const char*> kCases[] = {
      {SolveStatus::kOptimal, "Optimal objective 4.00000000e+00\n"},
      {SolveStatus::kInfeasible, "Model is infeasible\n"},
      {SolveStatus::kUnbounded, "Model is unbounded\n"},
      {SolveStatus::kInfOrUnbd, "Model is infeasible or unbounded\n"},
  };
  for (const auto& [status, line] : kCases) {
    TextLog log;
    print_presolved_away(log, status, 4, 0.25);
    EXPECT_EQ(log.text(), std::string("Barrier solved model in 0 iterations and 0.25 seconds\n") + line);
  }
}

}  // namespace
}  // namespace zorvex
