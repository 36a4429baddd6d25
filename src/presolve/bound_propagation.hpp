// Column bounds that the rows imply, through several rows, and what each of them rests on. What follows from derived
// bounds alone would otherwise be free to follow from itself: a conclusion names the rows and the original bounds that
// justify it, these become pillars, and pillars stay for as long as the object lives.
//   Space    the current model, which must not change except by the removal of rows through `remove`.
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
  BoundPropagation(const PresolveModel& model, WorkMeter& work);

  // Derives bounds until nothing moves much any more; at most `sweeps` rounds over the rows.
  void run(int sweeps);

  // Range of the row's activity over the derived bounds, without what the row itself has contributed to them.
  [[nodiscard]] Activity range(Index row) const;

  // What the minimum (else the maximum) of range(row) rests on becomes part of the current argument. False when that is
  // the row itself, or something that is gone, or too much.
  bool argue(Index row, bool minimum);
  // Makes what has been argued since the last call pillars, or forgets it.
  void accept();
  void reject() { argued_rows_.clear(); }

  [[nodiscard]] bool is_pillar(Index row) const { return pillar_[row] != 0; }
  // The row is no longer a reason for anything.
  void remove(Index row) { gone_[row] = 1; }

 private:
  enum Side : Index { kLower = 0, kUpper = 1 };
  // A derived bound; `previous` is the one it improved on, -1 the original bound.
  struct Fact {
    Index col, row, previous;
    Side side;
    double value;
  };

  void sweep(std::vector<Index>& rows);
  void derive(const PresolveMatrix::Entry& entry, Side side);
  [[nodiscard]] bool worth_it(Index col, Side side, double value) const;
  [[nodiscard]] double value_of(Index col, Side side, Index fact) const;
  [[nodiscard]] double bound(Index col, Side side) const { return value_of(col, side, latest_[2 * col + side]); }
  // The newest fact older than `before` that `row` did not derive.
  [[nodiscard]] Index version(Index col, Side side, Index before, Index row) const;
  bool collect(Index row, bool minimum, Index skipped_col, Index before, Index claimed);

  const PresolveModel& model_;
  WorkMeter& work_;
  std::vector<Fact> facts_;
  std::vector<Index> latest_;       // per column and side: newest fact, -1 if none
  std::vector<Activity> activity_;  // over the derived bounds
  std::vector<char> pillar_, gone_, queued_;
  std::vector<Index> touched_;  // rows to look at in the next sweep
  std::vector<Index> argued_rows_, stack_;
  std::vector<Index> seen_;  // per fact: number of the argument that last used it
  Index argument_ = 0;
};

}  // namespace zorvex
