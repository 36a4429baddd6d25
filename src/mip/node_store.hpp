// Open nodes of the tree, ordered by bound and by estimate at once.
//   Memory   a node holds its own bound changes; those of its ancestors are shared along the path, the basis with its
//            sibling. Statuses take two bits each.
#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include "linalg/basis.hpp"
#include "mip/domain.hpp"

namespace zorvex {

// The bound changes that lead from a parent to one of its children; shared by all nodes below.
struct PathStep {
  std::shared_ptr<const PathStep> parent;  // null below the root
  std::vector<BoundChange> changes;
  int depth = 1;
};

// Basis of a node relaxation, independent of which cuts happen to be in the LP when it is read back: rows of the model
// and columns are packed, cuts are named by their pool id and listed only when nonbasic.
class PackedBasis {
 public:
  PackedBasis() = default;
  // Row k >= model_rows of `basis` belongs to cut cut_ids[k - model_rows]; ids grow along the rows.
  PackedBasis(const Basis& basis, Index model_rows, const std::vector<std::int64_t>& cut_ids);

  [[nodiscard]] Basis unpack(const std::vector<std::int64_t>& cut_ids) const;
  [[nodiscard]] std::size_t bytes() const {
    return sizeof *this + status_.size() + cuts_.size() * sizeof cuts_[0] + head_.size() * sizeof head_[0] +
           norm_.size() * sizeof norm_[0];
  }

 private:
  [[nodiscard]] BasisStatus get(std::size_t position) const;
  void put(std::size_t position, BasisStatus status);

  Index num_cols_ = 0, num_rows_ = 0;
  std::vector<std::uint8_t> status_;  // four to a byte, columns then rows
  std::vector<std::pair<std::int64_t, BasisStatus>> cuts_;
  std::vector<std::int64_t> rows_of_norms_;  // cut ids present when head_ and norm_ were taken
  std::vector<Index> head_;
  std::vector<float> norm_;
};

struct Node {
  std::int64_t id = 0;  // given by the store, growing
  int depth = 0;
  double bound = -1e100;                 // proven for the whole subtree
  double estimate = -1e100;              // of the best solution in it
  std::shared_ptr<const PathStep> path;  // null at the root
  std::shared_ptr<const PackedBasis> basis;
  // How it was made, to learn pseudocosts from its relaxation; branch_col < 0 when nothing is to be learnt.
  Index branch_col = -1;
  bool branch_up = false;
  double branch_distance = 0;
  double parent_objective = 0;

  [[nodiscard]] bool root() const { return depth == 0; }
};

class NodeStore {
 public:
  void push(std::unique_ptr<Node> node);
  [[nodiscard]] std::unique_ptr<Node> pop_best_bound();
  [[nodiscard]] std::unique_ptr<Node> pop_best_estimate();
  // Removes the nodes with a bound above `cutoff`; returns how many.
  std::size_t prune(double cutoff);

  [[nodiscard]] bool empty() const { return by_bound_.empty(); }
  [[nodiscard]] std::size_t size() const { return by_bound_.size(); }
  [[nodiscard]] double best_bound() const { return empty() ? 1e100 : by_bound_.begin()->value; }
  [[nodiscard]] double best_estimate() const { return empty() ? 1e100 : by_estimate_.begin()->value; }
  // Approximate bytes held by the open nodes; a shared part counts for each node that holds it.
  [[nodiscard]] std::size_t bytes() const { return bytes_; }

 private:
  // Among equals the youngest node comes first: it is the deepest, and the nearest to the one just processed.
  struct Key {
    double value;
    std::int64_t id;
    std::int64_t slot;
    bool operator<(const Key& other) const { return value != other.value ? value < other.value : id > other.id; }
  };
  std::unique_ptr<Node> take(std::int64_t slot);
  static std::size_t bytes_of(const Node& node);

  std::vector<std::unique_ptr<Node>> slot_;
  std::vector<std::int64_t> free_;
  std::set<Key> by_bound_;
  std::set<Key> by_estimate_;
  std::int64_t next_id_ = 0;
  std::size_t bytes_ = 0;
};

}  // namespace zorvex
