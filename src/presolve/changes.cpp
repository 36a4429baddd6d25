#include "presolve/changes.hpp"

#include <cassert>
#include <cmath>
#include <utility>

#include "base/tolerances.hpp"
#include "presolve/reduction.hpp"

namespace zorvex {
namespace {

// base + change, zero when the two cancel to rounding noise.
double cancelling_sum(double base, Extended change) {
  const Extended sum = base + change;
  return std::abs(sum) <= PresolveTolerances::kCancel * std::abs(change) ? 0 : static_cast<double>(sum);
}

}  // namespace

Changes::Changes(PresolveModel& model)
    : model_(model),
      dirty_rows_(model.num_rows()),
      dirty_cols_(model.num_cols()),
      position_(static_cast<std::size_t>(model.num_cols()), -1) {}

void Changes::set_col_bounds(Index col, double lower, double upper) {
  double& old_lower = model_.col_lower[col];
  double& old_upper = model_.col_upper[col];
  if (lower == old_lower && upper == old_upper) return;
  for (const auto& entry : model_.matrix.col(col)) {
    Activity& activity = model_.activity[entry.row];
    activity.add(entry.value, old_lower, old_upper, -1);
    activity.add(entry.value, lower, upper, 1);
    dirty_rows_.push(entry.row);
  }
  work_.add(model_.matrix.col_length(col));
  old_lower = lower;
  old_upper = upper;
  dirty_cols_.push(col);
  ++steps_;
}

void Changes::set_row_sides(Index row, double lower, double upper) {
  double& old_lower = model_.row_lower[row];
  double& old_upper = model_.row_upper[row];
  if (old_lower == lower && old_upper == upper) return;
  // Columns care about which sides there are; that a side moved makes them implied at most: the next pass sees it.
  const bool kind_changes = std::isfinite(old_lower) != std::isfinite(lower) ||
                            std::isfinite(old_upper) != std::isfinite(upper) ||
                            (old_lower == old_upper) != (lower == upper);
  old_lower = lower;
  old_upper = upper;
  dirty_rows_.push(row);
  if (kind_changes) {
    for (const auto& entry : model_.matrix.row(row)) dirty_cols_.push(entry.col);
    work_.add(model_.matrix.row_length(row));
  }
  ++steps_;
}

void Changes::shift_cost(Index col, double amount) {
  if (amount == 0) return;
  model_.cost[col] = cancelling_sum(model_.cost[col], amount);
  dirty_cols_.push(col);
}

void Changes::shift_sides(Index row, Extended amount) {
  if (amount == 0) return;
  const bool equation = model_.is_equation(row);
  double& lower = model_.row_lower[row];
  double& upper = model_.row_upper[row];
  if (lower > -kInf) lower = cancelling_sum(lower, amount);
  if (equation) {
    upper = lower;
  } else if (upper < kInf) {
    upper = cancelling_sum(upper, amount);
  }
}

void Changes::erase_entry(Index node) {
  const PresolveMatrix::Entry& entry = model_.matrix.entry(node);
  model_.activity[entry.row].add(entry.value, model_.col_lower[entry.col], model_.col_upper[entry.col], -1);
  dirty_rows_.push(entry.row);
  dirty_cols_.push(entry.col);
  model_.matrix.erase(node);
}

void Changes::remove_row(Index row) {
  work_.add(model_.matrix.row_length(row) + 1);
  const auto range = model_.matrix.row(row);
  for (auto it = range.begin(); it != range.end(); ++it) erase_entry(it.node());
  model_.row_alive[row] = 0;
  ++rows_removed_;
  ++steps_;
}

void Changes::drop_row(Index row) {
  log_.begin(kRedundantRow).index(row).entries(model_.matrix.row(row), &PresolveMatrix::Entry::col);
  remove_row(row);
}

void Changes::remove_column(Index col) {
  work_.add(model_.matrix.col_length(col) + 1);
  const auto range = model_.matrix.col(col);
  for (auto it = range.begin(); it != range.end(); ++it) erase_entry(it.node());
  model_.col_alive[col] = 0;
  ++cols_removed_;
  ++steps_;
}

void Changes::fix_column(Index col, double value, BasisStatus status) {
  assert(std::isfinite(value));
  log_.begin(kFixedColumn)
      .index(col)
      .index(static_cast<Index>(status))
      .real(value)
      .real(model_.cost[col])
      .entries(model_.matrix.col(col), &PresolveMatrix::Entry::row);
  for (const auto& entry : model_.matrix.col(col)) shift_sides(entry.row, -Extended(entry.value) * value);
  model_.offset += Extended(model_.cost[col]) * value;
  fix_quadratic_terms(col, value);
  remove_column(col);
}

// Products with the column become costs of the others.
void Changes::fix_quadratic_terms(Index col, double value) {
  const SparseMatrix& q = model_.quadratic;
  if (!model_.is_quadratic(col) || value == 0) return;
  for (Offset k = q.begin(col); k < q.end(col); ++k) {
    const Index other = q.index[k];
    if (other == col) {
      model_.offset += Extended(q.value[k]) / 2 * value * value;
    } else if (model_.col_alive[other]) {
      shift_cost(other, q.value[k] * value);
    }
  }
  work_.add(q.col_length(col));
}

// The node of the row in each column of `source`, into position_. By the columns when they are shorter than the row;
// true if not: other columns of the row have theirs, too.
bool Changes::locate(Index row, Index source) {
  Offset lengths = 0;
  for (const auto& entry : model_.matrix.row(source)) lengths += model_.matrix.col_length(entry.col);
  if (lengths < model_.matrix.row_length(row)) {
    for (const auto& entry : model_.matrix.row(source)) {
      const auto range = model_.matrix.col(entry.col);
      for (auto it = range.begin(); it != range.end(); ++it) {
        if ((*it).row == row) position_[entry.col] = it.node();
      }
    }
    work_.add(lengths);
    return false;
  }
  const auto range = model_.matrix.row(row);
  for (auto it = range.begin(); it != range.end(); ++it) position_[(*it).col] = it.node();
  work_.add(model_.matrix.row_length(row));
  return true;
}

// row += factor * source.
void Changes::add_multiple(Index row, Index source, double factor) {
  const bool whole_row = locate(row, source);
  work_.add(model_.matrix.row_length(source));
  Activity& activity = model_.activity[row];
  for (Index node = model_.matrix.first_in_row(source); node >= 0; node = model_.matrix.entry(node).next_in_row) {
    const Index col = model_.matrix.entry(node).col;
    const double lower = model_.col_lower[col];
    const double upper = model_.col_upper[col];
    const Extended change = Extended(factor) * model_.matrix.entry(node).value;
    const Index at = std::exchange(position_[col], -1);
    dirty_cols_.push(col);
    if (at < 0) {
      const double value = static_cast<double>(change);
      model_.matrix.insert(row, col, value);
      activity.add(value, lower, upper, 1);
      continue;
    }
    const double value = cancelling_sum(model_.matrix.entry(at).value, change);
    if (value == 0) {
      erase_entry(at);
    } else {
      activity.add(model_.matrix.entry(at).value, lower, upper, -1);
      activity.add(value, lower, upper, 1);
      model_.matrix.set_value(at, value);
    }
  }
  if (!whole_row) return;
  for (const auto& entry : model_.matrix.row(row)) position_[entry.col] = -1;
}

void Changes::add_equation(Index row, Index equation, double factor) {
  assert(model_.is_equation(equation));
  add_multiple(row, equation, factor);
  shift_sides(row, Extended(factor) * model_.row_lower[equation]);
  dirty_rows_.push(row);
  ++steps_;
}

void Changes::substitute(Index row, Index col) {
  assert(model_.is_equation(row));
  double pivot = 0;
  for (const auto& entry : model_.matrix.col(col)) {
    if (entry.row == row) pivot = entry.value;
  }
  assert(pivot != 0);
  const double side = model_.row_lower[row];
  const double cost = model_.cost[col];
  log_.begin(kFreeColumn)
      .index(row)
      .index(col)
      .real(pivot)
      .real(side)
      .real(cost)
      .entries(model_.matrix.col(col), &PresolveMatrix::Entry::row, row)
      .entries(model_.matrix.row(row), &PresolveMatrix::Entry::col, col);
  std::vector<std::pair<Index, double>> others;
  for (const auto& entry : model_.matrix.col(col)) {
    if (entry.row != row) others.emplace_back(entry.row, entry.value);
  }
  remove_column(col);
  for (const auto& [other, value] : others) {
    add_multiple(other, row, -value / pivot);
    shift_sides(other, -Extended(value) / pivot * side);
  }
  const double multiplier = cost / pivot;
  if (cost != 0) {
    for (const auto& entry : model_.matrix.row(row)) shift_cost(entry.col, -multiplier * entry.value);
    model_.offset += Extended(multiplier) * side;
  }
  remove_row(row);
}

}  // namespace zorvex
