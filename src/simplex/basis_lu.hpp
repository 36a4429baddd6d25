// Sparse LU factorization of a simplex basis B with Forrest-Tomlin updates.
//   Shapes   B is m x m; position k of the basis holds variable head[k]: a structural column for head[k] < num_cols,
//            else the unit column of row head[k] - num_cols (a logical, coefficient +1).
//   Spaces   ftran takes a vector over rows and returns one over basis positions; btran the reverse.
//   Source   U. Suhl, L. Suhl, ORSA J. Comput. 2 (1990) 325-335 (factorization); J. Forrest, J. Tomlin, Math. Program.
//            2 (1972) 263-278 (update); J. Gilbert, T. Peierls, SIAM J. Sci. Stat. Comput. 9 (1988) 862-874 and
//            J. Hall, K. McKinnon, Comput. Optim. Appl. 32 (2005) 259-283 (hypersparse solves).
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "base/stop_token.hpp"
#include "base/types.hpp"
#include "linalg/scattered.hpp"

namespace zorvex {

// The columns a basis is drawn from, in the kernel's number type; not owned.
template <class Real>
struct ColumnView {
  Index num_rows = 0;
  Index num_cols = 0;
  const Offset* start = nullptr;  // num_cols + 1
  const Index* index = nullptr;
  const Real* value = nullptr;
};

enum class LuStatus {
  kOk,
  kSpaceTooSmall,  // factor space exhausted: call grow_space() and factor again
  kSingular,       // dependent positions found; see BasisLu::deficiencies()
  kInterrupted,    // the stop token asked for it
};

enum class LuUpdateStatus {
  kOk,
  kUnstable,     // the new pivot disagrees with the expected one or is tiny: refactorize
  kNeedsFactor,  // no room or too much fill: refactorize
};

// A basis position without pivot and the row left without pivot that its replacement logical covers.
struct LuDeficiency {
  Index position;
  Index row;
};

inline constexpr int kUsualSpaceSteps = 5;

template <class Real>
class BasisLu {
 public:
  BasisLu();
  ~BasisLu();
  BasisLu(BasisLu&&) noexcept;
  BasisLu& operator=(BasisLu&&) noexcept;

  // Allocates the factor space for bases of dimension m with about `basis_nonzeros` nonzeros, half as much again for
  // each of `steps`. Throws std::bad_alloc after ten reductions to three quarters. Returns false if less than half of
  // what was wanted could be had.
  bool reserve(Index m, Offset basis_nonzeros, int steps = kUsualSpaceSteps);
  [[nodiscard]] Offset factor_space() const;  // slots available for L and U
  // 1.5 times the space, at most 2^31 - 1 slots; throws std::bad_alloc if it is at that size already.
  void grow_space();
  [[nodiscard]] Index growth_count() const;

  // Factors the basis. `markowitz` is the threshold u in |pivot| >= u * max |column or row|. Entries whose magnitude is
  // below the traits' absolute pivot tolerance never become pivots.
  [[nodiscard]] LuStatus factor(const ColumnView<Real>& columns, std::span<const Index> head, double markowitz,
                                const StopToken& stop);
  // After kSingular: the deficient positions, each with the row of its replacement. The caller puts the logical of
  // that row into the position and factors again.
  [[nodiscard]] const std::vector<LuDeficiency>& deficiencies() const;

  // x := B^-1 x. `save_for_update` keeps the partially transformed column that update() needs (the entering column).
  void ftran(Scattered<Real>& x, bool save_for_update = false);
  // x := B^-1 x, y := B^-1 y; save_x as above for x. One pass where both results promise to be dense.
  void ftran_pair(Scattered<Real>& x, bool save_x, Scattered<Real>& y);
  // y := B^-T y.
  void btran(Scattered<Real>& y);

  // Replaces the basic column at `position` by the column of the last ftran with save_for_update. `pivot` is that
  // ftran's result at `position`; the update is checked against it.
  [[nodiscard]] LuUpdateStatus update(Index position, Real pivot);

  [[nodiscard]] Index num_updates() const;       // since the last factor()
  [[nodiscard]] Offset factor_nonzeros() const;  // L and U as factored
  // True once solves with the grown factors cost more than a fresh factorization would save.
  [[nodiscard]] bool wants_refactor() const;
  // Nonzeros touched since construction by solves and updates, and by factorizations.
  [[nodiscard]] Offset solve_work() const;
  [[nodiscard]] Offset factor_work() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace zorvex
