#include "linalg/symbolic_factor.hpp"

#include <algorithm>
#include <array>
#include <cassert>
#include <numeric>

namespace zorvex {

namespace {

// A supernode of `cols` columns whose first column has `rows` entries.
double panel_size(double cols, double rows) { return cols * rows - cols * (cols - 1) / 2; }

// Multiplications and additions of its elimination, update matrix included.
double panel_operations(double cols, double rows) {
  const auto sum_of_squares = [](double n) { return n * (n + 1) * (2 * n + 1) / 6; };
  return sum_of_squares(rows) - sum_of_squares(rows - cols);
}

// What a supernode less saves and costs, in operations of the dense kernels that take as long: the child's update need
// not be added to its parent, but its columns get the parent's rows, which explicit zeros fill. Each of these costs
// most in the triangular solves, of which there are several for each factorization.
constexpr double kOperationsPerAdd = 40;
constexpr double kOperationsPerZero = 250;
constexpr double kOperationsPerFront = 20000;
constexpr double kOperationsPerDenseFront = 1e6;  // when blocks are to be large

// Supernodes while they are merged: fundamental ones first, then children into parents.
struct MergeTree {
  std::vector<Index> parent;                // of each fundamental supernode; -1 at a root
  std::vector<std::vector<Index>> members;  // fundamental supernodes in elimination order; empty once merged away
  std::vector<double> cols, rows;
};

std::vector<Index> fundamental_starts(const EliminationTree& tree) {
  std::vector<Index> starts;
  for (Index k = 0; k < tree.size(); ++k) {
    const bool continues = k > 0 && tree.parent[k - 1] == k && tree.counts[k - 1] == tree.counts[k] + 1;
    if (!continues) starts.push_back(k);
  }
  starts.push_back(tree.size());
  return starts;
}

MergeTree make_merge_tree(const EliminationTree& tree, const std::vector<Index>& starts) {
  const std::size_t count = starts.size() - 1;
  MergeTree merge;
  merge.parent.assign(count, -1);
  merge.members.resize(count);
  std::vector<Index> owner(static_cast<std::size_t>(tree.size()));
  for (std::size_t s = 0; s < count; ++s) {
    for (Index k = starts[s]; k < starts[s + 1]; ++k) owner[k] = static_cast<Index>(s);
  }
  for (std::size_t s = 0; s < count; ++s) {
    const Index up = tree.parent[starts[s + 1] - 1];
    if (up != -1) merge.parent[s] = owner[up];
    merge.members[s] = {static_cast<Index>(s)};
    merge.cols.push_back(starts[s + 1] - starts[s]);
    merge.rows.push_back(static_cast<double>(tree.counts[starts[s]]));
  }
  return merge;
}

// Operations that merging would save, negative when it costs more.
double gain(const MergeTree& merge, Index child, Index parent, bool dense) {
  const double cols = merge.cols[child] + merge.cols[parent], rows = merge.cols[child] + merge.rows[parent];
  const double zeros = panel_size(cols, rows) - panel_size(merge.cols[child], merge.rows[child]) -
                       panel_size(merge.cols[parent], merge.rows[parent]);
  const double operations = panel_operations(cols, rows) - panel_operations(merge.cols[child], merge.rows[child]) -
                            panel_operations(merge.cols[parent], merge.rows[parent]);
  const double below = merge.rows[child] - merge.cols[child];
  const double saved = dense ? kOperationsPerDenseFront : kOperationsPerFront;
  return saved + kOperationsPerAdd * below * (below + 1) / 2 - operations - (dense ? 0 : kOperationsPerZero * zeros);
}

void merge_into(MergeTree& merge, Index child, Index parent) {
  std::vector<Index>& members = merge.members[child];
  members.insert(members.end(), merge.members[parent].begin(), merge.members[parent].end());
  merge.members[parent] = std::move(members);
  merge.members[child].clear();
  merge.rows[parent] += merge.cols[child];
  merge.cols[parent] += merge.cols[child];
}

// Parents in postorder take those of their children whose update costs more than the zeros, the best of them first.
void relax(MergeTree& merge, bool dense) {
  const auto count = static_cast<Index>(merge.parent.size());
  std::vector<std::vector<Index>> children(merge.parent.size());
  for (Index s = 0; s < count; ++s) {
    std::vector<std::pair<double, Index>> candidates;
    for (const Index child : children[s]) candidates.emplace_back(-gain(merge, child, s, dense), child);
    std::sort(candidates.begin(), candidates.end());
    for (const auto& [cost, child] : candidates) {
      if (gain(merge, child, s, dense) > 0) merge_into(merge, child, s);
    }
    if (merge.parent[s] != -1) children[merge.parent[s]].push_back(s);
  }
  // Whoever pointed to a supernode that was merged away now points to the one that took it.
  std::vector<Index> holder(merge.parent.size());
  for (Index s = 0; s < count; ++s) {
    for (const Index member : merge.members[s]) holder[member] = s;
  }
  for (Index& parent : merge.parent) {
    if (parent != -1) parent = holder[parent];
  }
}

// Numbers the merged supernodes in postorder and their columns with them.
void number(const EliminationTree& tree, const std::vector<Index>& starts, const MergeTree& merge,
            SymbolicFactor& symbolic) {
  std::vector<Index> alive, number_of(merge.parent.size(), -1);
  for (std::size_t s = 0; s < merge.parent.size(); ++s) {
    if (merge.members[s].empty()) continue;
    number_of[s] = static_cast<Index>(alive.size());
    alive.push_back(static_cast<Index>(s));
  }
  std::vector<Index> parent(alive.size());
  for (std::size_t k = 0; k < alive.size(); ++k) {
    const Index up = merge.parent[alive[k]];
    parent[k] = up == -1 ? -1 : number_of[up];
  }
  const std::vector<Index> visit = postorder_of(parent);
  std::vector<Index> final_number(visit.size());
  for (std::size_t k = 0; k < visit.size(); ++k) final_number[visit[k]] = static_cast<Index>(k);
  symbolic.first_col.push_back(0);
  for (const Index node : visit) {
    for (const Index member : merge.members[alive[node]]) {
      for (Index k = starts[member]; k < starts[member + 1]; ++k) symbolic.order.push_back(tree.order[k]);
    }
    symbolic.first_col.push_back(static_cast<Index>(symbolic.order.size()));
    symbolic.parent.push_back(parent[node] == -1 ? -1 : final_number[parent[node]]);
  }
  symbolic.position.resize(symbolic.order.size());
  for (std::size_t k = 0; k < symbolic.order.size(); ++k) symbolic.position[symbolic.order[k]] = static_cast<Index>(k);
}

void list_children(SymbolicFactor& symbolic) {
  const Index count = symbolic.num_supernodes();
  symbolic.child_start.assign(static_cast<std::size_t>(count) + 1, 0);
  for (const Index parent : symbolic.parent) {
    if (parent != -1) ++symbolic.child_start[parent + 1];
  }
  std::partial_sum(symbolic.child_start.begin(), symbolic.child_start.end(), symbolic.child_start.begin());
  symbolic.child.resize(static_cast<std::size_t>(symbolic.child_start.back()));
  std::vector<Index> next(symbolic.child_start.begin(), symbolic.child_start.end() - 1);
  for (Index s = 0; s < count; ++s) {
    if (symbolic.parent[s] != -1) symbolic.child[next[symbolic.parent[s]]++] = s;
  }
}

// Entries of the matrix by the position that is eliminated first.
struct EntriesByPosition {
  std::vector<Offset> start;
  std::vector<Index> row;  // the other position
  std::vector<Offset> source;
};

EntriesByPosition group_entries(const SparseMatrix& lower, const SymbolicFactor& symbolic) {
  EntriesByPosition entries;
  const Index n = lower.num_cols;
  entries.start.assign(static_cast<std::size_t>(n) + 1, 0);
  const auto key = [&](Index row, Index col) { return std::min(symbolic.position[row], symbolic.position[col]); };
  for (Index col = 0; col < n; ++col) {
    for (Offset k = lower.begin(col); k < lower.end(col); ++k) ++entries.start[key(lower.index[k], col) + 1];
  }
  std::partial_sum(entries.start.begin(), entries.start.end(), entries.start.begin());
  entries.row.resize(lower.index.size());
  entries.source.resize(lower.index.size());
  std::vector<Offset> next(entries.start.begin(), entries.start.end() - 1);
  for (Index col = 0; col < n; ++col) {
    for (Offset k = lower.begin(col); k < lower.end(col); ++k) {
      const Index row = lower.index[k];
      const Offset to = next[key(row, col)]++;
      entries.row[to] = std::max(symbolic.position[row], symbolic.position[col]);
      entries.source[to] = k;
    }
  }
  return entries;
}

// Rows of each supernode: its own, then what the matrix and the children bring beyond them.
void collect_rows(const EntriesByPosition& entries, SymbolicFactor& symbolic) {
  const Index count = symbolic.num_supernodes();
  std::vector<Index> mark(static_cast<std::size_t>(symbolic.size()), -1);
  symbolic.row_start.push_back(0);
  for (Index s = 0; s < count; ++s) {
    const Index begin = symbolic.first_col[s], end = symbolic.first_col[s + 1];
    for (Index k = begin; k < end; ++k) symbolic.rows.push_back(k);
    const std::size_t below = symbolic.rows.size();
    const auto add = [&](Index row) {
      if (row < end || mark[row] == s) return;
      mark[row] = s;
      symbolic.rows.push_back(row);
    };
    for (Offset k = entries.start[begin]; k < entries.start[end]; ++k) add(entries.row[k]);
    for (Index c = symbolic.child_start[s]; c < symbolic.child_start[s + 1]; ++c) {
      const Index child = symbolic.child[c];
      for (Offset k = symbolic.row_start[child] + symbolic.num_cols(child); k < symbolic.row_start[child + 1]; ++k) {
        add(symbolic.rows[k]);
      }
    }
    std::sort(symbolic.rows.begin() + static_cast<Offset>(below), symbolic.rows.end());
    symbolic.row_start.push_back(static_cast<Offset>(symbolic.rows.size()));
  }
}

// Places of the matrix entries and of the children's rows in each panel.
void map_entries(const EntriesByPosition& entries, SymbolicFactor& symbolic) {
  const Index count = symbolic.num_supernodes();
  std::vector<Index> local(static_cast<std::size_t>(symbolic.size()), -1);
  symbolic.in_parent.assign(symbolic.rows.size(), -1);
  symbolic.entry_source = entries.source;
  symbolic.entry_target.resize(entries.row.size());
  symbolic.entry_start.push_back(0);
  symbolic.panel_start.push_back(0);
  for (Index s = 0; s < count; ++s) {
    const Offset num_rows = symbolic.num_rows(s);
    for (Offset k = 0; k < num_rows; ++k) local[symbolic.rows[symbolic.row_start[s] + k]] = static_cast<Index>(k);
    for (Index col = symbolic.first_col[s]; col < symbolic.first_col[s + 1]; ++col) {
      const Offset column = (col - symbolic.first_col[s]) * num_rows;
      for (Offset k = entries.start[col]; k < entries.start[col + 1]; ++k) {
        symbolic.entry_target[k] = column + local[entries.row[k]];
      }
    }
    for (Index c = symbolic.child_start[s]; c < symbolic.child_start[s + 1]; ++c) {
      const Index child = symbolic.child[c];
      for (Offset k = symbolic.row_start[child] + symbolic.num_cols(child); k < symbolic.row_start[child + 1]; ++k) {
        symbolic.in_parent[k] = local[symbolic.rows[k]];
      }
    }
    symbolic.entry_start.push_back(entries.start[symbolic.first_col[s + 1]]);
    symbolic.panel_start.push_back(symbolic.panel_start.back() + num_rows * symbolic.num_cols(s));
  }
}

void predict(SymbolicFactor& symbolic) {
  const Index count = symbolic.num_supernodes();
  std::vector<char> odd(static_cast<std::size_t>(count), 0);  // depth
  for (Index s = count; s-- > 0;) {
    if (symbolic.parent[s] != -1) odd[s] = static_cast<char>(1 - odd[symbolic.parent[s]]);
  }
  const auto update_size = [&](Index s) {
    const double below = symbolic.num_rows(s) - symbolic.num_cols(s);
    return below * below;
  };
  std::array<double, 2> stacks{0, 0}, peaks{0, 0};
  for (Index s = 0; s < count; ++s) {
    for (Index k = 0; k < symbolic.num_cols(s); ++k) {
      const double length = symbolic.num_rows(s) - k;
      symbolic.operations += length * length;
    }
    const auto own = static_cast<std::size_t>(odd[s]);
    stacks[own] += update_size(s);
    peaks[own] = std::max(peaks[own], stacks[own]);
    for (Index c = symbolic.child_start[s]; c < symbolic.child_start[s + 1]; ++c) {
      stacks[1 - own] -= update_size(symbolic.child[c]);
    }
  }
  symbolic.stack_peak = peaks[0] + peaks[1];
}

}  // namespace

SymbolicFactor analyze_factor(const SparseMatrix& lower, const EliminationTree& tree, bool dense) {
  assert(lower.num_cols == tree.size());
  SymbolicFactor symbolic;
  const std::vector<Index> starts = fundamental_starts(tree);
  MergeTree merge = make_merge_tree(tree, starts);
  relax(merge, dense);
  symbolic.order.reserve(tree.order.size());
  number(tree, starts, merge, symbolic);
  list_children(symbolic);
  const EntriesByPosition entries = group_entries(lower, symbolic);
  collect_rows(entries, symbolic);
  map_entries(entries, symbolic);
  symbolic.exact_nonzeros = tree.factor_nonzeros();
  predict(symbolic);
  return symbolic;
}

}  // namespace zorvex
