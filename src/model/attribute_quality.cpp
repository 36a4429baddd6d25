#include "model/attribute_quality.hpp"

#include <algorithm>
#include <cmath>

#include "base/quality.hpp"

namespace zorvex {

namespace {

// The model as the judge wants it: minimisation, rows with the signs they are stored with.
struct StoredProblem {
  std::vector<double> cost, col_lower, col_upper, row_lower, row_upper;
  ProblemView view;

  explicit StoredProblem(const ModelData& data) {
    for (Index col = 0; col < data.num_cols(); ++col) {
      const Interval bounds = data.column_bounds(col);
      const bool or_zero = data.vtype[col] == 'S' || data.vtype[col] == 'N';
      cost.push_back(data.min_cost(col));
      col_lower.push_back(or_zero ? std::min(bounds.lower, 0.0) : bounds.lower);
      col_upper.push_back(or_zero ? std::max(bounds.upper, 0.0) : bounds.upper);
    }
    for (Index row = 0; row < data.num_rows(); ++row) {
      const Interval sides = data.row_sides(row);
      const bool negated = data.row_sense[row] == '>';
      row_lower.push_back(negated ? -sides.upper : sides.lower);
      row_upper.push_back(negated ? -sides.lower : sides.upper);
    }
    view.num_rows = data.num_rows();
    view.num_cols = data.num_cols();
    view.start = data.matrix.start.data();
    view.index = data.matrix.index.data();
    view.value = data.matrix.value.data();
    view.cost = cost.data();
    view.col_lower = col_lower.data();
    view.col_upper = col_upper.data();
    view.row_lower = row_lower.data();
    view.row_upper = row_upper.data();
  }

  // Linearises a quadratic objective at x: what the duals price is its gradient.
  void add_gradient(const ModelData& data, const std::vector<double>& x) {
    for (const QuadraticTerm& term : data.quadratic) {
      const double half = 0.5 * term.value * data.sense;
      cost[term.first] += half * x[term.second];
      cost[term.second] += half * x[term.first];
    }
  }
};

PrimalQuality primal_quality(const ZLPmodel& model, const StoredProblem& problem) {
  const SolutionStore& solution = model.solution;
  std::vector<double> activity;
  for (Index row = 0; row < static_cast<Index>(solution.slack.size()); ++row) {
    activity.push_back(model.data.rhs[row] - model.data.row_sign(row) * solution.slack[row]);
  }
  return measure_primal(problem.view, solution.x, activity);
}

DualQuality dual_quality(const ZLPmodel& model, StoredProblem& problem) {
  const SolutionStore& solution = model.solution;
  problem.add_gradient(model.data, solution.x);
  std::vector<double> pi, reduced_cost;
  for (Index row = 0; row < problem.view.num_rows; ++row) {
    pi.push_back(model.data.sense * model.data.row_sign(row) * solution.pi[row]);
  }
  for (const double value : solution.rc) reduced_cost.push_back(model.data.sense * value);
  return measure_dual(problem.view, pi, reduced_cost, solution.x);
}

double distance(double value, Interval interval) {
  return std::max({interval.lower - value, value - interval.upper, 0.0});
}

Violation integrality(const ZLPmodel& model) {
  Violation violation;
  for (Index col = 0; col < model.data.num_cols(); ++col) {
    const char type = model.data.vtype[col];
    const double x = model.solution.x[col];
    double amount = 0;
    if (type != 'C' && type != 'S') amount = std::abs(x - std::round(x));
    if (type == 'S' || type == 'N') {
      amount = std::max(amount, std::min(std::abs(x), distance(x, model.data.column_bounds(col))));
    }
    violation.add(amount, col);
  }
  return violation;
}

Violation measure(const ZLPmodel& model, QualityMeasure which) {
  if (which == QualityMeasure::kIntegrality) return integrality(model);
  StoredProblem problem(model.data);
  switch (which) {
    case QualityMeasure::kBound:
      return primal_quality(model, problem).bound;
    case QualityMeasure::kRow:
      return primal_quality(model, problem).row;
    case QualityMeasure::kRowResidual:
      return primal_quality(model, problem).residual;
    case QualityMeasure::kDual:
      return dual_quality(model, problem).sign;
    case QualityMeasure::kDualResidual:
      return dual_quality(model, problem).residual;
    default:
      return dual_quality(model, problem).complementarity;
  }
}

// Range of the magnitudes of the nonzero values.
struct Magnitudes {
  double smallest = kInf;
  double largest = 0;

  void add(double value) {
    const double magnitude = std::abs(value);
    if (magnitude == 0 || magnitude >= kStoredInfinity) return;
    smallest = std::min(smallest, magnitude);
    largest = std::max(largest, magnitude);
  }
};

Magnitudes magnitudes(const ModelData& data, CoefficientSet set) {
  Magnitudes result;
  const auto add_all = [&](const std::vector<double>& values) {
    for (const double value : values) result.add(value);
  };
  switch (set) {
    case CoefficientSet::kMatrix:
      add_all(data.matrix.value);
      break;
    case CoefficientSet::kBounds:
      add_all(data.lb);
      add_all(data.ub);
      break;
    case CoefficientSet::kObjective:
      add_all(data.obj);
      break;
    case CoefficientSet::kRhs:
      add_all(data.rhs);
      add_all(data.range_lower);
      break;
  }
  return result;
}

}  // namespace

bool primal_quality_available(const ZLPmodel& model) { return !model.solution.x.empty(); }

bool dual_quality_available(const ZLPmodel& model) {
  const SolutionStore& solution = model.solution;
  return !solution.x.empty() && !solution.rc.empty() && static_cast<Index>(solution.pi.size()) == model.data.num_rows();
}

void read_quality(ZLPmodel& model, const Attribute& attribute, const ObjectSet&, void* values) {
  const Violation violation = measure(model, static_cast<QualityMeasure>(attribute.detail / 3));
  switch (static_cast<QualityAspect>(attribute.detail % 3)) {
    case QualityAspect::kMax:
      *static_cast<double*>(values) = violation.max;
      break;
    case QualityAspect::kSum:
      *static_cast<double*>(values) = violation.sum;
      break;
    case QualityAspect::kIndex:
      *static_cast<int*>(values) = violation.at;
      break;
  }
}

void read_statistic(ZLPmodel& model, const Attribute& attribute, const ObjectSet&, void* values) {
  const Magnitudes range = magnitudes(model.data, static_cast<CoefficientSet>(attribute.detail / 2));
  const bool largest = attribute.detail % 2 != 0;
  *static_cast<double*>(values) = largest ? range.largest : range.largest == 0 ? 0 : range.smallest;
}

}  // namespace zorvex
