#include "mip/heuristic.hpp"

#include <algorithm>
#include <array>

namespace zorvex {

#define HEURISTIC(name) extern const Heuristic name;
#include "mip/heuristics.inc"
#undef HEURISTIC

std::span<const Heuristic* const> heuristics() {
#define HEURISTIC(name) &name,
  static constexpr std::array kList = {
#include "mip/heuristics.inc"
  };
#undef HEURISTIC
  return kList;
}

namespace {

constexpr double kFreeIterations = 1000;  // of dives, not counted against the tree
constexpr double kFreeRootShare = 10;     // or this share of the root's iterations
constexpr double kShareFactor = 6;        // times the parameter Heuristics: dive iterations per tree iteration
constexpr double kDiveEvery = 12;         // nodes between dives
constexpr double kSubMipEvery = 100;

// Effort that heuristics may have spent by now.
bool budget_left(const SearchState& state) {
  const double share = kShareFactor * state.options.heuristics * (state.incumbents.empty() ? 3 : 1);
  const double tree = state.total_iterations() - state.heuristic_iterations;
  const double free = std::max(kFreeIterations, kFreeRootShare * state.root_iterations);
  return state.heuristic_iterations < free * std::min(1.0, 20 * state.options.heuristics) + share * tree;
}

bool due(const SearchState& state, HeuristicTiming timing, std::size_t turn) {
  const double explored = state.explored;
  switch (timing) {
    case HeuristicTiming::kBeforeRoot:
      return false;
    case HeuristicTiming::kRelaxation:
      return true;
    case HeuristicTiming::kDive: {
      if (explored == 0) return true;
      // The dives take turns: one of them at every kDiveEvery-th node.
      const auto visit = static_cast<std::size_t>(explored / kDiveEvery);
      return explored == static_cast<double>(visit) * kDiveEvery && visit % 4 == turn % 4;
    }
    case HeuristicTiming::kSubMip: {
      if (state.options.rins == 0) return false;
      const double every = state.options.rins > 0 ? state.options.rins : kSubMipEvery;
      return explored == 0 || explored == every * static_cast<double>(static_cast<long>(explored / every));
    }
  }
  return false;
}

}  // namespace

void run_heuristics(HeuristicContext& context) {
  SearchState& state = context.state;
  if (state.options.heuristics <= 0) return;
  std::size_t turn = 0;
  for (const Heuristic* heuristic : heuristics()) {
    if (heuristic->timing == HeuristicTiming::kDive) ++turn;
    if (!due(state, heuristic->timing, turn) || state.must_stop()) continue;
    if (heuristic->timing != HeuristicTiming::kRelaxation && !budget_left(state)) continue;
    heuristic->run(context);
    if (state.incumbents.prunes(context.node->bound)) return;
  }
}

void run_start_heuristics(SearchState& state) {
  if (state.options.heuristics <= 0) return;
  HeuristicContext context{state, nullptr, nullptr};
  for (const Heuristic* heuristic : heuristics()) {
    if (state.must_stop()) return;
    if (heuristic->timing == HeuristicTiming::kBeforeRoot) heuristic->run(context);
  }
}

}  // namespace zorvex
