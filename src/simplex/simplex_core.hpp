// State and basic operations shared by the dual and the primal simplex: the scaled problem, a basis with its
// factorization, values and reduced costs.
//   Form    minimise c'x subject to A x + s = 0 and bounds on x and s; variables 0..n-1 are the columns, n + i is the
//           logical s_i of row i, with bounds [-row_upper, -row_lower].
//   Spaces  everything here is scaled. Position k of the basis holds variable head[k].
#pragma once

#include <algorithm>
#include <span>
#include <vector>

#include "base/log_sink.hpp"
#include "base/stop_token.hpp"
#include "base/types.hpp"
#include "linalg/scattered.hpp"
#include "simplex/basis_lu.hpp"
#include "simplex/kernel_tolerances.hpp"
#include "simplex/operation_statistics.hpp"
#include "simplex/partitioned_rows.hpp"
#include "simplex/simplex_log.hpp"
#include "simplex/simplex_outcome.hpp"

namespace zorvex {

// Where a nonbasic variable sits, with respect to the working bounds.
enum class Place : std::int8_t {
  kBasic = 0,
  kLower,
  kUpper,
  kFixed,  // working bounds are equal: never enters, kept out of pricing
  kFree,   // no bound in the way: at zero or wherever it was put
};

template <class Real>
class SimplexCore {
 public:
  using Tol = KernelTolerances<Real>;

  // --- the scaled problem; true bounds and costs ---
  Index m = 0, n = 0;
  std::vector<Offset> col_start;
  std::vector<Index> row_index;
  std::vector<Real> matrix_value;
  std::vector<Real> lower, upper, cost;  // n + m

  // --- working problem: box problem of phase 1, perturbed or shifted costs and bounds ---
  std::vector<Real> work_lower, work_upper, work_cost;  // n + m

  // --- basis ---
  std::vector<Index> head;     // m
  std::vector<Index> where;    // n + m: basis position, or -1
  std::vector<Place> place;    // n + m
  std::vector<Real> weight;    // m: dual edge weights by position
  bool weights_valid = false;  // weight belongs to head

  // --- values ---
  std::vector<Real> value;        // n + m; nonbasic entries only
  std::vector<Real> basic_value;  // m, by position
  std::vector<Real> basic_lower;  // m, working bounds by position
  std::vector<Real> basic_upper;
  std::vector<Real> reduced_cost;  // n + m, zero for basic variables

  // --- tolerances and limits of this solve ---
  Real primal_tol = Real(1e-7), dual_tol = Real(1e-7);
  Real pivot_tol = Tol::kPivot;  // smallest pivot; iterations accept ten times this
  double markowitz = 0.0078125;
  const StopToken* stop = nullptr;
  SimplexLog* log = nullptr;
  double iteration_offset = 0;
  double iterations = 0;
  double iteration_limit = kInf;
  double work = 0;         // deterministic effort, about nonzeros touched
  double price_work = 0;   // nonzeros touched by price() since construction
  double told_effort = 0;  // what the stop token knows of

  // --- factorization state ---
  BasisLu<Real> lu;
  Index refactor_interval = 100;
  Index factor_count = 0;
  Index singular_events = 0;
  bool temporary_fixings = false;  // see SimplexLimits
  Index numeric_troubles = 0;
  bool factor_valid = false;
  bool fresh = false;              // factored and values recomputed since the last pivot
  bool values_maintained = false;  // basic_value follows from updates: recomputation can be compared with it
  // Between solves: factors, places, values and reduced costs agree with the true costs and, but for the variables in
  // changed_bounds, with the true bounds. Only reduced costs of fixed columns are stale, as pricing leaves these out.
  bool warm = false;
  std::vector<Index> changed_bounds;
  std::vector<Index> dropped;  // structural variables thrown out of the basis for singularity

  PartitionedRows<Real> rows;
  bool rows_valid = false;
  OperationStatistics statistics;

  [[nodiscard]] Index num_vars() const { return n + m; }
  [[nodiscard]] bool is_basic(Index var) const { return where[var] >= 0; }
  [[nodiscard]] bool has_basic_columns() const;
  [[nodiscard]] bool first_iteration() const { return iterations + iteration_offset == 0; }
  [[nodiscard]] ColumnView<Real> columns() const {
    return {m, n, col_start.data(), row_index.data(), matrix_value.data()};
  }

  // Sizes all arrays for the problem in m, n, col_start and starts from the slack basis. Counters are reset.
  void prepare();
  void slack_basis();
  // Resets the counters that live for one solve and reserves factor space. Logs the factor space line.
  void begin_solve(double markowitz_tolerance, int space_steps);

