// The only writer of a PresolveModel: keeps activities, lists of what to look at again, and the postsolve stack.
#pragma once

#include <vector>

#include "base/work_meter.hpp"
#include "presolve/presolve_model.hpp"
#include "presolve/undo_log.hpp"

namespace zorvex {

struct Reduction;

// A set of rows or columns waiting to be looked at, first in first out.
class DirtyQueue {
 public:
  explicit DirtyQueue(Index size) : waiting_(static_cast<std::size_t>(size), 0) {}
  void push(Index item) {
    if (waiting_[item]) return;
    waiting_[item] = 1;
    items_.push_back(item);
  }
  // -1 when empty.
  Index pop() {
    if (next_ == items_.size()) {
      items_.clear();
      next_ = 0;
      return -1;
    }
    const Index item = items_[next_++];
    waiting_[item] = 0;
    return item;
  }

 private:
  std::vector<Index> items_;
  std::size_t next_ = 0;
  std::vector<char> waiting_;
};

class Changes {
 public:
  explicit Changes(PresolveModel& model);

  // Starts the record of a step; append what its undo needs.
  UndoLog& record(const Reduction& reduction) { return log_.begin(reduction); }

  void set_col_lower(Index col, double bound) { set_col_bounds(col, bound, model_.col_upper[col]); }
  void set_col_upper(Index col, double bound) { set_col_bounds(col, model_.col_lower[col], bound); }
  void set_col_bounds(Index col, double lower, double upper);
  void set_row_sides(Index row, double lower, double upper);
  void shift_cost(Index col, double amount);
  void shift_offset(Extended amount) { model_.offset += amount; }

  // Takes the row out; its undo is the caller's record.
  void remove_row(Index row);
  // Takes out a row that what is left implies, with a record of its own: it comes back basic, without a multiplier.
  void drop_row(Index row);
  // Takes the column out as if it were zero; its undo is the caller's record.
  void remove_column(Index col);
  // Takes the column out at `value`, moving its terms into sides and offset, with a record of its own. `status` is
  // kAtLower, kAtUpper or kNonbasicFree; kBasic stands for "both bounds are there": the sign of d will decide.
  void fix_column(Index col, double value, BasisStatus status);
  // Eliminates the column by the equation `row`: every other row and the objective lose their term in it, the row and
  // the column go. The caller has made sure that the column's bounds hold by themselves. Own record.
  void substitute(Index row, Index col);

  // row += factor * equation, sides included. The caller records it.
  void add_equation(Index row, Index equation, double factor);

  // Contribution of one row of the current model to the proof of infeasibility.
  void prove(Index row, double multiplier) { proof_.push_back({row, multiplier}); }

  struct ProofTerm {
    Index row;
    double multiplier;
  };
  [[nodiscard]] const std::vector<ProofTerm>& proof() const { return proof_; }
  [[nodiscard]] const UndoLog& log() const { return log_; }
  [[nodiscard]] WorkMeter& work() { return work_; }
  [[nodiscard]] DirtyQueue& dirty_rows() { return dirty_rows_; }
  [[nodiscard]] DirtyQueue& dirty_cols() { return dirty_cols_; }
  [[nodiscard]] Index rows_removed() const { return rows_removed_; }
  [[nodiscard]] Index cols_removed() const { return cols_removed_; }
  [[nodiscard]] std::int64_t steps() const { return steps_; }

 private:
  void erase_entry(Index node);
  [[nodiscard]] bool locate(Index row, Index source);
  void add_multiple(Index row, Index source, double factor);
  void shift_sides(Index row, Extended amount);
  void fix_quadratic_terms(Index col, double value);

  PresolveModel& model_;
  UndoLog log_;
  WorkMeter work_;
  DirtyQueue dirty_rows_, dirty_cols_;
  std::vector<ProofTerm> proof_;
  std::vector<Index> position_;  // per column: node in the row being combined, -1 outside
  Index rows_removed_ = 0;
  Index cols_removed_ = 0;
  std::int64_t steps_ = 0;
};

}  // namespace zorvex
