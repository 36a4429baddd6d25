#include "io/unique_names.hpp"

#include <algorithm>
#include <cstdio>

#include "io/name_table.hpp"

namespace zorvex {

UniqueNames::UniqueNames(const NameList& names, char letter, Fits fits) : names_(names), letter_(letter) {
  if (!names.any()) return;
  NameTable seen;
  for (Index i = 0; i < names.size(); ++i) {
    const std::string& name = names[i];
    const Index known = seen.size();
    if (!name.empty() && fits(name) && seen.insert(name) == known) continue;
    replaced_.push_back(i);
    if (!name.empty()) ++num_replaced_;
  }
  for (const Index i : replaced_) {
    char text[24];
    std::snprintf(text, sizeof text, "%c%07d", letter_, i);
    std::string name = text;
    while (seen.find(name) >= 0) name += '_';
    seen.insert(name);
    substitute_.push_back(std::move(name));
  }
}

std::string UniqueNames::operator[](Index i) const {
  if (!generic_ && names_.any()) {
    const auto at = std::lower_bound(replaced_.begin(), replaced_.end(), i);
    const bool replaced = at != replaced_.end() && *at == i;
    return replaced ? substitute_[static_cast<std::size_t>(at - replaced_.begin())] : names_[i];
  }
  char text[24];
  std::snprintf(text, sizeof text, generic_ ? "%c%d" : "%c%07d", letter_, i);
  return text;
}

}  // namespace zorvex
