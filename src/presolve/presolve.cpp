#include "presolve/presolve.hpp"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <optional>

#include "base/quality.hpp"
#include "base/tolerances.hpp"
#include "presolve/changes.hpp"
#include "presolve/line_shape.hpp"
#include "presolve/reduction.hpp"

namespace zorvex {
namespace {

constexpr int kAutomaticPasses = 20;
constexpr std::int64_t kWorkPerSize = 200;   // nonzeros touched, per row, column and nonzero of the original
constexpr int kPollInterval = 1024;          // rows and columns looked at between polls
constexpr double kWorthAnotherPass = 0.002;  // share of what is left that a pass must have removed
// Changes, as a share of the rows and columns left, before a reduction looks at the whole model again.
constexpr double kWorthAnotherRound = 0.002;
// The same for one that found less than kWorthAnotherRound the last time.
constexpr double kWorthSecondChance = 0.05;

}  // namespace

struct Presolve::State {
  State(const LpData& lp, const PresolveOptions& presolve_options) : original(lp), options(presolve_options) {}

  PresolveOutcome run(const StopToken& stop);
  Outcome run_passes(const StopToken& stop);
  Outcome run_dirty(const StopToken& stop);
  void choose_reductions();
  Outcome apply(Trigger trigger, Index target);
  [[nodiscard]] bool out_of_work();
  [[nodiscard]] bool nothing_new(std::size_t reduction) const;
  void note_look(std::size_t reduction, std::int64_t found);
  [[nodiscard]] double size_left() const;  // rows and columns
  [[nodiscard]] bool bounds_make_sense();
  void build_reduced();
  void build_proof();
  [[nodiscard]] PostsolvePoint empty_proof() const;
  [[nodiscard]] std::vector<double> lift_proof(PostsolvePoint&& point) const;
  [[nodiscard]] std::vector<double> lift_reduced_proof(const std::vector<double>& y) const;
  void place(PostsolvePoint& point) const;
  [[nodiscard]] PostsolvePoint expand(const PresolvePoint& point) const;
  [[nodiscard]] PresolvePoint finish(const PostsolvePoint& point) const;
  void undo_all(PostsolvePoint& point) const;

