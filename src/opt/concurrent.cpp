#include "opt/concurrent.hpp"

#include <algorithm>
#include <string>
#include <vector>

#include "opt/race.hpp"

namespace zorvex {

namespace {

constexpr int kSimplexLanes = 2;  // taken from the threads before the barrier gets more than one

EngineAnswer run_simplex(const LpData& lp, SimplexOptions options, SimplexAlgorithm algorithm,
                         const SimplexLimits& limits, const StopToken& stop, LogSink& log) {
  options.algorithm = algorithm;
  LpSolver solver(lp, options, log);
  solver.solve(limits, stop);
  return answer_of(solver);
}

void announce(const std::vector<Contestant>& contestants, LogSink& log) {
  std::string names;
  for (std::size_t k = 0; k < contestants.size(); ++k) {
    if (k > 0) names += k + 1 < contestants.size() ? ", " : " and ";
    names += contestants[k].name;
  }
  log.print("Concurrent optimizer: %s\n", names.c_str());
}

}  // namespace

EngineAnswer ConcurrentEngine::solve(const LpData& lp, const SimplexLimits& limits, const StopToken& stop,
                                     LogSink& log) {
  if (options_.threads <= 1) return run_simplex(lp, options_.simplex, SimplexAlgorithm::kDual, limits, stop, log);
  const auto simplex = [&](SimplexAlgorithm algorithm) {
    return [&, algorithm](const StopToken& token) {
      QuietLog quiet;
      return run_simplex(lp, options_.simplex, algorithm, limits, token, quiet);
    };
  };
  const auto barrier = [&](const StopToken& token) {
    BarrierEngineOptions options = options_.barrier;
    options.barrier.threads = std::max(1, options_.threads - kSimplexLanes);
    QuietLog quiet;
    return BarrierEngine(options).solve(lp, limits, token, quiet);
  };
  std::vector<Contestant> contestants{{"dual simplex", simplex(SimplexAlgorithm::kDual)}, {"barrier", barrier}};
  if (options_.threads > kSimplexLanes) contestants.push_back({"primal simplex", simplex(SimplexAlgorithm::kPrimal)});
  announce(contestants, log);
  RaceResult result = run_race(contestants, options_.by_work, stop);
  if (result.winner >= 0) log.print("Solved by %s\n", contestants[result.winner].name);
  result.answer.reported = false;
  return std::move(result.answer);
}

}  // namespace zorvex
