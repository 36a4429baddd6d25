// Sets of literals of binary columns of which at most one can be true, and who conflicts with whom.
#pragma once

#include <span>
#include <vector>

#include "base/types.hpp"

namespace zorvex {

// "col is one" or "col is zero".
using Literal = Index;
constexpr Literal literal(Index col, bool one) { return 2 * col + (one ? 0 : 1); }
constexpr Index column_of(Literal lit) { return lit / 2; }
constexpr bool is_one(Literal lit) { return lit % 2 == 0; }
constexpr Literal negation(Literal lit) { return lit ^ 1; }

class CliqueTable {
 public:
  // Forgets all cliques. Literals of `num_cols` columns.
  void reset(Index num_cols);
  // At most one of the literals is true. They are distinct; sets of fewer than two are ignored. Call index() before
  // asking about literals.
  void add(std::span<const Literal> members);
  void index();

  [[nodiscard]] Index count() const { return static_cast<Index>(start_.empty() ? 0 : start_.size() - 1); }
  [[nodiscard]] bool empty() const { return count() == 0; }
  [[nodiscard]] std::span<const Literal> members(Index clique) const {
    return std::span(member_).subspan(start_[clique], start_[clique + 1] - start_[clique]);
  }
  // Cliques that hold the literal, increasing.
  [[nodiscard]] std::span<const Index> of(Literal lit) const {
    if (of_start_.empty()) return {};
    return std::span(of_).subspan(of_start_[lit], of_start_[lit + 1] - of_start_[lit]);
  }
  [[nodiscard]] std::size_t num_members() const { return member_.size(); }
  // Whether some clique holds both.
  [[nodiscard]] bool conflict(Literal a, Literal b) const;

 private:
  Index num_literals_ = 0;
  std::vector<std::size_t> start_, of_start_;
  std::vector<Literal> member_;
  std::vector<Index> of_;
};

}  // namespace zorvex
