// File types and compression by the name's suffix: the tables, and how a name is matched against them.
#pragma once

#include <array>
#include <string_view>

namespace zorvex {

// Index into kCompressionSuffixes; the order is the order of probing.
enum class Compression : int { kNone = 0, kGzip = 1, kBzip2 = 2, kZip = 3, k7z = 4 };
inline constexpr std::array<const char*, 5> kCompressionSuffixes{"", ".gz", ".bz2", ".zip", ".7z"};

// Suffixes tried, in this order, after the name of a model to read.
inline constexpr std::array<const char*, 13> kProbeSuffixes{"",     ".mps", ".rew", ".lp",  ".rlp", ".ilp", ".qps",
                                                            ".MPS", ".REW", ".LP",  ".RLP", ".ILP", ".QPS"};

// Index into kTypeSuffixes.
enum class FileType : int {
  kUnknown = -1,
  kMps = 1,
  kRew = 2,
  kLp = 3,
  kRlp = 4,
  kIlp = 5,
  kMst = 6,
  kSol = 7,
  kBas = 8,
  kPrm = 9,
  kQps = 10,
  kOrd = 11,
};
inline constexpr std::array<const char*, 12> kTypeSuffixes{"",     ".mps", ".rew", ".lp",  ".rlp", ".ilp",
                                                           ".mst", ".sol", ".bas", ".prm", ".qps", ".ord"};

// The first compression suffix that ends the name exactly (case counts); kNone without one.
[[nodiscard]] Compression compression_of(std::string_view name);

// The name without its compression suffix.
[[nodiscard]] std::string_view without_compression(std::string_view name);

// The first type whose suffix, followed by some compression suffix, ends the name. The type suffix matches in any
// case ('A' to 'Z'), the compression suffix only exactly.
[[nodiscard]] FileType file_type_of(std::string_view name);

// The type of a model found under probe suffix `probe` (1 to 12): capitals mean the same as lower case, and a probed
// ".qps" is an MPS file.
[[nodiscard]] FileType probed_type(int probe);

}  // namespace zorvex
