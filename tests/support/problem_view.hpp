// The judge's view of an LpData.
#pragma once

#include "base/quality.hpp"
#include "linalg/lp_data.hpp"

namespace zorvex::oracle {

inline ProblemView view_of(const LpData& lp) {
  return {lp.num_rows(),  lp.num_cols(),       lp.matrix.start.data(), lp.matrix.index.data(), lp.matrix.value.data(),
          lp.cost.data(), lp.col_lower.data(), lp.col_upper.data(),    lp.row_lower.data(),    lp.row_upper.data()};
}

}  // namespace zorvex::oracle
