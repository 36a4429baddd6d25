#include "mip/fix_and_propagate.hpp"

#include <algorithm>
#include <cmath>

namespace zorvex {

namespace {

constexpr std::int64_t kMinEffort = 1 << 20;  // of one call, in nonzeros touched
constexpr std::int64_t kEffort = 100;         // and this many times the nonzeros of the model

// Tries one value on a level of its own; keeps the level when it works.
bool try_fix(Domain& domain, Index col, double value) {
  const int level = domain.level();
  domain.push_level();
  if (domain.fix(col, value, Reason::kBranch) && domain.propagate()) return true;
  domain.backtrack(level);
  return false;
}

bool decide_gap(Domain& domain, Index col, double target) {
  const SearchModel& model = domain.model();
  const double low = model.gap_lower[col];
  const double high = model.gap_upper[col];
  const bool up_first = target - low > high - target;
  for (const bool up : {up_first, !up_first}) {
    const int level = domain.level();
    domain.push_level();
    const bool ok =
        up ? domain.tighten_lower(col, high, Reason::kBranch) : domain.tighten_upper(col, low, Reason::kBranch);
    if (ok && domain.propagate()) return true;
    domain.backtrack(level);
  }
  return false;
}

bool fix_all(SearchState& state, const std::vector<Index>& order, const std::vector<double>& target) {
  Domain& domain = state.domain;
  const std::int64_t limit = domain.work().total() + kMinEffort + kEffort * state.model.lp.matrix.num_nonzeros();
  for (const Index col : order) {
    if (domain.fixed(col)) continue;
    if (domain.work().total() > limit || state.stop.stop_requested()) return false;
    const double value = std::clamp(std::round(target[col]), domain.lower(col), domain.upper(col));
    if (try_fix(domain, col, value)) continue;
    const double other = target[col] > value || value == domain.lower(col) ? value + 1 : value - 1;
    if (other < domain.lower(col) || other > domain.upper(col) || !try_fix(domain, col, other)) return false;
  }
  for (const Index col : state.model.gap_cols) {
    const SearchModel& model = state.model;
    if (domain.upper(col) <= model.gap_lower[col] || domain.lower(col) >= model.gap_upper[col]) continue;
    if (!decide_gap(domain, col, target[col])) return false;
  }
  return true;
}

}  // namespace

bool fix_and_propagate(SearchState& state, const std::vector<Index>& order, const std::vector<double>& target,
                       std::vector<double>& x) {
  Domain& domain = state.domain;
  const int level = domain.level();
  domain.push_level();
  const bool ok = fix_all(state, order, target);
  if (ok) {
    x = target;
    for (Index col = 0; col < state.model.num_cols(); ++col) {
      x[col] = std::clamp(x[col], domain.lower(col), domain.upper(col));
    }
  }
  domain.backtrack(level);
  return ok;
}

}  // namespace zorvex
