// Is Q positive semi-definite, and if not quite: what must be added to its diagonal?
#pragma once

#include <vector>

#include "base/log_sink.hpp"
#include "base/stop_token.hpp"
#include "linalg/lp_data.hpp"
#include "linalg/sparse_matrix.hpp"

namespace zorvex {

struct ConvexityCheck {
  SolveStatus stopped = SolveStatus::kLoaded;  // another value: ended before it was done
  double largest = 0;                          // largest adjustment
  int count = 0;                               // adjustments above 1e-10
  std::vector<double> adjustment;              // of each diagonal entry; empty when there is none
};

// `lower`: lower triangle of the symmetric matrix, diagonal entries may be missing. Adjustments that rounding explains
// are zero. Cost: signs where Q is diagonal, else one sparse factorization, in the doubtful case a second one column by
// column.
ConvexityCheck check_convexity(const SparseMatrix& lower, const StopToken& stop);

// Whether the objective is convex as it is. Presolve may fix the columns in which another one is not, and what is to be
// said about the model must not depend on that. False also when stopped.
bool is_convex(const LpData& lp, const StopToken& stop);

// lower + diag(amount); entries of a column stay in increasing order.
void add_to_diagonal(SparseMatrix& lower, const std::vector<double>& amount);

// A model with a convex objective, for methods that need one. Q is checked, and mended where no more than `psd_tol` is
// missing; both are told to `log`.
struct ConvexModel {
  const LpData* lp = nullptr;                  // the model given or `mended`; null: there is none
  LpData mended;                               // with a larger diagonal, when it had to be
  SolveStatus stopped = SolveStatus::kLoaded;  // another value: ended before it was done
  int error = 0;                               // kErrorQNotPsd
};
void make_convex(const LpData& lp, double psd_tol, const StopToken& stop, LogSink& log, ConvexModel& result);

}  // namespace zorvex
