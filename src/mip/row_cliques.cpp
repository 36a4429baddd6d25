#include "mip/row_cliques.hpp"

#include <algorithm>
#include <cmath>

#include "mip/mip_tolerances.hpp"

namespace zorvex {

namespace {

constexpr std::size_t kMaxExtra = 100;        // cliques of one row beyond the largest
constexpr std::size_t kMaxExtraMembers = 10;  // of those together, in multiples of the row's length

struct Weighted {
  Literal lit;
  double weight;
};

// Literals with positive weights whose sum must not exceed `room`; false when other columns leave it unbounded.
bool as_knapsack(const SearchModel& model, Index row, double sign, std::vector<Weighted>& items, double& room) {
  room = sign > 0 ? model.lp.row_upper[row] : -model.lp.row_lower[row];
  if (std::isinf(room)) return false;
  items.clear();
  for (Offset k = model.rows.begin(row); k < model.rows.end(row); ++k) {
    const Index col = model.rows.index[k];
    const double a = sign * model.rows.value[k];
    const double lower = model.lp.col_lower[col];
    const double upper = model.lp.col_upper[col];
    const double bound = a > 0 ? lower : upper;
    if (std::isinf(bound)) return false;
    room -= a * bound;
    if (model.binary(col) && lower < upper) items.push_back({literal(col, a > 0), std::abs(a)});
  }
  return items.size() >= 2;
}

void add_knapsack_cliques(std::vector<Weighted>& items, double room, CliqueTable& table) {
  const double limit = room + mip_tol::kRowFeasibility * std::max(1.0, std::abs(room));
  std::stable_sort(items.begin(), items.end(),
                   [](const Weighted& a, const Weighted& b) { return a.weight > b.weight; });
  if (items[0].weight + items[1].weight <= limit) return;
  std::size_t size = 2;
  while (size < items.size() && items[size - 1].weight + items[size].weight > limit) ++size;
  std::vector<Literal> members;
  for (std::size_t k = 0; k < size; ++k) members.push_back(items[k].lit);
  table.add(members);
  // Each lighter item conflicts with a shorter head of the list.
  std::size_t budget = kMaxExtraMembers * items.size();
  for (std::size_t k = size; k < std::min(items.size(), size + kMaxExtra); ++k) {
    while (!members.empty() && items[members.size() - 1].weight + items[k].weight <= limit) members.pop_back();
    if (members.empty() || members.size() > budget) break;
    budget -= members.size();
    members.push_back(items[k].lit);
    table.add(members);
    members.pop_back();
  }
}

}  // namespace

void add_row_cliques(const SearchModel& model, CliqueTable& table) {
  std::vector<Weighted> items;
  for (Index row = 0; row < model.num_rows(); ++row) {
    for (const double sign : {1.0, -1.0}) {
      double room = 0;
      if (as_knapsack(model, row, sign, items, room)) add_knapsack_cliques(items, room, table);
    }
  }
}

}  // namespace zorvex
