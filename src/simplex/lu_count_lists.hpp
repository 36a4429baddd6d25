// Doubly linked lists of rows (or columns) by their number of entries, for the Markowitz search.
//   Invariant  an item is in at most one list; next/prev of items outside all lists are meaningless.
//   Cost       every operation O(1), reset O(number of lists) once the items fit.
#pragma once

#include <vector>

#include "base/types.hpp"

namespace zorvex {

class LuCountLists {
 public:
  static constexpr Index kNone = -1;

  // Empty lists for counts 0..max_count over items 0..items-1; an item is unknown until its first insert.
  void reset(Index items, Index max_count) {
    head_.assign(static_cast<std::size_t>(max_count) + 1, kNone);
    next_.resize(static_cast<std::size_t>(items));
    prev_.resize(static_cast<std::size_t>(items));
    count_.resize(static_cast<std::size_t>(items));
  }
  void insert(Index item, Index count) {
    const Index first = head_[count];
    next_[item] = first;
    prev_[item] = kNone;
    if (first != kNone) prev_[first] = item;
    head_[count] = item;
    count_[item] = count;
  }
  // Nothing happens to an item that is in no list.
  void remove(Index item) {
    if (count_[item] == kNone) return;
    const Index after = next_[item];
    const Index before = prev_[item];
    if (after != kNone) prev_[after] = before;
    (before != kNone ? next_[before] : head_[count_[item]]) = after;
    count_[item] = kNone;
  }
  void move(Index item, Index count) {
    if (count_[item] == count) return;
    remove(item);
    insert(item, count);
  }
  [[nodiscard]] Index first(Index count) const { return head_[count]; }
  [[nodiscard]] Index next(Index item) const { return next_[item]; }

 private:
  std::vector<Index> head_, next_, prev_;
  std::vector<Index> count_;  // list of each item, kNone outside
};

}  // namespace zorvex
