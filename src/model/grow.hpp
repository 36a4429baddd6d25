// Growing vectors so that a later append cannot fail.
#pragma once

#include <cstddef>
#include <vector>

namespace zorvex {

// Capacity for `extra` more entries, at least doubling it when it must grow: repeated small appends stay linear.
template <class T>
void make_room(std::vector<T>& vector, std::size_t extra) {
  const std::size_t needed = vector.size() + extra;
  if (needed <= vector.capacity()) return;
  vector.reserve(needed < 2 * vector.capacity() ? 2 * vector.capacity() : needed);
}

// Keeps the entries with keep[i] != 0.
template <class T>
void keep_marked(std::vector<T>& vector, const std::vector<char>& keep) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < vector.size(); ++i) {
    if (keep[i]) vector[kept++] = vector[i];
  }
  vector.resize(kept);
}

}  // namespace zorvex
