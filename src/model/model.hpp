// The model record behind the C handle: stored data, queued changes, results, starting information.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/status.hpp"
#include "base/types.hpp"
#include "model/basis_analysis.hpp"
#include "model/model_data.hpp"
#include "model/pending_changes.hpp"
#include "zorvex.h"

namespace zorvex {

inline constexpr std::uint32_t kModelMagic = 0x231D8A78;

struct PoolSolution {
  double objective;
  std::vector<double> x;
};

// Results of the last solve, all in the user's terms: user objective sense, user row signs, '>' rows not negated.
//   rc[j] = obj_j - a_j'pi;  pi[i] = change of the objective value per unit of right-hand side;
//   slack[i] = rhs_i - a_i'x (range rows: upper side - a_i'x).
// Every vector is empty until the value exists, else as long as its object set.
struct SolutionStore {
  SolveStatus status = SolveStatus::kLoaded;
  bool solved = false;         // counts below are those of a finished solve
  bool has_objective = false;  // obj_val
  bool has_bound = false;      // obj_bound
  double obj_val = 0, obj_bound = 0;
  double runtime = 0;  // seconds
  double iter_count = 0, node_count = 0;
  int bar_iter_count = 0;
  std::vector<double> x, rc, slack, pi;
  std::vector<PoolSolution> pool;  // best first; empty for continuous models, whose one solution is x

  double farkas_proof = 0;  // amount by which the proof misses
  std::vector<double> farkas_dual, unbd_ray;
  int infeas_var = -1, unbd_var = -1;  // a column showing infeasibility or unboundedness, -1 none

  std::shared_ptr<BasisAnalysis> analysis;  // of the final basis; null when there is none

  [[nodiscard]] int solution_count() const {
    if (!pool.empty()) return static_cast<int>(pool.size());
    return !x.empty() || (has_objective && status == SolveStatus::kOptimal) ? 1 : 0;
  }
};

// What the kernel worked in that a basis comes from.
enum class BasisPrecision { kUnknown, kDouble, kExtended };

// Where the next solve starts. Survives edits as far as it fits; written by the user and by each solve.
struct WarmStart {
  std::vector<int> vbasis, cbasis;   // empty, or num_cols / num_rows values of 0, -1, -2, -3; both or none
  std::vector<double> vnorm, cnorm;  // dual norms; both or none
  BasisPrecision precision = BasisPrecision::kUnknown;
  std::vector<double> start;  // empty, or num_cols values, kUndefinedStart where open

  [[nodiscard]] bool has_basis() const { return !(vbasis.empty() && cbasis.empty()); }
  [[nodiscard]] bool has_norms() const { return !(vnorm.empty() && cnorm.empty()); }
  // A basis fits when it has as many basic variables as the model has rows.
  [[nodiscard]] bool basis_fits(const ModelData& data) const;
  void drop_basis();
};

// Texts handed out for unnamed rows and columns, kept alive until the next update.
struct DefaultNames {
  std::vector<std::string> var, constr;
};

}  // namespace zorvex

// The first two fields are fixed; everything else is internal. Made by create_model, ended by free_model: its memory
// comes from a pool (env/handle_pool.hpp), so that the magic of a freed handle can still be read.
struct ZLPmodel {
  std::atomic<std::uint32_t> magic{0};
  std::int32_t in_progress = 0;   // an optimization runs
  ZLPenv* env = nullptr;          // owned
  bool callback_allowed = false;  // a callback of this model runs: calls that only read are let through
  bool signal_enabled = false;    // registered for the console interrupt

  std::shared_ptr<ZLPcbdata> callback;  // null: none registered

  zorvex::ModelData data;
  std::unique_ptr<zorvex::PendingChanges> pending;  // absent until the first edit
  zorvex::SolutionStore solution;
  zorvex::WarmStart warm;
  std::vector<int> branch_priority;    // empty (all 0), or one per column: higher branches first
  std::shared_ptr<void> solver_state;  // kept by the optimize driver between solves; dropped when anything changes

  std::optional<zorvex::CompressedVectors> rows;  // row-wise twin of data.matrix (same signs), made on request
  zorvex::DefaultNames default_names;
};

namespace zorvex {

// Makes a model of `data`, given in the user's form (see to_stored_form), with a private copy of the parameters of
// `env`. Bounds must already be stored values (stored_lower, stored_upper). Returns 0 or an error code; *model is null
// on failure.
int create_model(ZLPenv* env, ModelData&& data, ZLPmodel** model);
// The same for data that is in stored form already, as that of another model is.
int adopt_stored_data(ZLPenv* env, ModelData&& data, ZLPmodel** model);

[[nodiscard]] inline bool has_pending_changes(const ZLPmodel& model) {
  return model.pending != nullptr && !model.pending->empty();
}

// Frees the model and its environment record. Null and dead models are ignored.
void free_model(ZLPmodel* model) noexcept;

// The queue of changes, made if absent. Throws std::bad_alloc.
PendingChanges& pending_changes(ZLPmodel& model);

// Status of a column that stays out of the basis: at a finite bound, the lower one first, else superbasic.
int nonbasic_status(const ModelData& data, Index col);

// Applies the queued changes. When it throws std::bad_alloc the model is as before.
void apply_pending_changes(ZLPmodel& model);

// Forgets results and search state; `keep_basis` keeps the basis and norms for a warm start.
void discard_results(ZLPmodel& model, bool keep_basis);

// The rows of data.matrix as compressed vectors of column numbers, columns ascending; stored signs.
const CompressedVectors& row_twin(ZLPmodel& model);

}  // namespace zorvex
