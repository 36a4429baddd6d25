// Reproducible random numbers: one independent stream per component, drawn from a seed and the component's name.
//   Source   G. Steele, D. Lea, C. Flood, "Fast splittable pseudorandom number generators", OOPSLA 2014 (SplitMix64).
#pragma once

#include <cstdint>
#include <string_view>

namespace zorvex {

class RandomStream {
 public:
  RandomStream(std::uint64_t seed, std::string_view component) : state_(seed ^ hash(component)) {}

  std::uint64_t next() {
    state_ += 0x9E3779B97F4A7C15ULL;
    std::uint64_t z = state_;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
  }
  // Uniform in [0, 1).
  double uniform() { return static_cast<double>(next() >> 11) * 0x1.0p-53; }
  // Uniform in [0, bound), bound > 0.
  std::int64_t below(std::int64_t bound) {
    return static_cast<std::int64_t>(next() % static_cast<std::uint64_t>(bound));
  }

 private:
  static std::uint64_t hash(std::string_view text) {  // FNV-1a
    std::uint64_t h = 0xCBF29CE484222325ULL;
    for (const char c : text) h = (h ^ static_cast<unsigned char>(c)) * 0x100000001B3ULL;
    return h;
  }
  std::uint64_t state_;
};

}  // namespace zorvex
