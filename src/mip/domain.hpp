// Bounds of the search at one node: a trail of changes for backtracking, activities of all rows kept up to date, and
// propagation of linear rows, learned cliques, SOS sets and semi-continuous gaps.
//   Invariant  between calls lower <= upper for every column unless infeasible(); bounds of integer columns are
//              integral, and no bound lies strictly inside a column's gap.
//   Cost       a bound change is O(column length); a row visit is O(row length), skipped in O(1) when the row's
//              activity shows it redundant or hopeless.
//   Source     T. Achterberg, "Constraint Integer Programming", PhD thesis, TU Berlin 2007, sections 7.1 and 10.1.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "base/stop_token.hpp"
#include "base/types.hpp"
#include "base/work_meter.hpp"
#include "mip/search_model.hpp"

namespace zorvex {

struct BoundChange {
  Index col = 0;
  bool upper = false;  // which bound
  double value = 0;
};

// Why a bound moved: only branching and LP arguments must be stored with a node, propagation finds its own again.
enum class Reason : char { kBranch, kRelaxation, kPropagation };

class Domain {
 public:
  // `model` outlives the domain; its rows must not change while the domain lives, except through reload().
  explicit Domain(const SearchModel& model);

  // Starts over from the model's present rows and bounds, which become the global domain.
  void reload();

  [[nodiscard]] double lower(Index col) const { return lower_[col]; }
  [[nodiscard]] double upper(Index col) const { return upper_[col]; }
  [[nodiscard]] std::span<const double> lower() const { return lower_; }
  [[nodiscard]] std::span<const double> upper() const { return upper_; }
  [[nodiscard]] bool fixed(Index col) const { return lower_[col] == upper_[col]; }
  [[nodiscard]] bool infeasible() const { return infeasible_; }

  // Each returns false (and makes the domain infeasible) when the column's range becomes empty. Weaker bounds are
  // ignored. The rows and sets of the column are queued for propagate().
  bool tighten_lower(Index col, double value, Reason reason);
  bool tighten_upper(Index col, double value, Reason reason);
  bool apply(const BoundChange& change, Reason reason) {
    return change.upper ? tighten_upper(change.col, change.value, reason)
                        : tighten_lower(change.col, change.value, reason);
  }
  bool fix(Index col, double value, Reason reason) {
    return tighten_lower(col, value, reason) && tighten_upper(col, value, reason);
  }

  // Points whose cost exceeds `limit` (without the objective's constant) are of no interest: the objective is
  // propagated as one more row. Stays in force through reload().
  void set_cutoff(double limit);

  // Propagates all that is queued, to a fixed point or until the effort limit; false when infeasible.
  bool propagate();
  void queue_all();

  // Levels nest: backtrack(k) undoes everything done since the k-th push.
  void push_level() { level_start_.push_back(trail_.size()); }
  [[nodiscard]] int level() const { return static_cast<int>(level_start_.size()); }
  void backtrack(int level);
  [[nodiscard]] std::size_t num_changes() const { return trail_.size(); }
  // All changes of the current level with the bounds they led to; a bound moved twice is listed twice.
  [[nodiscard]] std::vector<BoundChange> level_changes() const;
  // Changes of the current level with reason kRelaxation.
  [[nodiscard]] std::vector<BoundChange> relaxation_changes() const;

  // To be called, at level 0, after coefficients or sides of a row of the model were changed in place.
  void row_changed(Index row);

  // Columns whose bounds moved since the last call, for whoever mirrors the domain.
  std::vector<Index> take_changed();

  // Row activity over the present bounds: the finite part and the number of infinite contributions.
  struct Activity {
    double min = 0, max = 0;
    Index min_inf = 0, max_inf = 0;
  };
  [[nodiscard]] const Activity& activity(Index row) const { return activity_[row]; }
  [[nodiscard]] double min_activity(Index row) const { return activity_[row].min_inf > 0 ? -kInf : activity_[row].min; }
  [[nodiscard]] double max_activity(Index row) const { return activity_[row].max_inf > 0 ? kInf : activity_[row].max; }

  [[nodiscard]] const SearchModel& model() const { return *model_; }
  [[nodiscard]] const WorkMeter& work() const { return work_; }

 private:
  struct Entry {
    Index col;
    bool upper;
    Reason reason;
    double old_value;
  };

  bool settle_gap(Index col, Reason reason);
  void change(Index col, bool upper, double value, Reason reason);
  void move_bound(Index col, bool upper, double value);
  void update_activities(Index col, bool upper, double old_value, double new_value);
  void recompute_activity(Index row);
  void mark_changed(Index col);
  void queue_col(Index col);
  bool fail();
  bool propagate_row(Index row);
  bool propagate_objective();
  void recompute_objective();
  [[nodiscard]] double largest_reach(Index row) const;
  [[nodiscard]] bool can_tighten(Index row) const;
  bool propagate_entry(Index col, double coef, double row_lower, double row_upper, const Activity& act);
  bool derive_upper(Index col, double value);
  bool derive_lower(Index col, double value);
  bool propagate_sos(Index set);
  bool propagate_literal(Literal lit);
  void clear_queues();

  const SearchModel* model_;
  std::vector<double> lower_, upper_;
  std::vector<Activity> activity_;
  std::vector<Index> cost_cols_;  // columns with a cost
  Activity objective_;            // only its minimum is kept up to date
  double cutoff_ = kInf;
  double objective_reach_ = 0;  // as reach_
  bool objective_queued_ = false;
  std::vector<double> reach_;  // per row: largest |a_j| (upper - lower) under the loosest bounds
  std::vector<Entry> trail_;
  std::vector<std::size_t> level_start_;
  std::vector<Index> row_queue_, sos_queue_;
  std::vector<Literal> literal_queue_;  // true since the last propagation, where learned cliques hold them
  std::size_t row_head_ = 0;
  std::vector<char> row_queued_, sos_queued_;
  std::vector<Index> changed_;
  std::vector<char> is_changed_;
  bool infeasible_ = false;
  WorkMeter work_;
};

// Writes the bounds of a domain into the model. Columns without integrality keep theirs unless they are
// fixed: the rows imply their bounds, and tight implied bounds only add degeneracy.
void adopt_bounds(SearchModel& model, const Domain& domain);

}  // namespace zorvex
