// Flexible GMRES without restarts, for the few iterations that a good preconditioner leaves to do.
//   Source   Y. Saad, SIAM J. Sci. Comput. 14 (1993) 461-469.
#pragma once

#include <functional>
#include <vector>

namespace zorvex {

// Vectors are of one length throughout; `apply` computes y = A x, `precondition` z = M^-1 r (y and z are overwritten).
struct GmresOperators {
  std::function<void(const std::vector<double>& x, std::vector<double>& y)> apply;
  std::function<void(const std::vector<double>& r, std::vector<double>& z)> precondition;
};

// Adds to x what reduces the Euclidean norm of the residual, given as `residual`, in at most `max_iterations`
// iterations or down to `goal`. Returns the norm that the recurrence predicts. Cost O(max_iterations) vectors.
double flexible_gmres(const GmresOperators& operators, const std::vector<double>& residual, double goal,
                      int max_iterations, std::vector<double>& x);

}  // namespace zorvex
