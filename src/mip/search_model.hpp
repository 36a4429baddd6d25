// The model the tree search works on: the columns of the problem, its rows tightened, and the sets and gaps that the
// linear relaxation does not know.
//   Invariant  same columns as the problem in the same order; every point feasible for the problem (integral where it
//              must be) is feasible here, and the other way round. Fixings show as equal bounds.
#pragma once

#include <cmath>
#include <utility>
#include <vector>

#include "base/stop_token.hpp"
#include "linalg/lp_data.hpp"
#include "mip/clique_table.hpp"
#include "mip/incumbents.hpp"
#include "mip/mip_problem.hpp"

namespace zorvex {

// x_j <= constant + slope * x_of (upper) or >= (lower), `of` integral. None when of < 0.
struct VariableBound {
  Index of = -1;
  double constant = 0, slope = 0;

  [[nodiscard]] double at(const std::vector<double>& x) const { return constant + slope * x[of]; }
};

struct ImpliedBound {
  Index col;
  bool upper;
  VariableBound bound;
};

struct SearchModel {
  LpData lp;
  SparseMatrix rows;             // row-wise twin of lp.matrix
  std::vector<char> integer;     // num_cols: 1 where integral values are demanded
  std::vector<double> grid;      // num_cols: values are multiples of this, demanded or implied; 0 none. See grids.hpp
  std::vector<char> branchable;  // 1 for integer, semi-continuous and SOS columns: their bounds follow the tree
  std::vector<double> gap_lower, gap_upper;  // num_cols: values strictly between are forbidden; none when equal
  std::vector<Index> gap_cols;               // columns with a gap
  std::vector<SosSet> sos;                   // members in increasing weight, duplicates and empty sets removed
  std::vector<Index> sos_start, sos_list;    // CSR: sets of each column
  std::vector<Index> integer_cols;
  std::vector<Index> up_locks, down_locks;    // row sides that keep a column from growing, from shrinking
  std::vector<Index> priority;                // empty or num_cols
  CliqueTable cliques;                        // of the rows, and learned ones
  CliqueTable learned;                        // those that no row implies: propagation has to know them
  std::vector<ImpliedBound> implied_bounds;   // of continuous columns by binary ones, beyond the rows of two entries
  std::vector<float> probed_down, probed_up;  // bounds moved when probing set the column to zero, to one; may be empty
  ObjectiveGrid objective_grid;               // on which some optimum lies

  [[nodiscard]] Index num_cols() const { return lp.num_cols(); }
  [[nodiscard]] Index num_rows() const { return lp.num_rows(); }
  [[nodiscard]] bool has_gap(Index col) const { return gap_lower[col] < gap_upper[col]; }
  // Integral by demand or by implication: cuts and propagation round it, nothing branches on an implied one.
  [[nodiscard]] bool integral(Index col) const { return grid[col] >= 1 && grid[col] == std::floor(grid[col]); }
  // Integer within [0, 1].
  [[nodiscard]] bool binary(Index col) const {
    return integer[col] && lp.col_lower[col] >= 0 && lp.col_upper[col] <= 1;
  }
  [[nodiscard]] std::size_t sos_begin(Index col) const { return static_cast<std::size_t>(sos_start[col]); }
  [[nodiscard]] std::size_t sos_end(Index col) const { return static_cast<std::size_t>(sos_start[col + 1]); }
};

// The relaxation of the problem as given: semi-continuous bounds widened to include zero, integer bounds rounded.
// `keep_all_solutions` as in MipOptions.
SearchModel make_search_model(const MipProblem& problem, bool keep_all_solutions = false);

// Counts the locks anew after the rows changed.
void count_locks(SearchModel& model);

}  // namespace zorvex
