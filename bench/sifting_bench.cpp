// Sifting against the dual simplex on generated wide models: sifting_bench [--seconds S] [ROWS...]
// For every kind of model, number of rows (default 100 200 500 1000) and 5 to 200 columns a row: seconds and pivots of
// the dual simplex, stopped after S seconds (default 20), and of sifting with primal, dual and barrier sub-problems.
// The automatic rule of sifting follows this table.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "barrier/sifting.hpp"
#include "base/stop_token.hpp"
#include "support/wide_lp.hpp"

namespace zorvex {
namespace {

using oracle::WideKind;

struct NamedKind {
  const char* name;
  WideKind kind;
};
constexpr NamedKind kKinds[] = {{"covering", WideKind::kCovering},
                                {"partitioning", WideKind::kPartitioning},
                                {"cutting", WideKind::kCutting},
                                {"packing", WideKind::kPacking},
                                {"boxed", WideKind::kBoxed}};
constexpr Index kRatios[] = {5, 10, 20, 50, 100, 200};
constexpr const char* kMethods[] = {"primal", "dual", "barrier"};

void measure(const NamedKind& kind, Index rows, Index ratio, double seconds) {
  RandomStream random(1, kind.name);
  const LpData lp = oracle::wide_lp(kind.kind, rows, rows * ratio, random);
  QuietLog log;
  double start = now_seconds();
  LpSolver solver(lp, {}, log);
  const bool solved = solver.solve({}, {nullptr, start + seconds}) == SolveStatus::kOptimal;
  std::printf("%-13s %5d x %7d   simplex %s%8.3fs %8.0f", kind.name, rows, rows * ratio, solved ? " " : ">",
              now_seconds() - start, solver.iterations());
  for (int method = 0; method < 3; ++method) {
    start = now_seconds();
    const EngineAnswer answer =
        run_sifting(lp, {.sifting = 1, .sift_method = method}, {}, {nullptr, start + seconds}, log);
    const bool done = answer.status == SolveStatus::kOptimal;
    std::printf("   %s %s%8.3fs %8.0f", kMethods[method], done ? " " : ">", now_seconds() - start, answer.iterations);
    double objective = solver.data().offset;
    for (Index col = 0; done && col < lp.num_cols(); ++col) objective += lp.cost[col] * answer.point.x[col];
    if (solved && done && std::abs(objective - solver.objective()) > 1e-6 * (1 + std::abs(objective))) {
      std::printf(" WRONG %.9g", objective);
    }
  }
  std::printf("\n");
  std::fflush(stdout);
}

}  // namespace
}  // namespace zorvex

int main(int argc, char** argv) {
  double seconds = 20;
  std::vector<zorvex::Index> rows;
  for (int k = 1; k < argc; ++k) {
    if (std::strcmp(argv[k], "--seconds") == 0 && k + 1 < argc) {
      seconds = std::atof(argv[++k]);
    } else {
      rows.push_back(std::atoi(argv[k]));
    }
  }
  if (rows.empty()) rows = {100, 200, 500, 1000};
  for (const zorvex::NamedKind& kind : zorvex::kKinds) {
    for (const zorvex::Index m : rows) {
      for (const zorvex::Index ratio : zorvex::kRatios) zorvex::measure(kind, m, ratio, seconds);
    }
  }
  return 0;
}
