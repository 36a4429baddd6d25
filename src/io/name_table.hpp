// Names of rows or columns numbered 0, 1, ... in the order of insertion, with fast lookup while a file is read.
//   Layout   one text arena; an open-addressing table of 16-byte slots with linear probing, at most half full. A slot
//            carries the first eight bytes of its name, so that names of up to eight bytes (the fixed format's) are
//            compared without touching the arena.
//   Limits   names hold no zero byte; a longer text than 255 bytes must be refused before.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

#include "base/types.hpp"

namespace zorvex {

class NameTable {
 public:
  NameTable() { rehash(kInitialSlots); }

  [[nodiscard]] Index size() const { return static_cast<Index>(end_.size()); }

  [[nodiscard]] std::string_view operator[](Index i) const {
    const std::size_t begin = i == 0 ? 0 : end_[i - 1];
    return {arena_.data() + begin, end_[i] - begin};
  }

  // -1 when there is no such name.
  [[nodiscard]] Index find(std::string_view name) const { return slots_[locate(name, key_of(name))].index; }

  // The number of the name, which is new exactly when the result equals the size before the call.
  Index insert(std::string_view name);

 private:
  static constexpr std::size_t kInitialSlots = 64;
  static constexpr std::size_t kInlineBytes = 8;
  static constexpr std::uint32_t kLongName = std::uint32_t{1} << 31;  // hash bit of names beyond the prefix

  struct Key {
    std::uint64_t prefix;
    std::uint32_t hash;
  };
  struct Slot {
    std::uint64_t prefix = 0;
    std::uint32_t hash = 0;
    Index index = -1;  // -1: free
  };

  static std::uint64_t load(const char* bytes, std::size_t count) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, count);
    return word;
  }
  static std::uint64_t mix(std::uint64_t a) {
    const auto product = static_cast<unsigned __int128>(a) * 0x9E3779B97F4A7C15u;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
  }

  static Key key_of(std::string_view name) {
    const std::uint64_t prefix = load(name.data(), name.size() < kInlineBytes ? name.size() : kInlineBytes);
    std::uint64_t hash = mix(prefix ^ (name.size() * 0xD6E8FEB86659FD93u));
    for (std::size_t at = kInlineBytes; at < name.size(); at += kInlineBytes) {
      const std::size_t left = name.size() - at;
      hash = mix(hash ^ load(name.data() + at, left < kInlineBytes ? left : kInlineBytes));
    }
    const std::uint32_t long_mark = name.size() > kInlineBytes ? kLongName : 0;
    return {prefix, (static_cast<std::uint32_t>(hash) & ~kLongName) | long_mark};
  }

  // The slot of the name, or the free one where it belongs.
  [[nodiscard]] std::size_t locate(std::string_view name, Key key) const {
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t at = key.hash & mask;; at = (at + 1) & mask) {
      const Slot& slot = slots_[at];
      if (slot.index < 0) return at;
      if (slot.hash == key.hash && slot.prefix == key.prefix &&
          (name.size() <= kInlineBytes || (*this)[slot.index] == name)) {
        return at;
      }
    }
  }

  void rehash(std::size_t slots);

  std::vector<char> arena_;
  std::vector<std::size_t> end_;  // end of each name in the arena
  std::vector<Slot> slots_;       // a power of two
};

}  // namespace zorvex
