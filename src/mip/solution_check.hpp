// Judges and completes candidate solutions on the problem as it was given (and the constraints that came since), never
// on the tightened search model: rows, bounds and objective in long double, integer columns at exact integers, gaps and
// sets respected.
#pragma once

#include <memory>
#include <vector>

#include "base/stop_token.hpp"
#include "mip/mip_problem.hpp"
#include "mip/search_model.hpp"

namespace zorvex {

enum class Completion {
  kFeasible,    // x was replaced by a feasible point with the same integer part
  kInfeasible,  // no point with this integer part exists
  kUnknown,     // stopped, or numerical trouble
};

class SolutionChecker {
 public:
  SolutionChecker(const MipProblem& problem, const SimplexOptions& options, double integrality_tol);
  ~SolutionChecker();

  // Moves integer columns to the nearest integer, values within the tolerance of a bound or gap end onto it, and the
  // members an SOS set does not need to zero. False when x is not within the integrality tolerance of such a point.
  bool snap(std::vector<double>& x) const;

  // Largest violation of a row, bound, gap or set by a snapped x; infinite when a set or gap is broken.
  [[nodiscard]] double violation(const std::vector<double>& x) const;
  // Rows and bounds within the feasibility tolerance, integrality within the integrality tolerance, sets and gaps kept.
  [[nodiscard]] bool feasible(const std::vector<double>& x) const;

  // Keeps the integer columns, gap branches and set members of a snapped x and optimises over the rest.
  Completion complete(std::vector<double>& x, const StopToken& stop);

  // As complete, but with bounds of the caller's choice on every column; x is the optimal point.
  Completion complete_within(const std::vector<double>& lower, const std::vector<double>& upper, std::vector<double>& x,
                             const StopToken& stop);

  // Further constraints of the problem.
  void add_rows(const std::vector<SideRow>& rows);

  [[nodiscard]] double objective(const std::vector<double>& x) const;
  [[nodiscard]] double iterations() const;  // simplex iterations spent so far
  [[nodiscard]] double work() const;
  [[nodiscard]] const SearchModel& model() const { return model_; }

 private:
  bool snap_set(const SosSet& set, std::vector<double>& x) const;
  void restrict_to(const std::vector<double>& x, std::vector<double>& lower, std::vector<double>& upper) const;

  SearchModel model_;  // unprepared
  SimplexOptions simplex_;
  double integrality_tol_;
  std::unique_ptr<LpSolver> lp_;  // made when first needed
  QuietLog quiet_;
};

}  // namespace zorvex
