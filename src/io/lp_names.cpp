#include "io/lp_names.hpp"

#include <algorithm>
#include <cstdio>

#include "io/lp_keywords.hpp"
#include "io/lp_lexer.hpp"
#include "io/name_table.hpp"

namespace zorvex {

namespace {

constexpr std::size_t kLongestName = 240;  // leaves room for a coefficient's sign on a line of 255 characters

}  // namespace

bool lp_can_carry_name(const std::string& name) {
  if (name.size() > kLongestName || !is_lp_name(name) || name.find('[') != std::string::npos) return false;
  const bool exponent = (name[0] == 'e' || name[0] == 'E') && name.size() > 1 && name[1] >= '0' && name[1] <= '9';
  return !exponent && !is_lp_reserved(name);
}

LpNames::LpNames(const NameList& names, char letter, bool own) : names_(names), letter_(letter), own_(own) {
  if (!own || !names.any()) return;
  NameTable seen;
  for (Index i = 0; i < names.size(); ++i) {
    const std::string& name = names[i];
    const Index known = seen.size();
    if (!name.empty() && lp_can_carry_name(name) && seen.insert(name) == known) continue;
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

std::string LpNames::operator[](Index i) const {
  if (own_ && names_.any()) {
    const auto at = std::lower_bound(replaced_.begin(), replaced_.end(), i);
    const bool replaced = at != replaced_.end() && *at == i;
    return replaced ? substitute_[static_cast<std::size_t>(at - replaced_.begin())] : names_[i];
  }
  char text[24];
  std::snprintf(text, sizeof text, own_ ? "%c%07d" : "%c%d", letter_, i);
  return text;
}

}  // namespace zorvex
