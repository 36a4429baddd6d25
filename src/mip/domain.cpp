#include "mip/domain.hpp"

#include <algorithm>
#include <cmath>

#include "mip/mip_tolerances.hpp"

namespace zorvex {

namespace {

// Effort of one propagate() call, in multiples of the model's nonzeros.
constexpr std::int64_t kPropagationEffort = 40;

}  // namespace

Domain::Domain(const SearchModel& model) : model_(&model) { reload(); }

void Domain::reload() {
  const auto n = static_cast<std::size_t>(model_->num_cols());
  const auto m = static_cast<std::size_t>(model_->num_rows());
  lower_ = model_->lp.col_lower;
  upper_ = model_->lp.col_upper;
  trail_.clear();
  level_start_.clear();
  row_queue_.clear();
  row_head_ = 0;
  sos_queue_.clear();
  literal_queue_.clear();
  row_queued_.assign(m, 0);
  sos_queued_.assign(model_->sos.size(), 0);
  changed_.clear();
  is_changed_.assign(n, 0);
  infeasible_ = false;
  activity_.assign(m, {});
  reach_.resize(m);
  for (Index row = 0; row < model_->num_rows(); ++row) {
    recompute_activity(row);
    reach_[row] = largest_reach(row);
  }
  cost_cols_.clear();
  for (Index col = 0; col < model_->num_cols(); ++col) {
    if (lower_[col] > upper_[col]) infeasible_ = true;
    if (model_->lp.cost[col] != 0) cost_cols_.push_back(col);
  }
  recompute_objective();
  objective_reach_ = 0;
  for (const Index col : cost_cols_) {
    objective_reach_ = std::max(objective_reach_, std::abs(model_->lp.cost[col]) * (upper_[col] - lower_[col]));
  }
  objective_queued_ = cutoff_ < kInf;
}

void Domain::set_cutoff(double limit) {
  cutoff_ = limit;
  objective_queued_ = limit < kInf;
}

void Domain::recompute_objective() {
  objective_ = {};
  for (const Index col : cost_cols_) {
    const double c = model_->lp.cost[col];
    const double bound = c > 0 ? lower_[col] : upper_[col];
    if (std::isinf(bound))
      ++objective_.min_inf;
    else
      objective_.min += c * bound;
  }
  work_.add(static_cast<std::int64_t>(cost_cols_.size()));
}

void Domain::queue_all() {
  for (Index row = 0; row < model_->num_rows(); ++row) {
    if (!row_queued_[row]) {
      row_queued_[row] = 1;
      row_queue_.push_back(row);
    }
  }
  for (std::size_t set = 0; set < model_->sos.size(); ++set) {
    if (!sos_queued_[set]) {
      sos_queued_[set] = 1;
      sos_queue_.push_back(static_cast<Index>(set));
    }
  }
}

bool Domain::fail() {
  infeasible_ = true;
  clear_queues();
  return false;
}

void Domain::clear_queues() {
  for (std::size_t k = row_head_; k < row_queue_.size(); ++k) row_queued_[row_queue_[k]] = 0;
  row_queue_.clear();
  row_head_ = 0;
  for (const Index set : sos_queue_) sos_queued_[set] = 0;
  sos_queue_.clear();
  literal_queue_.clear();
  objective_queued_ = false;
}

void Domain::mark_changed(Index col) {
  if (is_changed_[col]) return;
  is_changed_[col] = 1;
  changed_.push_back(col);
}

std::vector<Index> Domain::take_changed() {
  for (const Index col : changed_) is_changed_[col] = 0;
  std::vector<Index> result;
  result.swap(changed_);
  return result;
}

void Domain::recompute_activity(Index row) {
  Activity act;
  const SparseMatrix& rows = model_->rows;
  for (Offset k = rows.begin(row); k < rows.end(row); ++k) {
    const double a = rows.value[k];
    const Index col = rows.index[k];
    const double at_min = a > 0 ? lower_[col] : upper_[col];
    const double at_max = a > 0 ? upper_[col] : lower_[col];
    if (std::isinf(at_min))
      ++act.min_inf;
    else
      act.min += a * at_min;
    if (std::isinf(at_max))
      ++act.max_inf;
    else
      act.max += a * at_max;
  }
  activity_[row] = act;
  work_.add(rows.end(row) - rows.begin(row));
}

double Domain::largest_reach(Index row) const {
  const SparseMatrix& rows = model_->rows;
  double reach = 0;
  for (Offset k = rows.begin(row); k < rows.end(row); ++k) {
    const Index col = rows.index[k];
    reach = std::max(reach, std::abs(rows.value[k]) * (upper_[col] - lower_[col]));
  }
  return reach;
}

// False when even the variable with the largest reach leaves the row satisfied whatever the others do. Long covering
// and knapsack rows are mostly in this state; visiting them at every change would cost their length each time.
bool Domain::can_tighten(Index row) const {
  const Activity& act = activity_[row];
  const double row_lower = model_->lp.row_lower[row];
  const double row_upper = model_->lp.row_upper[row];
  const double margin = mip_tol::kRowFeasibility * std::max({1.0, std::abs(act.min), std::abs(act.max)});
  const bool upper_idle = std::isinf(row_upper) || (act.min_inf == 0 && act.min + reach_[row] <= row_upper + margin);
  const bool lower_idle = std::isinf(row_lower) || (act.max_inf == 0 && act.max - reach_[row] >= row_lower - margin);
  return !(upper_idle && lower_idle);
}

void Domain::update_activities(Index col, bool upper, double old_value, double new_value) {
  const SparseMatrix& cols = model_->lp.matrix;
  const bool old_inf = std::isinf(old_value);
  const bool new_inf = std::isinf(new_value);
  for (Offset k = cols.begin(col); k < cols.end(col); ++k) {
    const double a = cols.value[k];
    Activity& act = activity_[cols.index[k]];
    const bool on_max = (a > 0) == upper;
    double& finite = on_max ? act.max : act.min;
    Index& infinite = on_max ? act.max_inf : act.min_inf;
    if (old_inf)
      --infinite;
    else
      finite -= a * old_value;
    if (new_inf)
      ++infinite;
    else
      finite += a * new_value;
  }
  work_.add(cols.end(col) - cols.begin(col));
  const double c = model_->lp.cost[col];
  if (c == 0 || (c > 0) == upper) return;
  if (old_inf)
    --objective_.min_inf;
  else
    objective_.min -= c * old_value;
  if (new_inf)
    ++objective_.min_inf;
  else
    objective_.min += c * new_value;
}

void Domain::queue_col(Index col) {
  objective_queued_ = objective_queued_ || (cutoff_ < kInf && model_->lp.cost[col] != 0);
  const SparseMatrix& cols = model_->lp.matrix;
  for (Offset k = cols.begin(col); k < cols.end(col); ++k) {
    const Index row = cols.index[k];
    if (row_queued_[row]) continue;
    row_queued_[row] = 1;
    row_queue_.push_back(row);
  }
  for (std::size_t k = model_->sos_begin(col); k < model_->sos_end(col); ++k) {
    const Index set = model_->sos_list[k];
    if (sos_queued_[set]) continue;
    sos_queued_[set] = 1;
    sos_queue_.push_back(set);
  }
}

void Domain::move_bound(Index col, bool upper, double value) {
  double& bound = upper ? upper_[col] : lower_[col];
  update_activities(col, upper, bound, value);
  bound = value;
  mark_changed(col);
}

void Domain::change(Index col, bool upper, double value, Reason reason) {
  trail_.push_back({col, upper, reason, upper ? upper_[col] : lower_[col]});
  move_bound(col, upper, value);
  queue_col(col);
  if (model_->learned.empty() || !fixed(col) || !model_->binary(col)) return;
  const Literal lit = literal(col, value == 1);
  if (!model_->learned.of(lit).empty()) literal_queue_.push_back(lit);
}

bool Domain::tighten_lower(Index col, double value, Reason reason) {
  if (infeasible_) return false;
  if (model_->integral(col)) value = std::ceil(value - mip_tol::kIntegerRounding);
  if (!(value > lower_[col])) return true;
  if (value > upper_[col]) {
    const double slack = mip_tol::kBoundCross * std::max(1.0, std::abs(value));
    if (model_->integral(col) || value > upper_[col] + slack) return fail();
    value = upper_[col];
    if (!(value > lower_[col])) return true;
  }
  change(col, false, value, reason);
  return settle_gap(col, reason);
}

bool Domain::tighten_upper(Index col, double value, Reason reason) {
  if (infeasible_) return false;
  if (model_->integral(col)) value = std::floor(value + mip_tol::kIntegerRounding);
  if (!(value < upper_[col])) return true;
  if (value < lower_[col]) {
    const double slack = mip_tol::kBoundCross * std::max(1.0, std::abs(value));
    if (model_->integral(col) || value < lower_[col] - slack) return fail();
    value = lower_[col];
    if (!(value < upper_[col])) return true;
  }
  change(col, true, value, reason);
  return settle_gap(col, reason);
}

bool Domain::settle_gap(Index col, Reason reason) {
  if (!model_->has_gap(col)) return true;
  const double low = model_->gap_lower[col];
  const double high = model_->gap_upper[col];
  // A propagated bound a hair inside the gap is still the gap's end.
  const double hair = mip_tol::kContinuousRelax * 2 * std::max({1.0, std::abs(low), std::abs(high)});
  if (lower_[col] > low + hair && lower_[col] < high && !tighten_lower(col, high, reason)) return false;
  if (upper_[col] < high - hair && upper_[col] > low && !tighten_upper(col, low, reason)) return false;
  return true;
}

void Domain::backtrack(int level) {
  if (level >= this->level()) return;
  const std::size_t keep = level_start_[level];
  while (trail_.size() > keep) {
    const Entry& entry = trail_.back();
    move_bound(entry.col, entry.upper, entry.old_value);
    trail_.pop_back();
  }
  level_start_.resize(static_cast<std::size_t>(level));
  infeasible_ = false;
  clear_queues();
  objective_queued_ = cutoff_ < kInf;  // the cutoff may have come while deeper
}

std::vector<BoundChange> Domain::level_changes() const {
  std::vector<BoundChange> result;
  for (std::size_t k = level_start_.empty() ? 0 : level_start_.back(); k < trail_.size(); ++k) {
    const Entry& entry = trail_[k];
    result.push_back({entry.col, entry.upper, entry.upper ? upper_[entry.col] : lower_[entry.col]});
  }
  return result;
}

void Domain::row_changed(Index row) {
  recompute_activity(row);
  reach_[row] = largest_reach(row);
}

std::vector<BoundChange> Domain::relaxation_changes() const {
  std::vector<BoundChange> result;
  const std::size_t first = level_start_.empty() ? 0 : level_start_.back();
  for (std::size_t k = first; k < trail_.size(); ++k) {
    const Entry& entry = trail_[k];
    if (entry.reason != Reason::kRelaxation) continue;
    result.push_back({entry.col, entry.upper, entry.upper ? upper_[entry.col] : lower_[entry.col]});
  }
  return result;
}

bool Domain::propagate() {
  if (infeasible_) return fail();
  const std::int64_t limit =
      work_.total() + kPropagationEffort * (model_->lp.matrix.num_nonzeros() + model_->num_rows() + 1000);
  while (row_head_ < row_queue_.size() || !sos_queue_.empty() || !literal_queue_.empty() || objective_queued_) {
    if (work_.total() > limit) {
      clear_queues();
      break;
    }
    if (!literal_queue_.empty()) {
      const Literal lit = literal_queue_.back();
      literal_queue_.pop_back();
      if (!propagate_literal(lit)) return fail();
      continue;
    }
    if (!sos_queue_.empty()) {
      const Index set = sos_queue_.back();
      sos_queue_.pop_back();
      sos_queued_[set] = 0;
      if (!propagate_sos(set)) return fail();
      continue;
    }
    if (row_head_ == row_queue_.size()) {
      objective_queued_ = false;
      if (!propagate_objective()) return fail();
      continue;
    }
    const Index row = row_queue_[row_head_++];
    row_queued_[row] = 0;
    if (!propagate_row(row)) return fail();
  }
  row_queue_.clear();
  row_head_ = 0;
  return true;
}

bool Domain::propagate_row(Index row) {
  const double row_lower = model_->lp.row_lower[row];
  const double row_upper = model_->lp.row_upper[row];
  const Activity& stored = activity_[row];
  const bool upper_hopeless = std::isinf(row_upper) || stored.min_inf > 1;
  const bool lower_hopeless = std::isinf(row_lower) || stored.max_inf > 1;
  work_.add(1);
  if ((upper_hopeless && lower_hopeless) || !can_tighten(row)) return true;
  recompute_activity(row);
  const Activity act = activity_[row];
  const double upper_slack = mip_tol::kRowFeasibility * std::max(1.0, std::abs(row_upper));
  const double lower_slack = mip_tol::kRowFeasibility * std::max(1.0, std::abs(row_lower));
  if (act.min_inf == 0 && act.min > row_upper + upper_slack) return false;
  if (act.max_inf == 0 && act.max < row_lower - lower_slack) return false;
  const bool upper_redundant = upper_hopeless || (act.max_inf == 0 && act.max <= row_upper);
  const bool lower_redundant = lower_hopeless || (act.min_inf == 0 && act.min >= row_lower);
  if (upper_redundant && lower_redundant) return true;
  const SparseMatrix& rows = model_->rows;
  const double use_lower = lower_redundant ? -kInf : row_lower;
  const double use_upper = upper_redundant ? kInf : row_upper;
  for (Offset k = rows.begin(row); k < rows.end(row); ++k) {
    if (std::abs(rows.value[k]) < mip_tol::kTinyCoefficient || fixed(rows.index[k])) continue;
    if (!propagate_entry(rows.index[k], rows.value[k], use_lower, use_upper, act)) return false;
  }
  work_.add(rows.end(row) - rows.begin(row));
  return true;
}

bool Domain::propagate_objective() {
  if (cutoff_ == kInf || objective_.min_inf > 1) return true;
  if (objective_.min_inf == 0 && objective_.min + objective_reach_ <= cutoff_) return true;
  recompute_objective();
  const Activity act = objective_;
  const double slack = mip_tol::kObjectiveSlack * std::max(1.0, std::abs(cutoff_));
  if (act.min_inf == 0 && act.min > cutoff_ + slack) return false;
  for (const Index col : cost_cols_) {
    if (fixed(col) || std::abs(model_->lp.cost[col]) < mip_tol::kTinyCoefficient) continue;
    if (!propagate_entry(col, model_->lp.cost[col], -kInf, cutoff_ + slack, act)) return false;
  }
  work_.add(static_cast<std::int64_t>(cost_cols_.size()));
  return true;
}

// `act` is the row's activity when the visit began: bounds derived from it are valid, if weaker, after later changes.
bool Domain::propagate_entry(Index col, double coef, double row_lower, double row_upper, const Activity& act) {
  const double at_min = coef > 0 ? lower_[col] : upper_[col];
  const double at_max = coef > 0 ? upper_[col] : lower_[col];
  if (row_upper < kInf) {
    double rest = -kInf;
    if (std::isinf(at_min)) {
      if (act.min_inf == 1) rest = act.min;
    } else if (act.min_inf == 0) {
      rest = act.min - coef * at_min;
    }
    // Bounds tightened since `act` was taken make at_min larger than the term it holds: rest is then too small, safe.
    if (rest > -kInf) {
      const double value = (row_upper - rest) / coef;
      if (coef > 0 ? !derive_upper(col, value) : !derive_lower(col, value)) return false;
    }
  }
  if (row_lower > -kInf) {
    double rest = kInf;
    if (std::isinf(at_max)) {
      if (act.max_inf == 1) rest = act.max;
    } else if (act.max_inf == 0) {
      rest = act.max - coef * at_max;
    }
    if (rest < kInf) {
      const double value = (row_lower - rest) / coef;
      if (coef > 0 ? !derive_lower(col, value) : !derive_upper(col, value)) return false;
    }
  }
  return true;
}

bool Domain::derive_upper(Index col, double value) {
  if (model_->integral(col)) return value >= upper_[col] || tighten_upper(col, value, Reason::kPropagation);
  if (std::abs(value) > mip_tol::kHugeBound) return true;
  value += mip_tol::kContinuousRelax * std::max(1.0, std::abs(value));
  const double range = upper_[col] - lower_[col];
  const double gain = upper_[col] - value;
  const double least = mip_tol::kMinTighteningAbs * std::max(1.0, std::min(std::abs(upper_[col]), std::abs(value)));
  const bool crosses = value < lower_[col];
  if (!crosses &&
      !(std::isinf(upper_[col]) || (gain > least && (std::isinf(range) || gain > mip_tol::kMinTightening * range)))) {
    return true;
  }
  return tighten_upper(col, value, Reason::kPropagation);
}

bool Domain::derive_lower(Index col, double value) {
  if (model_->integral(col)) return value <= lower_[col] || tighten_lower(col, value, Reason::kPropagation);
  if (std::abs(value) > mip_tol::kHugeBound) return true;
  value -= mip_tol::kContinuousRelax * std::max(1.0, std::abs(value));
  const double range = upper_[col] - lower_[col];
  const double gain = value - lower_[col];
  const double least = mip_tol::kMinTighteningAbs * std::max(1.0, std::min(std::abs(lower_[col]), std::abs(value)));
  const bool crosses = value > upper_[col];
  if (!crosses &&
      !(std::isinf(lower_[col]) || (gain > least && (std::isinf(range) || gain > mip_tol::kMinTightening * range)))) {
    return true;
  }
  return tighten_lower(col, value, Reason::kPropagation);
}

bool Domain::propagate_literal(Literal lit) {
  for (const Index clique : model_->learned.of(lit)) {
    for (const Literal other : model_->learned.members(clique)) {
      if (other != lit && !fix(column_of(other), is_one(other) ? 0 : 1, Reason::kPropagation)) return false;
    }
    work_.add(static_cast<std::int64_t>(model_->learned.members(clique).size()));
  }
  return true;
}

// Members that must be nonzero leave only their neighbourhood free; the rest is fixed at zero.
bool Domain::propagate_sos(Index set_index) {
  const SosSet& set = model_->sos[set_index];
  const Index count = static_cast<Index>(set.member.size());
  Index first = count;
  Index last = -1;
  for (Index p = 0; p < count; ++p) {
    const Index col = set.member[p];
    if (lower_[col] > mip_tol::kContinuousRelax * 2 || upper_[col] < -mip_tol::kContinuousRelax * 2) {
      first = std::min(first, p);
      last = std::max(last, p);
    }
  }
  work_.add(count);
  if (last < 0) return true;
  const Index reach = set.type - 1;
  if (last - first > reach) return false;
  for (Index p = 0; p < count; ++p) {
    if (p >= last - reach && p <= first + reach) continue;
    if (!fix(set.member[p], 0, Reason::kPropagation)) return false;
  }
  return true;
}

void adopt_bounds(SearchModel& model, const Domain& domain) {
  for (Index col = 0; col < model.num_cols(); ++col) {
    if (!model.branchable[col] && !model.integral(col) && !domain.fixed(col)) continue;
    model.lp.col_lower[col] = domain.lower(col);
    model.lp.col_upper[col] = domain.upper(col);
  }
}

}  // namespace zorvex
