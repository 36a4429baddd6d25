// Solves with the factors of a basis. Each triangular stage takes one of two paths: the hypersparse one finds the
// reachable entries by depth-first search before any arithmetic, so that its cost depends on the nonzeros touched only;
// the plain one loops over the elimination order and skips zeros. The choice is by predicted density of the result.
//   Shapes   all vectors have length m. Work arrays are zero between calls.
//   Source   J. Gilbert, T. Peierls, SIAM J. Sci. Stat. Comput. 9 (1988) 862-874; J. Hall, K. McKinnon, Comput. Optim.
//            Appl. 32 (2005) 259-283.
#pragma once

#include <array>
#include <vector>

#include "base/types.hpp"
#include "linalg/scattered.hpp"
#include "simplex/lu_factors.hpp"

namespace zorvex {

// Entries of a sparse vector in no particular order.
template <class Real>
struct LuEntries {
  std::vector<Index> index;
  std::vector<Real> value;

  void clear() {
    index.clear();
    value.clear();
  }
};

// Running mean of the share of its nodes that a stage visits, kept apart by the magnitude of the count of its input:
// right-hand sides of different origin rarely have similar counts.
class LuDensityHistory {
 public:
  [[nodiscard]] bool predicts_sparse(Index count, Index length) const;
  void record(Index count, Index visited, Index length);

 private:
  std::array<float, 33> mean_{};
};

template <class Real>
class LuSolve {
 public:
  void resize(Index m);

  // x (over rows) := B^-1 x (over positions). `partial`, if not null, receives the vector before the solve with U.
  void ftran(const LuFactors<Real>& factors, Scattered<Real>& x, LuEntries<Real>* partial);
  // y (over positions) := B^-T y (over rows). `partial`, if not null, receives the vector after the solve with U'.
  void btran(const LuFactors<Real>& factors, Scattered<Real>& y, LuEntries<Real>* partial);
  // U^-T e_position over rows.
  void unit_row(const LuFactors<Real>& factors, Index position, LuEntries<Real>& result);

  // Nonzeros touched by all solves so far.
  [[nodiscard]] Offset work() const { return work_; }

 private:
  // One triangular matrix as a graph: node i points at index[range[i]].
  struct Graph {
    const LuRange* range;
    const Index* index;
    const Real* value;
  };
  enum Stage { kFtranL, kFtranU, kFtranLSaved, kFtranUSaved, kBtranU, kBtranL, kNumStages };

  // The vector in flight: list_[0..count_) holds exactly the positions of its nonzeros.
  void adopt(const Scattered<Real>& x);
  void release(Scattered<Real>& x) const;
  void add(Real* x, Index i, Real change);
  void drop_tiny(Real* x);
  void save(const Real* x, LuEntries<Real>& entries) const;

  void solve_l(const LuFactors<Real>& factors, Real* x, LuDensityHistory& history);
  void solve_l_transposed(const LuFactors<Real>& factors, Real* x);
  Index unit_sparse(const Graph& graph, Real* x);
  void apply_etas(const LuFactors<Real>& factors, Real* x);
  void apply_etas_transposed(const LuFactors<Real>& factors, Real* x);
  // x is drained to zero, the result arrives in out_.
  template <bool kTransposed>
  void solve_u(const LuFactors<Real>& factors, Real* x, LuDensityHistory& history);
  template <bool kTransposed>
  void solve_u_plain(const LuFactors<Real>& factors, const Graph& graph, Real* x);
  void eliminate(const Graph& graph, Index node, Index image, Real pivot, Real* x);
  Index reach(const Graph& graph);

  Index m_ = 0;
  Index count_ = 0;
  std::vector<Index> list_;
  std::vector<Real> out_;       // receives the result of a solve with U, in the other space
  std::vector<Real> unit_;      // right-hand side of unit_row()
  std::vector<Index> reached_;  // in topological order, filled from the back
  std::vector<char> mark_;
  std::vector<Index> stack_, stack_slot_;
  std::array<LuDensityHistory, kNumStages> history_;
  Offset work_ = 0;
};

}  // namespace zorvex
