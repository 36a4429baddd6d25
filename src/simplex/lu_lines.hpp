// Growing sparse lines (rows or columns) in one shared storage: a line that outgrows its room moves to the end and
// leaves a hole; holes are squeezed out when the storage is exhausted.
//   Shapes   lines are numbered 0..n-1 and must be placed before use; the entries of a line are in no particular order,
//   without duplicates. Cost     push is amortised O(1); find and remove are O(length of the line).
#pragma once

#include <algorithm>
#include <limits>
#include <new>
#include <vector>

#include "base/types.hpp"

namespace zorvex {

// Slots [begin, end) of some storage.
struct LuRange {
  Index begin = 0;
  Index end = 0;
  [[nodiscard]] Index length() const { return end - begin; }
  [[nodiscard]] bool empty() const { return begin == end; }
};

// Real is the type of the values; kValues = false keeps a pattern only.
template <class Real, bool kValues>
class LuLines {
 public:
  // n lines, none of them placed, and storage for about `slots` entries.
  void reset(Index n, Offset slots) {
    range_.resize(static_cast<std::size_t>(n));
    limit_.resize(static_cast<std::size_t>(n));
    placed_.clear();
    used_ = 0;
    if (static_cast<Offset>(index_.size()) < slots) resize(slots);
  }
  // A line exists from here on, empty with room for `capacity` entries.
  void place(Index line, Index capacity) {
    make_space(capacity);
    placed_.push_back(line);
    range_[line] = {used_, used_};
    used_ += capacity;
    limit_[line] = used_;
  }
  // Makes room for `extra` more entries; pointers and ranges taken before are stale afterwards.
  void ensure(Index line, Index extra) {
    const LuRange& range = range_[line];
    if (limit_[line] - range.end < extra) relocate(line, range.length() + extra);
  }
  // The entry after the last; ensure() was called.
  void append(Index line, Index index, Real value) {
    LuRange& range = range_[line];
    index_[range.end] = index;
    if constexpr (kValues) value_[range.end] = value;
    ++range.end;
  }
  void push(Index line, Index index, Real value = Real(0)) {
    ensure(line, 1);
    append(line, index, value);
  }
  // Slot of the entry `index`, which must exist.
  [[nodiscard]] Index find(Index line, Index index) const {
    Index slot = range_[line].begin;
    while (index_[slot] != index) ++slot;
    return slot;
  }
  // Removes an entry by moving the last one into its slot.
  void remove_slot(Index line, Index slot) {
    const Index last = --range_[line].end;
    index_[slot] = index_[last];
    if constexpr (kValues) value_[slot] = value_[last];
  }
  void remove(Index line, Index index) { remove_slot(line, find(line, index)); }
  void clear_line(Index line) { range_[line].end = range_[line].begin; }

  [[nodiscard]] LuRange range(Index line) const { return range_[line]; }
  [[nodiscard]] Index length(Index line) const { return range_[line].length(); }
  [[nodiscard]] const LuRange* ranges() const { return range_.data(); }
  [[nodiscard]] Index* index() { return index_.data(); }
  [[nodiscard]] Real* value() { return value_.data(); }
  [[nodiscard]] const Index* index() const { return index_.data(); }
  [[nodiscard]] const Real* value() const { return value_.data(); }

 private:
  static constexpr Offset kHoles = 8;  // slots used per live entry from which holes are squeezed out

  void resize(Offset slots) {
    if (slots > std::numeric_limits<Index>::max()) throw std::bad_alloc();
    index_.resize(static_cast<std::size_t>(slots));
    if constexpr (kValues) value_.resize(static_cast<std::size_t>(slots));
  }
  void relocate(Index line, Index needed) {
    const Index capacity = needed + needed / 2 + 2;
    make_space(capacity);
    const LuRange old = range_[line];
    std::copy(index_.begin() + old.begin, index_.begin() + old.end, index_.begin() + used_);
    if constexpr (kValues) std::copy(value_.begin() + old.begin, value_.begin() + old.end, value_.begin() + used_);
    range_[line] = {used_, used_ + old.length()};
    used_ += capacity;
    limit_[line] = used_;
  }
  void make_space(Index count) {
    if (static_cast<Offset>(used_) + count <= static_cast<Offset>(index_.size())) return;
    Offset live = 0;
    for (const Index line : placed_) live += range_[line].length();
    // Squeezing takes all lines their spare room, so it must be rare: only when most of a large storage is holes.
    if (kHoles * live < used_) compact();
    const Offset needed = static_cast<Offset>(used_) + count;
    if (needed > static_cast<Offset>(index_.size())) resize(needed + needed / 2);
  }
  // Squeezes out the holes: all lines become exactly as long as they are, in their present memory order.
  void compact() {
    std::vector<Index> by_place = placed_;
    std::sort(by_place.begin(), by_place.end(), [&](Index a, Index b) { return range_[a].begin < range_[b].begin; });
    used_ = 0;
    for (const Index line : by_place) {
      const LuRange old = range_[line];
      std::copy(index_.begin() + old.begin, index_.begin() + old.end, index_.begin() + used_);
      if constexpr (kValues) std::copy(value_.begin() + old.begin, value_.begin() + old.end, value_.begin() + used_);
      range_[line] = {used_, used_ + old.length()};
      used_ += old.length();
      limit_[line] = used_;
    }
  }

  std::vector<LuRange> range_;
  std::vector<Index> limit_;  // end of the room of each line
  std::vector<Index> placed_;
  std::vector<Index> index_;
  std::vector<Real> value_;  // unused for a pattern
  Index used_ = 0;           // slots handed out so far
};

}  // namespace zorvex
