// Presolve of a continuous model: reduces an LpData, remembers what it did, and maps solutions and bases of the reduced
// model back to the original one.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <string_view>
#include <vector>

#include "base/log_sink.hpp"
#include "base/status.hpp"
#include "base/stop_token.hpp"
#include "linalg/basis.hpp"
#include "linalg/lp_data.hpp"

namespace zorvex {

// Multiples of equations added to other rows to cancel nonzeros: never, where the row has all columns of the equation,
// or wherever fewer nonzeros are left.
enum class Cancelling { kOff, kContained, kFull };

struct PresolveOptions {
  int level = -1;       // -1 automatic, 0 off, 1 conservative, 2 aggressive
  int max_passes = -1;  // -1 automatic
  double primal_feasibility_tol = 1e-6;
  double dual_feasibility_tol = 1e-6;
  int dualize = -1;  // solve the dual of what is left: -1 automatic, 0 never, 1 and 2 in two forms; see DualForm
  bool dual_reductions = true;     // reductions that keep only some optimal solutions
  bool make_equations = true;      // rows whose multiplier has one sign by itself become equations
  double dual_effort = 0;          // 0..1: how far conclusions about multipliers are followed up
  int dependent_rows = -1;         // search for dependent equations: 0 off, 1 with more effort
  bool implied_equations = false;  // inequalities that can only hold with equality become equations
  Cancelling cancelling = Cancelling::kFull;
  Index longest_row = 0;        // longer rows of what is left are cut into pieces; 0: none
  Index longest_col = 0;        // the same for columns
  bool power_scaling = false;   // rows of what is left are multiplied by powers of two
  Index aggregation_fill = 10;  // nonzeros that the elimination of one column may add
  std::int64_t max_steps = std::numeric_limits<std::int64_t>::max();  // changes after which presolve stops
  std::string_view only = {};                                         // name of the one reduction to run; empty for all
  std::vector<std::string_view> off = {};                             // names of reductions not to run
};

// A primal-dual point with basis, in the space of whichever model it belongs to. Signs as in LpPoint.
struct PresolvePoint {
  std::vector<double> x, row_activity, pi, reduced_cost;
  Basis basis;  // statuses only; head and norm are dropped on the way back
  // False when a reduction could only give a basis near the one that belongs to the point.
  bool exact_basis = true;
};

struct ReductionCount {
  const char* name;
  Offset count;  // times it changed or decided the model
};

struct PresolveStatistics {
  Index rows_removed = 0;
  Index cols_removed = 0;
  Offset nonzeros_removed = 0;
  int passes = 0;
  std::vector<ReductionCount> applied;  // in the order in which reductions are tried
};

enum class PresolveOutcome {
  kReduced,     // reduced() is to be solved (possibly unchanged)
  kAllRemoved,  // reduced() has neither rows nor columns: postsolve an empty point
  kInfeasible,  // proven on the original data when farkas() is not empty, else infeasible or unbounded
  kUnbounded,   // a feasible point is still needed: the ray exists, feasibility is not known
  kStopped,     // the stop token fired
};

class Presolve {
 public:
  Presolve(const LpData& original, const PresolveOptions& options);
  ~Presolve();

  PresolveOutcome run(const StopToken& stop);

  [[nodiscard]] const LpData& reduced() const;
  [[nodiscard]] const PresolveStatistics& statistics() const;
  // Original index of each reduced column and row; pieces of rows and their columns, which have none, stand behind.
  [[nodiscard]] const std::vector<Index>& original_cols() const;
  [[nodiscard]] const std::vector<Index>& original_rows() const;

  // Maps a point of the reduced model to the original one: exact primal values, duals, reduced costs, and a basis with
  // num_rows basic variables, optimal when the given one is (but see PresolvePoint::exact_basis).
  [[nodiscard]] PresolvePoint postsolve(const PresolvePoint& point) const;

  // Maps a Farkas proof over the rows of the reduced model to the original rows. To be checked with farkas_gap: steps
  // that reasoned with costs can spoil a proof.
  [[nodiscard]] std::vector<double> postsolve_farkas(const std::vector<double>& y) const;

  // After kInfeasible: a Farkas proof y over the original rows if one could be built from the reductions, else empty.
  [[nodiscard]] const std::vector<double>& farkas() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace zorvex
