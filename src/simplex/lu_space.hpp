// The factor space: one index array and one value array shared by L, which fills it from the low end, and U, which
// fills it from the high end. Both may grow until the two cursors meet.
//   Units    slots, one index and one value each; never more than 2^31 - 1 of them, so that slots fit an Index.
//   Errors   reserve() and grow() throw std::bad_alloc.
#pragma once

#include <memory>

#include "base/types.hpp"

namespace zorvex {

template <class Real>
class FactorSpace {
 public:
  // Tries ten sizes, the first three quarters of `wanted`, each next one three quarters of the one before. Returns
  // false if the space obtained is less than half of what was wanted.
  bool reserve(Offset wanted);
  // 1.5 times the space; the contents are lost.
  void grow();
  // Empties both ends.
  void reset() {
    low_ = 0;
    high_ = size_;
  }

  [[nodiscard]] Offset size() const { return size_; }
  [[nodiscard]] Offset available() const { return high_ - low_; }
  [[nodiscard]] Index growth_count() const { return growth_count_; }
  [[nodiscard]] Index low() const { return low_; }

  // First of `count` fresh slots at either end; the caller has checked available().
  Index take_low(Index count) { return (low_ += count) - count; }
  Index take_high(Index count) { return high_ -= count; }

  [[nodiscard]] Index* index() { return index_.get(); }
  [[nodiscard]] Real* value() { return value_.get(); }
  [[nodiscard]] const Index* index() const { return index_.get(); }
  [[nodiscard]] const Real* value() const { return value_.get(); }

 private:
  void release();
  void allocate(Offset size);

  std::unique_ptr<Index[]> index_;
  std::unique_ptr<Real[]> value_;
  Index size_ = 0, low_ = 0, high_ = 0;
  Index growth_count_ = 0;
};

}  // namespace zorvex
