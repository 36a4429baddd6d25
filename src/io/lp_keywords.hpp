// The words that open the sections of an LP-format file, in any case. Outside the places where a section may start,
// and before a colon or a relation, they are names like all others.
#pragma once

#include <cstddef>
#include <string_view>

namespace zorvex {

enum class LpSection {
  kNone,
  kMinimize,
  kMaximize,
  kConstraints,
  kLazyConstraints,
  kUserCuts,
  kBounds,
  kGenerals,
  kBinaries,
  kSemicontinuous,
  kSemiinteger,
  kSos,
  kSos1,
  kSos2,
  kUnsupported,  // known to other tools, no part of our models
  kEnd,
};

// The section whose keyword `text` (the rest of a line) starts with, and the keyword's length.
struct LpKeyword {
  LpSection section = LpSection::kNone;
  std::size_t length = 0;
};
[[nodiscard]] LpKeyword lp_keyword(std::string_view text);

// "inf" or "infinity" in any case.
[[nodiscard]] bool is_lp_infinity(std::string_view name);

// "free" in any case.
[[nodiscard]] bool is_lp_free(std::string_view name);

// Whether a name as a whole means something in some place of the format: tools may trip over variables called so.
[[nodiscard]] bool is_lp_reserved(std::string_view name);

}  // namespace zorvex
