#include "io/object_names.hpp"

#include <algorithm>
#include <cstdio>

#include "io/name_table.hpp"

namespace zorvex {

namespace {

constexpr Index kMaxPaddedIndex = 10'000'000;
constexpr std::size_t kFixedNameLength = 8;

// What the names of one list ask of the format.
struct NameTraits {
  bool carried = true;  // distinct, and without control characters or comment signs
  bool has_blank = false;
  bool has_long = false;
};

NameTraits traits_of(const NameList& names, const std::string& reserved) {
  NameTraits traits;
  NameTable seen;
  if (!reserved.empty()) seen.insert(reserved);
  for (Index i = 0; i < names.size() && traits.carried; ++i) {
    const std::string& name = names[i];
    if (name.empty()) continue;  // gets a generic name
    const Index before = seen.size();
    const bool distinct = seen.insert(name) == before;
    const bool printable = std::all_of(name.begin(), name.end(),
                                       [](char c) { return static_cast<unsigned char>(c) >= ' ' && c != '\x7f'; });
    traits.carried = distinct && printable && name.front() != '$' && name.front() != '*' && name != "'MARKER'" &&
                     name.front() != ' ' && name.back() != ' ';
    traits.has_blank = traits.has_blank || name.find(' ') != std::string::npos;
    traits.has_long = traits.has_long || name.size() > kFixedNameLength;
  }
  return traits;
}

}  // namespace

ObjectNames::ObjectNames(const ModelData& data, bool own)
    : data_(&data),
      own_(own && data.var_names.any() && data.constr_names.any()),
      padded_(own_ || (data.num_rows() <= kMaxPaddedIndex && data.num_cols() <= kMaxPaddedIndex)) {}

const std::string& ObjectNames::name(const NameList& names, char letter, Index i) {
  if (own_ && !names[i].empty()) return names[i];
  char text[24];
  std::snprintf(text, sizeof text, padded_ ? "%c%07d" : "%c%d", letter, i);
  generic_ = text;
  return generic_;
}

bool mps_can_carry_names(const ModelData& data) {
  const NameTraits rows = traits_of(data.constr_names, "OBJ");
  const NameTraits cols = traits_of(data.var_names, "");
  if (!rows.carried || !cols.carried) return false;
  return !(rows.has_blank || cols.has_blank) || !(rows.has_long || cols.has_long);
}

}  // namespace zorvex
