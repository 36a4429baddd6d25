#include "mip/cut_pool.hpp"

#include <bit>
#include <cmath>

namespace zorvex {

namespace {

double largest_coefficient(const Cut& cut) {
  double largest = 0;
  for (const double value : cut.value) largest = std::max(largest, std::abs(value));
  return largest;
}

// Coefficients relative to the largest one, on the grid of the hash.
double on_grid(double value, double largest) { return std::round(value / largest * 0x1.0p30); }

bool parallel(const Cut& a, double a_largest, const Cut& b, double b_largest) {
  if (a.index != b.index) return false;
  for (std::size_t k = 0; k < a.value.size(); ++k) {
    if (on_grid(a.value[k], a_largest) != on_grid(b.value[k], b_largest)) return false;
  }
  return true;
}

}  // namespace

// Scaled by the largest coefficient, so that multiples of one cut meet. The shift carries the sign bits down: a product
// alone would keep them at the top, where two of them cancel.
std::uint64_t CutPool::hash(const Cut& cut) {
  const double largest = largest_coefficient(cut);
  std::uint64_t h = 0xCBF29CE484222325ULL;
  const auto mix = [&h](std::uint64_t word) {
    h = (h ^ word) * 0x100000001B3ULL;
    h ^= h >> 32;
  };
  for (std::size_t k = 0; k < cut.index.size(); ++k) {
    mix(static_cast<std::uint64_t>(cut.index[k]));
    mix(std::bit_cast<std::uint64_t>(on_grid(cut.value[k], largest)));
  }
  return h;
}

std::int64_t CutPool::add(Cut cut) {
  const std::uint64_t key = hash(cut);
  const double largest = largest_coefficient(cut);
  const auto [first, last] = by_hash_.equal_range(key);
  for (auto it = first; it != last; ++it) {
    const Cut& held = this->cut(it->second);
    const double held_largest = largest_coefficient(held);
    if ((cut.pinned && !held.pinned) || !parallel(held, held_largest, cut, largest)) continue;
    if (held.rhs / held_largest <= cut.rhs / largest) return -1;
  }
  const auto id = static_cast<std::int64_t>(cuts_.size());
  by_hash_.emplace(key, id);
  cuts_.push_back(std::move(cut));
  live_.push_back(1);
  ++held_;
  return id;
}

void CutPool::remove(std::int64_t id) {
  if (!live_[static_cast<std::size_t>(id)]) return;
  const auto [first, last] = by_hash_.equal_range(hash(cut(id)));
  for (auto it = first; it != last; ++it) {
    if (it->second == id) {
      by_hash_.erase(it);
      break;
    }
  }
  live_[static_cast<std::size_t>(id)] = 0;
  cuts_[static_cast<std::size_t>(id)] = {};
  --held_;
}

std::array<int, kNumCutTypes> CutPool::counts_by_type() const {
  std::array<int, kNumCutTypes> counts{};
  for (std::size_t id = 0; id < cuts_.size(); ++id) {
    if (live_[id]) ++counts[static_cast<std::size_t>(cuts_[id].type)];
  }
  return counts;
}

}  // namespace zorvex
