// Condition numbers of a factored basis B, unscaled.
//   Source   N. Higham, ACM Trans. Math. Softw. 14 (1988) 381-396, algorithm 674 (1-norm);
//            G. Golub, C. Van Loan, "Matrix Computations", section 8.2 (power iteration).
#pragma once

#include "simplex/basis_inverse.hpp"

namespace zorvex {

// ||B||_1 times an estimate of ||B^-1||_1 from a handful of solves: a lower bound, rarely off by more than three.
template <class Real>
[[nodiscard]] double condition_1norm(BasisInverse<Real>& inverse);

// Largest over smallest singular value, each by power iteration from a fixed start until it settles to five digits or
// after a fixed number of steps: a lower bound too.
template <class Real>
[[nodiscard]] double condition_2norm(BasisInverse<Real>& inverse);

}  // namespace zorvex
