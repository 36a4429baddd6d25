// Average objective gain per unit of change when a column was branched down or up.
//   Units    objective per unit of the column.
//   Source   T. Achterberg, T. Koch, A. Martin, "Branching rules revisited", Oper. Res. Letters 33 (2005) 42-54.
#pragma once

#include <algorithm>
#include <vector>

#include "base/types.hpp"
#include "mip/mip_tolerances.hpp"

namespace zorvex {

class Pseudocosts {
 public:
  explicit Pseudocosts(Index num_cols) : down_(static_cast<std::size_t>(num_cols)), up_(down_) {}

  // The relaxation rose by `gain` when the column's value moved by `distance` > 0.
  void update(Index col, bool up, double gain, double distance) {
    if (!(distance > mip_tol::kScoreEps) || !(gain >= 0)) return;
    Record& record = up ? up_[col] : down_[col];
    Record& all = up ? all_up_ : all_down_;
    record.sum += gain / distance;
    ++record.count;
    all.sum += gain / distance;
    ++all.count;
  }

  // Estimated gain per unit; the average over all columns where this one has no record.
  [[nodiscard]] double rate(Index col, bool up) const {
    const Record& record = up ? up_[col] : down_[col];
    if (record.count > 0) return record.sum / record.count;
    const Record& all = up ? all_up_ : all_down_;
    return all.count > 0 ? all.sum / all.count : 1;
  }
  [[nodiscard]] int count(Index col, bool up) const { return (up ? up_[col] : down_[col]).count; }
  [[nodiscard]] int reliability(Index col) const { return std::min(count(col, false), count(col, true)); }

  static double score(double down_gain, double up_gain) {
    return std::max(down_gain, mip_tol::kScoreEps) * std::max(up_gain, mip_tol::kScoreEps);
  }

 private:
  struct Record {
    double sum = 0;
    int count = 0;
  };
  std::vector<Record> down_, up_;
  Record all_down_, all_up_;
};

}  // namespace zorvex
