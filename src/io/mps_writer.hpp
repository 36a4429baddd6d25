// Models into MPS files.
#pragma once

#include <string>

#include "model/model.hpp"

namespace zorvex {

// Writes the model as of its last update; a name that ends in "rew" (before a compression suffix) gets generic names
// for rows and columns. The objective is written in minimisation form. Returns 0, or kErrorFileWrite with its text
// recorded.
int write_mps(ZLPmodel& model, const std::string& name);

}  // namespace zorvex
