#include "simplex/lu_solve.hpp"

#include <algorithm>
#include <cmath>

#include "simplex/lu_traits.hpp"

namespace zorvex {

namespace {
constexpr float kSearchShare = 0.10F;  // a visited node costs several times more with the search than in a loop
constexpr float kUntracked = 0.30F;    // predicted density of the result from which lists do not pay
constexpr float kDenseResult = 0.10F;  // results above are handed out as dense
constexpr float kMemory = 0.75F;       // weight of the past in the running means
constexpr Index kAhead = 4;            // nodes fetched into the cache before their turn
constexpr Index kAlwaysPlain = 32;     // stages up to this length never search
constexpr Offset kNodesPerUnit = 4;    // nodes a plain loop skips at the cost of one nonzero touched

template <class Real>
bool is_tiny(Real v) {
  using std::abs;
  return abs(v) <= LuTraits<Real>::kTiny;
}
}  // namespace

void LuDensityHistory::record(Index count, Index part, Index whole) {
  float& mean = mean_[bucket(count)];
  mean = kMemory * mean + (1 - kMemory) * static_cast<float>(part) / static_cast<float>(whole);
}

template <class Real>
void LuSolve<Real>::resize(Index m) {
  if (m == m_) return;
  m_ = m;
  const auto n = static_cast<std::size_t>(m);
  list_.resize(n + 1);  // sweeps write before they count
  emitted_.resize(n + 1);
  out_.assign(n, Real(0));
  unit_.assign(n, Real(0));
  twins_.assign(n, Twin{});
  reached_.resize(n);
  mark_.assign(n, 0);
  stack_.resize(n);
  stack_slot_.resize(n);
  histories_ = {};
}

template <class Real>
void LuSolve<Real>::ftran(const LuFactors<Real>& factors, Scattered<Real>& x, LuEntries<Real>* partial) {
  Histories& history = histories_[partial != nullptr ? kFtranSaved : kFtran];
  adopt(x);
  if (count_ == 0) {
    if (partial != nullptr) save(x.value.data(), *partial);
    release(x);
    return;
  }
  tracked_ = history.result.mean(given_) <= kUntracked;
  solve_l(l_graph(factors), {&factors.l_order, false}, x.value.data(), history.l);
  apply_etas(factors, x.value.data());
  if (partial != nullptr) save(x.value.data(), *partial);
  solve_u(u_graph(factors), {&factors.u_col_order, true}, nullptr, x.value.data(), history.u);
  x.value.swap(out_);
  history.result.record(given_, count_, m_);
  release(x);
}

template <class Real>
void LuSolve<Real>::btran(const LuFactors<Real>& factors, Scattered<Real>& y, LuEntries<Real>* partial) {
  Histories& history = histories_[kBtran];
  adopt(y);
  if (count_ == 0) {
    if (partial != nullptr) save(y.value.data(), *partial);
    release(y);
    return;
  }
  tracked_ = history.result.mean(given_) <= kUntracked;
  solve_u(u_transposed_graph(factors), {&factors.u_row_order, false}, &factors.u_row_tail, y.value.data(), history.u);
  y.value.swap(out_);
  if (partial != nullptr) save(y.value.data(), *partial);
  tracked_ = history.result.mean(given_) <= kUntracked;
  apply_etas_transposed(factors, y.value.data());
  solve_l(l_transposed_graph(factors), {&factors.l_row_order, true}, y.value.data(), history.l);
  tracked_ ? drop_tiny(y.value.data()) : collect(y.value.data());
  history.result.record(given_, count_, m_);
  release(y);
}

template <class Real>
void LuSolve<Real>::unit_row(const LuFactors<Real>& factors, Index position, LuEntries<Real>& result) {
  unit_[position] = Real(1);
  list_[0] = position;
  given_ = count_ = 1;
  tracked_ = true;
  solve_u(u_transposed_graph(factors), {&factors.u_row_order, false}, &factors.u_row_tail, unit_.data(),
          histories_[kBtran].u);
  save(out_.data(), result);
  for (const Index row : result.index) out_[row] = Real(0);
}

template <class Real>
auto LuSolve<Real>::l_graph(const LuFactors<Real>& factors) -> Graph {
  return {factors.l_col.data(), factors.space.index(), factors.space.value(), nullptr, nullptr};
}
template <class Real>
auto LuSolve<Real>::l_transposed_graph(const LuFactors<Real>& factors) -> Graph {
  return {factors.l_row.data(), factors.l_row_index.data(), factors.l_row_value.data(), nullptr, nullptr};
}
template <class Real>
auto LuSolve<Real>::u_graph(const LuFactors<Real>& factors) -> Graph {
  return {factors.u_col.data(), factors.space.index(), factors.space.value(), factors.pivot_of_row.data(),
          factors.pos_of_row.data()};
}
template <class Real>
auto LuSolve<Real>::u_transposed_graph(const LuFactors<Real>& factors) -> Graph {
  return {factors.u_row.ranges(), factors.u_row.index(), factors.u_row.value(), factors.pivot_of_pos.data(),
          factors.row_of_pos.data()};
}

template <class Real>
void LuSolve<Real>::adopt(const Scattered<Real>& x) {
  count_ = 0;
  if (x.dense) {
    for (Index i = 0; i < m_; ++i) {
      if (x.value[i] != Real(0)) list_[count_++] = i;
    }
    work_ += m_ / kNodesPerUnit;
  } else {
    for (const Index i : x.index) {
      if (x.value[i] != Real(0)) list_[count_++] = i;
    }
  }
  given_ = count_;
  tracked_ = true;
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

// Lists the nonzeros of a vector that was not tracked.
template <class Real>
void LuSolve<Real>::collect(Real* x) {
  count_ = list_nonzeros(x, m_, LuTraits<Real>::kTiny, list_.data());
  work_ += m_ / kNodesPerUnit;
  tracked_ = true;
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
void LuSolve<Real>::save(const Real* x, LuEntries<Real>& entries) const {
  entries.index.clear();
  entries.value.clear();
  if (tracked_) {
    entries.index.assign(list_.begin(), list_.begin() + count_);
  } else {
    for (Index i = 0; i < m_; ++i) {
      if (!is_tiny(x[i])) entries.index.push_back(i);
    }
  }
  entries.value.resize(entries.index.size());
  for (std::size_t k = 0; k < entries.index.size(); ++k) entries.value[k] = x[entries.index[k]];
}

// An entry that cancels stays in the list and must not become zero, or it could enter the list twice.
template <class Real>
inline void LuSolve<Real>::add(Real* x, Index i, Real change) {
  const Real old = x[i];
  const Real sum = old + change;
  if (old == Real(0) && tracked_) list_[count_++] = i;
  x[i] = sum != Real(0) ? sum : LuTraits<Real>::kPlaceholder;
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

template <class Real>
bool LuSolve<Real>::choose_search(const LuDensityHistory& history, Index length) const {
  return tracked_ && length > kAlwaysPlain && static_cast<float>(count_) <= kSearchShare * static_cast<float>(m_) &&
         history.mean(given_) <= kSearchShare;
}

template <class Real>
void LuSolve<Real>::solve_l(const Graph& graph, Sequence nodes, Real* x, LuDensityHistory& history) {
  if (nodes.length() == 0) return;
  Index visited = 0;
  if (choose_search(history, nodes.length())) {
    visited = search<false>(graph, x);
  } else {
    visited = tracked_ ? sweep<false, true>(graph, nodes, x) : sweep<false, false>(graph, nodes, x);
  }
  history.record(given_, visited, nodes.length());
}

// `tail` follows `nodes`. On return out_ holds the result and the list its nonzeros, tracked before or not.
template <class Real>
void LuSolve<Real>::solve_u(const Graph& graph, Sequence nodes, const std::vector<Index>* tail, Real* x,
                            LuDensityHistory& history) {
  num_emitted_ = 0;
  const Index length = nodes.length() + (tail != nullptr ? static_cast<Index>(tail->size()) : 0);
  Index visited = 0;
  if (choose_search(history, length)) {
    visited = search<true>(graph, x);
  } else if (tracked_) {
    visited = sweep<true, true>(graph, nodes, x);
    if (tail != nullptr) visited += sweep<true, true>(graph, {tail, false}, x);
    emit_leaves(graph, x);
  } else {
    visited = sweep<true, false>(graph, nodes, x);
    if (tail != nullptr) visited += sweep<true, false>(graph, {tail, false}, x);
    emit_all(graph, x);
  }
  list_.swap(emitted_);
  count_ = num_emitted_;
  tracked_ = true;
  if (length > 0) history.record(given_, visited, length);
}

// Depth-first search from the list. reached_[result..m) are all nodes the entries of the list can change, each before
// the nodes it points at; their marks are set. Nodes without successors never enter the stack.
template <class Real>
Index LuSolve<Real>::reach(const Graph& graph) {
  Index top = m_;
  Offset edges = 0;
  for (Index s = 0; s < count_; ++s) {
    const Index seed = list_[s];
    if (mark_[seed] != 0) continue;
    Index depth = 0;
    stack_[0] = seed;
    stack_slot_[0] = graph.range[seed].begin;
    mark_[seed] = 1;
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

// Hypersparse solve. Returns the number of nodes with successors that were visited.
template <class Real>
template <bool kEmit>
Index LuSolve<Real>::search(const Graph& graph, Real* x) {
  const Index top = reach(graph);
  Index* list = kEmit ? emitted_.data() : list_.data();
  Real* out = out_.data();
  Index count = 0;
  Index visited = 0;
  for (Index k = top; k < m_; ++k) {
    if (k + kAhead < m_) {
      const Index begin = graph.range[reached_[k + kAhead]].begin;
      __builtin_prefetch(graph.index + begin);
      __builtin_prefetch(graph.value + begin);
    }
    const Index node = reached_[k];
    mark_[node] = 0;
    Real v = x[node];
    if (kEmit || is_tiny(v)) x[node] = Real(0);
    if (is_tiny(v)) continue;
    if constexpr (kEmit) {
      v /= graph.pivot[node];
      list[count++] = graph.image[node];
      out[graph.image[node]] = v;
    } else {
      list[count++] = node;
    }
    const LuRange range = graph.range[node];
    visited += range.empty() ? 0 : 1;
    for (Index e = range.begin; e < range.end; ++e) x[graph.index[e]] -= v * graph.value[e];
  }
  (kEmit ? num_emitted_ : count_) = count;
  return visited;
}

// Plain loop over the nodes with successors. Returns the number that were not zero.
template <class Real>
template <bool kEmit, bool kTracked>
Index LuSolve<Real>::sweep(const Graph& given, Sequence nodes, Real* x) {
  const Graph graph = given;
  Index* list = list_.data();
  Index* emitted = emitted_.data();
  Real* out = out_.data();
  Index count = count_;
  Index num_emitted = num_emitted_;
  Index visited = 0;
  const Index length = nodes.length();
  Offset touched = length / kNodesPerUnit;
  const Index* sequence = nodes.nodes->data();
  const Index stride = nodes.backward ? -1 : 1;
  Index place = nodes.backward ? length - 1 : 0;
  for (Index step = 0; step < length; ++step, place += stride) {
    const Index node = sequence[place];
    if (kEmit && node < 0) continue;
    Real v = x[node];
    if (is_tiny(v)) continue;
    ++visited;
    if constexpr (kEmit) {
      x[node] = Real(0);
      v /= graph.pivot[node];
      const Index image = graph.image[node];
      out[image] = v;
      if constexpr (kTracked) emitted[num_emitted++] = image;
    }
    const LuRange range = graph.range[node];
    touched += range.length();
    for (Index e = range.begin; e < range.end; ++e) {
      const Index i = graph.index[e];
      const Real old = x[i];
      const Real sum = old - v * graph.value[e];
      if constexpr (kTracked) {
        list[count] = i;  // without a branch: fill-in is hard to predict
        count += old == Real(0) ? 1 : 0;
        x[i] = sum != Real(0) ? sum : LuTraits<Real>::kPlaceholder;
      } else {
        x[i] = sum;
      }
    }
  }
  count_ = count;
  num_emitted_ = num_emitted;
  work_ += touched;
  return visited;
}

// Emits what a tracked sweep left: nodes without successors, and tiny values.
template <class Real>
void LuSolve<Real>::emit_leaves(const Graph& graph, Real* x) {
  for (Index k = 0; k < count_; ++k) {
    const Index node = list_[k];
    const Real v = x[node];
    if (v == Real(0)) continue;
    x[node] = Real(0);
    if (is_tiny(v)) continue;
    const Index image = graph.image[node];
    out_[image] = v / graph.pivot[node];
    emitted_[num_emitted_++] = image;
  }
  work_ += count_ / kNodesPerUnit;
}

// The same behind an untracked sweep, which lists nothing: what it has emitted is zero in x.
template <class Real>
void LuSolve<Real>::emit_all(const Graph& graph, Real* x) {
  Real* out = out_.data();
  for (Index node = 0; node < m_; ++node) out[graph.image[node]] += x[node] / graph.pivot[node];
  std::fill(x, x + m_, Real(0));
  num_emitted_ = list_nonzeros(out, m_, LuTraits<Real>::kTiny, emitted_.data());
  work_ += m_ / kNodesPerUnit;
}

template class LuSolve<double>;
template class LuSolve<Extended>;

}  // namespace zorvex
