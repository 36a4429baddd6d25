// Random linear programs with many more columns than rows.
#pragma once

#include "base/random_stream.hpp"
#include "linalg/lp_data.hpp"

namespace zorvex::oracle {

enum class WideKind {
  kCovering,      // rows >= 1, columns of zeros and ones with costs near their length
  kPartitioning,  // the same with equations, and expensive columns that each cover one row
  kCutting,       // patterns of items that fit a roll, unit costs, demands
  kPacking,       // rows <= capacity, columns with profit: a maximisation in minimisation form
  kBoxed,         // covering with columns bounded by one and small integer entries
};

LpData wide_lp(WideKind kind, Index rows, Index cols, RandomStream& random);

}  // namespace zorvex::oracle
