// Names of rows or columns numbered 0, 1, ... in the order of insertion, with fast lookup while a file is read.
//   Layout   one text arena; an open-addressing table with linear probing, at most two thirds full. A slot carries the
//            first 16 bytes of its name, so that nearly all lookups touch a single cache line: on large models the
//            misses are what reading costs. prepare() lets the caller hide even that one.
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

  // The head of a name and its hash; the highest bit of the hash marks names that are longer than the head.
  struct Key {
    std::uint64_t head[2];
    std::uint32_t hash;
  };

  // -1 when there is no such name.
  [[nodiscard]] Index find(std::string_view name) const { return find(name, key_of(name)); }

  // In two steps: prepare() starts loading the slot that find() will look at.
  [[nodiscard]] Key prepare(std::string_view name) const {
    const Key key = key_of(name);
    __builtin_prefetch(&slots_[key.hash & (slots_.size() - 1)]);
    return key;
  }
  [[nodiscard]] Index find(std::string_view name, const Key& key) const { return slots_[locate(name, key)].index; }

  // The number of the name, which is new exactly when the result equals the size before the call.
  Index insert(std::string_view name) { return insert(name, key_of(name)); }
  Index insert(std::string_view name, const Key& key);

 private:
  static constexpr std::size_t kInitialSlots = 64;
  static constexpr std::size_t kHeadBytes = 16;
  static constexpr std::uint32_t kLongName = std::uint32_t{1} << 31;

  struct Slot {
    std::uint64_t head[2] = {0, 0};
    std::uint32_t hash = 0;
    Index index = -1;  // -1: free
  };

  template <class Word>
  static std::uint64_t load_as(const char* bytes) {
    Word word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
  }
  // Up to eight bytes, the first one lowest. Two loads that overlap instead of a copy of variable length.
  static std::uint64_t load(const char* bytes, std::size_t count) {
    const auto halves = [&]<class Half>(Half) {
      const std::size_t shift = 8 * (count - sizeof(Half));
      return load_as<Half>(bytes) | load_as<Half>(bytes + count - sizeof(Half)) << shift;
    };
    if (count >= 8) return load_as<std::uint64_t>(bytes);
    if (count >= 4) return halves(std::uint32_t{});
    if (count >= 2) return halves(std::uint16_t{});
    return count == 1 ? load_as<unsigned char>(bytes) : 0;
  }
  static std::uint64_t mix(std::uint64_t a) {
    const auto product = static_cast<unsigned __int128>(a) * 0x9E3779B97F4A7C15u;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
  }

  static Key key_of(std::string_view name) {
    constexpr std::size_t kWord = sizeof(std::uint64_t);
    const std::size_t size = name.size();
    Key key{{load(name.data(), size < kWord ? size : kWord), 0}, 0};
    std::uint64_t hash = mix(key.head[0] ^ (size * 0xD6E8FEB86659FD93u));
    for (std::size_t at = kWord; at < size; at += kWord) {
      const std::uint64_t word = load(name.data() + at, size - at < kWord ? size - at : kWord);
      if (at == kWord) key.head[1] = word;
      hash = mix(hash ^ word);
    }
    const std::uint32_t long_mark = size > kHeadBytes ? kLongName : 0;
    key.hash = (static_cast<std::uint32_t>(hash) & ~kLongName) | long_mark;
    return key;
  }

  // The slot of the name, or the free one where it belongs.
  [[nodiscard]] std::size_t locate(std::string_view name, const Key& key) const {
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t at = key.hash & mask;; at = (at + 1) & mask) {
      const Slot& slot = slots_[at];
      if (slot.index < 0) return at;
      if (slot.hash == key.hash && slot.head[0] == key.head[0] && slot.head[1] == key.head[1] &&
          (name.size() <= kHeadBytes || (*this)[slot.index] == name)) {
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
