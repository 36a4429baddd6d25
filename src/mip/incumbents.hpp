// The solution pool of a search: improving solutions, best first, and the value above which nodes are cut off.
//   Units    objectives in minimisation form, offset included.
#pragma once

#include <vector>

#include "mip/mip_tolerances.hpp"

namespace zorvex {

// Objective values base + k * step; step 0: any value.
struct ObjectiveGrid {
  double step = 0;
  double base = 0;
};

class Incumbents {
 public:
  struct Solution {
    std::vector<double> x;
    double objective = mip_tol::kNone;
  };

  // `cutoff` is the user's (kNone: none). Solutions above it are not taken. With a step some optimum lies on the grid,
  // so that only grid values below an incumbent, which need not be on it, matter.
  void configure(double cutoff, const ObjectiveGrid& grid, std::size_t capacity = 10);

  // Whether a solution of this value would be taken.
  [[nodiscard]] bool improves(double objective) const {
    return objective < best_objective() && objective <= user_cutoff_;
  }
  // Takes x if it improves on the best; returns whether it did.
  bool add(std::vector<double> x, double objective);

  [[nodiscard]] bool empty() const { return solutions_.empty(); }
  [[nodiscard]] const Solution& best() const { return solutions_.front(); }
  [[nodiscard]] double best_objective() const { return empty() ? mip_tol::kNone : best().objective; }
  [[nodiscard]] const std::vector<Solution>& solutions() const { return solutions_; }
  // Solutions ever taken.
  [[nodiscard]] int found() const { return found_; }

  // Nodes with a bound above this hold nothing of interest; kNone while everything does.
  [[nodiscard]] double pruning_cutoff() const { return pruning_cutoff_; }
  [[nodiscard]] bool prunes(double bound) const { return bound > pruning_cutoff_; }

 private:
  void update_cutoff();

  std::vector<Solution> solutions_;
  int found_ = 0;
  double user_cutoff_ = mip_tol::kNone;
  ObjectiveGrid grid_;
  double pruning_cutoff_ = mip_tol::kNone;
  std::size_t capacity_ = 10;
};

}  // namespace zorvex
