#include <metis.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <mutex>
#include <new>
#include <numeric>

#include "linalg/ordering.hpp"

namespace zorvex {

namespace {

constexpr Index kLeaf = 200;  // pieces of at most so many unknowns are not cut any more
// The better of two separators makes up for not going on with the partitioner's own METIS_NodeND, which cannot be
// stopped: the factors of 53 large models take as many operations (1.00, with one separator 1.04) and 1.02 times the
// nonzeros.
constexpr double kCostlyPiece = 3e5;        // edges; one separator of larger ones is enough to wait for
constexpr double kWorthCompressing = 0.85;  // of the unknowns, left when those with equal rows are one

// The partitioner seeds and draws from the C library's generator, which is the calling program's: it gets a state of
// its own for the time of the call, one call at a time.
class RandomStateGuard {
 public:
  RandomStateGuard() : lock_(mutex()), outer_(initstate(1, state_.data(), state_.size())) {}
  ~RandomStateGuard() { setstate(outer_); }
  RandomStateGuard(const RandomStateGuard&) = delete;
  RandomStateGuard& operator=(const RandomStateGuard&) = delete;

 private:
  static std::mutex& mutex() {
    static std::mutex guard;
    return guard;
  }
  std::lock_guard<std::mutex> lock_;
  std::array<char, 128> state_;
  char* outer_;
};

// A part of the graph whose vertices stand for one unknown each or for several that nothing tells apart.
struct Piece {
  std::vector<idx_t> start{0}, index;
  std::vector<idx_t> weight;   // unknowns of each vertex
  std::vector<Index> members;  // the vertices in the graph that all pieces come from
  Index first = 0;             // position of the first unknown that is eliminated

  [[nodiscard]] idx_t size() const { return static_cast<idx_t>(weight.size()); }
  [[nodiscard]] Index unknowns() const { return std::accumulate(weight.begin(), weight.end(), Index{0}); }
};

// Unknowns with the same neighbours, each counted as its own.
struct Groups {
  std::vector<Index> group_of;               // of each unknown
  std::vector<std::vector<Index>> unknowns;  // of each group
};

bool same_closed_row(const SymmetricPattern& pattern, Index a, Index b) {
  if (pattern.start[a + 1] - pattern.start[a] != pattern.start[b + 1] - pattern.start[b]) return false;
  const Index* const row_a = pattern.index.data() + pattern.start[a];
  const Index* const row_b = pattern.index.data() + pattern.start[b];
  const Offset length = pattern.start[a + 1] - pattern.start[a];
  Offset i = 0, j = 0;  // increasing; a lacks itself and b lacks itself
  while (i < length || j < length) {
    if (i < length && row_a[i] == b) {
      ++i;
    } else if (j < length && row_b[j] == a) {
      ++j;
    } else if (i == length || j == length || row_a[i++] != row_b[j++]) {
      return false;
    }
  }
  return std::binary_search(row_a, row_a + length, b);
}

Groups group_unknowns(const SymmetricPattern& pattern) {
  const Index n = pattern.size();
  const auto mix = [](Index v) { return (static_cast<std::uint64_t>(v) + 1) * 0x9e3779b97f4a7c15u; };
  std::vector<std::uint64_t> hash(static_cast<std::size_t>(n));
  for (Index v = 0; v < n; ++v) {
    hash[v] = mix(v);
    for (Offset e = pattern.start[v]; e < pattern.start[v + 1]; ++e) hash[v] += mix(pattern.index[e]);
  }
  std::vector<Index> by_hash(hash.size());
  std::iota(by_hash.begin(), by_hash.end(), 0);
  std::sort(by_hash.begin(), by_hash.end(),
            [&](Index a, Index b) { return hash[a] != hash[b] ? hash[a] < hash[b] : a < b; });
  std::vector<Index> leader(hash.size(), -1);
  for (std::size_t k = 0; k < by_hash.size(); ++k) {
    const Index v = by_hash[k];
    const Index before = k == 0 ? -1 : leader[by_hash[k - 1]];
    const bool joins = before != -1 && hash[before] == hash[v] && same_closed_row(pattern, before, v);
    leader[v] = joins ? before : v;
  }
  Groups groups;
  groups.group_of.assign(hash.size(), -1);
  for (Index v = 0; v < n; ++v) {
    if (leader[v] != v) continue;
    groups.group_of[v] = static_cast<Index>(groups.unknowns.size());
    groups.unknowns.emplace_back();
  }
  for (Index v = 0; v < n; ++v) {
    groups.group_of[v] = groups.group_of[leader[v]];
    groups.unknowns[groups.group_of[v]].push_back(v);
  }
  return groups;
}

Piece whole_graph(const SymmetricPattern& pattern, const Groups& groups) {
  Piece piece;
  std::vector<Index> seen_from(groups.unknowns.size(), -1);
  for (std::size_t g = 0; g < groups.unknowns.size(); ++g) {
    const auto group = static_cast<Index>(g);
    const Index v = groups.unknowns[g].front();
    seen_from[g] = group;
    for (Offset e = pattern.start[v]; e < pattern.start[v + 1]; ++e) {
      const Index other = groups.group_of[pattern.index[e]];
      if (seen_from[other] == group) continue;
      seen_from[other] = group;
      piece.index.push_back(other);
    }
    piece.start.push_back(static_cast<idx_t>(piece.index.size()));
    piece.weight.push_back(static_cast<idx_t>(groups.unknowns[g].size()));
    piece.members.push_back(group);
  }
  return piece;
}

// 0 and 1 for the sides, 2 for the separator. False when there is none worth the name.
bool separate(Piece& piece, std::vector<idx_t>& side) {
  std::array<idx_t, METIS_NOPTIONS> options;
  METIS_SetDefaultOptions(options.data());
  options[METIS_OPTION_NUMBERING] = 0;
  options[METIS_OPTION_SEED] = 1;
  options[METIS_OPTION_NSEPS] = static_cast<double>(piece.index.size()) > kCostlyPiece ? 1 : 2;
  idx_t n = piece.size(), separator = 0;
  side.resize(piece.weight.size());
  const RandomStateGuard own_random_numbers;
  const int status = METIS_ComputeVertexSeparator(&n, piece.start.data(), piece.index.data(), piece.weight.data(),
                                                  options.data(), &separator, side.data());
  if (status == METIS_ERROR_MEMORY) throw std::bad_alloc();
  if (status != METIS_OK) return false;
  return std::count(side.begin(), side.end(), 0) > 0 && std::count(side.begin(), side.end(), 1) > 0;
}

Piece part_of(const Piece& piece, const std::vector<idx_t>& side, idx_t which) {
  Piece part;
  std::vector<idx_t> number(side.size(), -1);
  for (std::size_t v = 0; v < side.size(); ++v) {
    if (side[v] != which) continue;
    number[v] = part.size();
    part.weight.push_back(piece.weight[v]);
    part.members.push_back(piece.members[v]);
  }
  for (std::size_t v = 0; v < side.size(); ++v) {
    if (side[v] != which) continue;
    for (idx_t e = piece.start[v]; e < piece.start[v + 1]; ++e) {
      if (number[piece.index[e]] != -1) part.index.push_back(number[piece.index[e]]);
    }
    part.start.push_back(static_cast<idx_t>(part.index.size()));
  }
  return part;
}

class NestedDissection {
 public:
  NestedDissection(const SymmetricPattern& pattern, std::vector<Index>& order) : pattern_(pattern), order_(order) {}

