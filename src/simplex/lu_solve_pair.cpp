// Two solves with the same factors in one pass, for results that are dense anyway.
#include <algorithm>
#include <cmath>

#include "simplex/lu_solve.hpp"
#include "simplex/lu_traits.hpp"

namespace zorvex {

namespace {
constexpr float kWorthPairing = 0.30F;  // predicted density of both results
}  // namespace

template <class Real>
bool LuSolve<Real>::promises_dense(const Scattered<Real>& x, Kind kind) const {
  const Index given = x.dense ? m_ : static_cast<Index>(x.index.size());
  return given > 0 && histories_[kind].result.mean(given) > kWorthPairing;
}

template <class Real>
void LuSolve<Real>::ftran_pair(const LuFactors<Real>& factors, Scattered<Real>& x, LuEntries<Real>* partial,
                               Scattered<Real>& y) {
  const Kind kind = partial != nullptr ? kFtranSaved : kFtran;
  if (!promises_dense(x, kind) || !promises_dense(y, kFtran)) {
    ftran(factors, x, partial);
    ftran(factors, y, nullptr);
    return;
  }
  const Index given_x = x.dense ? m_ : static_cast<Index>(x.index.size());
  const Index given_y = y.dense ? m_ : static_cast<Index>(y.index.size());
  for (Index i = 0; i < m_; ++i) twins_[i] = {x.value[i], y.value[i]};
  std::fill(x.value.begin(), x.value.end(), Real(0));
  std::fill(y.value.begin(), y.value.end(), Real(0));
  const Sequence l_nodes{&factors.l_order, false};
  const Index visited_l = sweep_twins(l_graph(factors), l_nodes);
  apply_etas_to_twins(factors);
  if (partial != nullptr) save_twins(*partial);
  const Sequence u_nodes{&factors.u_col_order, true};
  const Index visited_u = drain_twins(u_graph(factors), u_nodes, x.value.data(), y.value.data());
  const auto finish = [&](Scattered<Real>& vector, Kind which, Index given) {
    using std::abs;
    Index count = 0;
    for (const Real v : vector.value) count += abs(v) > LuTraits<Real>::kTiny ? 1 : 0;
    histories_[which].result.record(given, count, m_);
    if (l_nodes.length() > 0) histories_[which].l.record(given, visited_l, l_nodes.length());
    if (u_nodes.length() > 0) histories_[which].u.record(given, visited_u, u_nodes.length());
    vector.index.clear();
    vector.dense = true;
  };
  finish(x, kind, given_x);
  finish(y, kFtran, given_y);
}

template <class Real>
void LuSolve<Real>::save_twins(LuEntries<Real>& entries) const {
  using std::abs;
  entries.index.clear();
  entries.value.clear();
  for (Index i = 0; i < m_; ++i) {
    if (abs(twins_[i].x) <= LuTraits<Real>::kTiny) continue;
    entries.index.push_back(i);
    entries.value.push_back(twins_[i].x);
  }
}

// Takes v times the entries of `node` off the twins they point at. Returns their number.
template <class Real>
inline Offset LuSolve<Real>::spread_twin(const Graph& graph, Index node, Twin v, Twin* twins) {
  const LuRange range = graph.range[node];
  for (Index e = range.begin; e < range.end; ++e) {
    Twin& target = twins[graph.index[e]];
    const Real factor = graph.value[e];
    target.x -= v.x * factor;
    target.y -= v.y * factor;
  }
  return range.length();
}

template <class Real>
Index LuSolve<Real>::sweep_twins(const Graph& given, Sequence nodes) {
  const Graph graph = given;
  Twin* const twins = twins_.data();
  Index visited = 0;
  Offset touched = nodes.length() / 2;
  for (const Index node : *nodes.nodes) {
    const Twin v = twins[node];
    if (v.x == 0 && v.y == 0) continue;
    ++visited;
    touched += spread_twin(graph, node, v, twins);
  }
  work_ += touched;
  return visited;
}

template <class Real>
void LuSolve<Real>::apply_etas_to_twins(const LuFactors<Real>& factors) {
  const Index* index = factors.space.index();
  const Real* value = factors.space.value();
  for (const LuRowEta& eta : factors.etas) {
    Twin sum;
    for (Index e = eta.range.begin; e < eta.range.end; ++e) {
      const Twin& twin = twins_[index[e]];
      sum.x += value[e] * twin.x;
      sum.y += value[e] * twin.y;
    }
    twins_[eta.row].x -= sum.x;
    twins_[eta.row].y -= sum.y;
    work_ += eta.range.length();
  }
}

// The solve with U, last node first: results go to x and y, which are zero before, under their images.
template <class Real>
Index LuSolve<Real>::drain_twins(const Graph& given, Sequence nodes, Real* x, Real* y) {
  const Graph graph = given;
  Twin* const twins = twins_.data();
  Index visited = 0;
  Offset touched = nodes.length() / 2 + m_ / 2;
  for (auto place = nodes.nodes->rbegin(); place != nodes.nodes->rend(); ++place) {
    const Index node = *place;
    if (node < 0) continue;
    Twin v = twins[node];
    if (v.x == 0 && v.y == 0) continue;
    ++visited;
    twins[node] = {};
    v.x /= graph.pivot[node];
    v.y /= graph.pivot[node];
    const Index image = graph.image[node];
    x[image] = v.x;
    y[image] = v.y;
    touched += spread_twin(graph, node, v, twins);
  }
  for (Index node = 0; node < m_; ++node) {  // those without successors; the others are zero by now
    const Twin v = twins[node];
    const Index image = graph.image[node];
    x[image] += v.x / graph.pivot[node];
    y[image] += v.y / graph.pivot[node];
  }
  std::fill(twins_.begin(), twins_.end(), Twin{});
  work_ += touched;
  return visited;
}

template class LuSolve<double>;
template class LuSolve<Extended>;

}  // namespace zorvex
