#include "barrier/interior_point.hpp"

#include <algorithm>
#include <cmath>

#include "base/tolerances.hpp"

namespace zorvex {

namespace {

// Centrality correctors aim at products within these factors of the target.
constexpr double kProductFloor = 0.1;
constexpr double kProductCeiling = 10;
constexpr double kCorrectorReach = 0.3;    // longer steps than these are asked of a corrector ...
constexpr double kCorrectorGain = 0.1;     // ... which must deliver this share of what was asked
constexpr double kStepAccuracy = 1e-2;     // residual of a Newton step against that of the point
constexpr double kShareOfTolerance = 0.5;  // of the feasibility tolerances, aimed at
constexpr double kNegligibleGap = 1e-2;    // share of the gap that convergence allows
constexpr double kLeastGoal = 1e-4;        // of the goals for residuals: no step gets below that
constexpr double kManySolves = 12;         // with one factor, in one iteration
constexpr double kLeastShift = 1e-2;       // of the starting point from the bounds and of its duals from zero
constexpr double kPoorStep = 0.1;          // steps shorter than this ask for another weight of the corrector ...
constexpr int kWeights = 9;                // ... which is the best of these
constexpr double kShortStep = 0.5;         // steps shorter than this ...
constexpr int kLeastCorrectors = 2;        // ... get so many centrality correctors, however cheap a factorization is
constexpr double kLongestStep = 1.1;       // worth knowing: a share of it is still a full step
constexpr double kUnsolvedShift = 1;       // as kLeastShift, for a start that no equations were solved for

// to + weight * (corrected - to), into `to`.
void blend(std::vector<double>& to, const std::vector<double>& corrected, double weight) {
  for (std::size_t k = 0; k < to.size(); ++k) to[k] += weight * (corrected[k] - to[k]);
}

double largest_magnitude(const std::vector<double>& values) {
  double largest = 0;
  for (const double value : values) largest = std::max(largest, std::abs(value));
  return largest;
}

// The starting point need not be exact.
NewtonSystem::Goal start_goal(const std::vector<double>& r1, const std::vector<double>& r2) {
  return {1e-6 * std::max(1.0, largest_magnitude(r1)), 1e-6 * std::max(1.0, largest_magnitude(r2))};
}

void add(std::vector<double>& to, const std::vector<double>& d, double step) {
  for (std::size_t k = 0; k < to.size(); ++k) to[k] += step * d[k];
}

double longest(const std::vector<double>& at, const std::vector<double>& d, double step) {
  for (std::size_t k = 0; k < at.size(); ++k) {
    if (d[k] < 0 && at[k] + step * d[k] < 0) step = -at[k] / d[k];
  }
  return step;
}

// The same along d + weight * (corrected - d).
double longest(const std::vector<double>& at, const std::vector<double>& d, const std::vector<double>& corrected,
               double weight, double step) {
  for (std::size_t k = 0; k < at.size(); ++k) {
    const double blended = d[k] + weight * (corrected[k] - d[k]);
    if (blended < 0 && at[k] + step * blended < 0) step = -at[k] / blended;
  }
  return step;
}

}  // namespace

double Progress::merit(const Tolerances& tolerances) const {
  const auto distance = [](double absolute, double relative, double tolerance) {
    return std::min(absolute / (kShareOfTolerance * tolerance), relative / BarrierTolerances::kResidual);
  };
  return std::max({distance(primal_residual, relative_primal, tolerances.primal),
                   distance(dual_residual, relative_dual, tolerances.dual),
                   relative_gap / std::max(tolerances.gap, 1e-16)});
}

bool Progress::within(const Tolerances& tolerances) const {
  return primal_residual <= kShareOfTolerance * tolerances.primal &&
         dual_residual <= kShareOfTolerance * tolerances.dual;
}

double Progress::worst() const { return std::max({relative_primal, relative_dual, relative_gap}); }

InteriorPointMethod::InteriorPointMethod(const BarrierModel& model, NewtonSystem& newton, const BarrierOptions& options)
    : model_(model),
      newton_(newton),
      options_(options),
      step_share_(options.loose_steps ? BarrierTolerances::kStepToBoundary : kCautiousShare),
      regularization_(BarrierTolerances::kRegularization) {
  const auto cols = static_cast<std::size_t>(model.num_cols());
  const auto rows = static_cast<std::size_t>(model.num_rows());
  for (auto* part : {&iterate_.v, &iterate_.below, &iterate_.above, &iterate_.low, &iterate_.up, &theta_, &r1_,
                     &zero_residuals_.dual, &zero_residuals_.below, &zero_residuals_.above}) {
    part->assign(cols, 0);
  }
  iterate_.y.assign(rows, 0);
  zero_residuals_.primal.assign(rows, 0);
  residuals_ = zero_residuals_;
  for (Index j = 0; j < model.num_cols(); ++j) num_products_ += (has_lower(j) ? 1 : 0) + (has_upper(j) ? 1 : 0);
  for (Index i = 0; i < model.num_rows(); ++i) {
    rhs_norm_ = std::max(rhs_norm_, std::abs(model.rhs[i]) / model.row_scale[i]);
    const Index slack = model.slack_of_row[i];
    if (slack < 0) continue;
    for (const double side : {model.lower[slack], model.upper[slack]}) {
      if (std::isfinite(side)) rhs_norm_ = std::max(rhs_norm_, std::abs(side) * model.col_scale[slack]);
    }
  }
  for (Index j = 0; j < model.num_structurals; ++j) {
    cost_norm_ = std::max(cost_norm_, std::abs(model.cost[j]) * model.objective_scale / model.col_scale[j]);
  }
  double largest_rhs = 1;
  for (const double value : model.rhs) largest_rhs = std::max(largest_rhs, std::abs(value));
  primal_goal_ = BarrierTolerances::kStepGoal * largest_rhs;
  dual_goal_ = BarrierTolerances::kStepGoal;
}

void InteriorPointMethod::be_cautious() {
  step_share_ = kCautiousShare;
  regularization_ = BarrierTolerances::kRegularization;
  trend_ = kFirstTrend;
  last_solves_ = 0;
  failed_solves_ = 0;
}

// --- starting point ---

SolveStatus InteriorPointMethod::start(double dual_boost, const StopToken& stop) {
  std::fill(theta_.begin(), theta_.end(), 1.0);
  if (options_.primal_start || options_.dual_start) {
    const SolveStatus status = newton_.factor(theta_, regularization_ + options_.extra_regularization, stop);
    if (status != SolveStatus::kLoaded) return status;
  }
  place_primal();
  place_dual();
  shift_start(dual_boost);
  compute_residuals();
  return SolveStatus::kLoaded;
}

// The point nearest to the bounds' own centre that satisfies the equations; with Q, a minimiser of the model with a
// proximal term around that centre.
void InteriorPointMethod::place_primal() {
  std::vector<double>& v = iterate_.v;
  for (Index j = 0; j < model_.num_cols(); ++j) {
    const double lower = model_.lower[j], upper = model_.upper[j];
    if (has_lower(j) && has_upper(j)) {
      v[j] = std::clamp(0.0, lower, upper);
    } else {
      v[j] = has_lower(j) ? std::max(0.0, lower) : has_upper(j) ? std::min(0.0, upper) : 0.0;
    }
  }
  if (!options_.primal_start) return;
  std::vector<double> r2 = model_.rhs, dv, dy;
  for (Index j = 0; j < model_.num_cols(); ++j) {
    for (Offset k = model_.matrix.begin(j); k < model_.matrix.end(j); ++k) {
      r2[model_.matrix.index[k]] -= model_.matrix.value[k] * v[j];
    }
  }
  std::fill(r1_.begin(), r1_.end(), 0.0);
  if (model_.is_quadratic()) {
    r1_ = model_.cost;
    add_quadratic_product(model_, 1, v, r1_);
  }
  newton_.solve(r1_, r2, start_goal(r1_, r2), dv, dy);
  for (std::size_t j = 0; j < v.size(); ++j) v[j] += dv[j];
  if (model_.is_quadratic() && options_.dual_start) iterate_.y = dy;
}

// Multipliers with the smallest reduced costs, or none.
void InteriorPointMethod::place_dual() {
  if (!options_.dual_start) std::fill(iterate_.y.begin(), iterate_.y.end(), 0.0);
  std::vector<double> gradient = model_.cost;
  add_quadratic_product(model_, 1, iterate_.v, gradient);
  if (!model_.is_quadratic() && options_.dual_start) {
    std::vector<double> r2(iterate_.y.size(), 0), dv;
    newton_.solve(gradient, r2, start_goal(gradient, r2), dv, iterate_.y);
  }
  for (Index j = 0; j < model_.num_cols(); ++j) {
    double d = gradient[j];
    for (Offset k = model_.matrix.begin(j); k < model_.matrix.end(j); ++k) {
      d -= model_.matrix.value[k] * iterate_.y[model_.matrix.index[k]];
    }
    if (has_lower(j) && has_upper(j)) {
      iterate_.low[j] = std::max(d, 0.0);
      iterate_.up[j] = std::max(-d, 0.0);
    } else if (has_lower(j)) {
      iterate_.low[j] = d;
    } else if (has_upper(j)) {
      iterate_.up[j] = -d;
    }
  }
}

// Everything positive and balanced: Mehrotra's shifts, with columns of two bounds kept between them.
void InteriorPointMethod::shift_start(double dual_boost) {
  double primal_shift = 0, dual_shift = 0;
  for (Index j = 0; j < model_.num_cols(); ++j) {
    const bool both = has_lower(j) && has_upper(j);
    if (has_lower(j)) {
      iterate_.below[j] = iterate_.v[j] - model_.lower[j];
      if (!both) primal_shift = std::max(primal_shift, -1.5 * iterate_.below[j]);
      dual_shift = std::max(dual_shift, -1.5 * iterate_.low[j]);
    }
    if (has_upper(j)) {
      iterate_.above[j] = model_.upper[j] - iterate_.v[j];
      if (!both) primal_shift = std::max(primal_shift, -1.5 * iterate_.above[j]);
      dual_shift = std::max(dual_shift, -1.5 * iterate_.up[j]);
    }
  }
  double product = 0, distances = 0, duals = 0;
  const auto account = [&](double distance, double dual) {
    const double z = std::max(distance, 0.0) + primal_shift, w = dual + dual_shift;
    product += z * w;
    distances += z;
    duals += w;
  };
  for (Index j = 0; j < model_.num_cols(); ++j) {
    if (has_lower(j)) account(iterate_.below[j], iterate_.low[j]);
    if (has_upper(j)) account(iterate_.above[j], iterate_.up[j]);
  }
  primal_shift += duals > 0 ? 0.5 * product / duals : 0;
  dual_shift += distances > 0 ? 0.5 * product / distances : 0;
  primal_shift = std::max(primal_shift, options_.primal_start ? kLeastShift : kUnsolvedShift);
  dual_shift = dual_boost * std::max(dual_shift, options_.dual_start ? kLeastShift : kUnsolvedShift);
  for (Index j = 0; j < model_.num_cols(); ++j) {
    double& v = iterate_.v[j];
    if (has_lower(j) && has_upper(j)) {
      const double margin = std::min(primal_shift, 0.25 * (model_.upper[j] - model_.lower[j]));
      v = std::clamp(v, model_.lower[j] + margin, model_.upper[j] - margin);
    } else if (has_lower(j)) {
      v += primal_shift;
    } else if (has_upper(j)) {
      v -= primal_shift;
    }
    if (has_lower(j)) {
      iterate_.below[j] = std::max(v - model_.lower[j], 1e-4 * primal_shift);
      iterate_.low[j] += dual_shift;
    }
    if (has_upper(j)) {
      iterate_.above[j] = std::max(model_.upper[j] - v, 1e-4 * primal_shift);
      iterate_.up[j] += dual_shift;
    }
  }
}

// --- measures ---

void InteriorPointMethod::compute_residuals() {
  const SparseMatrix& a = model_.matrix;
  const Iterate& at = iterate_;
  residuals_.primal = model_.rhs;
  residuals_.dual = model_.cost;
  add_quadratic_product(model_, 1, at.v, residuals_.dual);
  for (Index j = 0; j < model_.num_cols(); ++j) {
    double sum = 0;
    for (Offset k = a.begin(j); k < a.end(j); ++k) {
      sum += a.value[k] * at.y[a.index[k]];
      residuals_.primal[a.index[k]] -= a.value[k] * at.v[j];
    }
    residuals_.dual[j] += at.up[j] - at.low[j] - sum;
    residuals_.below[j] = has_lower(j) ? model_.lower[j] - at.v[j] + at.below[j] : 0;
    residuals_.above[j] = has_upper(j) ? model_.upper[j] - at.v[j] - at.above[j] : 0;
  }
}

double InteriorPointMethod::average_product() const { return product_after(iterate_, {0, 0}); }

double InteriorPointMethod::product_after(const Iterate& d, const Steps& steps) const {
  if (num_products_ == 0) return 0;
  double sum = 0;
  for (std::size_t j = 0; j < iterate_.v.size(); ++j) {
    sum += (iterate_.below[j] + steps.primal * d.below[j]) * (iterate_.low[j] + steps.dual * d.low[j]);
    sum += (iterate_.above[j] + steps.primal * d.above[j]) * (iterate_.up[j] + steps.dual * d.up[j]);
  }
  return sum / num_products_;
}

Progress InteriorPointMethod::measure() {
  Progress progress;
  const Iterate& at = iterate_;
  Extended primal = 0, dual = 0;
  std::vector<double> curvature(at.v.size(), 0);
  double gradient_norm = cost_norm_;
  add_quadratic_product(model_, 1, at.v, curvature);
  for (Index i = 0; i < model_.num_rows(); ++i) {
    dual += Extended(model_.rhs[i]) * at.y[i];
    progress.primal_residual = std::max(progress.primal_residual, std::abs(residuals_.primal[i]) / model_.row_scale[i]);
  }
  for (Index j = 0; j < model_.num_cols(); ++j) {
    const Extended half = Extended(curvature[j]) * at.v[j] / 2;
    primal += Extended(model_.cost[j]) * at.v[j] + half;
    dual -= half;
    gradient_norm = std::max(gradient_norm, std::abs(curvature[j]) * model_.objective_scale / model_.col_scale[j]);
    if (has_lower(j)) dual += Extended(model_.lower[j]) * at.low[j];
    if (has_upper(j)) dual -= Extended(model_.upper[j]) * at.up[j];
    const double bound = std::max(std::abs(residuals_.below[j]), std::abs(residuals_.above[j])) * model_.col_scale[j];
    progress.primal_residual = std::max(progress.primal_residual, bound);
    progress.dual_residual =
        std::max(progress.dual_residual, std::abs(residuals_.dual[j]) * model_.objective_scale / model_.col_scale[j]);
  }
  const double scale = model_.objective_scale;
  scaled_objective_ = std::max(1 / scale, std::abs(static_cast<double>(primal) + model_.offset / scale));
  progress.primal_objective = scale * static_cast<double>(primal) + model_.offset;
  progress.dual_objective = scale * static_cast<double>(dual) + model_.offset;
  progress.relative_primal = progress.primal_residual / rhs_norm_;
  progress.relative_dual = progress.dual_residual / gradient_norm;
  progress.relative_gap = std::abs(progress.primal_objective - progress.dual_objective) /
                          std::max({1.0, std::abs(progress.primal_objective), std::abs(progress.dual_objective)});
  progress.complementarity = average_product() * scale;
  const double sum = progress.primal_objective + progress.dual_objective + progress.worst();
  if (!std::isfinite(sum)) progress.relative_gap = progress.relative_primal = progress.relative_dual = kInf;
  return progress;
}

// --- one iteration ---

SolveStatus InteriorPointMethod::factor(const StopToken& stop) {
  for (Index j = 0; j < model_.num_cols(); ++j) {
    double theta = 0;
    if (has_lower(j)) theta += iterate_.low[j] / iterate_.below[j];
    if (has_upper(j)) theta += iterate_.up[j] / iterate_.above[j];
    theta_[j] = theta;
  }
  return newton_.factor(theta_, regularization_ + options_.extra_regularization, stop);
}

// Newton direction towards zero residuals and the given products; returns the residual of the linear system.
double InteriorPointMethod::direction(const Residuals& residuals, const Targets& targets, Iterate& d) {
  const Iterate& at = iterate_;
  for (Index j = 0; j < model_.num_cols(); ++j) {
    double r = residuals.dual[j];
    if (has_lower(j)) r -= (targets.low[j] + at.low[j] * residuals.below[j]) / at.below[j];
    if (has_upper(j)) r += (targets.up[j] - at.up[j] * residuals.above[j]) / at.above[j];
    r1_[j] = r;
  }
  const double error = newton_.solve(r1_, residuals.primal, goal_, d.v, d.y);
  for (auto* part : {&d.below, &d.above, &d.low, &d.up}) part->assign(at.v.size(), 0);
  for (Index j = 0; j < model_.num_cols(); ++j) {
    if (has_lower(j)) {
      d.below[j] = d.v[j] - residuals.below[j];
      d.low[j] = (targets.low[j] - at.low[j] * d.below[j]) / at.below[j];
    }
    if (has_upper(j)) {
      d.above[j] = residuals.above[j] - d.v[j];
      d.up[j] = (targets.up[j] - at.up[j] * d.above[j]) / at.above[j];
    }
  }
  return error;
}

InteriorPointMethod::Steps InteriorPointMethod::longest_steps(const Iterate& d) const {
  const double primal = longest(iterate_.above, d.above, longest(iterate_.below, d.below, kLongestStep));
  const double dual = longest(iterate_.up, d.up, longest(iterate_.low, d.low, kLongestStep));
  return steps_of(primal, dual);
}

InteriorPointMethod::Steps InteriorPointMethod::longest_steps(const Iterate& d, const Iterate& corrected,
                                                              double weight) const {
  const auto along = [&](std::vector<double> Iterate::*part, double step) {
    return longest(iterate_.*part, d.*part, corrected.*part, weight, step);
  };
  return steps_of(along(&Iterate::above, along(&Iterate::below, kLongestStep)),
                  along(&Iterate::up, along(&Iterate::low, kLongestStep)));
}

// Short of the boundary. Of a quadratic model both sides take the same step: the dual residual would not shrink
// otherwise.
InteriorPointMethod::Steps InteriorPointMethod::steps_of(double primal, double dual) const {
  Steps steps{std::min(1.0, step_share_ * primal), std::min(1.0, step_share_ * dual)};
  if (model_.is_quadratic()) steps.primal = steps.dual = steps.shorter();
  return steps;
}

// Products below this are smaller than what the gap needs; they would only spoil the Newton system.
double InteriorPointMethod::smallest_product() const {
  return num_products_ == 0 ? 0 : kNegligibleGap * options_.convergence_tol * scaled_objective_ / num_products_;
}

// Residuals cost objective by what multipliers and values they meet: they should matter less than the gap that is left
// to close.
NewtonSystem::Goal InteriorPointMethod::step_goal() const {
  double multipliers = 1, values = 1;
  for (const double y : iterate_.y) multipliers += std::abs(y);
  for (const double v : iterate_.v) values += std::abs(v);
  const double gap = kNegligibleGap * options_.convergence_tol * scaled_objective_;
  const double dual = std::max(std::min(dual_goal_, gap / values), kLeastGoal * dual_goal_);
  const double primal = std::max(std::min(primal_goal_, gap / multipliers), kLeastGoal * primal_goal_);
  return {std::max(kStepAccuracy * largest_magnitude(residuals_.dual), dual),
          std::max(kStepAccuracy * largest_magnitude(residuals_.primal), primal)};
}

// The direction to zero residuals and products. Too little regularization makes the factor useless, too much leaves
// more to refine than refinement can do: a poor direction is computed again both ways and the best one taken.
SolveStatus InteriorPointMethod::find_affine(Targets& targets, Iterate& affine, const StopToken& stop) {
  for (std::size_t j = 0; j < iterate_.v.size(); ++j) {
    targets.low[j] = -iterate_.below[j] * iterate_.low[j];
    targets.up[j] = -iterate_.above[j] * iterate_.up[j];
  }
  const double before = regularization_;
  double best = before, best_error = kInf, error = kInf;
  for (const double change : {1.0, 1e-2, 1e2}) {
    regularization_ =
        std::clamp(before * change, BarrierTolerances::kMinRegularization, BarrierTolerances::kMaxRegularization);
    const SolveStatus status = factor(stop);
    if (status != SolveStatus::kLoaded) return status;
    error = direction(residuals_, targets, affine);
    if (error < best_error) {
      best_error = error;
      best = regularization_;
    }
    if (best_error <= BarrierTolerances::kPoorStep) {
      failed_solves_ = 0;
      return SolveStatus::kLoaded;
    }
  }
  ++failed_solves_;
  if (!std::isfinite(best_error)) return SolveStatus::kNumeric;
  if (regularization_ == best) return SolveStatus::kLoaded;
  regularization_ = best;
  const SolveStatus status = factor(stop);
  if (status == SolveStatus::kLoaded) direction(residuals_, targets, affine);
  return status;
}

// Refinement that takes many solves says that the regularization is not right. Which way to change it is not known
// beforehand: on as long as the effort falls, back when it rises.
void InteriorPointMethod::adapt_regularization(double solves) {
  if (solves <= kManySolves) return;
  if (last_solves_ > 0 && solves >= last_solves_) trend_ = 1 / trend_;
  last_solves_ = solves;
  regularization_ =
      std::clamp(regularization_ * trend_, BarrierTolerances::kMinRegularization, BarrierTolerances::kRegularization);
}

SolveStatus InteriorPointMethod::step(const StopToken& stop) {
  const double mu = average_product();
  const auto cols = iterate_.v.size();
  Targets targets{std::vector<double>(cols), std::vector<double>(cols)};
  Iterate affine;
  // A step should take residuals down by its length, until they are well below what counts as converged.
  goal_ = step_goal();
  const double solves_before = newton_.num_solves();
  const SolveStatus status = find_affine(targets, affine, stop);
  if (status != SolveStatus::kLoaded) return status;
  Steps steps = longest_steps(affine);
  const double ratio = mu > 0 ? product_after(affine, steps) / mu : 0;
  const double centering = std::pow(std::clamp(ratio, 0.0, 1.0), 3);
  const double target = std::max(centering * mu, smallest_product());
  for (std::size_t j = 0; j < cols; ++j) {
    if (has_lower(static_cast<Index>(j))) targets.low[j] += target - affine.below[j] * affine.low[j];
    if (has_upper(static_cast<Index>(j))) targets.up[j] += target - affine.above[j] * affine.up[j];
  }
  Iterate corrected;
  Residuals eased = residuals_;
  for (auto* part : {&eased.primal, &eased.dual, &eased.below, &eased.above}) {
    for (double& value : *part) value *= 1 - centering;
  }
  direction(eased, targets, corrected);
  choose_corrector_weight(corrected, affine, steps);
  correct_centrality(target, affine, steps);
  move(affine, steps);
  last_step_ = steps.shorter();
  adapt_regularization(newton_.num_solves() - solves_before);
  return std::isfinite(last_step_) ? SolveStatus::kLoaded : SolveStatus::kNumeric;
}

// The full second-order corrector as a rule; where it blocks, the weight that allows the longest steps. Choosing the
// weight always saves no iterations on easy models, and costs many on hard ones: long steps leave centrality behind.
void InteriorPointMethod::choose_corrector_weight(Iterate& corrector, Iterate& d, Steps& steps) {
  double best_weight = 1;
  Steps best_steps = longest_steps(corrector);
  double best_value = best_steps.primal * best_steps.dual;
  if (best_steps.shorter() < kPoorStep) {
    const double least = std::max(0.1, steps.primal * steps.dual);
    for (int k = 0; k < kWeights; ++k) {
      const double weight = least + (1 - least) * k / kWeights;
      const Steps trial_steps = longest_steps(d, corrector, weight);
      const double value = trial_steps.primal * trial_steps.dual;
      if (value <= 1.05 * best_value) continue;
      best_weight = weight;
      best_steps = trial_steps;
      best_value = value;
    }
  }
  steps = best_steps;
  if (best_weight == 1) {
    std::swap(d, corrector);
    return;
  }
  for (const auto part : {&Iterate::v, &Iterate::y, &Iterate::below, &Iterate::above, &Iterate::low, &Iterate::up}) {
    blend(d.*part, corrector.*part, best_weight);
  }
}

// What the products would have to change by to come within the band around mu. False when all are.
bool InteriorPointMethod::centrality_targets(double mu, const Iterate& d, const Steps& trial, Targets& targets) const {
  bool outside = false;
  const auto pull = [&](double distance, double dual) {
    const double product = distance * dual;
    if (product < kProductFloor * mu) {
      outside = true;
      return kProductFloor * mu - product;
    }
    if (product > kProductCeiling * mu) {
      outside = true;
      return std::max(kProductCeiling * mu - product, -kProductCeiling * mu);
    }
    return 0.0;
  };
  for (Index j = 0; j < model_.num_cols(); ++j) {
    targets.low[j] =
        has_lower(j) ? pull(iterate_.below[j] + trial.primal * d.below[j], iterate_.low[j] + trial.dual * d.low[j]) : 0;
    targets.up[j] =
        has_upper(j) ? pull(iterate_.above[j] + trial.primal * d.above[j], iterate_.up[j] + trial.dual * d.up[j]) : 0;
  }
  return outside;
}

void InteriorPointMethod::correct_centrality(double mu, Iterate& d, Steps& steps) {
  if (!(mu > 0)) return;
  const auto cols = iterate_.v.size();
  Targets targets{std::vector<double>(cols), std::vector<double>(cols)};
  Iterate correction;
  const int correctors =
      steps.shorter() < kShortStep ? std::max(options_.correctors, kLeastCorrectors) : options_.correctors;
  for (int k = 0; k < correctors; ++k) {
    if (steps.shorter() > 0.95) return;
    const Steps trial{std::min(1.0, steps.primal + kCorrectorReach), std::min(1.0, steps.dual + kCorrectorReach)};
    if (!centrality_targets(mu, d, trial, targets)) return;
    direction(zero_residuals_, targets, correction);
    Iterate next = d;
    for (auto [to, from] : {std::pair{&next.v, &correction.v},
                            {&next.y, &correction.y},
                            {&next.below, &correction.below},
                            {&next.above, &correction.above},
                            {&next.low, &correction.low},
                            {&next.up, &correction.up}}) {
      add(*to, *from, 1);
    }
    const Steps reached = longest_steps(next);
    const double gain = reached.primal + reached.dual - steps.primal - steps.dual;
    if (gain < kCorrectorGain * (trial.primal + trial.dual - steps.primal - steps.dual)) return;
    d = std::move(next);
    steps = reached;
  }
}

void InteriorPointMethod::move(const Iterate& d, const Steps& steps) {
  add(iterate_.v, d.v, steps.primal);
  add(iterate_.below, d.below, steps.primal);
  add(iterate_.above, d.above, steps.primal);
  add(iterate_.y, d.y, steps.dual);
  add(iterate_.low, d.low, steps.dual);
  add(iterate_.up, d.up, steps.dual);
  compute_residuals();
}

}  // namespace zorvex
