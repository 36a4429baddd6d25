#include "presolve/parallel_groups.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include "base/tolerances.hpp"

namespace zorvex {
namespace {

std::uint64_t mix(std::uint64_t x) {  // finaliser of MurmurHash3
  x = (x ^ (x >> 33)) * 0xFF51AFD7ED558CCDULL;
  x = (x ^ (x >> 33)) * 0xC4CEB9FE1A85EC53ULL;
  return x ^ (x >> 33);
}

// One vector's place in the sorted list of candidates.
struct Candidate {
  std::uint64_t hash;
  Index vector;
  double scale;  // its entry of lowest index: parallel vectors agree after division by it
};

class Finder {
 public:
  Finder(const PresolveModel& model, Axis axis)
      : model_(model),
        axis_(axis),
        value_(static_cast<std::size_t>(axis == Axis::kRows ? model.num_cols() : model.num_rows()), 0) {}

  [[nodiscard]] std::vector<Candidate> candidates(Index min_length) const;
  [[nodiscard]] bool alive(Index vector) const {
    return axis_ == Axis::kRows ? model_.row_alive[vector] : model_.col_alive[vector];
  }
  // Makes `vector` the one that parallel() compares with.
  void load(const Candidate& vector);
  [[nodiscard]] bool parallel(const Candidate& other) const;

 private:
  [[nodiscard]] Index length(Index vector) const {
    return axis_ == Axis::kRows ? model_.matrix.row_length(vector) : model_.matrix.col_length(vector);
  }
  // Calls use(index, value) for each entry of the vector.
  template <class Use>
  void walk(Index vector, Use use) const {
    if (axis_ == Axis::kRows) {
      for (const auto& entry : model_.matrix.row(vector)) use(entry.col, entry.value);
    } else {
      for (const auto& entry : model_.matrix.col(vector)) use(entry.row, entry.value);
    }
  }

  const PresolveModel& model_;
  Axis axis_;
  std::vector<double> value_;  // the loaded vector, zero elsewhere
  std::vector<Index> support_;
  Candidate loaded_{0, -1, 1};
};

std::vector<Candidate> Finder::candidates(Index min_length) const {
  const Index count = axis_ == Axis::kRows ? model_.num_rows() : model_.num_cols();
  std::vector<Candidate> result;
  for (Index vector = 0; vector < count; ++vector) {
    if (!alive(vector) || length(vector) < min_length) continue;
    Index lowest = -1;
    double scale = 1;
    walk(vector, [&](Index index, double value) {
      if (lowest >= 0 && index > lowest) return;
      lowest = index;
      scale = value;
    });
    std::uint64_t hash = mix(static_cast<std::uint64_t>(length(vector)));
    walk(vector, [&](Index index, double value) {
      // Single precision absorbs rounding in all but a few unlucky ratios, which are then merely not found.
      const auto bits = std::bit_cast<std::uint32_t>(static_cast<float>(value / scale));
      hash += mix(static_cast<std::uint64_t>(index) << 32 | bits);
    });
    result.push_back({hash, vector, scale});
  }
  std::sort(result.begin(), result.end(), [](const Candidate& a, const Candidate& b) {
    return a.hash != b.hash ? a.hash < b.hash : a.vector < b.vector;
  });
  return result;
}

void Finder::load(const Candidate& vector) {
  for (const Index index : support_) value_[index] = 0;
  support_.clear();
  walk(vector.vector, [&](Index index, double value) {
    value_[index] = value;
    support_.push_back(index);
  });
  loaded_ = vector;
}

bool Finder::parallel(const Candidate& other) const {
  if (length(other.vector) != length(loaded_.vector)) return false;
  bool same = true;
  walk(other.vector, [&](Index index, double value) {
    const double expected = value_[index] * other.scale;
    same = same && std::abs(value * loaded_.scale - expected) <= PresolveTolerances::kParallel * std::abs(expected) &&
           expected != 0;
  });
  return same;
}

}  // namespace

void for_each_parallel(const PresolveModel& model, Axis axis, Index min_length,
                       const std::function<Index(Index first, Index second, double factor)>& visit) {
  Finder finder(model, axis);
  const std::vector<Candidate> all = finder.candidates(min_length);
  for (std::size_t begin = 0, end = 0; begin < all.size(); begin = end) {
    while (end < all.size() && all[end].hash == all[begin].hash) ++end;
    if (end - begin < 2) continue;
    Candidate kept = all[begin];
    finder.load(kept);
    for (std::size_t k = begin + 1; k < end; ++k) {
      if (!finder.alive(kept.vector) || !finder.parallel(all[k])) continue;
      const Index next = visit(kept.vector, all[k].vector, all[k].scale / kept.scale);
      if (next < 0) return;
      if (next == kept.vector) continue;
      kept = all[k];
      finder.load(kept);
    }
  }
}

}  // namespace zorvex
