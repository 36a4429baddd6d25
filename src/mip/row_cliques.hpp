// Cliques that single rows imply.
#pragma once

#include "mip/search_model.hpp"

namespace zorvex {

// Adds to `table` the cliques of all rows over the bounds of the model: with the other columns at their best, two
// binaries whose weights together exceed the room left exclude each other.
//   Source  T. Achterberg, "Constraint Integer Programming", PhD thesis, TU Berlin 2007, section 3.2 (cliques of
//           knapsacks).
void add_row_cliques(const SearchModel& model, CliqueTable& table);

}  // namespace zorvex
