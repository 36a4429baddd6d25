// Rows that a listener adds while the search runs: constraints that the model was short of, and cuts.
//   Invariant  every solution that was taken satisfies the constraints known when it was taken.
#pragma once

#include <cstdint>
#include <vector>

#include "mip/search_state.hpp"

namespace zorvex {

// Amount by which x misses the nearer side, 0 when it satisfies the row.
[[nodiscard]] double violation(const SideRow& row, const std::vector<double>& x);

// Makes the rows constraints of the problem: the checker judges by them from now on, and as pinned cuts they enter the
// LP with the next relaxation. Rows that are known already are left out.
void add_side_constraints(SearchState& state, const std::vector<SideRow>& rows);

// Pool ids of the cuts among the rows that x violates, for the caller to add to the LP.
std::vector<std::int64_t> add_listener_cuts(SearchState& state, const std::vector<SideRow>& rows,
                                            const std::vector<double>& x);

}  // namespace zorvex
