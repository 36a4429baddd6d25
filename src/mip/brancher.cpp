#include "mip/brancher.hpp"

#include <array>
#include <cmath>

namespace zorvex {

#define BRANCHER(name) extern const Brancher name;
#include "mip/branchers.inc"
#undef BRANCHER

std::span<const Brancher* const> branchers() {
#define BRANCHER(name) &name,
  static constexpr std::array kList = {
#include "mip/branchers.inc"
  };
#undef BRANCHER
  return kList;
}

std::vector<Index> fractional_columns(const SearchState& state, const std::vector<double>& x, double tolerance) {
  std::vector<Index> result;
  for (const Index col : state.model.integer_cols) {
    if (state.domain.fixed(col)) continue;
    if (std::abs(x[col] - std::round(x[col])) > tolerance) result.push_back(col);
  }
  return result;
}

int count_violated_sets(const SearchModel& model, const std::vector<double>& x, double tolerance) {
  int violated = 0;
  for (const SosSet& set : model.sos) {
    Index first = -1;
    Index last = -1;
    for (std::size_t p = 0; p < set.member.size(); ++p) {
      if (std::abs(x[set.member[p]]) <= tolerance) continue;
      if (first < 0) first = static_cast<Index>(p);
      last = static_cast<Index>(p);
    }
    violated += last - first >= set.type;
  }
  return violated;
}

int count_violated_gaps(const SearchModel& model, const std::vector<double>& x, double tolerance) {
  int violated = 0;
  for (const Index col : model.gap_cols) {
    violated += x[col] > model.gap_lower[col] + tolerance && x[col] < model.gap_upper[col] - tolerance;
  }
  return violated;
}

namespace {

// A point strictly between the bounds at which to split an undecided integer column: down is x <= value.
double split_point(double lower, double upper, const double* x) {
  if (x != nullptr) {
    const double value = std::round(*x);
    if (value >= lower && value < upper) return value;
    if (value >= upper) return upper - 1;
  }
  if (lower > -kInf && upper < kInf) return std::floor(lower + (upper - lower) / 2);
  if (lower > -kInf) return std::max(lower, 0.0) * 2;
  if (upper < kInf) return std::min(upper, 0.0) * 2 - 1;
  return 0;
}

bool branch_undecided_set(const SearchState& state, const SosSet& set, BranchDecision& decision) {
  std::vector<std::size_t> open;
  for (std::size_t p = 0; p < set.member.size(); ++p) {
    if (!(state.domain.fixed(set.member[p]) && state.domain.lower(set.member[p]) == 0)) open.push_back(p);
  }
  if (open.empty() || open.back() - open.front() < static_cast<std::size_t>(set.type)) return false;
  // The members around the pivot stay on both sides for type 2.
  const std::size_t pivot = (open.front() + open.back()) / 2;
  for (const std::size_t p : open) {
    const Index col = set.member[p];
    std::vector<BoundChange>* side = nullptr;
    if (set.type == 1) side = p <= pivot ? &decision.up.changes : &decision.down.changes;
    if (set.type == 2 && p < pivot) side = &decision.up.changes;
    if (set.type == 2 && p > pivot) side = &decision.down.changes;
    if (side == nullptr) continue;
    side->push_back({col, false, 0});
    side->push_back({col, true, 0});
  }
  return true;
}

}  // namespace

bool branch_undecided(const SearchState& state, const std::vector<double>* x, BranchDecision& decision) {
  const Domain& domain = state.domain;
  Index best = -1;
  for (const Index col : state.model.integer_cols) {
    if (domain.fixed(col)) continue;
    if (best < 0 || domain.upper(col) - domain.lower(col) < domain.upper(best) - domain.lower(best)) best = col;
  }
  if (best >= 0) {
    const double value = split_point(domain.lower(best), domain.upper(best), x != nullptr ? &(*x)[best] : nullptr);
    decision.down.changes = {{best, true, value}};
    decision.up.changes = {{best, false, value + 1}};
    return true;
  }
  return branch_undecided_structure(state, decision);
}

bool branch_undecided_structure(const SearchState& state, BranchDecision& decision) {
  const Domain& domain = state.domain;
  for (const Index col : state.model.gap_cols) {
    if (domain.upper(col) <= state.model.gap_lower[col] || domain.lower(col) >= state.model.gap_upper[col]) continue;
    decision.down.changes = {{col, true, state.model.gap_lower[col]}};
    decision.up.changes = {{col, false, state.model.gap_upper[col]}};
    return true;
  }
  for (const SosSet& set : state.model.sos) {
    if (branch_undecided_set(state, set, decision)) return true;
  }
  return false;
}

}  // namespace zorvex
