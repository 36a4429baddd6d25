// Cutting planes of a search: every cut is valid for all integer points of the model, has a type code, an age and an id
// that never changes; some of them are rows of the LP at any time.
#pragma once

#include <array>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "base/types.hpp"
#include "mip/mip_log.hpp"

namespace zorvex {

enum class CutType : int {
  kUser = 0,
  kLearned = 1,
  kGomory = 2,
  kCover = 3,
  kImpliedBound = 4,
  kClique = 5,
  kMir = 6,
  kFlowCover = 7,
  kFlowPath = 8,
  kGubCover = 9,
  kZeroHalf = 11,
  kNetwork = 13,
  kModK = 14,
};

// sum value[k] * x[index[k]] <= rhs; indices increasing.
struct Cut {
  std::vector<Index> index;
  std::vector<double> value;
  double rhs = 0;
  CutType type = CutType::kUser;
  double norm = 0;      // Euclidean, of the coefficients
  double efficacy = 0;  // violation divided by the norm, at the point it was separated from
  int age = 0;          // rounds in the LP without being tight
  bool pinned = false;  // a constraint of the model: never leaves the pool and the LP
};

class CutPool {
 public:
  // Returns the id, or -1 when a cut with the same left-hand side and no weaker right-hand side is held already (for a
  // pinned cut: is pinned already).
  std::int64_t add(Cut cut);
  void remove(std::int64_t id);
  [[nodiscard]] const Cut& cut(std::int64_t id) const { return cuts_[static_cast<std::size_t>(id)]; }
  [[nodiscard]] Cut& cut(std::int64_t id) { return cuts_[static_cast<std::size_t>(id)]; }
  [[nodiscard]] std::size_t size() const { return held_; }
  [[nodiscard]] std::array<int, kNumCutTypes> counts_by_type() const;

 private:
  static std::uint64_t hash(const Cut& cut);

  std::vector<Cut> cuts_;                                         // by id
  std::vector<char> live_;                                        // by id
  std::unordered_multimap<std::uint64_t, std::int64_t> by_hash_;  // looked up, never iterated
  std::size_t held_ = 0;
};

}  // namespace zorvex
