#include "mip/termination.hpp"

#include <gtest/gtest.h>

namespace zorvex {
namespace {

// Every condition true at once; tests take them away one by one in the order in which they are asked.
TEST(Termination, OrderOfTheChecks) {
  MipOptions options;
  options.mip_gap = 0.5;
  options.mip_gap_abs = 100;
  options.node_limit = 10;
  options.iteration_limit = 100;
  options.time_limit = 5;
  options.hidden_time_limit = 5;
  options.solution_limit = 1;
  options.improve_start_gap = 0.5;
  TerminationInput input;
  input.status = SolveStatus::kCutoff;
  input.interrupted = true;
  input.incumbent = 1e100;
  input.node_bound = 1e100;
  input.pruning_cutoff = 8;
  input.explored = 10;
  input.iterations = 100;
  input.call_seconds = 5.5;
  input.search_seconds = 5.5;
  input.solutions = 1;

  EXPECT_EQ(termination_test(input, options), SolveStatus::kCutoff);
  input.status = SolveStatus::kLoaded;
  EXPECT_EQ(termination_test(input, options), SolveStatus::kInterrupted);
  input.interrupted = false;
  EXPECT_EQ(termination_test(input, options), SolveStatus::kInfeasible);
  input.incumbent = 10;
  input.node_bound = 9;
  EXPECT_EQ(termination_test(input, options), SolveStatus::kOptimal) << "bound above the cutoff";
  input.pruning_cutoff = 9.99;
  EXPECT_EQ(termination_test(input, options), SolveStatus::kOptimal) << "relative gap";
  options.mip_gap = 0.1;  // the gap is exactly that: not below
  EXPECT_EQ(termination_test(input, options), SolveStatus::kOptimal) << "absolute gap";
  options.mip_gap_abs = 1;
  EXPECT_EQ(termination_test(input, options), SolveStatus::kNodeLimit);
  input.explored = 9;
  EXPECT_EQ(termination_test(input, options), SolveStatus::kIterationLimit);
  input.iterations = 99;
  EXPECT_EQ(termination_test(input, options), SolveStatus::kTimeLimit);
  input.call_seconds = 5;  // must be exceeded
  EXPECT_EQ(termination_test(input, options), SolveStatus::kTimeLimit) << "hidden limit";
  input.search_seconds = 5;
  EXPECT_EQ(termination_test(input, options), SolveStatus::kSolutionLimit);
  input.solutions = 0;
  EXPECT_EQ(termination_test(input, options), kImprovementPhase);
  options.improve_start_gap = 0.1;
  EXPECT_EQ(termination_test(input, options), SolveStatus::kLoaded);
}

TEST(Termination, GapsNeedAnIncumbent) {
  MipOptions options;
  options.mip_gap = 1e30;
  options.improve_start_gap = 1e30;
  TerminationInput input;
  input.node_bound = 4;
  EXPECT_EQ(termination_test(input, options), SolveStatus::kLoaded);
  input.incumbent = 5;
  EXPECT_EQ(termination_test(input, options), SolveStatus::kOptimal);
  options.mip_gap = 0;
  EXPECT_EQ(termination_test(input, options), kImprovementPhase);
  input.incumbent = 6e99;  // an incumbent for the gap, none for the improvement phase
  EXPECT_EQ(termination_test(input, options), SolveStatus::kLoaded);
}

TEST(Termination, ZeroIncumbentMeasuresAgainstTheFloor) {
  MipOptions options;
  TerminationInput input;
  input.incumbent = 0;
  input.node_bound = -0.5;
  input.pruning_cutoff = -1e-9;
  EXPECT_EQ(termination_test(input, options), SolveStatus::kLoaded);
  options.mip_gap = 6e5;
  EXPECT_EQ(termination_test(input, options), SolveStatus::kOptimal);
}

TEST(Termination, ImprovementTime) {
  MipOptions options;
  options.improve_start_time = 10;
  struct Row {
    SolveStatus status;
    double incumbent, seconds;
    SolveStatus expected;
  };
  for (const Row& row :
       {Row{SolveStatus::kLoaded, 5, 10.5, kImprovementPhase}, Row{SolveStatus::kLoaded, 5, 10, SolveStatus::kLoaded},
        Row{SolveStatus::kLoaded, 1e99, 10.5, SolveStatus::kLoaded},
        Row{SolveStatus::kLoaded, 1e100, 10.5, SolveStatus::kLoaded},
        Row{SolveStatus::kNodeLimit, 5, 10.5, SolveStatus::kNodeLimit}}) {
    TerminationInput input;
    input.status = row.status;
    input.incumbent = row.incumbent;
    input.call_seconds = row.seconds;
    EXPECT_EQ(improvement_time_test(input, options), row.expected);
  }
}

}  // namespace
}  // namespace zorvex