  // Puts every nonbasic variable to the place its working bounds allow (keeping its side where it can) and sets its
  // value; copies the working bounds of basic variables to their positions.
  void settle_nonbasic();
  void use_true_bounds();
  // Widens every finite working bound a little, at random, so that degenerate vertices come apart; `perturb_value` is
  // the parameter PerturbValue.
  void perturb_bounds(std::uint64_t seed, double perturb_value);
  void use_true_costs() { work_cost = cost; }
  // Place of a nonbasic variable, with value and membership in the pricing rows.
  void put_nonbasic(Index var, Place where_to);
  void rebuild_rows();  // the partition for the current places

  // --- warm start: what a few changed bounds cost, instead of everything anew ---
  // Needs `warm`. Moves places and values along with the changed bounds, the basic values by one FTRAN. False: some
  // reduced cost has the wrong sign and no other bound to go to; places and values must be settled anew.
  [[nodiscard]] bool absorb_bound_changes();
  // Back to the true costs; the reduced costs follow by at most one BTRAN. Returns the sum of dual infeasibilities
  // among those that moved.
  Real restore_true_costs();
  // Brings the factors over to the basis made of the variables with basic[var] != 0 by at most `max_updates` exchanges.
  // False: factors and heads are those of some basis in between, to be replaced.
  [[nodiscard]] bool exchange_basis(const std::vector<char>& basic, Index max_updates);

  // Factors the basis, repairing singularity by logicals. Values and weights must be recomputed by the caller. False:
  // there are no factors, and `failure` says whether numbers or a limit are the cause.
  [[nodiscard]] bool factorize(SimplexOutcome& failure);
  // x_B from the nonbasic values, with the accuracy check every fifth factorization; may tighten `markowitz`.
  void compute_primal();
  void compute_duals();  // reduced costs from work_cost
  void compute_duals_from(const std::vector<Real>& costs);
  // Corrects basic values and reduced costs, which belong to the true costs, by what their equations miss. Needs valid
  // factors. Leaves about the rounding of the stored numbers.
  void refine();

  // --- solves ---
  void btran_unit(Index position, Scattered<Real>& rho);
  void price(const Scattered<Real>& rho, Scattered<Real>& alpha);
  void ftran_column(Index var, Scattered<Real>& alpha);                              // saved for the update
  void ftran_column_and(Index var, Scattered<Real>& alpha, Scattered<Real>& other);  // other := B^-1 other as well
  void scatter_column(Index var, Real multiplier, Scattered<Real>& vector) const;
  [[nodiscard]] Real column_dot(Index var, const Real* dense) const;

  // Makes `entering` basic in `position`; the leaving variable goes to `leaving_place` at its working bound there.
  // `pivot` is the entering column's entry. False: the factors must be rebuilt before the next solve.
  bool pivot(Index position, Index entering, Real entering_value, Place leaving_place, Real pivot_value);

  // Counts trouble, forces a refactorization and raises the Markowitz tolerance to at least a half.
  void report_trouble();
  [[nodiscard]] bool needs_refactor() const;
  // What has been computed since construction, in units of a stop token.
  [[nodiscard]] double effort() const;
  // Polls the stop token, telling it of the effort since the last poll.
  [[nodiscard]] SolveStatus poll();
  // The limit that ended a run: of time, by a user, or else of iterations.
  [[nodiscard]] SimplexOutcome stop_reason() const;

  [[nodiscard]] Real primal_infeasibility(Index position) const {
    const Real x = basic_value[position];
    const Real distance = std::max<Real>(basic_lower[position] - x, x - basic_upper[position]);
    return distance > primal_tol ? distance : Real(0);
  }
  // Amount by which a nonbasic variable's reduced cost has the wrong sign for its place.
  [[nodiscard]] Real dual_infeasibility(Index var) const;
  [[nodiscard]] Real sum_primal_infeasibility() const;
  [[nodiscard]] Index count_primal_infeasible() const;  // basis positions
  [[nodiscard]] Real sum_dual_infeasibility() const;
  [[nodiscard]] Real objective(const std::vector<Real>& costs) const;  // costs'x over all variables

  // unit vectors and sums for the proofs
  std::vector<Real> proof;  // rows: Farkas multipliers, or columns: ray, as the algorithm says

 private:
  double take_column(Scattered<Real>& alpha);
  void refine_primal();
  void refine_duals();
  bool take_singular_basis();
  void repair_singular_basis();
  void tighten_markowitz(double growth, double relative_residual, double drift);
  bool tightened_last_time_ = false;
  [[nodiscard]] Real exact_reduced_cost(Index col) const;
  bool follow_bounds(Index var, Scattered<Real>& moved);
  Scattered<Real> row_work_, position_work_, column_work_;
};

}  // namespace zorvex
