#include "mip/solution_check.hpp"

#include <algorithm>
#include <cmath>

#include "base/quality.hpp"
#include "mip/mip_tolerances.hpp"
#include "simplex/answer_check.hpp"

namespace zorvex {

SolutionChecker::SolutionChecker(const MipProblem& problem, const SimplexOptions& options, double integrality_tol)
    : model_(make_search_model(problem)), simplex_(options), integrality_tol_(integrality_tol) {
  simplex_.root_log = false;
}

SolutionChecker::~SolutionChecker() = default;

bool SolutionChecker::snap_set(const SosSet& set, std::vector<double>& x) const {
  const auto count = set.member.size();
  const auto width = static_cast<std::size_t>(set.type);
  std::size_t best = 0;
  double best_sum = -1;
  for (std::size_t p = 0; p + width <= count; ++p) {
    double sum = 0;
    for (std::size_t q = p; q < p + width; ++q) sum += std::abs(x[set.member[q]]);
    if (sum > best_sum) {
      best_sum = sum;
      best = p;
    }
  }
  for (std::size_t p = 0; p < count; ++p) {
    if (p >= best && p < best + width) continue;
    if (std::abs(x[set.member[p]]) > integrality_tol_) return false;
    x[set.member[p]] = 0;
  }
  return true;
}

bool SolutionChecker::snap(std::vector<double>& x) const {
  for (Index col = 0; col < model_.num_cols(); ++col) {
    double& value = x[col];
    if (std::isnan(value)) return false;
    if (model_.integer[col]) {
      const double rounded = std::round(value);
      if (std::abs(value - rounded) > integrality_tol_) return false;
      value = rounded == 0 ? 0 : rounded;
    }
    value = std::clamp(value, model_.lp.col_lower[col], model_.lp.col_upper[col]);
    if (!model_.has_gap(col)) continue;
    const double low = model_.gap_lower[col];
    const double high = model_.gap_upper[col];
    if (value <= low || value >= high) continue;
    if (std::min(value - low, high - value) > integrality_tol_) return false;
    value = value - low < high - value ? low : high;
  }
  return std::all_of(model_.sos.begin(), model_.sos.end(), [&](const SosSet& set) { return snap_set(set, x); });
}

double SolutionChecker::violation(const std::vector<double>& x) const {
  for (const Index col : model_.integer_cols) {
    if (std::abs(x[col] - std::round(x[col])) > integrality_tol_) return kInf;
  }
  for (const Index col : model_.gap_cols) {
    const double slack = std::min(simplex_.primal_feasibility_tol, model_.gap_upper[col] - model_.gap_lower[col]) / 2;
    if (x[col] > model_.gap_lower[col] + slack && x[col] < model_.gap_upper[col] - slack) return kInf;
  }
  for (const SosSet& set : model_.sos) {
    const auto nonzero = [&](Index col) { return x[col] != 0; };
    const auto first = std::find_if(set.member.begin(), set.member.end(), nonzero);
    const auto last = std::find_if(set.member.rbegin(), set.member.rend(), nonzero).base();
    if (first != set.member.end() && last - first > set.type) return kInf;
  }
  const PrimalQuality quality = measure_primal(view_of(model_.lp), x, {});
  return std::max(quality.bound.max, quality.row.max);
}

bool SolutionChecker::feasible(const std::vector<double>& x) const {
  return violation(x) <= simplex_.primal_feasibility_tol;
}

void SolutionChecker::restrict_to(const std::vector<double>& x, std::vector<double>& lower,
                                  std::vector<double>& upper) const {
  lower = model_.lp.col_lower;
  upper = model_.lp.col_upper;
  for (const Index col : model_.integer_cols) lower[col] = upper[col] = x[col];
  for (const Index col : model_.gap_cols) {
    if (model_.integer[col]) continue;
    if (x[col] <= model_.gap_lower[col]) upper[col] = model_.gap_lower[col];
    if (x[col] >= model_.gap_upper[col]) lower[col] = model_.gap_upper[col];
  }
  for (const SosSet& set : model_.sos) {
    // The window of members that may be nonzero: the nonzero ones, extended to the set's width.
    const auto count = set.member.size();
    std::size_t first = count;
    for (std::size_t p = 0; p < count; ++p) {
      if (x[set.member[p]] != 0) {
        first = p;
        break;
      }
    }
    first = std::min(first, count - static_cast<std::size_t>(set.type));
    for (std::size_t p = 0; p < count; ++p) {
      if (p >= first && p < first + static_cast<std::size_t>(set.type)) continue;
      lower[set.member[p]] = upper[set.member[p]] = 0;
    }
  }
}

Completion SolutionChecker::complete(std::vector<double>& x, const StopToken& stop) {
  std::vector<double> lower;
  std::vector<double> upper;
  restrict_to(x, lower, upper);
  return complete_within(lower, upper, x, stop);
}

Completion SolutionChecker::complete_within(const std::vector<double>& lower, const std::vector<double>& upper,
                                            std::vector<double>& x, const StopToken& stop) {
  if (!lp_) lp_ = std::make_unique<LpSolver>(model_.lp, simplex_, quiet_);
  const LpData& data = lp_->data();
  for (Index col = 0; col < model_.num_cols(); ++col) {
    if (lower[col] > upper[col]) return Completion::kInfeasible;
    if (data.col_lower[col] != lower[col] || data.col_upper[col] != upper[col]) {
      lp_->set_col_bounds(col, lower[col], upper[col]);
    }
  }
  SolveStatus status = lp_->solve({}, stop);
  if (status == SolveStatus::kNumeric) {
    lp_->reset_to_slack_basis();
    status = lp_->solve({}, stop);
  }
  if (status == SolveStatus::kInfeasible) return Completion::kInfeasible;
  if (status != SolveStatus::kOptimal) return Completion::kUnknown;
  x = lp_->point().x;
  std::vector<double> exact = x;
  if (snap(exact) && feasible(exact)) {
    x = std::move(exact);
    return Completion::kFeasible;
  }
  return feasible(x) ? Completion::kFeasible : Completion::kUnknown;
}

void SolutionChecker::add_rows(const std::vector<SideRow>& rows) {
  SparseMatrix added;
  added.num_rows = model_.num_cols();
  std::vector<double> lower;
  std::vector<double> upper;
  for (const SideRow& row : rows) {
    added.append_col(row.index.data(), row.value.data(), static_cast<Index>(row.index.size()));
    lower.push_back(row.lower);
    upper.push_back(row.upper);
  }
  model_.lp.matrix.append_rows(added);
  model_.rows = model_.lp.matrix.transpose();
  model_.lp.row_lower.insert(model_.lp.row_lower.end(), lower.begin(), lower.end());
  model_.lp.row_upper.insert(model_.lp.row_upper.end(), upper.begin(), upper.end());
  count_locks(model_);
  if (lp_) lp_->add_rows(added, lower, upper);
}

double SolutionChecker::objective(const std::vector<double>& x) const { return objective_at(model_.lp, x); }

double SolutionChecker::iterations() const { return lp_ ? lp_->total_iterations() : 0; }
double SolutionChecker::work() const { return lp_ ? lp_->work() : 0; }

}  // namespace zorvex
