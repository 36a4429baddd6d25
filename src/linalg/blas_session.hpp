// OpenBLAS as a well-behaved guest of the calling program. Nothing here is needed with other BLAS libraries.
#pragma once

namespace zorvex {

// While one lives, OpenBLAS computes on the calling thread only: we share out the work ourselves, and its sums do not
// depend on the number of threads it would pick. The program's own setting returns when the last session ends.
class BlasSession {
 public:
  BlasSession();
  ~BlasSession();
  BlasSession(const BlasSession&) = delete;
  BlasSession& operator=(const BlasSession&) = delete;
};

}  // namespace zorvex
