#include "mip/prepare.hpp"

#include <algorithm>
#include <cmath>

#include "mip/cancel_equations.hpp"
#include "mip/domain.hpp"
#include "mip/grids.hpp"
#include "mip/mip_tolerances.hpp"
#include "mip/probing.hpp"
#include "mip/row_cliques.hpp"

namespace zorvex {

namespace {

constexpr int kRounds = 4;
constexpr std::int64_t kProbingBase = 2000000;  // effort of a round of probing, and per nonzero of the model
constexpr std::int64_t kProbingPerNonzero = 100;
constexpr std::int64_t kCancelBase = 1000000;  // effort of cancelling with equations, and per nonzero of the model
constexpr std::int64_t kCancelPerNonzero = 20;

// Euclid on doubles that hold whole numbers; gcd(0, b) = b.
double whole_gcd(double a, double b) {
  while (b != 0) {
    const double rest = std::fmod(a, b);
    a = b;
    b = rest;
  }
  return a;
}

// Tightens the rows of one model in place. Only bounds that the relaxation itself carries may be used, or a tightened
// row could lose the right to the bound it rests on: bounds of continuous columns that were merely derived are first
// written into the model when a row gains from them.
class RowTightener {
 public:
  RowTightener(SearchModel& model, const Domain& domain, const StopToken& stop)
      : model_(model), domain_(domain), stop_(stop), keep_(static_cast<std::size_t>(model.num_rows()), 1) {}

  // False when a row cannot be satisfied.
  bool run();
  [[nodiscard]] bool changed() const { return changed_; }

 private:
  bool tighten_row(Index row);
  bool round_row(Index row);
  void drop_redundant_sides(Index row);
  void tighten_coefficients(Index row, int side);
  bool gains_from_derived_bounds(Index row, int side) const;
  void adopt_bounds(Index row, int side);
  [[nodiscard]] double max_activity(Index row, int side, bool derived) const;

