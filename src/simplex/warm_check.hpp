// The answer gate of warm-started solves: the same questions as in answer_check, asked in double with a bound on the
// rounding of every sum. Only an answer that a bound leaves open is left to the gate in long double.
//   Shapes   work arrays grow to num_rows and are kept.
//   Source   N. Higham, "Accuracy and Stability of Numerical Algorithms", SIAM 2002, sec. 3.1 (inner products).
#pragma once

#include <vector>

#include "linalg/lp_data.hpp"
#include "simplex/lp_solver.hpp"

namespace zorvex {

enum class WarmVerdict { kHolds, kFails, kOpen };

class WarmCheck {
 public:
  // Judges x and pi of `point`, fills its row_activity and reduced_cost and gives the objective at x. With `updated`,
  // values that were carried over by updates, complementary slackness is demanded too: nothing else ties them to one
  // basis.
  WarmVerdict optimal(const LpData& lp, const SimplexOptions& options, bool updated, LpPoint& point, double& objective);
  // Does `y` prove infeasibility by a margin `gap`, relative to max |y|?
  WarmVerdict infeasible(const LpData& lp, const std::vector<double>& y, double& gap);

 private:
  struct Sum {
    double value = 0;
    double size = 0;  // sum of magnitudes
  };
  std::vector<Sum> activity_;
  std::vector<Index> terms_;
};

}  // namespace zorvex
