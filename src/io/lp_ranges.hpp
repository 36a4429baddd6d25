// Range rows in a form that every reader of LP format understands. Some tools know no "l <= expression <= u", so it is
// written as
//     \range
//      name: expression - Rg3 = 0
//      l <= Rg3 <= u                (in Bounds)
// and the remark tells our own reader to make it one row again.
#pragma once

#include <string_view>
#include <vector>

#include "io/parsed_model.hpp"

namespace zorvex {

inline constexpr std::string_view kLpRangeRemark = "range";

// A row behind that remark, and the variable of its last term.
struct LpRangePair {
  Index row, col;
};

// Takes the variables out and gives their bounds to the rows, where the pairs are what they should be: an equation with
// right-hand side 0, and a continuous variable with coefficient -1, with finite bounds in order, that occurs nowhere
// else. Others stay as they are. The matrix must be complete. O(model) when there are pairs.
void merge_lp_ranges(const std::vector<LpRangePair>& pairs, ParsedModel* data);

}  // namespace zorvex
