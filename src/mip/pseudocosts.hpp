// What branching on a column down or up brought so far: objective gain per unit of change, bounds that propagation
// moved (inferences), and how often the child was cut off.
//   Units    objective per unit of the column; bound changes; shares of the tries.
//   Source   T. Achterberg, T. Koch, A. Martin, "Branching rules revisited", Oper. Res. Letters 33 (2005) 42-54.
#pragma once

#include <algorithm>
#include <vector>

#include "base/types.hpp"
#include "mip/mip_tolerances.hpp"

namespace zorvex {

class Pseudocosts {
 public:
  explicit Pseudocosts(Index num_cols)
      : down_(static_cast<std::size_t>(num_cols)),
        up_(down_),
        inference_down_(down_),
        inference_up_(down_),
        cutoff_down_(down_),
        cutoff_up_(down_) {}

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

  void update_inferences(Index col, bool up, double bounds_moved) {
    Record& record = (up ? inference_up_ : inference_down_)[col];
    record.sum += bounds_moved;
    ++record.count;
  }
  void update_cutoffs(Index col, bool up, bool cut_off) {
    Record& record = (up ? cutoff_up_ : cutoff_down_)[col];
    record.sum += cut_off;
    ++record.count;
  }
  [[nodiscard]] double inference_score(Index col) const {
    return (inference_down_[col].mean() + 1) * (inference_up_[col].mean() + 1);
  }
  [[nodiscard]] double cutoff_score(Index col) const { return cutoff_down_[col].mean() + cutoff_up_[col].mean(); }

  static double score(double down_gain, double up_gain) {
    return std::max(down_gain, mip_tol::kScoreEps) * std::max(up_gain, mip_tol::kScoreEps);
  }

 private:
  struct Record {
    double sum = 0;
    int count = 0;
    [[nodiscard]] double mean() const { return count > 0 ? sum / count : 0; }
  };
  std::vector<Record> down_, up_, inference_down_, inference_up_, cutoff_down_, cutoff_up_;
  Record all_down_, all_up_;
};

}  // namespace zorvex
