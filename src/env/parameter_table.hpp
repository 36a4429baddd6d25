// The static table of all parameters: one row each, in the order of the interface, with the bounds and defaults every
// environment starts from, and compile-time ids that give solver options their values without a lookup by name.
#pragma once

#include <array>
#include <cstdint>

namespace zorvex {

enum class ParamType : int { kSeparator = -1, kInt = 1, kDouble = 2, kString = 3 };

// Enumerators are spelled as the parameters themselves, so that one search finds every use; the value is the row.
enum class Param : int {
#define INT(name, min, max, def, meaning) name,
#define DBL(name, min, max, def, meaning) name,
#define STR(name, def, meaning) name,
#define SEPARATOR(name) name,
#include "env/parameter_table.inc"
#undef INT
#undef DBL
#undef STR
#undef SEPARATOR
};

// Integer parameters keep bounds and default as doubles too. `default_text` is null except for strings.
struct ParameterRow {
  const char* name;
  ParamType type;
  double min;
  double max;
  double def;
  const char* default_text;
  const char* meaning;  // one line for help and documentation
};

inline constexpr auto kParameterTable = std::to_array<ParameterRow>({
#define INT(name, min, max, def, meaning) {#name, ParamType::kInt, min, max, def, nullptr, meaning},
#define DBL(name, min, max, def, meaning) {#name, ParamType::kDouble, min, max, def, nullptr, meaning},
#define STR(name, def, meaning) {#name, ParamType::kString, 0, 0, 0, def, meaning},
#define SEPARATOR(name) {#name, ParamType::kSeparator, 0, 0, 0, nullptr, ""},
#include "env/parameter_table.inc"
#undef INT
#undef DBL
#undef STR
#undef SEPARATOR
});

inline constexpr int kNumParameterRows = static_cast<int>(kParameterTable.size());
inline constexpr int kNumDescriptors = static_cast<int>(Param::End);  // everything before the last separator
inline constexpr int kNumPublicParameters = static_cast<int>(Param::EndPublic);
inline constexpr int kParameterTextSize = 512;  // bytes of a string parameter, terminator included
inline constexpr int kMaxIntParameter = 2000000000;
inline constexpr double kParameterInfinity = 1e100;

constexpr int count_rows(ParamType type, int end = kNumParameterRows) {
  int count = 0;
  for (int row = 0; row < end; ++row) {
    if (kParameterTable[row].type == type) ++count;
  }
  return count;
}

constexpr ParamType type_of(Param param) { return kParameterTable[static_cast<int>(param)].type; }
// Place among the parameters of the same type.
constexpr int slot_of(Param param) { return count_rows(type_of(param), static_cast<int>(param)); }

// The value block of one environment. Copied whole when a model takes its private parameters.
struct ParameterValues {
  std::array<std::int32_t, count_rows(ParamType::kInt)> ints{};
  std::array<double, count_rows(ParamType::kDouble)> doubles{};
  std::array<std::array<char, kParameterTextSize>, count_rows(ParamType::kString)> texts{};

  // int, double or const char*, according to the parameter's type.
  template <Param P>
  [[nodiscard]] auto get() const {
    constexpr int kSlot = slot_of(P);
    if constexpr (type_of(P) == ParamType::kInt) {
      return static_cast<int>(ints[kSlot]);
    } else if constexpr (type_of(P) == ParamType::kDouble) {
      return doubles[kSlot];
    } else {
      static_assert(type_of(P) == ParamType::kString, "a separator row has no value");
      return static_cast<const char*>(texts[kSlot].data());
    }
  }
};

}  // namespace zorvex
