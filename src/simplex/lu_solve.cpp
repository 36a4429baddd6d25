#include "simplex/lu_solve.hpp"

#include <bit>
#include <cmath>

#include "simplex/lu_traits.hpp"

namespace zorvex {

namespace {
constexpr float kSparseStage = 0.10F;  // a visited node costs several times more with the search than without
constexpr float kDenseResult = 0.30F;  // results above are handed out as dense
constexpr float kMemory = 0.75F;       // weight of the past in the running mean
constexpr Index kAlwaysPlain = 32;     // stages up to this length never search
constexpr Offset kNodesPerUnit = 4;    // nodes a plain loop skips at the cost of one nonzero touched

template <class Real>
bool is_tiny(Real v) {
  return v <= LuTraits<Real>::kTiny && v >= -LuTraits<Real>::kTiny;
}
}  // namespace

bool LuDensityHistory::predicts_sparse(Index count, Index length) const {
  if (length <= kAlwaysPlain || static_cast<float>(count) > kSparseStage * static_cast<float>(length)) return false;
  return mean_[std::bit_width(static_cast<std::uint32_t>(count))] <= kSparseStage;
}

void LuDensityHistory::record(Index count, Index visited, Index length) {
  float& mean = mean_[std::bit_width(static_cast<std::uint32_t>(count))];
  mean = kMemory * mean + (1 - kMemory) * static_cast<float>(visited) / static_cast<float>(length);
}

template <class Real>
void LuSolve<Real>::resize(Index m) {
  if (m == m_) return;
  m_ = m;
  const auto n = static_cast<std::size_t>(m);
  list_.resize(n);
  out_.assign(n, Real(0));
  unit_.assign(n, Real(0));
  reached_.resize(n);
  mark_.assign(n, 0);
  stack_.resize(n);
  stack_slot_.resize(n);
  history_ = {};
}

template <class Real>
void LuSolve<Real>::ftran(const LuFactors<Real>& factors, Scattered<Real>& x, LuEntries<Real>* partial) {
  adopt(x);
  solve_l(factors, x.value.data(), history_[partial != nullptr ? kFtranLSaved : kFtranL]);
  apply_etas(factors, x.value.data());
  if (partial != nullptr) save(x.value.data(), *partial);
  solve_u<false>(factors, x.value.data(), history_[partial != nullptr ? kFtranUSaved : kFtranU]);
  x.value.swap(out_);
  release(x);
}

template <class Real>
void LuSolve<Real>::btran(const LuFactors<Real>& factors, Scattered<Real>& y, LuEntries<Real>* partial) {
  adopt(y);
  solve_u<true>(factors, y.value.data(), history_[kBtranU]);
  y.value.swap(out_);
  if (partial != nullptr) save(y.value.data(), *partial);
  apply_etas_transposed(factors, y.value.data());
  solve_l_transposed(factors, y.value.data());
  release(y);
}

template <class Real>
void LuSolve<Real>::unit_row(const LuFactors<Real>& factors, Index position, LuEntries<Real>& result) {
  unit_[position] = Real(1);
  list_[0] = position;
  count_ = 1;
  solve_u<true>(factors, unit_.data(), history_[kBtranU]);
  save(out_.data(), result);
  for (const Index row : result.index) out_[row] = Real(0);
}

template <class Real>
void LuSolve<Real>::adopt(const Scattered<Real>& x) {
  count_ = 0;
  if (x.dense) {
    for (Index i = 0; i < m_; ++i) {
      if (x.value[i] != Real(0)) list_[count_++] = i;
    }
    work_ += m_ / kNodesPerUnit;
    return;
  }
  for (const Index i : x.index) {
    if (x.value[i] != Real(0)) list_[count_++] = i;
  }
}

template <class Real>
void LuSolve<Real>::release(Scattered<Real>& x) const {
  x.dense = static_cast<float>(count_) > kDenseResult * static_cast<float>(m_);
  if (x.dense) {
    x.index.clear();
  } else {
    x.index.assign(list_.begin(), list_.begin() + count_);
  }
}

// An entry that cancels stays in the list and must not become zero, or it could enter the list twice.
template <class Real>
inline void LuSolve<Real>::add(Real* x, Index i, Real change) {
  const Real old = x[i];
  const Real sum = old + change;
  if (old == Real(0)) list_[count_++] = i;
  x[i] = sum != Real(0) ? sum : LuTraits<Real>::kPlaceholder;
}

template <class Real>
void LuSolve<Real>::save(const Real* x, LuEntries<Real>& entries) const {
  entries.clear();
  for (Index k = 0; k < count_; ++k) {
    const Index i = list_[k];
    entries.index.push_back(i);
    entries.value.push_back(x[i]);
  }
}

// Depth-first search from the list. reached_[result..m) are all nodes the entries of the list can change, each before
// the nodes it points at; their marks are set. Nodes without successors never enter the stack.
template <class Real>
Index LuSolve<Real>::reach(const Graph& graph) {
  Index top = m_;
  Offset edges = 0;
  for (Index s = 0; s < count_; ++s) {
    if (mark_[list_[s]] != 0) continue;
    Index depth = 0;
    stack_[0] = list_[s];
    stack_slot_[0] = graph.range[list_[s]].begin;
    mark_[list_[s]] = 1;
    while (depth >= 0) {
      const Index node = stack_[depth];
      const Index end = graph.range[node].end;
      Index slot = stack_slot_[depth];
      Index child = -1;
      while (slot < end) {
        const Index next = graph.index[slot++];
        if (mark_[next] != 0) continue;
        mark_[next] = 1;
        if (!graph.range[next].empty()) {
          child = next;
          break;
        }
        reached_[--top] = next;
      }
      if (child < 0) {
        reached_[--top] = node;
        edges += graph.range[node].length();
        --depth;
      } else {
        stack_slot_[depth++] = slot;
        stack_[depth] = child;
        stack_slot_[depth] = graph.range[child].begin;
      }
    }
  }
  work_ += 3 * edges + 2 * (m_ - top);
  return top;
}

// Hypersparse solve with a unit triangular matrix, in place. Returns the number of nodes with successors.
template <class Real>
Index LuSolve<Real>::unit_sparse(const Graph& graph, Real* x) {
  const Index top = reach(graph);
  count_ = 0;
  Index visited = 0;
  for (Index k = top; k < m_; ++k) {
    const Index node = reached_[k];
    mark_[node] = 0;
    const Real v = x[node];
    if (is_tiny(v)) {
      x[node] = Real(0);
      continue;
    }
    list_[count_++] = node;
    const LuRange range = graph.range[node];
    visited += range.empty() ? 0 : 1;
    for (Index e = range.begin; e < range.end; ++e) x[graph.index[e]] -= v * graph.value[e];
  }
  return visited;
}

template <class Real>
void LuSolve<Real>::solve_l(const LuFactors<Real>& factors, Real* x, LuDensityHistory& history) {
  const auto length = static_cast<Index>(factors.l_order.size());
  if (length == 0 || count_ == 0) return;
  const Graph graph{factors.l_col.data(), factors.space.index(), factors.space.value()};
  const Index given = count_;
  Index visited = 0;
  if (history.predicts_sparse(given, length)) {
    visited = unit_sparse(graph, x);
  } else {
    work_ += length / kNodesPerUnit;
    for (const Index row : factors.l_order) {
      const Real v = x[row];
      if (is_tiny(v)) continue;
      ++visited;
      const LuRange range = graph.range[row];
      work_ += range.length();
      for (Index e = range.begin; e < range.end; ++e) add(x, graph.index[e], -v * graph.value[e]);
    }
  }
  history.record(given, visited, length);
}

template <class Real>
void LuSolve<Real>::solve_l_transposed(const LuFactors<Real>& factors, Real* x) {
  const auto length = static_cast<Index>(factors.l_row_order.size());
  if (length > 0 && count_ > 0) {
    const Graph graph{factors.l_row.data(), factors.l_row_index.data(), factors.l_row_value.data()};
    LuDensityHistory& history = history_[kBtranL];
    const Index given = count_;
    Index visited = 0;
    if (history.predicts_sparse(given, length)) {
      visited = unit_sparse(graph, x);
    } else {
      work_ += length / kNodesPerUnit;
      for (Index k = length - 1; k >= 0; --k) {
        const Index row = factors.l_row_order[k];
        const Real v = x[row];
        if (is_tiny(v)) continue;
        ++visited;
        const LuRange range = graph.range[row];
        work_ += range.length();
        for (Index e = range.begin; e < range.end; ++e) add(x, graph.index[e], -v * graph.value[e]);
      }
    }
    history.record(given, visited, length);
  }
  drop_tiny(x);
}

template <class Real>
void LuSolve<Real>::drop_tiny(Real* x) {
  Index kept = 0;
  for (Index k = 0; k < count_; ++k) {
    const Index i = list_[k];
    if (!is_tiny(x[i])) {
      list_[kept++] = i;
    } else {
      x[i] = Real(0);
    }
  }
  count_ = kept;
}

template <class Real>
void LuSolve<Real>::apply_etas(const LuFactors<Real>& factors, Real* x) {
  const Index* index = factors.space.index();
  const Real* value = factors.space.value();
  for (const LuRowEta& eta : factors.etas) {
    Real sum = 0;
    for (Index e = eta.range.begin; e < eta.range.end; ++e) sum += value[e] * x[index[e]];
    if (!is_tiny(sum)) add(x, eta.row, -sum);
    work_ += eta.range.length();
  }
}

template <class Real>
void LuSolve<Real>::apply_etas_transposed(const LuFactors<Real>& factors, Real* x) {
  const Index* index = factors.space.index();
  const Real* value = factors.space.value();
  for (auto eta = factors.etas.rbegin(); eta != factors.etas.rend(); ++eta) {
    const Real v = x[eta->row];
    if (is_tiny(v)) continue;
    work_ += eta->range.length();
    for (Index e = eta->range.begin; e < eta->range.end; ++e) add(x, index[e], -v * value[e]);
  }
  work_ += static_cast<Offset>(factors.etas.size()) / kNodesPerUnit;
}

// One step of a solve with U: emits the value of a node and takes it out of the nodes it points at.
template <class Real>
inline void LuSolve<Real>::eliminate(const Graph& graph, Index node, Index image, Real pivot, Real* x) {
  Real v = x[node];
  x[node] = Real(0);
  if (is_tiny(v)) return;
  v /= pivot;
  out_[image] = v;
  list_[count_++] = image;
  const LuRange range = graph.range[node];
  for (Index e = range.begin; e < range.end; ++e) x[graph.index[e]] -= v * graph.value[e];
}

template <class Real>
template <bool kTransposed>
void LuSolve<Real>::solve_u(const LuFactors<Real>& factors, Real* x, LuDensityHistory& history) {
  if (count_ == 0) return;
  const Graph graph = kTransposed ? Graph{factors.u_row.ranges(), factors.u_row.index(), factors.u_row.value()}
                                  : Graph{factors.u_col.data(), factors.space.index(), factors.space.value()};
  const Index given = count_;
  if (history.predicts_sparse(given, m_)) {
    const Real* pivot = (kTransposed ? factors.pivot_of_pos : factors.pivot_of_row).data();
    const Index* image = (kTransposed ? factors.row_of_pos : factors.pos_of_row).data();
    const Index top = reach(graph);
    count_ = 0;
    for (Index k = top; k < m_; ++k) {
      const Index node = reached_[k];
      mark_[node] = 0;
      eliminate(graph, node, image[node], pivot[node], x);
    }
  } else {
    count_ = 0;
    solve_u_plain<kTransposed>(factors, graph, x);
  }
  history.record(given, count_, m_);
}

template <class Real>
template <bool kTransposed>
void LuSolve<Real>::solve_u_plain(const LuFactors<Real>& factors, const Graph& graph, Real* x) {
  const auto length = static_cast<Index>(factors.order.size());
  work_ += length / kNodesPerUnit;
  for (Index step = 0; step < length; ++step) {
    const Index row = factors.order[kTransposed ? step : length - 1 - step];
    if (row < 0) continue;
    const Index pos = factors.pos_of_row[row];
    const Index node = kTransposed ? pos : row;
    if (x[node] == Real(0)) continue;
    work_ += graph.range[node].length();
    eliminate(graph, node, kTransposed ? row : pos, factors.pivot_of_row[row], x);
  }
}

template class LuSolve<double>;
template class LuSolve<Extended>;

}  // namespace zorvex
