#include "mip/clique_table.hpp"

namespace zorvex {

void CliqueTable::reset(Index num_cols) {
  num_literals_ = 2 * num_cols;
  start_.assign(1, 0);
  member_.clear();
  of_start_.clear();
  of_.clear();
}

void CliqueTable::add(std::span<const Literal> members) {
  if (members.size() < 2) return;
  member_.insert(member_.end(), members.begin(), members.end());
  start_.push_back(member_.size());
}

void CliqueTable::index() {
  of_start_.assign(static_cast<std::size_t>(num_literals_) + 1, 0);
  for (const Literal lit : member_) ++of_start_[lit + 1];
  for (Literal lit = 0; lit < num_literals_; ++lit) of_start_[lit + 1] += of_start_[lit];
  of_.resize(member_.size());
  std::vector<std::size_t> next(of_start_.begin(), of_start_.end() - 1);
  for (Index clique = 0; clique < count(); ++clique) {
    for (const Literal lit : members(clique)) of_[next[lit]++] = clique;
  }
}

bool CliqueTable::conflict(Literal a, Literal b) const {
  const std::span<const Index> of_a = of(a);
  const std::span<const Index> of_b = of(b);
  for (std::size_t i = 0, j = 0; i < of_a.size() && j < of_b.size();) {
    if (of_a[i] == of_b[j]) return true;
    ++(of_a[i] < of_b[j] ? i : j);
  }
  return false;
}

}  // namespace zorvex
