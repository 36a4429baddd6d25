// Column bounds that the rows imply, through several rows, and what each of them rests on. What follows from derived
// bounds alone would otherwise be free to follow from itself: a conclusion names the row sides and the given bounds
// that justify it, these become pillars, and pillars stay for as long as the object lives.
//   Space    the model as given, of which nothing may change but what `remove_row` and `remove_bound` tell.
//   Cost     a bounded number of sweeps over the rows that changed; a conclusion looks at kMaxSupport facts at most.
//   Source   M. Savelsbergh, ORSA J. Computing 6 (1994) 445-454, section 1; the bookkeeping of reasons as in conflict
//            analysis: T. Achterberg, Discrete Optimization 4 (2007) 4-20.
#pragma once

#include <vector>

#include "base/work_meter.hpp"
#include "presolve/presolve_model.hpp"

namespace zorvex {

class BoundPropagation {
 public:
  // `restate`: a bound that is given counts as derived, too, where rows imply just that bound.
  BoundPropagation(const PresolveModel& model, WorkMeter& work, bool restate);

  // Derives bounds until nothing moves much any more; at most `sweeps` rounds over the rows.
  void run(int sweeps);

  // Range of the row's activity over the derived bounds, without what the row itself has contributed to them.
  [[nodiscard]] Activity range(Index row) const;
  // The same with it: no wider, and at hand.
  [[nodiscard]] const Activity& quick_range(Index row) const { return activity_[row]; }

  enum class Side : Index { kLower = 0, kUpper = 1 };

  // Best bound known on the column.
  [[nodiscard]] double lower(Index col) const { return bound(col, Side::kLower); }
  [[nodiscard]] double upper(Index col) const { return bound(col, Side::kUpper); }
  // True if rows imply a bound on the column at least as good as the one given.
  [[nodiscard]] bool is_derived(Index col, Side side) const { return latest_[slot(col, side)] >= 0; }

  struct RowSide {
    Index row;
    Side side;
  };

  // What one end of range(row), or the best bound of a column, rests on becomes part of the current argument. False
  // when that is the row itself, or something that is gone, or too much.
  bool argue_range(Index row, Side end);
  bool argue_bound(Index col, Side side);
  // The sides of rows argued with since the last accept or reject.
  [[nodiscard]] const std::vector<RowSide>& argument() const { return argued_rows_; }
  // Makes what has been argued pillars, or forgets it.
  void accept();
  void reject();

  [[nodiscard]] bool is_pillar(Index row) const { return row_pillar_[row] != 0; }
  [[nodiscard]] bool is_pillar(Index col, Side side) const { return bound_pillar_[slot(col, side)] != 0; }
  // The row, the given bound, is no longer a reason for anything.
  void remove_row(Index row) { row_gone_[row] = 1; }
  void remove_bound(Index col, Side side) { bound_gone_[slot(col, side)] = 1; }

 private:
  // A derived bound; `previous` is the one it improved on, -1 the given bound.
  struct Fact {
    Index col, row, previous;
    Side side;
    double value;
  };

  static std::size_t slot(Index col, Side side) { return 2 * static_cast<std::size_t>(col) + static_cast<Index>(side); }
  void sweep(std::vector<Index>& rows);
  void derive(const PresolveMatrix::Entry& entry, Side side);
  [[nodiscard]] bool worth_it(Index col, Side side, double value) const;
  [[nodiscard]] double value_of(Index col, Side side, Index fact) const;
  [[nodiscard]] double bound(Index col, Side side) const { return value_of(col, side, latest_[slot(col, side)]); }
  // The newest fact older than `before` that `row` did not derive.
  [[nodiscard]] Index version(Index col, Side side, Index before, Index row) const;
  bool collect_fact(Index col, Side side, Index fact, Index claimed);
  bool collect_range(Index row, Side end, Index skipped_col, Index before, Index claimed);
  bool collect_reasons(Index claimed);

  const PresolveModel& model_;
  WorkMeter& work_;
  bool restate_;
  std::vector<Fact> facts_;
  std::vector<Index> latest_;       // per column and side: newest fact, -1 if none
  std::vector<Activity> activity_;  // over the derived bounds
  std::vector<char> row_pillar_, row_gone_, queued_;
  std::vector<char> bound_pillar_, bound_gone_;  // per column and side
  std::vector<Index> touched_;                   // rows to look at in the next sweep
  std::vector<RowSide> argued_rows_;
  std::vector<std::size_t> argued_bounds_;
  std::vector<Index> stack_;  // facts whose reasons are still to be collected
  std::vector<Index> seen_;   // per fact: number of the argument that last used it
  Index argument_count_ = 0;
};

}  // namespace zorvex
