// Names under which a writer writes rows and columns: their own, or generic ones from their index.
#pragma once

#include <string>

#include "model/model_data.hpp"

namespace zorvex {

class ObjectNames {
 public:
  // Own names count when `own` is set and the model names both rows and columns. Then only unnamed objects get generic
  // names, "R%07d" and "C%07d"; without own names these lose their zeros beyond ten million rows or columns.
  ObjectNames(const ModelData& data, bool own);

  [[nodiscard]] const std::string& row(Index i) { return name(data_->constr_names, 'R', i); }
  [[nodiscard]] const std::string& col(Index j) { return name(data_->var_names, 'C', j); }
  [[nodiscard]] bool own() const { return own_; }

 private:
  const std::string& name(const NameList& names, char letter, Index i);

  const ModelData* data_;
  bool own_;
  bool padded_;
  std::string generic_;  // the generic name made last
};

// Whether the MPS format can carry the model's own names: none twice (the objective is called OBJ), no control
// characters, none that would be taken for a comment, and blanks only where all names fit the fields of the fixed
// layout.
[[nodiscard]] bool mps_can_carry_names(const ModelData& data);

}  // namespace zorvex