  bool run(const std::function<bool()>& go_on) {
    groups_ = group_unknowns(pattern_);
    if (static_cast<double>(groups_.unknowns.size()) > kWorthCompressing * pattern_.size()) separate_groups();
    std::vector<Piece> open;
    open.push_back(whole_graph(pattern_, groups_));
    std::vector<idx_t> side;
    while (!open.empty()) {
      if (!go_on()) return false;
      Piece piece = std::move(open.back());
      open.pop_back();
      if (piece.unknowns() <= kLeaf || !separate(piece, side)) {
        order_leaf(piece);
        continue;
      }
      std::array<Piece, 3> parts{part_of(piece, side, 0), part_of(piece, side, 1), part_of(piece, side, 2)};
      Index position = piece.first;
      for (Piece& part : parts) {
        part.first = position;
        position += part.unknowns();
      }
      order_leaf(parts[2]);
      open.push_back(std::move(parts[1]));
      open.push_back(std::move(parts[0]));
    }
    return true;
  }

 private:
  void separate_groups() {
    groups_.unknowns.clear();
    for (Index v = 0; v < pattern_.size(); ++v) {
      groups_.group_of[v] = v;
      groups_.unknowns.push_back({v});
    }
  }

  void order_leaf(const Piece& piece) {
    SymmetricPattern leaf;
    for (idx_t v = 0; v < piece.size(); ++v) {
      for (idx_t e = piece.start[v]; e < piece.start[v + 1]; ++e) leaf.index.push_back(piece.index[e]);
      leaf.start.push_back(static_cast<Offset>(leaf.index.size()));
    }
    Index position = piece.first;
    for (const Index vertex : order_minimum_degree(leaf)) {
      for (const Index unknown : groups_.unknowns[piece.members[vertex]]) order_[position++] = unknown;
    }
  }

  const SymmetricPattern& pattern_;
  std::vector<Index>& order_;
  Groups groups_;
};

}  // namespace

bool order_nested_dissection(const SymmetricPattern& pattern, const std::function<bool()>& go_on,
                             std::vector<Index>& order) {
  order.resize(static_cast<std::size_t>(pattern.size()));
  if (pattern.start.back() > std::numeric_limits<idx_t>::max() / 4) return false;
  return NestedDissection(pattern, order).run(go_on);
}

}  // namespace zorvex