  SearchModel& model_;
  const Domain& domain_;
  const StopToken& stop_;
  std::vector<char> keep_;
  bool changed_ = false;
};

bool RowTightener::run() {
  bool any_dropped = false;
  for (Index row = 0; row < model_.num_rows(); ++row) {
    if (row % 1024 == 0 && stop_.stop_requested()) break;  // the rows done so far stand on their own
    if (!tighten_row(row)) return false;
    any_dropped = any_dropped || !keep_[row];
  }
  if (!changed_) return true;
  if (any_dropped) {
    model_.rows.compress(nullptr, keep_.data());
    std::size_t out = 0;
    for (std::size_t row = 0; row < keep_.size(); ++row) {
      if (!keep_[row]) continue;
      model_.lp.row_lower[out] = model_.lp.row_lower[row];
      model_.lp.row_upper[out++] = model_.lp.row_upper[row];
    }
    model_.lp.row_lower.resize(out);
    model_.lp.row_upper.resize(out);
  }
  model_.lp.matrix = model_.rows.transpose();
  return true;
}

bool RowTightener::tighten_row(Index row) {
  if (!round_row(row)) return false;
  drop_redundant_sides(row);
  if (!keep_[row]) return true;
  const bool has_lower = model_.lp.row_lower[row] > -kInf;
  const bool has_upper = model_.lp.row_upper[row] < kInf;
  if (has_lower == has_upper) return true;
  const int side = has_upper ? 1 : -1;
  if (gains_from_derived_bounds(row, side)) adopt_bounds(row, side);
  tighten_coefficients(row, side);
  return true;
}

// Activity of side * row at its largest, over the bounds of the model or the derived ones.
double RowTightener::max_activity(Index row, int side, bool derived) const {
  double sum = 0;
  for (Offset k = model_.rows.begin(row); k < model_.rows.end(row); ++k) {
    const double a = side * model_.rows.value[k];
    const Index col = model_.rows.index[k];
    const double bound = derived ? (a > 0 ? domain_.upper(col) : domain_.lower(col))
                                 : (a > 0 ? model_.lp.col_upper[col] : model_.lp.col_lower[col]);
    if (std::isinf(bound)) return kInf;
    sum += a * bound;
  }
  return sum;
}

void RowTightener::drop_redundant_sides(Index row) {
  double& lower = model_.lp.row_lower[row];
  double& upper = model_.lp.row_upper[row];
  if (lower == upper) {
    if (model_.rows.col_length(row) == 0 && lower == 0) keep_[row] = 0, changed_ = true;
    return;
  }
  if (upper < kInf) {
    const double slack = mip_tol::kRedundantRow * std::max(1.0, std::abs(upper));
    if (max_activity(row, 1, false) <= upper + slack) upper = kInf, changed_ = true;
  }
  if (lower > -kInf) {
    const double slack = mip_tol::kRedundantRow * std::max(1.0, std::abs(lower));
    if (max_activity(row, -1, false) <= -lower + slack) lower = -kInf, changed_ = true;
  }
  if (lower == -kInf && upper == kInf) keep_[row] = 0, changed_ = true;
}

// A row of integer columns whose coefficients are multiples of g has activities that are multiples of g.
bool RowTightener::round_row(Index row) {
  double gcd = 0;
  double shift = 0;
  for (Offset k = model_.rows.begin(row); k < model_.rows.end(row); ++k) {
    const Index col = model_.rows.index[k];
    const double a = std::abs(model_.rows.value[k]);
    if (model_.lp.col_lower[col] == model_.lp.col_upper[col]) {
      shift += model_.rows.value[k] * model_.lp.col_lower[col];
      continue;
    }
    if (!model_.integral(col) || a != std::round(a) || a > mip_tol::kHugeBound) return true;
    gcd = whole_gcd(gcd, a);
  }
  if (gcd == 0) return true;
  double& lower = model_.lp.row_lower[row];
  double& upper = model_.lp.row_upper[row];
  const bool equality = lower == upper;
  const double new_lower = lower == -kInf ? lower : gcd * std::ceil((lower - shift) / gcd - mip_tol::kIntegerRounding);
  const double new_upper = upper == kInf ? upper : gcd * std::floor((upper - shift) / gcd + mip_tol::kIntegerRounding);
  if (new_lower > new_upper) return false;
  if (equality) return true;
  if (new_lower + shift > lower + mip_tol::kRowFeasibility) lower = new_lower + shift, changed_ = true;
  if (new_upper + shift < upper - mip_tol::kRowFeasibility) upper = new_upper + shift, changed_ = true;
  return true;
}

bool RowTightener::gains_from_derived_bounds(Index row, int side) const {
  const double derived = max_activity(row, side, true);
  if (std::isinf(derived)) return false;
  const double own = max_activity(row, side, false);
  const double rhs = side > 0 ? model_.lp.row_upper[row] : -model_.lp.row_lower[row];
  if (!(own > derived + mip_tol::kCoefficientGain * std::max(1.0, std::abs(derived)))) return false;
  for (Offset k = model_.rows.begin(row); k < model_.rows.end(row); ++k) {
    const double a = std::abs(model_.rows.value[k]);
    if (model_.integer[model_.rows.index[k]] && derived - a < rhs - mip_tol::kCoefficientGain * a) return true;
  }
  return false;
}

void RowTightener::adopt_bounds(Index row, int side) {
  for (Offset k = model_.rows.begin(row); k < model_.rows.end(row); ++k) {
    const double a = side * model_.rows.value[k];
    const Index col = model_.rows.index[k];
    if (model_.branchable[col]) continue;
    if (a > 0) {
      model_.lp.col_upper[col] = std::min(model_.lp.col_upper[col], domain_.upper(col));
    } else {
      model_.lp.col_lower[col] = std::max(model_.lp.col_lower[col], domain_.lower(col));
    }
  }
  changed_ = true;
}

// side * row <= rhs: where the row is redundant as soon as an integer column leaves its worst bound, coefficient and
// right-hand side shrink together so that the row just stays redundant there.
void RowTightener::tighten_coefficients(Index row, int side) {
  double activity = max_activity(row, side, false);
  if (std::isinf(activity)) return;
  double rhs = side > 0 ? model_.lp.row_upper[row] : -model_.lp.row_lower[row];
  bool row_changed = false;
  for (Offset k = model_.rows.begin(row); k < model_.rows.end(row); ++k) {
    const Index col = model_.rows.index[k];
    const double a = side * model_.rows.value[k];
    if (!model_.integer[col] || model_.lp.col_lower[col] == model_.lp.col_upper[col]) continue;
    const double delta = rhs - (activity - std::abs(a));
    const double room = std::abs(a) - delta;  // activity - rhs: what is left of the coefficient
    if (delta <= mip_tol::kCoefficientGain * std::abs(a) || room <= mip_tol::kRowFeasibility) continue;
    const double bound = a > 0 ? model_.lp.col_upper[col] : model_.lp.col_lower[col];
    const double shift = a > 0 ? delta : -delta;
    model_.rows.value[k] = side * (a - shift);
    rhs -= shift * bound;
    activity -= shift * bound;
    row_changed = true;
  }
  if (!row_changed) return;
  changed_ = true;
  if (side > 0) {
    model_.lp.row_upper[row] = rhs;
  } else {
    model_.lp.row_lower[row] = -rhs;
  }
}

Index count_fixed(const SearchModel& model) {
  Index fixed = 0;
  for (Index col = 0; col < model.num_cols(); ++col) fixed += model.lp.col_lower[col] == model.lp.col_upper[col];
  return fixed;
}

// False when infeasible.
bool tighten_to_fixed_point(SearchModel& model, const StopToken& stop) {
  for (int round = 0; round < kRounds && !stop.stop_requested(); ++round) {
    Domain domain(model);
    domain.queue_all();
    if (!domain.propagate()) return false;
    adopt_bounds(model, domain);
    RowTightener tightener(model, domain, stop);
    if (!tightener.run()) return false;
    if (!tightener.changed()) break;
  }
  return true;
}

void rebuild_cliques(SearchModel& model) {
  CliqueTable& table = model.cliques;
  table.reset(model.num_cols());
  add_row_cliques(model, table);
  for (Index clique = 0; clique < model.learned.count(); ++clique) table.add(model.learned.members(clique));
  table.index();
  if (model.learned.empty()) model.learned.reset(model.num_cols());
}

}  // namespace

PrepareOptions prepare_options(const MipOptions& options) {
  PrepareOptions result;
  result.keep_all_solutions = options.keep_all_solutions;
  if (options.presolve == 0) {
    result.probing_rounds = 0;
    result.cancel_with_equations = false;
  }
  if (options.sub_mip) result.probing_rounds = std::min(result.probing_rounds, 1);
  return result;
}

Preparation prepare(SearchModel& model, const PrepareOptions& options, const StopToken& stop) {
  Preparation result;
  const Index fixed_before = count_fixed(model);
  result.infeasible = !tighten_to_fixed_point(model, stop);
  if (options.cancel_with_equations && !result.infeasible) {
    const std::int64_t effort = kCancelBase + kCancelPerNonzero * model.lp.matrix.num_nonzeros();
    if (cancel_with_equations(model, effort, stop) > 0) result.infeasible = !tighten_to_fixed_point(model, stop);
  }
  for (int round = 0; round < options.probing_rounds && !result.infeasible && !stop.stop_requested(); ++round) {
    rebuild_cliques(model);
    const std::int64_t effort = kProbingBase + kProbingPerNonzero * model.lp.matrix.num_nonzeros();
    const ProbingResult found = probe_binaries(model, effort, stop);
    result.infeasible = found.infeasible || !tighten_to_fixed_point(model, stop);
    if (found.fixed + found.tightened + found.strengthened == 0) break;
  }
  if (result.infeasible) return result;
  rebuild_cliques(model);
  find_grids(model, options.keep_all_solutions);
  count_locks(model);
  result.fixed = count_fixed(model) - fixed_before;
  return result;
}

}  // namespace zorvex
