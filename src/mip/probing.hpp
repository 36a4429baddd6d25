// Probing: each binary column is set to zero and to one on trial, and what propagation finds on both sides is compared.
//   one side fails              the column is fixed at the other
//   both sides agree            what they agree on holds everywhere
//   one side fixes a binary     two literals exclude each other (kept in model.learned)
//   one side moves a bound      a bound of a continuous column by the binary (kept in model.implied_bounds)
//   a set packing row cannot stay empty: it becomes a partitioning one
//   a row is slack on one side  its coefficient of the column shrinks until it is not
//   Source  M. Savelsbergh, "Preprocessing and probing techniques for mixed integer programming problems", ORSA J.
//           Computing 6 (1994) 445-454; A. Atamturk, G. Nemhauser, M. Savelsbergh, "Conflict graphs in solving integer
//           programming problems", EJOR 121 (2000) 40-55.
#pragma once

#include <cstdint>

#include "base/stop_token.hpp"
#include "mip/search_model.hpp"

namespace zorvex {

struct ProbingResult {
  bool infeasible = false;
  Index fixed = 0;         // columns fixed
  Index tightened = 0;     // other bounds moved for good
  Index implications = 0;  // pairs of literals found to exclude each other
  Index strengthened = 0;  // coefficients changed
};

// Works on model.rows and model.lp alike, in about `effort` nonzeros touched (more while it keeps fixing columns).
// Bounds of columns that the search does not branch on stay as they are unless they become fixed.
ProbingResult probe_binaries(SearchModel& model, std::int64_t effort, const StopToken& stop);

}  // namespace zorvex
