#include "mip/cancel_equations.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "presolve/row_multiples.hpp"

namespace zorvex {

namespace {

constexpr double kMaxMultiplier = 1e4;  // of an equation, and of its inverse: keeps rounding of the sides harmless
constexpr double kSameRatio = 1e-12;    // relative distance of two ratios that count as one
constexpr Index kWorthShare = 3;        // the entries that go must be one in so many of the equation's at least
constexpr Index kShortest = 2;          // equations below this length are bounds
constexpr Index kLongest = 1000;        // equations above this length cancel too rarely

class EquationCancelling {
 public:
  EquationCancelling(SearchModel& model, std::int64_t effort, const StopToken& stop)
      : model_(model),
        effort_(effort),
        stop_(stop),
        side_(model.lp.row_lower),
        dense_(static_cast<std::size_t>(model.num_cols()), 0.0),
        hits_(static_cast<std::size_t>(model.num_rows()), 0) {}

  std::int64_t run();

 private:
  struct Step {
    double multiplier = 0;
    Index gain = 0;
  };

  [[nodiscard]] bool is_equation(Index row) const {
    const Index length = model_.rows.col_length(row);
    return model_.lp.row_lower[row] == model_.lp.row_upper[row] && length >= kShortest && length <= kLongest;
  }
  [[nodiscard]] bool is_logical(Index row) const;
  void shorten(Index row);
  void find_candidates(Index row);
  Step best_step(Index equation);
  void subtract(Index row, Index equation, double multiplier);
  void emit();

  SearchModel& model_;
  std::int64_t effort_;
  const StopToken& stop_;
  const std::vector<double> side_;  // right-hand sides of the equations, as they belong to model_.rows
  std::vector<double> dense_;       // the row at work, by column
  std::vector<Index> entries_;      // its columns; some may have become zero
  std::vector<Index> hits_;         // entries shared with the row at work, by equation
  std::vector<Index> candidates_;   // equations with hits
  std::vector<double> ratios_;
  SparseMatrix result_;
  std::int64_t gone_ = 0;
  bool changed_ = false;  // the row at work
};

std::int64_t EquationCancelling::run() {
  result_.num_rows = model_.rows.num_rows;
  for (Index row = 0; row < model_.num_rows(); ++row) {
    entries_.clear();
    changed_ = false;
    for (Offset k = model_.rows.begin(row); k < model_.rows.end(row); ++k) {
      entries_.push_back(model_.rows.index[k]);
      dense_[model_.rows.index[k]] = model_.rows.value[k];
    }
    if (effort_ > 0 && !is_logical(row) && !stop_.stop_requested()) shorten(row);
    emit();
  }
  if (gone_ == 0) return 0;
  model_.rows = std::move(result_);
  model_.lp.matrix = model_.rows.transpose();
  return gone_;
}

// Packings, partitions and coverings: what other code knows how to read, and would not with a sign among its entries.
bool EquationCancelling::is_logical(Index row) const {
  const Offset first = model_.rows.begin(row);
  for (Offset k = first; k < model_.rows.end(row); ++k) {
    if (model_.rows.value[k] != model_.rows.value[first] || !model_.binary(model_.rows.index[k])) return false;
  }
  return true;
}

// Equations are read from the model as it was, shortened or not: all of them hold.
void EquationCancelling::shorten(Index row) {
  find_candidates(row);
  for (const Index equation : candidates_) {
    if (effort_ <= 0) break;
    const Step step = best_step(equation);
    if (kWorthShare * step.gain < model_.rows.col_length(equation)) continue;
    subtract(row, equation, step.multiplier);
    gone_ += step.gain;
    changed_ = true;
  }
  for (const Index equation : candidates_) hits_[equation] = 0;
}

// Equations that share more than half of their entries with the row, those that share most first. An equation takes
// up later equations only: a triangular change, which keeps the set of solutions.
void EquationCancelling::find_candidates(Index row) {
  candidates_.clear();
  const SparseMatrix& cols = model_.lp.matrix;
  const bool equation = model_.lp.row_lower[row] == model_.lp.row_upper[row];
  std::vector<Index> touched;
  for (const Index col : entries_) {
    effort_ -= cols.col_length(col);
    for (Offset k = cols.begin(col); k < cols.end(col); ++k) {
      const Index other = cols.index[k];
      if (other == row || !is_equation(other) || (equation && other < row)) continue;
      if (hits_[other]++ == 0) touched.push_back(other);
    }
  }
  for (const Index other : touched) {
    if (2 * hits_[other] > model_.rows.col_length(other)) {
      candidates_.push_back(other);
    } else {
      hits_[other] = 0;
    }
  }
  std::sort(candidates_.begin(), candidates_.end(),
            [&](Index a, Index b) { return hits_[a] != hits_[b] ? hits_[a] > hits_[b] : a < b; });
}

// The multiple of the equation that removes most entries from the row, less those that it adds.
EquationCancelling::Step EquationCancelling::best_step(Index equation) {
  ratios_.clear();
  Index fill = 0;
  effort_ -= model_.rows.col_length(equation);
  for (Offset k = model_.rows.begin(equation); k < model_.rows.end(equation); ++k) {
    const double own = dense_[model_.rows.index[k]];
    if (own == 0) {
      ++fill;
    } else {
      ratios_.push_back(own / model_.rows.value[k]);
    }
  }
  std::sort(ratios_.begin(), ratios_.end());
  const CommonRatio best = most_common_ratio(ratios_, kSameRatio, [](double ratio) {
    return std::abs(ratio) <= kMaxMultiplier && std::abs(ratio) >= 1 / kMaxMultiplier;
  });
  return {best.ratio, std::max(best.count - fill, 0)};
}

void EquationCancelling::subtract(Index row, Index equation, double multiplier) {
  for (Offset k = model_.rows.begin(equation); k < model_.rows.end(equation); ++k) {
    const Index col = model_.rows.index[k];
    const double own = dense_[col];
    const double part = multiplier * model_.rows.value[k];
    if (own == 0) entries_.push_back(col);
    dense_[col] = std::abs(own - part) <= 2 * kSameRatio * std::abs(part) ? 0.0 : own - part;
  }
  const double moved = multiplier * side_[equation];
  model_.lp.row_lower[row] -= moved;
  model_.lp.row_upper[row] -= moved;
}

void EquationCancelling::emit() {
  if (changed_) {
    std::sort(entries_.begin(), entries_.end());
    entries_.erase(std::unique(entries_.begin(), entries_.end()), entries_.end());
  }
  std::vector<double> values;
  std::size_t out = 0;
  for (const Index col : entries_) {
    if (dense_[col] == 0) continue;
    entries_[out++] = col;
    values.push_back(dense_[col]);
  }
  for (const Index col : entries_) dense_[col] = 0;
  result_.append_col(entries_.data(), values.data(), static_cast<Index>(out));
}

}  // namespace

std::int64_t cancel_with_equations(SearchModel& model, std::int64_t effort, const StopToken& stop) {
  return EquationCancelling(model, effort, stop).run();
}

}  // namespace zorvex
