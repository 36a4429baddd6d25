// Names under which a writer writes the rows or the columns of a model, all different.
#pragma once

#include <string>
#include <vector>

#include "model/model_data.hpp"

namespace zorvex {

class UniqueNames {
 public:
  using Fits = bool (*)(const std::string&);

  // An object goes by its own name when the format can carry it (`fits`) and no object before has it; `letter` and
  // seven digits of its index stand in for the others, with underscores behind where that name is taken.
  UniqueNames(const NameList& names, char letter, Fits fits);

  // All names generic: `letter` and the index.
  UniqueNames(const NameList& names, char letter) : names_(names), letter_(letter), generic_(true) {}

  [[nodiscard]] std::string operator[](Index i) const;
  // Own names that had to be replaced.
  [[nodiscard]] Index num_replaced() const { return num_replaced_; }

 private:
  const NameList& names_;
  char letter_;
  bool generic_ = false;
  std::vector<Index> replaced_;          // ascending
  std::vector<std::string> substitute_;  // of each replaced or unnamed object
  Index num_replaced_ = 0;
};

}  // namespace zorvex
