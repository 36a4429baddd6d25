// One LP held ready for repeated simplex solves: load once, change bounds, costs and rows, solve from the last basis.
// This is what the LP driver, branch and cut, heuristics and infeasibility analysis all call.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "base/log_sink.hpp"
#include "base/status.hpp"
#include "base/stop_token.hpp"
#include "linalg/basis.hpp"
#include "linalg/lp_data.hpp"

namespace zorvex {

enum class Precision { kAutomatic, kDouble, kExtended };
enum class SimplexAlgorithm { kDual, kPrimal };

// Read once from the parameters; see the parameter table for meanings.
struct SimplexOptions {
  double primal_feasibility_tol = 1e-6;  // absolute, on unscaled rows and bounds
  double dual_feasibility_tol = 1e-6;    // absolute, on unscaled reduced costs
  double relaxed_tol = 0;                // both tolerances widen to it when all other attempts failed; 0: they stay
  double markowitz_tol = 0.0078125;
  int space_steps = 5;  // each enlarges the factor space reserved at first by half
  double perturb_value = 2e-4;
  double objective_scale = 0;  // 0 automatic, <0 power of the largest cost, >0 factor
  int pricing = -1;
  int norm_adjust = -1;
  double pivot_tol = 3e-8;           // scaled; the extended kernel's is smaller by the same factor as ever
  double free_box = 1000;            // bounds of free variables in the first phase of the dual simplex
  bool bound_flipping = true;        // ratio tests pass breakpoints while that pays
  bool nondegenerate_flips = false;  // a poorer pivot will do where a good one makes no step
  bool partial_primal = false;       // partial pricing in the primal simplex, whatever `pricing` says
  bool scale = true;
  bool alternative_scaling = false;  // largest entries to one, without regard to the smallest
  double aspiration = 1;             // share of the usual share of the tolerances that the kernel works to
  bool switch_algorithm = true;      // what one algorithm leaves open the other may finish
  bool end_factorization = true;     // an optimum's values come from a fresh factorization
  bool repair_unscaled = true;       // optima of the scaled model that violate the model as given are worked on
  Precision precision = Precision::kAutomatic;
  SimplexAlgorithm algorithm = SimplexAlgorithm::kDual;
  double display_interval = 5;  // seconds
  int display_iterations = 0;   // lines of the iteration log so far apart, 0: by time
  int sense = 1;                // objective values are multiplied by it when printed
  bool root_log = false;        // print the log as that of a root relaxation
  double log_start_time = 0;    // now_seconds() at which the surrounding solve began; 0: at the call
  double first_iteration = 0;   // iterations of earlier phases of the surrounding solve: the log counts on from there
};

// Limits of one solve() call.
struct SimplexLimits {
  double iterations = kInf;
  double objective = kInf;  // a dual bound proven at or above this value ends the solve with kCutoff (minimisation)
  // The bounds hold for a probe or a dive only. Its start basis is worth no repair, later ones are worth many.
  bool temporary_fixings = false;
};

// All vectors are in the space of the loaded LpData, unscaled. Signs: reduced cost d = c - A'pi with pi >= 0 on rows
// active at their lower side and <= 0 on rows active at their upper side (minimisation).
struct LpPoint {
  std::vector<double> x;             // num_cols
  std::vector<double> row_activity;  // num_rows
  std::vector<double> pi;            // num_rows
  std::vector<double> reduced_cost;  // num_cols
};

class LpSolver {
 public:
  LpSolver(const LpData& lp, const SimplexOptions& options, LogSink& log);
  ~LpSolver();
  LpSolver(const LpSolver&) = delete;
  LpSolver& operator=(const LpSolver&) = delete;

  // --- changes, cheap, keep the basis; the next solve starts from it ---
  void set_col_bounds(Index col, double lower, double upper);
  void set_row_bounds(Index row, double lower, double upper);
  void set_cost(Index col, double cost);
  // Appends rows (a row-wise matrix: its columns are the rows); their logicals become basic.
  void add_rows(const SparseMatrix& rows, std::span<const double> lower, std::span<const double> upper);
  // Removes the rows with remove[i] != 0 (length num_rows). A basis made non-square is repaired at the next solve.
  void delete_rows(std::span<const char> remove);
  void set_options(const SimplexOptions& options);

  // --- basis ---
  void set_basis(const Basis& basis);  // repaired when it has the wrong count or is singular
  [[nodiscard]] Basis basis() const;   // with head and norms when the last solve kept them
  void reset_to_slack_basis();

  // --- solve ---
  // Ends with kOptimal, kInfeasible, kUnbounded, kCutoff, kIterationLimit, kTimeLimit, kInterrupted or kNumeric.
  // kOptimal, kInfeasible and kUnbounded have passed a check against the loaded data: in long double after the first
  // solve, later in double with bounds on its rounding, and in long double where these leave the answer open.
  SolveStatus solve(const SimplexLimits& limits, const StopToken& stop);

  // --- results of the last solve ---
  [[nodiscard]] SolveStatus status() const;
  [[nodiscard]] double objective() const;         // at the current point, offset included
  [[nodiscard]] double iterations() const;        // of the last solve
  [[nodiscard]] double total_iterations() const;  // of all solves
  [[nodiscard]] const LpPoint& point() const;     // valid after kOptimal; best known otherwise
  // After kInfeasible: multipliers y (num_rows) such that y'A x over the column bounds never meets y'(row bounds), and
  // the proven amount by which it misses. See base/quality.hpp for the exact inequality.
  [[nodiscard]] const std::vector<double>& farkas() const;
  [[nodiscard]] double farkas_violation() const;
  // After kUnbounded: a direction over the columns along which the objective falls without end.
  [[nodiscard]] const std::vector<double>& ray() const;
  // After kNumeric: the basis is optimal, but the point misses the tolerances by what its storage as doubles rounds
  // off, or stays within the relaxed tolerance only.
  [[nodiscard]] bool nearly_optimal() const;
  [[nodiscard]] bool extended_precision() const;  // the last solve ended in the extended kernel

  // Share of the basic variables that are out of their bounds. During a solve, too, for whom its stop token calls.
  [[nodiscard]] double infeasible_share() const;

  // e' B^-1 of a basis position over the rows, dense and unscaled: the multipliers that sum the rows to a row of the
  // simplex tableau. Valid after kOptimal. False if no basis is factored.
  bool inverse_row(Index position, std::vector<double>& multipliers);
  // Variable basic in each position (columns first, then num_cols + row).
  [[nodiscard]] const std::vector<Index>& basis_head() const;

  [[nodiscard]] Index num_rows() const;
  [[nodiscard]] Index num_cols() const;
  [[nodiscard]] const LpData& data() const;  // as changed so far
  [[nodiscard]] double work() const;         // deterministic effort of all solves, about nonzeros touched

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace zorvex
