// Cut separation: one sep_*.cpp and one line in separators.inc per family. A separator reads the relaxation and adds
// valid inequalities; cleaning, safety checks, selection and ageing are done here for all of them.
//   Invariant  cuts use the bounds of the search model only, so they hold in the whole tree.
#pragma once

#include <span>
#include <vector>

#include "mip/brancher.hpp"
#include "mip/cut_pool.hpp"
#include "mip/search_state.hpp"

namespace zorvex {

// Rows of the current LP by entry: those of the model, then the cuts in use.
class LpRows {
 public:
  LpRows(const SearchModel& model, const CutPool& pool, const std::vector<std::int64_t>& cut_ids)
      : model_(model), pool_(pool), cut_ids_(cut_ids) {}

  [[nodiscard]] Index count() const { return model_.num_rows() + static_cast<Index>(cut_ids_.size()); }
  [[nodiscard]] bool is_cut(Index row) const { return row >= model_.num_rows(); }
  [[nodiscard]] std::span<const Index> index(Index row) const;
  [[nodiscard]] std::span<const double> value(Index row) const;
  [[nodiscard]] double lower(Index row) const { return is_cut(row) ? -kInf : model_.lp.row_lower[row]; }
  [[nodiscard]] double upper(Index row) const { return is_cut(row) ? cut(row).rhs : model_.lp.row_upper[row]; }
  [[nodiscard]] double activity(Index row, const std::vector<double>& x) const;

 private:
  [[nodiscard]] const Cut& cut(Index row) const {
    return pool_.cut(cut_ids_[static_cast<std::size_t>(row - model_.num_rows())]);
  }
  const SearchModel& model_;
  const CutPool& pool_;
  const std::vector<std::int64_t>& cut_ids_;
};

struct SeparationContext {
  SearchState& state;
  const NodeRelaxation& relaxation;
  LpRows rows;
  std::vector<Cut> found;  // raw: indices in any order, tiny coefficients allowed
};

struct Separator {
  const char* name;
  void (*separate)(SeparationContext& context);
};

std::span<const Separator* const> separators();

// Makes a cut safe: indices sorted, tiny and badly scaled coefficients relaxed away over the bounds, right-hand side
// moved outward, scaled by a power of two. False when nothing trustworthy is left.
bool clean_cut(const SearchModel& model, Cut& cut);

// Runs all separators on the relaxation and returns the pool ids of the cuts worth adding to the LP, none of which cuts
// off the incumbent.
std::vector<std::int64_t> separate_round(SearchState& state, const NodeRelaxation& relaxation);

}  // namespace zorvex
