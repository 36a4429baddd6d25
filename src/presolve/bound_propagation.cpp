#include "presolve/bound_propagation.hpp"

#include <algorithm>
#include <cmath>

#include "base/tolerances.hpp"

namespace zorvex {
namespace {

constexpr std::size_t kMaxSupport = 200;   // facts that one argument may rest on
constexpr double kWorthwhile = 0.01;       // of the width, or of the bound: smaller gains are not followed up
constexpr Index kFactsPerBound = 4;        // facts, over the number of columns
constexpr std::int64_t kWorkPerEntry = 8;  // nonzeros touched by the sweeps, per nonzero of the original

}  // namespace

BoundPropagation::BoundPropagation(const PresolveModel& model, WorkMeter& work, bool restate)
    : model_(model),
      work_(work),
      restate_(restate),
      latest_(2 * static_cast<std::size_t>(model.num_cols()), -1),
      activity_(model.activity),
      row_pillar_(static_cast<std::size_t>(model.num_rows()), 0),
      row_gone_(row_pillar_.size(), 0),
      queued_(row_pillar_.size(), 0),
      bound_pillar_(latest_.size(), 0),
      bound_gone_(latest_.size(), 0) {}

void BoundPropagation::run(int sweeps) {
  std::vector<Index> rows;
  std::int64_t entries = 0;
  for (Index row = 0; row < model_.num_rows(); ++row) {
    if (!model_.row_alive[row]) continue;
    rows.push_back(row);
    entries += model_.matrix.row_length(row);
  }
  const std::int64_t limit = work_.total() + kWorkPerEntry * entries;
  for (int k = 0; k < sweeps && !rows.empty() && work_.total() < limit; ++k) sweep(rows);
}

void BoundPropagation::sweep(std::vector<Index>& rows) {
  touched_.clear();
  for (const Index row : rows) queued_[row] = 0;
  const std::size_t most_facts = static_cast<std::size_t>(kFactsPerBound) * latest_.size();
  for (const Index row : rows) {
    const Activity& activity = activity_[row];
    const double row_lower = model_.row_lower[row];
    const double row_upper = model_.row_upper[row];
    const bool from_upper = row_upper < kInf && activity.infinite_min <= 1;
    const bool from_lower = row_lower > -kInf && activity.infinite_max <= 1;
    work_.add(1);
    if ((!from_upper && !from_lower) || facts_.size() > most_facts) continue;
    work_.add(model_.matrix.row_length(row));
    for (const auto& entry : model_.matrix.row(row)) {
      // Dividing by a tiny coefficient makes a bound of rounding errors.
      if (std::abs(entry.value) < PresolveTolerances::kPivotShare * model_.matrix.row_magnitude(row)) continue;
      const double reach = std::abs(entry.value) * (upper(entry.col) - lower(entry.col));
      const double enough = reach + conclusion_slack(reach);  // the row's slack, for its side to bound the column
      if (from_upper && row_upper - activity.finite_min <= enough) {
        derive(entry, entry.value > 0 ? Side::kUpper : Side::kLower);
      }
      if (from_lower && activity.finite_max - row_lower <= enough) {
        derive(entry, entry.value > 0 ? Side::kLower : Side::kUpper);
      }
    }
  }
  std::swap(rows, touched_);
}

double BoundPropagation::value_of(Index col, Side side, Index fact) const {
  if (fact >= 0) return facts_[fact].value;
  return side == Side::kLower ? model_.col_lower[col] : model_.col_upper[col];
}

bool BoundPropagation::worth_it(Index col, Side side, double value) const {
  const double old = bound(col, side);
  if (restate_ && !is_derived(col, side) && std::abs(value - old) <= conclusion_slack(old)) return true;
  if (side == Side::kLower ? !(value > old) : !(value < old)) return false;
  if (std::isinf(old)) return true;
  const double width = std::abs(bound(col, side == Side::kLower ? Side::kUpper : Side::kLower) - old);
  const double scale = std::isfinite(width) ? width : std::max(1.0, std::abs(old));
  return std::abs(value - old) > kWorthwhile * scale;
}

void BoundPropagation::derive(const PresolveMatrix::Entry& entry, Side side) {
  const Index row = entry.row;
  const Index col = entry.col;
  const double lower = bound(col, Side::kLower);
  const double upper = bound(col, Side::kUpper);
  const bool from_upper = (entry.value > 0) == (side == Side::kUpper);
  const Activity& activity = activity_[row];
  const Extended own = Extended(entry.value) * (side == Side::kUpper ? lower : upper);
  const bool own_is_finite = std::abs(own) < PresolveTolerances::kHugeBound;
  if ((from_upper ? activity.infinite_min : activity.infinite_max) != (own_is_finite ? 0 : 1)) return;
  const Extended rest = (from_upper ? activity.finite_min : activity.finite_max) - (own_is_finite ? own : 0);
  const double room = static_cast<double>((from_upper ? model_.row_upper[row] : model_.row_lower[row]) - rest);
  double value = room / entry.value;
  if (!(std::abs(value) < PresolveTolerances::kHugeBound) || !worth_it(col, side, value)) return;
  // Crossing bounds are for the solver to find and to prove.
  if (side == Side::kLower ? value > upper : value < lower) return;
  value = side == Side::kLower ? std::max(value, lower) : std::min(value, upper);
  Index& latest = latest_[slot(col, side)];
  facts_.push_back({col, row, latest, side, value});
  latest = static_cast<Index>(facts_.size()) - 1;
  work_.add(model_.matrix.col_length(col));
  for (const auto& other : model_.matrix.col(col)) {
    Activity& changing = activity_[other.row];
    changing.add(other.value, lower, upper, -1);
    changing.add(other.value, bound(col, Side::kLower), bound(col, Side::kUpper), 1);
    if (!queued_[other.row] && other.row != row) {
      queued_[other.row] = 1;
      touched_.push_back(other.row);
    }
  }
}

Index BoundPropagation::version(Index col, Side side, Index before, Index row) const {
  Index fact = latest_[slot(col, side)];
  while (fact >= 0 && (fact >= before || facts_[fact].row == row)) fact = facts_[fact].previous;
  return fact;
}

Activity BoundPropagation::range(Index row) const {
  const auto all = static_cast<Index>(facts_.size());
  Activity sum;
  for (const auto& entry : model_.matrix.row(row)) {
    sum.add(entry.value, value_of(entry.col, Side::kLower, version(entry.col, Side::kLower, all, row)),
            value_of(entry.col, Side::kUpper, version(entry.col, Side::kUpper, all, row)), 1);
  }
  work_.add(2 * model_.matrix.row_length(row));
  return sum;
}

bool BoundPropagation::collect_fact(Index col, Side side, Index fact, Index claimed) {
  if (fact < 0) {
    if (bound_gone_[slot(col, side)]) return false;
    argued_bounds_.push_back(slot(col, side));
    return true;
  }
  if (seen_[fact] == argument_count_) return true;
  if (facts_[fact].row == claimed || row_gone_[facts_[fact].row]) return false;
  seen_[fact] = argument_count_;
  stack_.push_back(fact);
  return argued_rows_.size() + stack_.size() <= kMaxSupport;
}

// What one end of the row's range rested on before the fact `before`.
bool BoundPropagation::collect_range(Index row, Side end, Index skipped_col, Index before, Index claimed) {
  work_.add(model_.matrix.row_length(row));
  for (const auto& entry : model_.matrix.row(row)) {
    if (entry.col == skipped_col) continue;
    const Side side = (entry.value > 0) == (end == Side::kLower) ? Side::kLower : Side::kUpper;
    const Index fact = version(entry.col, side, before, row == claimed ? row : -1);
    if (!collect_fact(entry.col, side, fact, claimed)) return false;
  }
  return true;
}

bool BoundPropagation::collect_reasons(Index claimed) {
  while (!stack_.empty()) {
    const Index at = stack_.back();
    stack_.pop_back();
    const Fact& fact = facts_[at];
    double coefficient = 0;
    for (const auto& entry : model_.matrix.row(fact.row)) {
      if (entry.col == fact.col) coefficient = entry.value;
    }
    const bool from_upper = (coefficient > 0) == (fact.side == Side::kUpper);
    argued_rows_.push_back({fact.row, from_upper ? Side::kUpper : Side::kLower});
    if (!collect_range(fact.row, from_upper ? Side::kLower : Side::kUpper, fact.col, at, claimed)) return false;
  }
  return true;
}

bool BoundPropagation::argue_range(Index row, Side end) {
  seen_.resize(facts_.size(), 0);
  ++argument_count_;
  stack_.clear();
  return collect_range(row, end, -1, static_cast<Index>(facts_.size()), row) && collect_reasons(row);
}

bool BoundPropagation::argue_bound(Index col, Side side) {
  seen_.resize(facts_.size(), 0);
  ++argument_count_;
  stack_.clear();
  return collect_fact(col, side, latest_[slot(col, side)], -1) && collect_reasons(-1);
}

void BoundPropagation::accept() {
  for (const RowSide& argued : argued_rows_) row_pillar_[argued.row] = 1;
  for (const std::size_t argued : argued_bounds_) bound_pillar_[argued] = 1;
  reject();
}

void BoundPropagation::reject() {
  argued_rows_.clear();
  argued_bounds_.clear();
}

}  // namespace zorvex
