#include "mip/knapsack_row.hpp"

#include <cmath>

namespace zorvex {

bool knapsack_of_row(const SearchModel& model, Index row, double sign, std::vector<KnapsackItem>& items,
                     double& capacity) {
  capacity = sign > 0 ? model.lp.row_upper[row] : -model.lp.row_lower[row];
  if (std::isinf(capacity)) return false;
  items.clear();
  for (Offset k = model.rows.begin(row); k < model.rows.end(row); ++k) {
    const Index col = model.rows.index[k];
    const double a = sign * model.rows.value[k];
    const double lower = model.lp.col_lower[col];
    const double upper = model.lp.col_upper[col];
    const double bound = a > 0 ? lower : upper;
    if (std::isinf(bound)) return false;
    capacity -= a * bound;
    if (model.binary(col) && lower < upper) items.push_back({literal(col, a > 0), std::abs(a)});
  }
  return items.size() >= 2;
}

}  // namespace zorvex
