#include "io/name_table.hpp"

namespace zorvex {

Index NameTable::insert(std::string_view name, const Key& key) {
  std::size_t at = locate(name, key);
  if (slots_[at].index >= 0) return slots_[at].index;
  if ((end_.size() + 1) * 3 > slots_.size() * 2) {
    rehash(slots_.size() * 2);
    at = locate(name, key);
  }
  const Index index = size();
  arena_.insert(arena_.end(), name.begin(), name.end());
  end_.push_back(arena_.size());
  slots_[at] = {{key.head[0], key.head[1]}, key.hash, index};
  return index;
}

void NameTable::rehash(std::size_t slots) {
  std::vector<Slot> old(slots);
  old.swap(slots_);
  const std::size_t mask = slots - 1;
  for (const Slot& slot : old) {
    if (slot.index < 0) continue;
    std::size_t at = slot.hash & mask;
    while (slots_[at].index >= 0) at = (at + 1) & mask;
    slots_[at] = slot;
  }
}

}  // namespace zorvex
