#include "simplex/lu_space.hpp"

#include <algorithm>
#include <limits>
#include <new>

namespace zorvex {

namespace {
constexpr Offset kMaxSlots = std::numeric_limits<Index>::max();
constexpr int kMaxReductions = 10;
}  // namespace

template <class Real>
void FactorSpace<Real>::release() {
  index_.reset();
  value_.reset();
  size_ = low_ = high_ = 0;
}

// One slot more than usable, so that no array is ever empty. Left uninitialised: untouched pages cost nothing.
template <class Real>
void FactorSpace<Real>::allocate(Offset size) {
  release();
  const std::size_t slots = static_cast<std::size_t>(size) + 1;
  index_ = std::make_unique_for_overwrite<Index[]>(slots);
  value_ = std::make_unique_for_overwrite<Real[]>(slots);
  size_ = static_cast<Index>(size);
  reset();
}

template <class Real>
bool FactorSpace<Real>::reserve(Offset wanted) {
  growth_count_ = 0;
  Offset size = wanted;
  for (int attempt = 0; attempt < kMaxReductions; ++attempt) {
    size = size / 4 * 3 + size % 4 * 3 / 4;
    if (size > kMaxSlots) continue;
    try {
      allocate(size);
      return 2 * size >= wanted;
    } catch (const std::bad_alloc&) {
      release();
    }
  }
  throw std::bad_alloc();
}

template <class Real>
void FactorSpace<Real>::grow() {
  if (size_ == kMaxSlots) throw std::bad_alloc();
  const Offset size = std::min<Offset>(static_cast<Offset>(size_) + std::max<Offset>(1, size_ / 2), kMaxSlots);
  ++growth_count_;
  allocate(size);
}

template class FactorSpace<double>;
template class FactorSpace<Extended>;

}  // namespace zorvex
