#include "mip/incumbents.hpp"

#include <algorithm>
#include <cmath>

namespace zorvex {

void Incumbents::configure(double cutoff, double granularity, std::size_t capacity) {
  user_cutoff_ = cutoff;
  granularity_ = granularity;
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
  double step = noise;
  if (granularity_ > 0) {
    const double slack = std::max(noise, mip_tol::kGranularitySlack * granularity_);
    step = std::max(step, granularity_ - slack);
  }
  pruning_cutoff_ = std::min(pruning_cutoff_, z - step);
}

}  // namespace zorvex
