#include "mip/row_cliques.hpp"

#include <algorithm>
#include <cmath>

#include "mip/knapsack_row.hpp"
#include "mip/mip_tolerances.hpp"

namespace zorvex {

namespace {

constexpr std::size_t kMaxExtra = 100;        // cliques of one row beyond the largest
constexpr std::size_t kMaxExtraMembers = 10;  // of those together, in multiples of the row's length

void add_knapsack_cliques(std::vector<KnapsackItem>& items, double room, CliqueTable& table) {
  const double limit = room + mip_tol::kRowFeasibility * std::max(1.0, std::abs(room));
  std::stable_sort(items.begin(), items.end(),
                   [](const KnapsackItem& a, const KnapsackItem& b) { return a.weight > b.weight; });
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
  std::vector<KnapsackItem> items;
  for (Index row = 0; row < model.num_rows(); ++row) {
    for (const double sign : {1.0, -1.0}) {
      double room = 0;
      if (knapsack_of_row(model, row, sign, items, room)) add_knapsack_cliques(items, room, table);
    }
  }
}

}  // namespace zorvex
