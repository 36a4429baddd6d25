// Basis files (.bas): a simplex basis by names.
//   " XU column row"  column basic, row nonbasic at its upper side; " XL" at its lower side
//   " UL column"      column nonbasic at its upper bound; " LL" at its lower bound
// Columns that are not named are nonbasic at the lower bound (the upper one, or zero, where there is none), rows basic.
// A '<' row can only be at its upper side and a '>' row at its lower one; an equation counts as at its lower side.
//   Lines   "NAME ..." and lines that start with '*' mean nothing, "ENDATA" ends the file. A number behind the names is
//           a value and not used. Names may hold blanks: a line is taken apart where both parts are names.
#pragma once

#include <string>

#include "model/model.hpp"

namespace zorvex {

// kErrorDataNotAvailable without a basis that fits the model.
int write_basis(ZLPmodel& model, const std::string& name);

// Replaces the warm-start basis; on failure nothing has changed. A basis file has as many basic columns as nonbasic
// rows by construction. Repairs are counted and reported in one warning: lines left out because of unknown names or of
// objects that have a status already, and statuses at bounds that do not exist.
int read_basis(ZLPmodel& model, const std::string& name);

}  // namespace zorvex
