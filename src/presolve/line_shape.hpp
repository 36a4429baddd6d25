// Rows and columns of a presolved model in another form, on demand: long rows in pieces that free columns add up, long
// columns in copies that equations chain, and rows times powers of two. Rows and columns keep their numbers; pieces and
// what joins them stand behind them.
//   Form     the row a'x, cut into a_1'x + ... + a_p'x, becomes t_1 + ... + t_p with a_k'x - t_k = 0. A dense row then
//            no longer couples all of its columns in normal equations of the dual or in rows of the tableau.
//            The column a_j = a_1 + ... + a_p becomes copies x_1 = x_j, ..., x_p, the others free, with x_k - x_k+1 =
//            0.
//   Source   J. Gondzio, "Splitting dense columns of constraint matrix in interior point methods", Optimization 24
//            (1992) 285-297.
#pragma once

#include <vector>

#include "linalg/lp_data.hpp"
#include "presolve/presolve.hpp"

namespace zorvex {

class LineShape {
 public:
  // Rewrites `lp`: rows and columns of more entries than the limits, 0 for none, are cut; `powers` brings the largest
  // entry of every row to [1, 2). A quadratic objective keeps them whole.
  LineShape(LpData& lp, Index longest_row, Index longest_col, bool powers);

  // A point of the rewritten model in the space of the one given, with or without basis.
  [[nodiscard]] PresolvePoint plain_point(const PresolvePoint& shaped) const;
  // Multipliers of the rewritten rows as multipliers of the rows given.
  [[nodiscard]] std::vector<double> plain_multipliers(const std::vector<double>& y) const;

 private:
  void cut_rows(LpData& lp, Index longest);
  static void cut_cols(LpData& lp, Index longest);
  void scale_rows(LpData& lp);

  std::size_t num_rows_, num_cols_;  // of the model given
  std::vector<double> factor_;       // per row given, what it was multiplied by
};

}  // namespace zorvex
