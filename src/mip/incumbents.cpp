#include "mip/incumbents.hpp"

#include <algorithm>
#include <cmath>

namespace zorvex {

void Incumbents::configure(double cutoff, const ObjectiveGrid& grid, std::size_t capacity) {
  user_cutoff_ = cutoff;
  grid_ = grid;
  capacity_ = capacity;
  update_cutoff();
}

bool Incumbents::add(std::vector<double> x, double objective) {
  if (!improves(objective)) return false;
  solutions_.insert(solutions_.begin(), Solution{std::move(x), objective});
  if (solutions_.size() > capacity_) solutions_.pop_back();
  ++found_;
  update_cutoff();
  return true;
}

void Incumbents::update_cutoff() {
  pruning_cutoff_ = user_cutoff_;
  if (empty()) return;
  const double z = best_objective();
  const double noise = mip_tol::kCutoffDelta * std::max(1.0, std::abs(z));
  double limit = z - noise;
  if (grid_.step > 2 * noise) {
    const double slack = std::max(noise, mip_tol::kGranularitySlack * grid_.step);
    const double below = std::ceil((z - grid_.base - slack) / grid_.step) - 1;
    limit = std::min(limit, grid_.base + below * grid_.step + slack);
  }
  pruning_cutoff_ = std::min(pruning_cutoff_, limit);
}

}  // namespace zorvex
