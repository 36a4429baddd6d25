// Rounds a vector to an integral one column by column, propagating each fixing and taking the other side when the first
// leads nowhere.
//   Source   T. Berthold, G. Hendel, "Shift-and-propagate", J. Heuristics 21 (2015) 73-106 (the propagation half).
#pragma once

#include <vector>

#include "mip/search_state.hpp"

namespace zorvex {

// Fixes the columns of `order` near target[col], within the present domain; on success `x` holds the target with those
// columns at their fixed values and the others moved into their propagated bounds. The domain is left as it was.
bool fix_and_propagate(SearchState& state, const std::vector<Index>& order, const std::vector<double>& target,
                       std::vector<double>& x);

}  // namespace zorvex
