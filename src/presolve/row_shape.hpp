// Rows of a presolved model in another form, on demand: long ones in pieces that free columns add up, and rows times
// powers of two. Rows and columns keep their numbers; pieces and their columns stand behind them.
//   Form     the row a'x, cut into a_1'x + ... + a_p'x, becomes t_1 + ... + t_p with a_k'x - t_k = 0. A dense row then
//            no longer couples all of its columns in normal equations of the dual or in rows of the tableau.
//   Source   J. Gondzio, "Splitting dense columns of constraint matrix in interior point methods", Optimization 24
//            (1992) 285-297, for columns.
#pragma once

#include <vector>

#include "linalg/lp_data.hpp"
#include "presolve/presolve.hpp"

namespace zorvex {

class RowShape {
 public:
  // Rewrites `lp`: rows of more than `longest` entries, 0 for none, are cut; `powers` brings the largest entry of every
  // row to [1, 2). A quadratic objective keeps long rows whole.
  RowShape(LpData& lp, Index longest, bool powers);

  // A point of the rewritten model in the space of the one given, with or without basis.
  [[nodiscard]] PresolvePoint plain_point(const PresolvePoint& shaped) const;
  // Multipliers of the rewritten rows as multipliers of the rows given.
  [[nodiscard]] std::vector<double> plain_multipliers(const std::vector<double>& y) const;

 private:
  void cut_rows(LpData& lp, Index longest);
  void scale_rows(LpData& lp);

  std::size_t num_rows_, num_cols_;  // of the model given
  std::vector<double> factor_;       // per row given, what it was multiplied by
};

}  // namespace zorvex
