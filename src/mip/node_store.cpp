#include "mip/node_store.hpp"

#include <algorithm>
#include <cassert>

namespace zorvex {

namespace {

// Dual norms are worth their room only while it is small beside the rest of a node.
constexpr std::size_t kMaxNormRows = 4000;

}  // namespace

PackedBasis::PackedBasis(const Basis& basis, Index model_rows, const std::vector<std::int64_t>& cut_ids)
    : num_cols_(static_cast<Index>(basis.col.size())), num_rows_(model_rows) {
  assert(basis.row.size() == static_cast<std::size_t>(model_rows) + cut_ids.size());
  const auto n = static_cast<std::size_t>(num_cols_);
  const auto m = static_cast<std::size_t>(num_rows_);
  status_.assign((n + m + 3) / 4, 0);
  for (std::size_t col = 0; col < n; ++col) put(col, basis.col[col]);
  for (std::size_t row = 0; row < m; ++row) put(n + row, basis.row[row]);
  for (std::size_t k = 0; k < cut_ids.size(); ++k) {
    if (basis.row[m + k] != BasisStatus::kBasic) cuts_.emplace_back(cut_ids[k], basis.row[m + k]);
  }
  if (basis.norm.size() == basis.row.size() && basis.head.size() == basis.row.size() &&
      basis.row.size() <= kMaxNormRows) {
    head_ = basis.head;
    norm_.reserve(basis.norm.size());
    for (const double norm : basis.norm) norm_.push_back(static_cast<float>(norm));
    rows_of_norms_ = cut_ids;
  }
}

BasisStatus PackedBasis::get(std::size_t position) const {
  const int code = (status_[position / 4] >> (2 * (position % 4))) & 3;
  return static_cast<BasisStatus>(-code);
}

void PackedBasis::put(std::size_t position, BasisStatus status) {
  const int code = -static_cast<int>(status);
  status_[position / 4] = static_cast<std::uint8_t>(status_[position / 4] | (code << (2 * (position % 4))));
}

Basis PackedBasis::unpack(const std::vector<std::int64_t>& cut_ids) const {
  Basis basis;
  basis.col.resize(static_cast<std::size_t>(num_cols_));
  basis.row.resize(static_cast<std::size_t>(num_rows_) + cut_ids.size(), BasisStatus::kBasic);
  for (std::size_t col = 0; col < basis.col.size(); ++col) basis.col[col] = get(col);
  for (std::size_t row = 0; row < static_cast<std::size_t>(num_rows_); ++row) {
    basis.row[row] = get(basis.col.size() + row);
  }
  auto held = cuts_.begin();
  for (std::size_t k = 0; k < cut_ids.size(); ++k) {
    while (held != cuts_.end() && held->first < cut_ids[k]) ++held;
    if (held == cuts_.end()) break;
    if (held->first == cut_ids[k]) basis.row[static_cast<std::size_t>(num_rows_) + k] = held->second;
  }
  if (!head_.empty() && rows_of_norms_ == cut_ids) {
    basis.head = head_;
    basis.norm.assign(norm_.begin(), norm_.end());
  }
  return basis;
}

std::size_t NodeStore::bytes_of(const Node& node) {
  std::size_t bytes = sizeof(Node) + 6 * sizeof(Key);
  if (node.path) bytes += sizeof(PathStep) + node.path->changes.size() * sizeof(BoundChange);
  if (node.basis) bytes += node.basis->bytes();
  return bytes;
}

void NodeStore::push(std::unique_ptr<Node> node) {
  std::int64_t slot = static_cast<std::int64_t>(slot_.size());
  if (free_.empty()) {
    slot_.emplace_back();
  } else {
    slot = free_.back();
    free_.pop_back();
  }
  node->id = next_id_++;
  by_bound_.insert({node->bound, node->id, slot});
  by_estimate_.insert({node->estimate, node->id, slot});
  bytes_ += bytes_of(*node);
  slot_[static_cast<std::size_t>(slot)] = std::move(node);
}

std::unique_ptr<Node> NodeStore::take(std::int64_t slot) {
  std::unique_ptr<Node> node = std::move(slot_[static_cast<std::size_t>(slot)]);
  by_bound_.erase({node->bound, node->id, slot});
  by_estimate_.erase({node->estimate, node->id, slot});
  bytes_ -= bytes_of(*node);
  free_.push_back(slot);
  return node;
}

std::unique_ptr<Node> NodeStore::pop_best_bound() { return empty() ? nullptr : take(by_bound_.begin()->slot); }

std::unique_ptr<Node> NodeStore::pop_best_estimate() { return empty() ? nullptr : take(by_estimate_.begin()->slot); }

std::size_t NodeStore::prune(double cutoff) {
  std::size_t pruned = 0;
  while (!empty() && by_bound_.rbegin()->value > cutoff) {
    (void)take(by_bound_.rbegin()->slot);
    ++pruned;
  }
  return pruned;
}

}  // namespace zorvex
