// Solves with the factors of a basis. Each triangular stage takes one of three paths by predicted density:
//   search     depth-first search for the reachable entries before any arithmetic: cost depends on the nonzeros
//   touched; tracked    a loop over the nodes with entries, in elimination order, that skips zeros and lists every new
//   nonzero; untracked  the same without lists, for results that are dense anyway. Shapes   all vectors have length m.
//   Work arrays are zero between calls. Source   J. Gilbert, T. Peierls, SIAM J. Sci. Stat. Comput. 9 (1988) 862-874;
//   J. Hall, K. McKinnon, Comput. Optim.
//            Appl. 32 (2005) 259-283.
#pragma once

#include <array>
#include <bit>
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
};

// Running means of a share (of nodes visited, of nonzeros in the result), kept apart by the magnitude of the count of
// the right-hand side: vectors of different origin rarely have similar counts.
class LuDensityHistory {
 public:
  [[nodiscard]] float mean(Index count) const { return mean_[bucket(count)]; }
  void record(Index count, Index part, Index whole);

 private:
  [[nodiscard]] static int bucket(Index count) { return std::bit_width(static_cast<std::uint32_t>(count)); }
  std::array<float, 33> mean_{};
};

template <class Real>
class LuSolve {
 public:
  void resize(Index m);

  // x (over rows) := B^-1 x (over positions). `partial`, if not null, receives the vector before the solve with U.
  void ftran(const LuFactors<Real>& factors, Scattered<Real>& x, LuEntries<Real>* partial);
  // Both at once, `partial` that of x: two dense results cost little more than one, as indices and factors are read
  // once.
  void ftran_pair(const LuFactors<Real>& factors, Scattered<Real>& x, LuEntries<Real>* partial, Scattered<Real>& y);
  // y (over positions) := B^-T y (over rows). `partial`, if not null, receives the vector after the solve with U'.
  void btran(const LuFactors<Real>& factors, Scattered<Real>& y, LuEntries<Real>* partial);
  // U^-T e_position over rows.
  void unit_row(const LuFactors<Real>& factors, Index position, LuEntries<Real>& result);

  // Nonzeros touched by all solves so far.
  [[nodiscard]] Offset work() const { return work_; }

 private:
  // One triangular matrix: node i points at index[range[i]]. A solve with U divides by the pivots, drains the vector to
  // zero and emits into out_ under the image of each node; a solve with L (pivot and image null) works in place.
  struct Graph {
    const LuRange* range;
    const Index* index;
    const Real* value;
    const Real* pivot;
    const Index* image;
  };
  // Nodes of a plain loop, first to last or last to first; an entry < 0 is void.
  struct Sequence {
    const std::vector<Index>* nodes;
    bool backward;
    [[nodiscard]] Index length() const { return static_cast<Index>(nodes->size()); }
  };
  enum Kind { kFtran, kFtranSaved, kBtran, kNumKinds };
  struct Histories {
    LuDensityHistory l, u, result;
  };

  // Entries of two vectors at one place, side by side.
  struct alignas(2 * sizeof(Real)) Twin {
    Real x = 0, y = 0;
  };
  [[nodiscard]] bool promises_dense(const Scattered<Real>& x, Kind kind) const;
  static Offset spread_twin(const Graph& graph, Index node, Twin v, Twin* twins);
  Index sweep_twins(const Graph& graph, Sequence nodes);
  void apply_etas_to_twins(const LuFactors<Real>& factors);
  void save_twins(LuEntries<Real>& entries) const;
  Index drain_twins(const Graph& graph, Sequence nodes, Real* x, Real* y);
  void adopt(const Scattered<Real>& x);
  void release(Scattered<Real>& x) const;
  void collect(Real* x);
  void drop_tiny(Real* x);
  void save(const Real* x, LuEntries<Real>& entries) const;

  static Graph l_graph(const LuFactors<Real>& factors);
  static Graph l_transposed_graph(const LuFactors<Real>& factors);
  static Graph u_graph(const LuFactors<Real>& factors);
  static Graph u_transposed_graph(const LuFactors<Real>& factors);

  void add(Real* x, Index i, Real change);
  void apply_etas(const LuFactors<Real>& factors, Real* x);
  void apply_etas_transposed(const LuFactors<Real>& factors, Real* x);
  void solve_l(const Graph& graph, Sequence nodes, Real* x, LuDensityHistory& history);
  void solve_u(const Graph& graph, Sequence nodes, const std::vector<Index>* tail, Real* x, LuDensityHistory& history);
  [[nodiscard]] bool choose_search(const LuDensityHistory& history, Index length) const;

  Index reach(const Graph& graph);
  template <bool kEmit>
  Index search(const Graph& graph, Real* x);
  template <bool kEmit, bool kTracked>
  Index sweep(const Graph& graph, Sequence nodes, Real* x);
  void emit_leaves(const Graph& graph, Real* x);
  void emit_all(const Graph& graph, Real* x);

  Index m_ = 0;
  Index given_ = 0;      // nonzeros of the right-hand side of the present solve
  bool tracked_ = true;  // list_[0..count_) holds exactly the positions of the nonzeros of the vector in flight
  Index count_ = 0;
  std::vector<Index> list_;
  Index num_emitted_ = 0;
  std::vector<Index> emitted_;  // images with a value in out_
  std::vector<Real> out_;       // receives the result of a solve with U, in the other space
  std::vector<Real> unit_;      // right-hand side of unit_row()
  std::vector<Index> reached_;  // in topological order, filled from the back
  std::vector<char> mark_;
  std::vector<Index> stack_, stack_slot_;
  std::vector<Twin> twins_;  // zero between calls
  std::array<Histories, kNumKinds> histories_;
  Offset work_ = 0;
};

}  // namespace zorvex
