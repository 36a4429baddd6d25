// Rounds the relaxation to the nearest integers, nearly integral columns first, propagating every fixing.
#include <algorithm>
#include <cmath>

#include "mip/fix_and_propagate.hpp"
#include "mip/heuristic.hpp"
#include "simplex/answer_check.hpp"

namespace zorvex {

namespace {

constexpr double kEvery = 10;  // nodes

void run(HeuristicContext& context) {
  SearchState& state = context.state;
  if (!state.model.sos.empty() || std::fmod(state.explored, kEvery) != 0) return;
  const std::vector<double>& target = context.relaxation->x;
  std::vector<Index> order = state.model.integer_cols;
  const auto distance = [&](Index col) { return std::abs(target[col] - std::round(target[col])); };
  std::stable_sort(order.begin(), order.end(), [&](Index a, Index b) { return distance(a) < distance(b); });
  std::vector<double> x;
  if (!fix_and_propagate(state, order, target, x)) return;
  const SearchModel& model = state.model;
  const bool all_integer = model.integer_cols.size() == x.size();
  if (!all_integer || !state.incumbents.prunes(objective_at(model.lp, x))) state.submit_heuristic(x, true);
}

}  // namespace

extern const Heuristic kPropagateRounding;
const Heuristic kPropagateRounding{"propagate_rounding", HeuristicTiming::kRelaxation, run};

}  // namespace zorvex
