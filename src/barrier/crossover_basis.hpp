// The basis that crossover starts from: as many independent columns that are off their bounds as there are, completed
// by logicals.
//   Method  one Gaussian elimination of the rectangular matrix of those columns: columns with a pivot are independent,
//           rows without one get their logical. Singletons first, so that most of the result is triangular; then by
//           least fill among pivots that are large for their row.
//   Source  R. Bixby, M. Saltzman, Oper. Res. Lett. 15 (1994) 137-143, section 3 for the weights of the columns; the
//           elimination is the one of the basis factorization.
#pragma once

#include <vector>

#include "barrier/crossover_sides.hpp"
#include "base/stop_token.hpp"
#include "simplex/simplex_core.hpp"

namespace zorvex {

template <class Real>
struct CrossoverBasis {
  std::vector<char> basic;  // per variable; exactly num_rows are set, unless stopped
  Index placed = 0;         // variables off their bounds that are basic ...
  Index dropped = 0;        // ... and that are not
  bool stopped = false;     // the stop token asked for it: nothing else is valid
};

// Columns weigh the more the farther they are from their bounds; `careful` demands larger pivots, so that weights count
// more and sparsity less.
template <class Real>
CrossoverBasis<Real> choose_crossover_basis(const SimplexCore<Real>& core, const CrossoverSides<Real>& sides,
                                            bool careful, const StopToken& stop);

}  // namespace zorvex
