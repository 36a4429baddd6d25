// The push phases of crossover, on the core of a simplex kernel.
//   State   every variable is either regular (basic with reduced cost zero, or nonbasic at a bound), or off its bounds
//           and nonbasic (to be pushed by the primal phase), or bound and basic (its reduced cost is to be pushed to
//           zero by the dual phase). Each push makes one variable regular, by at most one pivot, and keeps the point
//           and the reduced costs complementary; when none is left the basis is optimal for slightly shifted bounds
//           and costs.
//   Spaces  scaled. Bounds of basic variables that the start point violates are moved to it until finish().
//   Cost    O(nonzeros of the solves' results) per push, no loop over rows or columns between factorizations.
//   Source  R. Bixby, M. Saltzman, Oper. Res. Lett. 15 (1994) 137-143; E. Andersen, Y. Ye, Manage. Sci. 42 (1996)
//           1719-1731.
#pragma once

#include <vector>

#include "barrier/crossover_basis.hpp"
#include "barrier/crossover_sides.hpp"
#include "base/status.hpp"
#include "simplex/simplex_core.hpp"

namespace zorvex {

template <class Real>
class CrossoverPush {
 public:
  // `log` gets the progress lines. Both must outlive this.
  CrossoverPush(SimplexCore<Real>& core, SimplexLog& log);

  // Takes over the basis and the values of the nonbasic variables and factors. The core's stop token, log, limits and
  // tolerances must be set. This and the phases return kLoaded to go on, else why not: a limit, an interruption, or
  // kNumeric when the basis could not be factored.
  [[nodiscard]] SolveStatus start(const CrossoverBasis<Real>& basis, CrossoverSides<Real> sides);
  // Brings every variable that is off its bounds and nonbasic to a bound or into the basis.
  [[nodiscard]] SolveStatus push_primal();
  // Brings the reduced cost of every basic variable to zero or the variable out of the basis.
  [[nodiscard]] SolveStatus push_dual();
  // Back to the true bounds and costs; values, reduced costs and the figures below follow from the basis.
  [[nodiscard]] SolveStatus finish();

  [[nodiscard]] double pushes() const { return pushes_; }
  [[nodiscard]] Index primal_infeasibilities() const { return primal_infeasibilities_; }
  [[nodiscard]] Index dual_infeasibilities() const { return dual_infeasibilities_; }

 private:
  struct Block {
    Index position = -1;  // -1: nothing in the way
    Real step = 0;        // signed, of the variable that moves
    bool to_upper = false;
  };

  [[nodiscard]] bool bound_and_basic(Index var) const { return pending_dual_[var] != 0; }
  [[nodiscard]] Place own_place(Index var) const;
  [[nodiscard]] Real own_bound(Index var) const;
  [[nodiscard]] SolveStatus remove_near_dependencies();
  [[nodiscard]] Index most_displaced() const;
  [[nodiscard]] bool exchange_for_logical(Index position);
  SolveStatus factorize();
  SolveStatus refactor();  // and what follows from the factors: basic values and their bounds
  SolveStatus check_limits();
  void set_position_bounds(Index position);
  void place_off(Index var);
  void push_variable(Index var);
  [[nodiscard]] Block block_of_move(Real distance) const;
  void move_basics(Real step);
  void enter_off(Index var, const Block& block);
  bool push_reduced_cost(Index var);
  [[nodiscard]] Index block_of_dual(Real direction, Real& step) const;
  [[nodiscard]] Real dual_ratio(Index var, Real rate) const;
  void move_duals(Real step);
  bool exchange(Index position, Index entering);
  template <class Visit>
  void visit_pivot_row(Visit&& visit) const;
  void report(SimplexLog::Kind kind, double left, bool force);
  [[nodiscard]] Real sum_outside_bounds() const;

  SimplexCore<Real>& core_;
  SimplexLog& log_;
  CrossoverSides<Real> sides_;
  std::vector<char> pending_dual_;    // per variable: basic, but at its bound in the start point
  std::vector<char> pending_primal_;  // per variable: off its bounds and nonbasic
  Scattered<Real> alpha_, rho_, row_;
  double pushes_ = 0;
  Index primal_infeasibilities_ = 0, dual_infeasibilities_ = 0;
};

}  // namespace zorvex
