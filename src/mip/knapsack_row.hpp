// The knapsack in a row: sum of weight * z at most a capacity over literals z of binary columns, all other columns at
// the bound that leaves most room.
#pragma once

#include <vector>

#include "mip/clique_table.hpp"
#include "mip/search_model.hpp"

namespace zorvex {

struct KnapsackItem {
  Literal lit;
  double weight;  // > 0
};

// The relaxation of sign * row (sign +1 or -1: the upper or the lower side). False when the side is open, another
// column leaves the row without limit, or fewer than two items are left.
bool knapsack_of_row(const SearchModel& model, Index row, double sign, std::vector<KnapsackItem>& items,
                     double& capacity);

}  // namespace zorvex
