// What crossover costs: crossover_bench [--all] [--seconds S] FILE...
// For each model: presolve, barrier, then crossover from the interior point;
// with --all under every value of Crossover and CrossoverBasis. Prints seconds
// and iterations of the barrier, seconds of the crossover, variables pushed,
// pivots of the pushes and of the simplex behind them; beside it the dual
// simplex from scratch, stopped after S seconds (default 20).
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "barrier/barrier.hpp"
#include "barrier/crossover.hpp"
#include "base/stop_token.hpp"
#include "model_file.hpp"

namespace zorvex {
namespace {

struct Settings {
  bool all = false;
  double seconds = 20;
};

void cross(const LpData& lp, const BarrierResult& barrier, int crossover, int basis, double seconds) {
  const InteriorPoint point{barrier.point.x, barrier.point.row_activity, barrier.point.pi, barrier.point.reduced_cost};
  CrossoverOptions options;
  options.crossover = crossover;
  options.crossover_basis = basis;
  QuietLog log;
  const double start = now_seconds();
  const CrossoverResult result = run_crossover(lp, point, options, {}, {nullptr, start + seconds}, log);
  double objective = lp.offset;
  for (Index col = 0; col < static_cast<Index>(result.point.x.size()); ++col)
    objective += lp.cost[col] * result.point.x[col];
  std::printf("  %2d/%d  %8.3fs  %7.0f pushes %7.0f pivots (%d, %d) + %7.0f   status %d  %.10g\n", crossover, basis,
              now_seconds() - start, result.pushes, result.push_pivots, result.primal_infeasibilities,
              result.dual_infeasibilities, result.iterations - result.push_pivots, static_cast<int>(result.status),
              objective);
  std::fflush(stdout);
}

void measure(const std::string& name, const LpData& lp, const Settings& settings) {
  QuietLog log;
  double start = now_seconds();
  const BarrierResult barrier = solve_barrier(lp, {}, {nullptr, start + settings.seconds}, log);
  std::printf("%-24s %6d x %7d  barrier %8.3fs %3d it status %d  %.10g", name.c_str(), lp.num_rows(), lp.num_cols(),
              now_seconds() - start, barrier.iterations, static_cast<int>(barrier.status), barrier.primal_objective);
  start = now_seconds();
  LpSolver solver(lp, {}, log);
  solver.solve({}, {nullptr, start + settings.seconds});
  std::printf("   dual simplex %8.3fs %7.0f status %d\n", now_seconds() - start, solver.iterations(),
              static_cast<int>(solver.status()));
  if (barrier.point.x.empty()) return;
  for (int basis = 0; basis < (settings.all ? 2 : 1); ++basis) {
    cross(lp, barrier, -1, basis, settings.seconds);
    for (int crossover = 1; settings.all && crossover <= 4; ++crossover) {
      cross(lp, barrier, crossover, basis, settings.seconds);
    }
  }
}

bool run(ZLPenv* env, const std::string& file, const Settings& settings) {
  return with_presolved(env, file, [&](const std::string& name, const LpData& lp) { measure(name, lp, settings); });
}

}  // namespace
}  // namespace zorvex

int main(int argc, char** argv) {
  ZLPenv* env = nullptr;
  if (ZLPloadenv(&env, nullptr) != 0) return 1;
  ZLPsetintparam(env, "OutputFlag", 0);
  zorvex::Settings settings;
  bool ok = true;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word == "--all") {
      settings.all = true;
    } else if (word == "--seconds" && i + 1 < argc) {
      settings.seconds = std::atof(argv[++i]);
    } else {
      ok = zorvex::run(env, word, settings) && ok;
    }
  }
  ZLPfreeenv(env);
  return ok ? 0 : 1;
}