  const LpData& original;
  const bool is_quadratic = original.is_quadratic();
  PresolveOptions options;
  std::unique_ptr<PresolveModel> model;
  std::unique_ptr<Changes> changes;
  LpData reduced;
  LpData shaped;                   // `reduced` with rows or columns in another form
  std::optional<LineShape> shape;  // of `shaped`, when that is what gets solved
  PresolveStatistics statistics;
  std::vector<Index> original_cols, original_rows;
  std::vector<double> farkas;
  std::array<std::vector<std::size_t>, 3> active;  // per trigger: places in the registry of what may run
  std::vector<std::int64_t> looked_at;  // per reduction: steps when it last looked at the whole model, -1 never
  std::vector<char> idle;               // per reduction: hardly found anything then
  bool stopped = false;
};

bool Presolve::State::out_of_work() {
  const std::int64_t size = original.matrix.num_nonzeros() + original.num_rows() + original.num_cols();
  return changes->work().total() > kWorkPerSize * (size + 1000) || changes->steps() >= options.max_steps;
}

void Presolve::State::note_look(std::size_t reduction, std::int64_t found) {
  looked_at[reduction] = changes->steps();
  idle[reduction] = static_cast<double>(found) <= kWorthAnotherRound * size_left();
}

double Presolve::State::size_left() const {
  return static_cast<double>(model->num_rows()) + model->num_cols() - changes->rows_removed() - changes->cols_removed();
}

bool Presolve::State::nothing_new(std::size_t reduction) const {
  if (looked_at[reduction] < 0) return false;
  const double due = idle[reduction] ? kWorthSecondChance : kWorthAnotherRound;
  return static_cast<double>(changes->steps() - looked_at[reduction]) <= due * size_left();
}

void Presolve::State::choose_reductions() {
  const auto registry = reduction_registry();
  for (std::size_t k = 0; k < registry.size(); ++k) {
    const Reduction& reduction = *registry[k];
    if (reduction.dual && !options.dual_reductions) continue;
    if (reduction.linear_only && is_quadratic) continue;
    if (!options.only.empty() && options.only != reduction.name) continue;
    if (std::find(options.off.begin(), options.off.end(), reduction.name) != options.off.end()) continue;
    active[static_cast<std::size_t>(reduction.trigger)].push_back(k);
  }
}

// All reductions of the trigger on one target, until it is gone or one of them decides the model.
Outcome Presolve::State::apply(Trigger trigger, Index target) {
  bool changed = false;
  for (const std::size_t k : active[static_cast<std::size_t>(trigger)]) {
    const Reduction& reduction = *reduction_registry()[k];
    if (trigger == Trigger::kRound && nothing_new(k)) continue;
    if (trigger == Trigger::kColumn && model->is_quadratic(target) && &reduction != &kFixedColumn) continue;
    const std::int64_t steps = changes->steps();
    const Outcome outcome = reduction.find(*model, target, *changes);
    if (trigger == Trigger::kRound) note_look(k, changes->steps() - steps);
    if (outcome != Outcome::kNone) ++statistics.applied[k].count;
    if (outcome == Outcome::kInfeasible || outcome == Outcome::kUnbounded) return outcome;
    changed = changed || outcome == Outcome::kChanged;
    if (trigger == Trigger::kRow && !model->row_alive[target]) break;
    if (trigger == Trigger::kColumn && !model->col_alive[target]) break;
  }
  return changed ? Outcome::kChanged : Outcome::kNone;
}

Outcome Presolve::State::run_dirty(const StopToken& stop) {
  for (int seen = 1; !out_of_work(); ++seen) {
    if (seen % kPollInterval == 0 && stop.stop_requested()) {
      stopped = true;
      break;
    }
    Trigger trigger = Trigger::kRow;
    Index target = changes->dirty_rows().pop();
    if (target < 0) {
      trigger = Trigger::kColumn;
      target = changes->dirty_cols().pop();
      if (target < 0) break;
    }
    changes->work().add(1);
    if (!(trigger == Trigger::kRow ? model->row_alive[target] : model->col_alive[target])) continue;
    const Outcome outcome = apply(trigger, target);
    if (outcome == Outcome::kInfeasible || outcome == Outcome::kUnbounded) return outcome;
  }
  return Outcome::kNone;
}

Outcome Presolve::State::run_passes(const StopToken& stop) {
  const int passes = options.max_passes < 0 ? kAutomaticPasses : options.max_passes;
  while (statistics.passes < passes && !stopped && !out_of_work()) {
    ++statistics.passes;
    const Index before = changes->rows_removed() + changes->cols_removed();
    for (Index row = 0; row < model->num_rows(); ++row) changes->dirty_rows().push(row);
    for (Index col = 0; col < model->num_cols(); ++col) changes->dirty_cols().push(col);
    Outcome outcome = run_dirty(stop);
    if (outcome == Outcome::kNone && !stopped) outcome = apply(Trigger::kRound, -1);
    if (outcome == Outcome::kInfeasible || outcome == Outcome::kUnbounded) return outcome;
    if (outcome == Outcome::kChanged) outcome = run_dirty(stop);
    if (outcome == Outcome::kInfeasible || outcome == Outcome::kUnbounded) return outcome;
    if (stop.hooks() != nullptr) stop.hooks()->presolve({changes->rows_removed(), changes->cols_removed()});
    const Index removed = changes->rows_removed() + changes->cols_removed() - before;
    const Index left = model->num_rows() + model->num_cols() - before;
    if (removed <= kWorthAnotherPass * left) break;
  }
  return Outcome::kNone;
}

// Crossing sides are infeasible beyond the tolerance; within it they are made to meet.
bool Presolve::State::bounds_make_sense() {
  const double tolerance = options.primal_feasibility_tol;
  for (Index row = 0; row < model->num_rows(); ++row) {
    double& lower = model->row_lower[row];
    double& upper = model->row_upper[row];
    if (lower - upper > tolerance || lower == kInf || upper == -kInf) {
      changes->prove(row, 1);
      return false;
    }
    if (lower > upper) lower = upper = lower + (upper - lower) / 2;
  }
  for (Index col = 0; col < model->num_cols(); ++col) {
    const double lower = model->col_lower[col];
    const double upper = model->col_upper[col];
    if (lower - upper > tolerance || lower == kInf || upper == -kInf) return false;
    if (lower > upper) changes->set_col_bounds(col, lower + (upper - lower) / 2, lower + (upper - lower) / 2);
  }
  return true;
}

PresolveOutcome Presolve::State::run(const StopToken& stop) {
  model = std::make_unique<PresolveModel>(original, options);
  changes = std::make_unique<Changes>(*model);
  for (const Reduction* reduction : reduction_registry()) statistics.applied.push_back({reduction->name, 0});
  looked_at.assign(statistics.applied.size(), -1);
  idle.assign(statistics.applied.size(), 0);
  choose_reductions();
  if (!bounds_make_sense()) {
    build_proof();
    return PresolveOutcome::kInfeasible;
  }
  Outcome outcome = Outcome::kNone;
  if (options.level != 0 && original.matrix.num_nonzeros() < std::numeric_limits<Index>::max() / 2) {
    outcome = run_passes(stop);
  }
  if (outcome == Outcome::kInfeasible) {
    build_proof();
    return PresolveOutcome::kInfeasible;
  }
  if (outcome == Outcome::kUnbounded) return PresolveOutcome::kUnbounded;
  if (stopped) return PresolveOutcome::kStopped;
  build_reduced();
  model->forget_matrix();
  if (options.longest_row > 0 || options.longest_col > 0 || options.power_scaling) {
    shaped = reduced;
    shape.emplace(shaped, options.longest_row, options.longest_col, options.power_scaling);
  }
  return reduced.num_rows() + reduced.num_cols() == 0 ? PresolveOutcome::kAllRemoved : PresolveOutcome::kReduced;
}

void Presolve::State::build_reduced() {
  std::vector<Index> new_row(static_cast<std::size_t>(model->num_rows()), -1);
  for (Index row = 0; row < model->num_rows(); ++row) {
    if (!model->row_alive[row]) continue;
    new_row[row] = static_cast<Index>(original_rows.size());
    original_rows.push_back(row);
    reduced.row_lower.push_back(model->row_lower[row]);
    reduced.row_upper.push_back(model->row_upper[row]);
  }
  reduced.matrix.num_rows = static_cast<Index>(original_rows.size());
  std::vector<Index> rows;
  std::vector<double> values;
  for (Index col = 0; col < model->num_cols(); ++col) {
    if (!model->col_alive[col]) continue;
    rows.clear();
    values.clear();
    for (const auto& entry : model->matrix.col(col)) {
      rows.push_back(new_row[entry.row]);
      values.push_back(entry.value);
    }
    reduced.matrix.append_col(rows.data(), values.data(), static_cast<Index>(rows.size()));
    original_cols.push_back(col);
    reduced.cost.push_back(model->cost[col]);
    reduced.col_lower.push_back(model->col_lower[col]);
    reduced.col_upper.push_back(model->col_upper[col]);
  }
  reduced.offset = static_cast<double>(model->offset);
  if (is_quadratic) {
    SparseMatrix q = original.quadratic;
    q.compress(model->col_alive.data(), model->col_alive.data());
    const bool still_is = q.num_nonzeros() > 0 || original.quadratic.num_nonzeros() == 0;
    if (still_is) reduced.quadratic = std::move(q);
  }
  statistics.rows_removed = original.num_rows() - reduced.num_rows();
  statistics.cols_removed = original.num_cols() - reduced.num_cols();
  statistics.nonzeros_removed = original.matrix.num_nonzeros() - reduced.matrix.num_nonzeros();
}

// The reduced point in original indices, with zeros for what is not there yet.
PostsolvePoint Presolve::State::expand(const PresolvePoint& point) const {
  assert(static_cast<Index>(point.x.size()) == reduced.num_cols());
  assert(static_cast<Index>(point.pi.size()) == reduced.num_rows());
  PostsolvePoint full;
  const auto rows = static_cast<std::size_t>(original.num_rows());
  const auto cols = static_cast<std::size_t>(original.num_cols());
  full.x.assign(cols, 0);
  full.reduced_cost.assign(cols, 0);
  full.col_status.assign(cols, BasisStatus::kNonbasicFree);
  full.pi.assign(rows, 0);
  full.activity.assign(rows, 0);
  full.row_status.assign(rows, BasisStatus::kBasic);
  full.exact_basis = point.exact_basis;
  full.interior = point.basis.col.empty() && reduced.num_cols() > 0;
  if (is_quadratic) full.quadratic = &model->quadratic;
  for (std::size_t k = 0; k < original_rows.size(); ++k) {
    full.pi[original_rows[k]] = point.pi[k];
    full.row_status[original_rows[k]] = point.basis.row.empty() ? BasisStatus::kBasic : point.basis.row[k];
  }
  for (Index j = 0; j < reduced.num_cols(); ++j) full.x[original_cols[j]] = point.x[j];
  for (Index j = 0; j < reduced.num_cols(); ++j) {
    const Index col = original_cols[j];
    full.col_status[col] = point.basis.col.empty() ? BasisStatus::kNonbasicFree : point.basis.col[j];
    Extended d = full.gradient(col, reduced.cost[j]);
    for (Offset k = reduced.matrix.begin(j); k < reduced.matrix.end(j); ++k) {
      const Index row = original_rows[reduced.matrix.index[k]];
      full.activity[row] += Extended(reduced.matrix.value[k]) * point.x[j];
      d -= Extended(reduced.matrix.value[k]) * full.pi[row];
    }
    full.reduced_cost[col] = full.col_status[col] == BasisStatus::kBasic ? 0 : static_cast<double>(d);
  }
  if (full.interior) place(full);
  return full;
}

// By the signs of the multipliers: what a removed row or column has taken part in goes back to it, and the products
// with the distances to bounds and sides add up to the same sum.
void Presolve::State::place(PostsolvePoint& point) const {
  const auto placed = [](double lower, double upper, double dual, BasisStatus between) {
    return dual > 0 && lower > -kInf  ? BasisStatus::kAtLower
           : dual < 0 && upper < kInf ? BasisStatus::kAtUpper
                                      : between;
  };
  for (Index j = 0; j < reduced.num_cols(); ++j) {
    point.col_status[original_cols[j]] = placed(reduced.col_lower[j], reduced.col_upper[j],
                                                point.reduced_cost[original_cols[j]], BasisStatus::kNonbasicFree);
  }
  for (Index i = 0; i < reduced.num_rows(); ++i) {
    point.row_status[original_rows[i]] =
        placed(reduced.row_lower[i], reduced.row_upper[i], point.pi[original_rows[i]], BasisStatus::kBasic);
  }
}

void Presolve::State::undo_all(PostsolvePoint& point) const {
  const UndoLog& log = changes->log();
  for (std::size_t record = log.size(); record-- > 0;) {
    UndoReader reader = log.reader(record);
    log.reduction(record).undo(reader, point);
  }
}

// Activities and reduced costs afresh from the original data: what undo steps carried along has rounding in it.
PresolvePoint Presolve::State::finish(const PostsolvePoint& point) const {
  PresolvePoint result;
  result.x = point.x;
  result.pi = point.pi;
  result.basis.col = point.col_status;
  result.basis.row = point.row_status;
  result.exact_basis = point.exact_basis;
  std::vector<Extended> activity(point.pi.size(), 0);
  for (Index col = 0; col < original.num_cols(); ++col) {
    Extended d = point.gradient(col, original.cost[col]);
    for (Offset k = original.matrix.begin(col); k < original.matrix.end(col); ++k) {
      const Index row = original.matrix.index[k];
      activity[row] += Extended(original.matrix.value[k]) * point.x[col];
      d -= Extended(original.matrix.value[k]) * point.pi[row];
    }
    result.reduced_cost.push_back(static_cast<double>(d));
  }
  for (const Extended value : activity) result.row_activity.push_back(static_cast<double>(value));
  return result;
}

PostsolvePoint Presolve::State::empty_proof() const {
  PostsolvePoint point;
  const auto rows = static_cast<std::size_t>(original.num_rows());
  const auto cols = static_cast<std::size_t>(original.num_cols());
  point.farkas = true;
  point.x.assign(cols, 0);
  point.reduced_cost.assign(cols, 0);
  point.col_status.assign(cols, BasisStatus::kBasic);
  point.pi.assign(rows, 0);
  point.activity.assign(rows, 0);
  point.row_status.assign(rows, BasisStatus::kBasic);
  return point;
}

namespace {

void set_multiplier(PostsolvePoint& point, Index row, double multiplier) {
  point.pi[row] = multiplier;
  if (multiplier != 0) point.row_status[row] = side_of_sign(multiplier);
}

void take_off(double& reduced_cost, double term) {
  const double rest = reduced_cost - term;
  reduced_cost = std::abs(rest) <= PresolveTolerances::kCancel * std::abs(term) ? 0 : rest;
}

}  // namespace

// `point` has the multipliers of the rows that are left and what they make of the reduced costs: carried back like the
// duals of a model with zero cost.
std::vector<double> Presolve::State::lift_proof(PostsolvePoint&& point) const {
  for (Index col = 0; col < original.num_cols(); ++col) {
    if (point.reduced_cost[col] != 0) point.col_status[col] = side_of_sign(point.reduced_cost[col]);
  }
  undo_all(point);
  return std::move(point.pi);
}

std::vector<double> Presolve::State::lift_reduced_proof(const std::vector<double>& y) const {
  PostsolvePoint point = empty_proof();
  for (Index row = 0; row < reduced.num_rows(); ++row) set_multiplier(point, original_rows[row], y[row]);
  for (Index col = 0; col < reduced.num_cols(); ++col) {
    for (Offset k = reduced.matrix.begin(col); k < reduced.matrix.end(col); ++k) {
      take_off(point.reduced_cost[original_cols[col]], reduced.matrix.value[k] * y[reduced.matrix.index[k]]);
    }
  }
  return lift_proof(std::move(point));
}

// Kept only if the original data confirm it.
void Presolve::State::build_proof() {
  if (changes->proof().empty()) return;
  PostsolvePoint point = empty_proof();
  for (const auto& [row, multiplier] : changes->proof()) {
    set_multiplier(point, row, multiplier);
    for (const auto& entry : model->matrix.row(row)) {
      take_off(point.reduced_cost[entry.col], entry.value * multiplier);
    }
  }
  std::vector<double> y = lift_proof(std::move(point));
  const ProblemView view{original.num_rows(),          original.num_cols(),          original.matrix.start.data(),
                         original.matrix.index.data(), original.matrix.value.data(), original.cost.data(),
                         original.col_lower.data(),    original.col_upper.data(),    original.row_lower.data(),
                         original.row_upper.data()};
  if (farkas_gap(view, y, PresolveTolerances::kProofDrop) > 0) farkas = std::move(y);
}

Presolve::Presolve(const LpData& original, const PresolveOptions& options)
    : state_(std::make_unique<State>(original, options)) {}
Presolve::~Presolve() = default;

PresolveOutcome Presolve::run(const StopToken& stop) { return state_->run(stop); }
const LpData& Presolve::reduced() const { return state_->shape ? state_->shaped : state_->reduced; }
const PresolveStatistics& Presolve::statistics() const { return state_->statistics; }
const std::vector<Index>& Presolve::original_cols() const { return state_->original_cols; }
const std::vector<Index>& Presolve::original_rows() const { return state_->original_rows; }
const std::vector<double>& Presolve::farkas() const { return state_->farkas; }

std::vector<double> Presolve::postsolve_farkas(const std::vector<double>& y) const {
  return state_->lift_reduced_proof(state_->shape ? state_->shape->plain_multipliers(y) : y);
}

PresolvePoint Presolve::postsolve(const PresolvePoint& point) const {
  PostsolvePoint full = state_->expand(state_->shape ? state_->shape->plain_point(point) : point);
  state_->undo_all(full);
  return state_->finish(full);
}

}  // namespace zorvex
