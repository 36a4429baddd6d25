// Basis files (.bas): a simplex basis by names.
//   " XU column row"  column basic, row nonbasic at its upper side; " XL" at its lower side
//   " UL column"      column nonbasic at its upper bound; " LL" at its lower bound
// Columns that are not named are nonbasic at the lower bound (at zero when free), rows basic.
#pragma once

#include <string>

#include "model/model.hpp"

namespace zorvex {

// kErrorDataNotAvailable without a basis that fits the model.
int write_basis(ZLPmodel& model, const std::string& name);

// Replaces the warm-start basis; on failure nothing has changed. A basis file has as many basic columns as nonbasic
// rows by construction; lines with unknown names, or that give a status to something that has one, are counted, left
// out and reported once.
int read_basis(ZLPmodel& model, const std::string& name);

}  // namespace zorvex
