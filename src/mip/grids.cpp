#include "mip/grids.hpp"

#include <algorithm>
#include <cmath>

#include "mip/mip_tolerances.hpp"

namespace zorvex {

namespace {

// The greatest common step of real numbers that are multiples of something not much smaller than themselves.
class CommonStep {
 public:
  // False when the numbers so far have no common step.
  bool add(double value) {
    value = std::abs(value);
    if (value == 0) return true;
    if (!std::isfinite(value)) return step_ = 0, false;
    largest_ = std::max(largest_, value);
    step_ = step_ == 0 ? value : gcd(std::max(step_, value), std::min(step_, value));
    return step_ > 0;
  }
  // 0 when no number was added.
  [[nodiscard]] double step() const { return step_; }
  // Whether a number, one of those added, is close to a multiple in the end.
  [[nodiscard]] bool divides(double value) const {
    const double ratio = std::abs(value) / step_;
    return std::abs(ratio - std::round(ratio)) <= mip_tol::kGcdTolerance * std::max(1.0, ratio);
  }

 private:
  // Of a >= b > 0; 0 when the remainders sink into the noise of the larger before they vanish.
  static double gcd(double a, double b) {
    const double noise = mip_tol::kGcdTolerance * a;
    const double least = noise * 10;
    while (b > noise) {
      double rest = std::fmod(a, b);
      if (b - rest <= noise) rest = 0;
      a = b;
      b = rest;
    }
    return a > least ? a : 0;
  }

  double step_ = 0, largest_ = 0;
};

class GridFinder {
 public:
  explicit GridFinder(SearchModel& model) : model_(model) {}

  void run(bool only_demanded);

 private:
  [[nodiscard]] bool constant(Index col) const { return model_.lp.col_lower[col] == model_.lp.col_upper[col]; }
  // Adds what the row gives for a column with coefficient `coef`: its side and the steps of the others over coef.
  bool collect(Index row, Index col, double coef, double side, CommonStep& step) const;
  [[nodiscard]] double step_by_row(Index col) const;
  [[nodiscard]] double step_by_choice(Index col) const;
  [[nodiscard]] ObjectiveGrid objective_grid() const;
  void set_grid(Index col, double step);

  SearchModel& model_;
  std::vector<Index> open_;  // per row: columns without a step that are not constant
};

bool GridFinder::collect(Index row, Index col, double coef, double side, CommonStep& step) const {
  double rest = side;
  for (Offset k = model_.rows.begin(row); k < model_.rows.end(row); ++k) {
    const Index other = model_.rows.index[k];
    if (other == col) continue;
    if (constant(other)) {
      rest -= model_.rows.value[k] * model_.lp.col_lower[other];
      continue;
    }
    if (model_.grid[other] == 0 || !step.add(model_.rows.value[k] * model_.grid[other] / coef)) return false;
  }
  return std::abs(rest) <= mip_tol::kGcdTolerance * std::abs(side) || step.add(rest / coef);
}

double GridFinder::step_by_row(Index col) const {
  const SparseMatrix& cols = model_.lp.matrix;
  for (Offset k = cols.begin(col); k < cols.end(col); ++k) {
    const Index row = cols.index[k];
    if (open_[row] > 1 || model_.lp.row_lower[row] != model_.lp.row_upper[row]) continue;
    CommonStep step;
    if (collect(row, col, cols.value[k], model_.lp.row_lower[row], step)) return step.step();
  }
  return 0;
}

double GridFinder::step_by_choice(Index col) const {
  const SparseMatrix& cols = model_.lp.matrix;
  CommonStep step;
  if (model_.lp.is_quadratic()) return 0;  // optima need not be vertices
  for (const double bound : {model_.lp.col_lower[col], model_.lp.col_upper[col]}) {
    if (std::isfinite(bound) && !step.add(bound)) return 0;
  }
  for (Offset k = cols.begin(col); k < cols.end(col); ++k) {
    const Index row = cols.index[k];
    if (open_[row] > 1) return 0;
    for (const double side : {model_.lp.row_lower[row], model_.lp.row_upper[row]}) {
      if (std::isfinite(side) && !collect(row, col, cols.value[k], side, step)) return 0;
    }
  }
  return step.step();
}

ObjectiveGrid GridFinder::objective_grid() const {
  if (model_.lp.is_quadratic()) return {};
  CommonStep step;
  double base = model_.lp.offset;
  for (Index col = 0; col < model_.num_cols(); ++col) {
    const double cost = model_.lp.cost[col];
    if (cost == 0) continue;
    if (constant(col)) {
      base += cost * model_.lp.col_lower[col];
    } else if (model_.grid[col] == 0 || !step.add(cost * model_.grid[col])) {
      return {};
    }
  }
  if (step.step() == 0) return {};
  for (Index col = 0; col < model_.num_cols(); ++col) {
    if (!constant(col) && !step.divides(model_.lp.cost[col] * model_.grid[col])) return {};
  }
  return {step.step(), base};
}

void GridFinder::set_grid(Index col, double step) {
  model_.grid[col] = step;
  const SparseMatrix& cols = model_.lp.matrix;
  for (Offset k = cols.begin(col); k < cols.end(col); ++k) --open_[cols.index[k]];
}

void GridFinder::run(bool only_demanded) {
  model_.grid.assign(static_cast<std::size_t>(model_.num_cols()), 0);
  for (const Index col : model_.integer_cols) model_.grid[col] = 1;
  open_.assign(static_cast<std::size_t>(model_.num_rows()), 0);
  for (Index row = 0; row < model_.num_rows(); ++row) {
    for (Offset k = model_.rows.begin(row); k < model_.rows.end(row); ++k) {
      const Index col = model_.rows.index[k];
      open_[row] += model_.grid[col] == 0 && !constant(col);
    }
  }
  for (bool again = true; again;) {
    again = false;
    for (Index col = 0; col < model_.num_cols(); ++col) {
      // A column of a gap or a set is not free to take any value of an interval.
      if (model_.grid[col] > 0 || constant(col)) continue;
      double step = step_by_row(col);
      if (step == 0 && !only_demanded && !model_.branchable[col]) step = step_by_choice(col);
      if (step == 0) continue;
      set_grid(col, step);
      again = true;
    }
  }
  model_.objective_grid = objective_grid();
}

}  // namespace

void find_grids(SearchModel& model, bool only_demanded) { GridFinder(model).run(only_demanded); }

}  // namespace zorvex
