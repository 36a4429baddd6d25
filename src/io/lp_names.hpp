// Names under which the LP writer writes rows and columns.
#pragma once

#include <string>
#include <vector>

#include "model/model_data.hpp"

namespace zorvex {

// Whether the format and the tools that read it carry the name: an LP name without brackets, not like a number's
// exponent ("e5"), no keyword in any case, and short enough for its line.
[[nodiscard]] bool lp_can_carry_name(const std::string& name);

class LpNames {
 public:
  // With `own`, an object goes by its own name when the format can carry it and no object before has it; `letter` and
  // seven digits of its index stand in for the others, with underscores behind where that name is taken. Without `own`
  // all names are generic, `letter` and the index.
  LpNames(const NameList& names, char letter, bool own);

  [[nodiscard]] std::string operator[](Index i) const;
  // Own names that had to be replaced.
  [[nodiscard]] Index num_replaced() const { return num_replaced_; }

 private:
  const NameList& names_;
  char letter_;
  bool own_;
  std::vector<Index> replaced_;          // ascending
  std::vector<std::string> substitute_;  // of each replaced or unnamed object
  Index num_replaced_ = 0;
};

}  // namespace zorvex
