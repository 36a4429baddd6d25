#include "mip/side_rows.hpp"

#include <algorithm>
#include <numeric>

namespace zorvex {

namespace {

// The row's side as sum <= rhs, columns in increasing order. sign -1: the lower side.
Cut side_cut(const SideRow& row, double sign) {
  std::vector<std::size_t> order(row.index.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return row.index[a] < row.index[b]; });
  Cut cut;
  for (const std::size_t k : order) {
    cut.index.push_back(row.index[k]);
    cut.value.push_back(sign * row.value[k]);
  }
  cut.rhs = sign * (sign > 0 ? row.upper : row.lower);
  cut.type = CutType::kUser;
  return cut;
}

Extended activity(const SideRow& row, const std::vector<double>& x) {
  Extended sum = 0;
  for (std::size_t k = 0; k < row.index.size(); ++k) sum += static_cast<Extended>(row.value[k]) * x[row.index[k]];
  return sum;
}

}  // namespace

double violation(const SideRow& row, const std::vector<double>& x) {
  const Extended sum = activity(row, x);
  return static_cast<double>(std::max({row.lower - sum, sum - row.upper, Extended{0}}));
}

void add_side_constraints(SearchState& state, const std::vector<SideRow>& rows) {
  std::vector<SideRow> fresh;
  for (const SideRow& row : rows) {
    bool known = true;
    for (const double sign : {1.0, -1.0}) {
      if (sign > 0 ? row.upper == kInf : row.lower == -kInf) continue;
      Cut cut = side_cut(row, sign);
      cut.pinned = true;
      const std::int64_t id = state.cuts.add(std::move(cut));
      if (id < 0) continue;
      state.side_cuts.push_back(id);
      known = false;
    }
    if (!known) fresh.push_back(row);
  }
  if (!fresh.empty()) state.checker.add_rows(fresh);
}

std::vector<std::int64_t> add_listener_cuts(SearchState& state, const std::vector<SideRow>& rows,
                                            const std::vector<double>& x) {
  std::vector<std::int64_t> ids;
  const double tolerance = state.options.simplex.primal_feasibility_tol;
  for (const SideRow& row : rows) {
    const Extended sum = activity(row, x);
    if (sum > row.upper + tolerance) ids.push_back(state.cuts.add(side_cut(row, 1)));
    if (sum < row.lower - tolerance) ids.push_back(state.cuts.add(side_cut(row, -1)));
  }
  ids.erase(std::remove(ids.begin(), ids.end(), std::int64_t{-1}), ids.end());
  return ids;
}

}  // namespace zorvex
