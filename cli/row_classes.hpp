// Classes of linear rows, as the mixed-integer literature names them. A row belongs to the first class that fits.
//   Source: the constraint classification of MIPLIB 2017, Gleixner et al., Math. Program. Comput. 13 (2021) 443-490,
//   doi:10.1007/s12532-020-00194-3. Departure: binaries may be complemented before a row is compared with a class.
#pragma once

#include <array>

#include "model_view.hpp"

namespace zorvex_cli {

enum class RowClass {
  kEmpty,              // no entries
  kFree,               // no finite side
  kSingleton,          // one entry
  kAggregation,        // a x + b y = c
  kPrecedence,         // a x - a y <= b, x and y of one type
  kVariableBound,      // a x + b y <= c, one of them binary
  kSetPartitioning,    // sum x = 1, x binary
  kSetPacking,         // sum x <= 1
  kSetCovering,        // sum x >= 1
  kCardinality,        // sum x = k, k >= 2
  kInvariantKnapsack,  // sum x <= k, k >= 2
  kEqualityKnapsack,   // sum a x = b, x binary, a integer
  kBinPacking,         // sum a x + b y <= b, x and y binary, a integer
  kKnapsack,           // sum a x <= b, x binary, a integer
  kIntegerKnapsack,    // sum a x <= b, x integer, a integer
  kMixedBinary,        // sum a x + sum p s <= or = b, x binary, s continuous
  kGeneral,
};
inline constexpr int kNumRowClasses = static_cast<int>(RowClass::kGeneral) + 1;

const char* row_class_name(RowClass row_class);
RowClass classify_row(const ModelView& model, int row);

// How many rows of each class.
std::array<int, kNumRowClasses> count_row_classes(const ModelView& model);

}  // namespace zorvex_cli
