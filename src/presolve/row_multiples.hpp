// The rows that share columns with a given one, and the multiple of it that cancels most entries of each.
#pragma once

#include <cmath>
#include <span>
#include <vector>

#include "base/work_meter.hpp"
#include "presolve/presolve_model.hpp"

namespace zorvex {

// The ratio that most of `ratios`, in ascending order, agree on to the relative `tolerance`, and how many do.
struct CommonRatio {
  double ratio;
  Index count;
};
template <class Accept>
CommonRatio most_common_ratio(std::span<const double> ratios, double tolerance, Accept accept) {
  CommonRatio best{0, 0};
  for (std::size_t first = 0, last = 0; first < ratios.size(); first = last) {
    while (last < ratios.size() && ratios[last] - ratios[first] <= tolerance * std::abs(ratios[first])) ++last;
    const auto count = static_cast<Index>(last - first);
    if (count > best.count && accept(ratios[first])) best = {ratios[first], count};
  }
  return best;
}

// row + factor * (the given row) has `cancelled` of the row's entries less.
struct RowMultiple {
  Index row;
  double factor;
  Index cancelled;
};

class RowMultiples {
 public:
  // Multiples beyond `most` do not count.
  RowMultiples(const PresolveModel& model, WorkMeter& work, double most) : model_(model), work_(work), most_(most) {}

  // For every other row where two entries or more would go. Valid until the next call.
  const std::vector<RowMultiple>& of(Index row);

 private:
  struct Meeting {
    Index row;
    double factor;
  };

  const PresolveModel& model_;
  WorkMeter& work_;
  double most_;
  std::vector<Meeting> meetings_;
  std::vector<double> factors_;
  std::vector<RowMultiple> multiples_;
};

}  // namespace zorvex
