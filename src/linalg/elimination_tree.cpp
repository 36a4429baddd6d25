#include "linalg/elimination_tree.hpp"

#include <cassert>

namespace zorvex {

namespace {

std::vector<Index> inverse_of(const std::vector<Index>& order) {
  std::vector<Index> position(order.size());
  for (std::size_t k = 0; k < order.size(); ++k) position[order[k]] = static_cast<Index>(k);
  return position;
}

std::vector<Index> tree_parents(const SymmetricPattern& pattern, const std::vector<Index>& order) {
  const std::vector<Index> position = inverse_of(order);
  std::vector<Index> parent(order.size(), -1), ancestor(order.size(), -1);
  for (Index k = 0; k < pattern.size(); ++k) {
    const Index variable = order[k];
    for (Offset e = pattern.start[variable]; e < pattern.start[variable + 1]; ++e) {
      Index node = position[pattern.index[e]];
      while (node != -1 && node < k) {  // up to the root, and everything on the path points to k from now on
        const Index next = ancestor[node];
        ancestor[node] = k;
        if (next == -1) parent[node] = k;
        node = next;
      }
    }
  }
  return parent;
}

// Follows the partial tree up to its root and shortens the path.
Index find_root(std::vector<Index>& ancestor, Index node) {
  Index root = node;
  while (ancestor[root] != root) root = ancestor[root];
  while (ancestor[node] != root) {
    const Index next = ancestor[node];
    ancestor[node] = root;
    node = next;
  }
  return root;
}

// Columns counted by the leaves of the row subtrees: column j starts a new branch of row i when its subtree lies beyond
// the last one seen.
std::vector<Offset> column_counts(const SymmetricPattern& pattern, const EliminationTree& tree) {
  const Index n = tree.size();
  const std::vector<Index> position = inverse_of(tree.order);
  std::vector<Offset> counts(static_cast<std::size_t>(n), 0);
  std::vector<Index> first(static_cast<std::size_t>(n)), last_leaf(static_cast<std::size_t>(n), -1),
      last_first(static_cast<std::size_t>(n), -1), ancestor(static_cast<std::size_t>(n));
  for (Index k = 0; k < n; ++k) first[k] = ancestor[k] = k;
  for (Index k = 0; k < n; ++k) {
    if (first[k] == k) counts[k] = 1;  // a leaf
    if (tree.parent[k] != -1 && first[k] < first[tree.parent[k]]) first[tree.parent[k]] = first[k];
  }
  for (Index k = 0; k < n; ++k) {
    if (tree.parent[k] != -1) --counts[tree.parent[k]];
    const Index variable = tree.order[k];
    for (Offset e = pattern.start[variable]; e < pattern.start[variable + 1]; ++e) {
      const Index row = position[pattern.index[e]];
      if (row <= k || first[k] <= last_first[row]) continue;
      last_first[row] = first[k];
      ++counts[k];
      if (last_leaf[row] != -1) --counts[find_root(ancestor, last_leaf[row])];
      last_leaf[row] = k;
    }
    if (tree.parent[k] != -1) ancestor[k] = tree.parent[k];
  }
  for (Index k = 0; k < n; ++k) {
    if (tree.parent[k] != -1) counts[tree.parent[k]] += counts[k];
  }
  return counts;
}

}  // namespace

double EliminationTree::factor_nonzeros() const {
  double sum = 0;
  for (const Offset count : counts) sum += static_cast<double>(count);
  return sum;
}

double EliminationTree::factor_operations() const {
  double sum = 0;
  for (const Offset count : counts) sum += static_cast<double>(count) * static_cast<double>(count);
  return sum;
}

std::vector<Index> postorder_of(const std::vector<Index>& parent) {
  const auto n = static_cast<Index>(parent.size());
  std::vector<Index> first_child(parent.size(), -1), sibling(parent.size(), -1), result, stack;
  for (Index k = n - 1; k >= 0; --k) {
    if (parent[k] == -1) continue;
    sibling[k] = first_child[parent[k]];
    first_child[parent[k]] = k;
  }
  result.reserve(parent.size());
  for (Index root = 0; root < n; ++root) {
    if (parent[root] != -1) continue;
    stack.push_back(root);
    while (!stack.empty()) {
      const Index node = stack.back();
      const Index child = first_child[node];
      if (child == -1) {
        result.push_back(node);
        stack.pop_back();
      } else {
        first_child[node] = sibling[child];
        stack.push_back(child);
      }
    }
  }
  assert(result.size() == parent.size());
  return result;
}

EliminationTree make_elimination_tree(const SymmetricPattern& pattern, const std::vector<Index>& order) {
  assert(order.size() == static_cast<std::size_t>(pattern.size()));
  const std::vector<Index> parent = tree_parents(pattern, order);
  const std::vector<Index> visit = postorder_of(parent);
  const std::vector<Index> position = inverse_of(visit);
  EliminationTree tree;
  tree.order.reserve(order.size());
  tree.parent.reserve(order.size());
  for (const Index node : visit) {
    tree.order.push_back(order[node]);
    tree.parent.push_back(parent[node] == -1 ? -1 : position[parent[node]]);
  }
  tree.counts = column_counts(pattern, tree);
  return tree;
}

}  // namespace zorvex
