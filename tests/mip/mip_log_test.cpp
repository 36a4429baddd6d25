#include "mip/mip_log.hpp"
#include "support/text_log.hpp"

#include <gtest/gtest.h>

namespace zorvex::testing {
namespace {

constexpr const char* kHeader =
    "\n"
    "    Nodes    |    Current Node    |     Objective Bounds      |     Work\n"
    " Expl Unexpl |  Obj  Depth IntInf | Incumbent    BestBd   Gap | It/Node Time\n"
    "\n";

TEST(MipLog, WidthTen) {
  struct Row {
    double value;
    const char* text;
  };
  for (const Row& row :
       {Row{0, "0.00000"}, Row{-0.25, "-0.25000"}, Row{999.5, "999.50000"}, Row{-999.5, "-999.50000"},
        Row{1000, "1000.00000"}, Row{-1000, "-1000.0000"}, Row{12345.678, "12345.6780"}, Row{1234567.891, "1234567.89"},
        Row{-1234567.891, "-1234567.9"}, Row{123456789, "1.2346e+08"}, Row{-123456789, "-1.235e+08"},
        Row{12345678, "1.2346e+07"}, Row{1e99, "1.0000e+99"}, Row{1e100, "1.000e+100"}, Row{1e-7, "0.00000"}}) {
    EXPECT_EQ(format_width10(row.value), row.text) << row.value;
  }
}

TEST(MipLog, WidthTwelve) {
  struct Row {
    double value;
    const char* text;
  };
  for (const Row& row : {Row{0, "0.0000000"}, Row{-1.5, "-1.5000000"}, Row{3089, "3089.0000000"},
                         Row{-3089, "-3089.000000"}, Row{1234567.891, "1234567.8910"}, Row{-7654321.5, "-7654321.500"},
                         Row{123456789, "1.234568e+08"}, Row{-123456789, "-1.23457e+08"}, Row{1e100, "1.00000e+100"}}) {
    EXPECT_EQ(format_width12(row.value), row.text) << row.value;
  }
}

TEST(MipLog, Gap) {
  struct Row {
    double incumbent, bound;
    const char* text;
  };
  for (const Row& row : {Row{1e100, -1e100, "- "}, Row{1e100, 5, "- "}, Row{10, -1e100, "- "}, Row{0, -0.5, "- "},
                         Row{0, 0, "0.0%"}, Row{1e-7, 1e-7, "0.0%"}, Row{5, 5 - 5e-11, "0.0%"}, Row{1, 151, "- "},
                         Row{1, -149, "- "}, Row{1, -98, "9900%"}, Row{10000, 51, "99.5%"}, Row{1000, 5, "100%"},
                         Row{10000, 9006, "9.94%"}, Row{1000, 900, "10.0%"}, Row{-100, -101, "1.00%"}}) {
    EXPECT_EQ(format_gap(row.incumbent, row.bound), row.text) << row.incumbent << " " << row.bound;
  }
}

TEST(MipLog, NodeLines) {
  struct Row {
    const char* name;
    NodeDisplay display;
    Progress progress;
    const char* text;
  };
  const Progress none{0, 0, 1e100, -1e100, 0, 0, 0};
  const Progress open{10, 7, 1e100, 120.5, 1010, 10, 9.99};
  const Progress closed{1200, 3, 250, 1e100, 50, 0, 61};
  const Progress busy{2, 3, 250, 245, 410, 10, 3};
  for (const Row& row : {
           Row{"root",
               NodeDisplay::kSolved,
               {0, 0, 1e100, 99.25, 30, 30, 0.4},
               "     0     0   99.25000    4   12          -   99.25000     -      -    0s\n"},
           Row{"no bound", NodeDisplay::kNothing, none,
               "     0     0          -    4               -          -     -      -    0s\n"},
           Row{"relaxation below the bound", NodeDisplay::kSolved, open,
               "    10     7  120.50000    4   12          -  120.50000     -    100    9s\n"},
           Row{"postponed", NodeDisplay::kPostponed, busy,
               "     2     3  postponed    4       250.00000  245.00000  2.00%   200    3s\n"},
           Row{"infeasible", NodeDisplay::kInfeasible, busy,
               "     2     3 infeasible    4       250.00000  245.00000  2.00%   200    3s\n"},
           Row{"cutoff", NodeDisplay::kCutoff, closed,
               "  1200     3     cutoff    4       250.00000 infeasible     -    0.0   61s\n"},
           Row{"exploded", NodeDisplay::kExploded, busy,
               "     2     3   exploded    4       250.00000  245.00000  2.00%   200    3s\n"},
           Row{"quiet", NodeDisplay::kQuiet, busy,
               "     2     3          -    4       250.00000  245.00000  2.00%   200    3s\n"},
           Row{"incumbent", NodeDisplay::kIncumbent, busy,
               "*    2     3               4     250.0000000  245.00000  2.00%   200    3s\n"},
       }) {
    TextLog text;
    MipLog log(text, 1, false);
    log.begin_call(row.progress.explored, 5);
    NodeLine line{row.display, false, 4, 80, 10, 2};
    EXPECT_TRUE(log.node(line, row.progress));
    EXPECT_EQ(text.text(), std::string(kHeader) + row.text) << row.name;
  }
}

TEST(MipLog, MaximisationIsPrintedInTheUsersSense) {
  TextLog text;
  MipLog log(text, -1, false);
  log.begin_call(0, 5);
  log.node({NodeDisplay::kSolved, true, 0, -30, 1, 0}, {0, 0, 0, -30, 4, 4, 0});
  EXPECT_EQ(text.text(),
            std::string(kHeader) + "     0     0   30.00000    0    1    0.00000   30.00000     -      -    0s\n");
}

TEST(MipLog, DepthOffset) {
  TextLog text;
  MipLog log(text, 1, false);
  log.set_depth_offset(7);
  log.node({NodeDisplay::kCutoff, false, 4, 0, 0, 0}, {0, 0, 1e100, 5, 4, 4, 0});
  EXPECT_NE(text.text().find("     cutoff   11 "), std::string::npos);
}

TEST(MipLog, IterationsPerNode) {
  struct Row {
    double iterations;  // 10 of them at the root, the rest over two nodes
    const char* text;
  };
  for (const Row& row : {Row{10, "   0.0    0s\n"}, Row{209.4, "   100    0s\n"}, Row{208.8, "  99.4    0s\n"},
                         Row{209, "   100    0s\n"}}) {
    TextLog text;
    MipLog log(text, 1, false);
    log.begin_call(2, 5);
    log.node({NodeDisplay::kCutoff, false, 1, 0, 0, 0}, {2, 0, 1e100, 5, row.iterations, 10, 0});
    EXPECT_NE(text.text().find(row.text), std::string::npos) << text.text();
  }
}

// Which of a sequence of nodes are printed.
TEST(MipLog, LinePrintingRule) {
  struct Step {
    const char* name;
    NodeDisplay display;
    bool root;
    double explored, elapsed;
    bool printed;
  };
  const auto run = [](double explored_at_start, int interval, const std::vector<Step>& steps) {
    TextLog text;
    MipLog log(text, 1, false);
    log.begin_call(explored_at_start, interval);
    for (const Step& step : steps) {
      NodeLine line{step.display, step.root, 0, 1, 0, 0};
      EXPECT_EQ(log.node(line, {step.explored, 1, 1e100, 1, 1, 1, step.elapsed}), step.printed) << step.name;
    }
  };
  run(0, 5,
      {{"root", NodeDisplay::kSolved, true, 0, 0.1, true},
       {"root again", NodeDisplay::kSolved, true, 0, 0.5, true},
       {"within the interval", NodeDisplay::kSolved, false, 1, 4.9, false},
       {"next interval", NodeDisplay::kSolved, false, 2, 5.1, true},
       {"same interval", NodeDisplay::kInfeasible, false, 3, 9.9, false},
       {"incumbents always", NodeDisplay::kIncumbent, false, 4, 9.95, true},
       {"third interval", NodeDisplay::kCutoff, false, 5, 10, true},
       {"root after nodes", NodeDisplay::kSolved, true, 5, 30, false}});
  run(77, 5,
      {{"first after a restart", NodeDisplay::kSolved, false, 77, 0.1, true},
       {"second", NodeDisplay::kSolved, false, 78, 0.2, false}});
  run(0, 0,
      {{"interval is at least one second", NodeDisplay::kSolved, false, 1, 0.9, false},
       {"one second", NodeDisplay::kSolved, false, 2, 1.0, true}});
}

TEST(MipLog, HeuristicSolutions) {
  TextLog text;
  MipLog log(text, 1, false);
  log.heuristic_solution({0, 0, 3089, -1e100, 0, 0, 0}, false);
  EXPECT_EQ(text.take(), "Found heuristic solution: objective 3089.0000000\n");
  EXPECT_FALSE(log.header_printed());
  log.heuristic_solution({0, 0, 3000, -1e100, 9, 9, 0.5}, true);
  EXPECT_EQ(text.take(),
            std::string(kHeader) + "H    0     0                    3000.0000000          -      -     -    0s\n");
  log.heuristic_solution({4, 5, 2900, 2800, 49, 9, 1.5}, true);
  EXPECT_EQ(text.take(), "H    4     5                    2900.0000000 2800.00000  3.45%  10.0    1s\n");
  log.heuristic_solution({4, 5, 0, -3, 49, 9, 7.5}, true);
  EXPECT_EQ(text.take(), "H    4     5                       0.0000000   -3.00000     -   10.0    7s\n");
  EXPECT_EQ(log.last_printed(), 7.5);
  // Once the header is out, a solution is an H line even if the root is not solved again yet.
  log.heuristic_solution({4, 5, -1, -3, 49, 9, 8}, false);
  EXPECT_EQ(text.take().substr(0, 2), "H ");
}

TEST(MipLog, RootReport) {
  struct Row {
    SolveStatus status;
    const char* word;
  };
  for (const Row& row :
       {Row{SolveStatus::kOptimal, "objective -2.520572e+03"}, Row{SolveStatus::kInfeasible, "infeasible"},
        Row{SolveStatus::kInfOrUnbd, "infeasible or unbounded"}, Row{SolveStatus::kUnbounded, "unbounded"},
        Row{SolveStatus::kCutoff, "cutoff"}, Row{SolveStatus::kIterationLimit, "iteration limit"},
        Row{SolveStatus::kTimeLimit, "time limit"}, Row{SolveStatus::kInterrupted, "interrupted"},
        Row{SolveStatus::kNumeric, "numerical trouble"}, Row{SolveStatus::kSuboptimal, "sub-optimal"},
        Row{SolveStatus::kNodeLimit, "unknown termination status"}}) {
    TextLog text;
    MipLog log(text, -1, false);
    log.root_relaxation(row.status, 2520.5717, 21, 0.004, 6);
    EXPECT_EQ(text.text(), std::string("\nRoot relaxation: ") + row.word + ", 21 iterations, 0.00 seconds\n");
    EXPECT_EQ(log.last_printed(), 6);
  }
  TextLog text;
  MipLog sub(text, 1, true);
  sub.root_relaxation(SolveStatus::kInfeasible, 7, 1, 2, 2);
  EXPECT_EQ(text.text(), "\nRoot relaxation: objective 7.000000e+00, 1 iterations, 2.00 seconds\n");
}

TEST(MipLog, ElapsedTimeOnlyBeforeTheHeaderAndOncePerInterval) {
  TextLog text;
  MipLog log(text, 1, false);
  log.begin_call(0, 5);
  log.elapsed(4.99);
  EXPECT_EQ(text.take(), "");
  log.elapsed(5.018);
  EXPECT_EQ(text.take(), "Total elapsed time = 5.02s\n");
  log.elapsed(9.9);
  EXPECT_EQ(text.take(), "");
  log.elapsed(10.1);
  EXPECT_EQ(text.take(), "Total elapsed time = 10.10s\n");
  log.node({NodeDisplay::kSolved, true, 0, 1, 0, 0}, {0, 0, 1e100, 1, 0, 0, 11});
  text.take();
  log.elapsed(100);
  EXPECT_EQ(text.take(), "");
}

TEST(MipLog, CutSummary) {
  TextLog text;
  MipLog log(text, 1, false);
  std::array<int, kNumCutTypes> counts{};
  log.cut_summary(counts);
  EXPECT_EQ(text.take(), "");
  for (std::size_t k = 0; k < counts.size(); ++k) counts[k] = static_cast<int>(k) + 1;
  log.cut_summary(counts);
  EXPECT_EQ(text.take(),
            "\nCutting planes:\n  User: 1\n  Learned: 2\n  Gomory: 3\n  Cover: 4\n  Implied bound: 5\n  Clique: 6\n"
            "  MIR: 7\n  Flow cover: 8\n  Flow path: 9\n  GUB cover: 10\n  Zero half: 12\n  Mod-K: 15\n"
            "  Network: 14\n");
  counts.fill(0);
  counts[12] = 3;
  log.cut_summary(counts);
  EXPECT_EQ(text.take(), "\nCutting planes:\n");
}

TEST(MipLog, Announcements) {
  TextLog text;
  MipLog log(text, -1, false);
  log.start_loaded(-31.5);
  log.start_failed();
  log.variable_types(3, 5, 2);
  log.fixed_variables(0, 8);
  log.fixed_variables(4, 8);
  log.continuing();
  log.improvement_phase();
  log.unknown_termination();
  EXPECT_EQ(text.take(),
            "\nLoaded MIP start with objective 31.5\n\n\nMIP start did not produce a feasible solution\n\n"
            "Variable types: 3 continuous, 5 integer (2 binary)\nFixed variables: 4 of 8\n"
            "\nContinuing optimization...\n\n"
            "\nResetting heuristic parameters to focus on improving solution\n"
            "(using Heuristics=0.5 and RINS=10)...\n\nUnknown termination status!\n");
  MipLog sub(text, 1, true);
  sub.variable_types(1, 1, 1);
  EXPECT_EQ(text.take(), "");
}

}  // namespace
}  // namespace zorvex::testing
