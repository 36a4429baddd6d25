// One simplex kernel of a given precision over a loaded LP: scaled copy of the data, algorithm switching, and the way
// back to user space.
#pragma once

#include <algorithm>

#include "linalg/basis.hpp"
#include "simplex/dual_simplex.hpp"
#include "simplex/lp_solver.hpp"
#include "simplex/primal_simplex.hpp"
#include "simplex/quadratic_simplex.hpp"
#include "simplex/scaling.hpp"
#include "simplex/simplex_core.hpp"
#include "simplex/simplex_outcome.hpp"

namespace zorvex {

template <class Real>
class LpKernel {
 public:
  LpKernel() : dual_(core_), primal_(core_), quadratic_(core_) {}
  LpKernel(const LpKernel&) = delete;
  LpKernel& operator=(const LpKernel&) = delete;

  // Copies the matrix, bounds, costs and Q of `lp`, scaled. `cost_factor` multiplies the objective.
  void load(const LpData& lp, const Scaling& scaling, double cost_factor);
  [[nodiscard]] bool loaded() const { return loaded_; }
  void unload() { loaded_ = false; }
  [[nodiscard]] const Scaling& scaling() const { return scaling_; }

  void set_col_bounds(Index col, double lower, double upper);
  void set_row_bounds(Index row, double lower, double upper);
  void set_cost(Index col, double cost);

  // Takes over a basis with exactly num_rows basic variables. Keeps the factors when the basic set is the same or
  // differs little.
  void set_basis(const Basis& basis);
  [[nodiscard]] Basis basis() const;

  // Solves from the current basis, switching between the algorithms as they ask for it. `share` is the share of the
  // user's tolerances to work with. With `trust_updates` the dual simplex goes on from the values of the last run and
  // ends on updated ones (see DualOptions): claims of such a run are to be checked.
  SimplexOutcome run(const SimplexOptions& options, const SimplexLimits& limits, double share, bool trust_updates,
                     const StopToken& stop, SimplexLog& log, double iteration_offset);
  // The next run factors anew and computes all values from scratch.
  void distrust() { core_.factor_valid = core_.warm = false; }

  // x, duals, reduced costs and activities in user space; duals and reduced costs follow from the row duals.
  void extract(const LpData& lp, LpPoint& point) const;
  // x and pi alone; the other vectors get the right length.
  void extract_basic(LpPoint& point) const;
  [[nodiscard]] std::vector<double> user_farkas() const;
  [[nodiscard]] std::vector<double> user_ray() const;
  bool inverse_row(Index position, std::vector<double>& multipliers);

  // Of the basic variables. All in the first phase of the dual simplex, whose values are those of another problem.
  [[nodiscard]] double infeasible_share() const {
    if (dual_.in_first_phase()) return 1;
    return static_cast<double>(core_.count_primal_infeasible()) / std::max<double>(1, core_.m);
  }

  [[nodiscard]] SimplexCore<Real>& core() { return core_; }
  [[nodiscard]] const SimplexCore<Real>& core() const { return core_; }

 private:
  [[nodiscard]] Real scaled_col_bound(Index col, double bound) const;
  [[nodiscard]] Real scaled_row_bound(Index row, double bound) const;

  void change_bounds(Index var, Real lower, Real upper);
  SimplexOutcome run_linear(const SimplexOptions& options, const SimplexLimits& limits, bool trust_updates);
  SimplexOutcome run_quadratic(const SimplexOptions& options, const SimplexLimits& limits);
  void take_heads(const std::vector<Index>& head);

  SimplexCore<Real> core_;
  DualSimplex<Real> dual_;
  PrimalSimplex<Real> primal_;
  QuadraticSimplex<Real> quadratic_;
  bool near_optimum_ = false;  // the quadratic simplex has come through; only bounds or the basis changed since
  std::vector<char> basic_work_;
  Scaling scaling_;
  double cost_factor_ = 1;
  bool loaded_ = false;
};

}  // namespace zorvex
