// Models into LP-format files.
//   Lines      at most 255 characters. Numbers in the shared format.
//   Names      see UniqueNames; a name of a file that ends in ".rlp" (before a compression suffix) gets generic ones,
//   "R0"
//              and "C0". The objective is called "obj", with underscores behind while a row has that name.
//   Order      a reader takes columns in the order in which they first occur. Where objective and rows alone would
//              change that order, or leave a column out, the objective names all columns, with coefficient 0.
//   Ranges     see lp_ranges.hpp. Empty rows and an empty objective have the first column with coefficient 0.
//   Binaries   with their bounds where these are not 0 and 1: readers keep bounds that were given.
#pragma once

#include <string>

#include "model/model.hpp"

namespace zorvex {

// Writes the model as of its last update. Names that had to be replaced are reported with their number. Returns 0 or
// kErrorFileWrite.
int write_lp(ZLPmodel& model, const std::string& name);

}  // namespace zorvex
