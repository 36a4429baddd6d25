#include "differential/certificate.hpp"

#include <algorithm>
#include <cmath>

#include "base/quality.hpp"
#include "support/problem_view.hpp"

namespace zorvex::differential {
namespace {

std::string text(const char* what, double value) { return std::string(what) + " " + std::to_string(value); }

// Column bounds that cross need no multipliers.
double widest_crossing(const LpData& lp) {
  double widest = 0;
  for (Index col = 0; col < lp.num_cols(); ++col) widest = std::max(widest, lp.col_lower[col] - lp.col_upper[col]);
  for (Index row = 0; row < lp.num_rows(); ++row) widest = std::max(widest, lp.row_lower[row] - lp.row_upper[row]);
  return widest;
}

double sum_of_magnitudes(const std::vector<double>& values) {
  double sum = 0;
  for (const double value : values) sum += std::abs(value);
  return sum;
}

std::vector<double> combined_row(const LpData& lp, const std::vector<double>& y) {
  std::vector<double> row(lp.cost.size());
  for (Index col = 0; col < lp.num_cols(); ++col) {
    Extended sum = 0;
    for (Offset k = lp.matrix.begin(col); k < lp.matrix.end(col); ++k) {
      sum += Extended(lp.matrix.value[k]) * y[lp.matrix.index[k]];
    }
    row[col] = static_cast<double>(sum);
  }
  return row;
}

// Amount by which the proof misses, and what points within the tolerances of all rows and bounds could make up for.
struct Proof {
  double gap, slack;
};

Proof proof_of(const LpData& lp, const LpDriverResult& result) {
  if (const double crossing = widest_crossing(lp); crossing > 0) return {crossing, 2 * kTolerance};
  double largest = 0;
  for (const double y : result.farkas) largest = std::max(largest, std::abs(y));
  const double gap = largest * farkas_gap(oracle::view_of(lp), result.farkas, 1e-11);
  const double slack =
      kTolerance * (sum_of_magnitudes(result.farkas) + sum_of_magnitudes(combined_row(lp, result.farkas)));
  return {gap, slack};
}

double outside_cone(double direction, double lower, double upper) {
  if (direction < 0 && std::isfinite(lower)) return -direction;
  return direction > 0 && std::isfinite(upper) ? direction : 0;
}

// The same for a ray: its descent, and what duals within the tolerances allow, with those of an optimum in between to
// weigh what the ray leaves of the constraints.
Proof descent_of(const LpData& lp, const LpDriverResult& result, const LpPoint& optimum) {
  double largest = 0;
  for (const double r : result.ray) largest = std::max(largest, std::abs(r));
  std::vector<double> activity(lp.row_lower.size(), 0);
  for (Index col = 0; col < lp.num_cols(); ++col) {
    for (Offset k = lp.matrix.begin(col); k < lp.matrix.end(col); ++k) {
      activity[lp.matrix.index[k]] += lp.matrix.value[k] * result.ray[col];
    }
  }
  double slack = kTolerance * (sum_of_magnitudes(result.ray) + sum_of_magnitudes(activity));
  for (std::size_t i = 0; i < optimum.pi.size(); ++i) {
    slack += std::abs(optimum.pi[i]) * outside_cone(activity[i], lp.row_lower[i], lp.row_upper[i]);
  }
  for (std::size_t j = 0; j < optimum.reduced_cost.size(); ++j) {
    slack += std::abs(optimum.reduced_cost[j]) * outside_cone(result.ray[j], lp.col_lower[j], lp.col_upper[j]);
  }
  return {largest * ray_descent(oracle::view_of(lp), result.ray, 1e-9), slack};
}

std::string faults_of_point(const LpData& lp, const LpDriverResult& result) {
  const ProblemView view = oracle::view_of(lp);
  const PrimalQuality primal = measure_primal(view, result.point.x, result.point.row_activity);
  if (primal.bound.max > kTolerance) return text("bound violation", primal.bound.max);
  if (primal.row.max > kTolerance) return text("row violation", primal.row.max);
  const DualQuality dual = measure_dual(view, result.point.pi, result.point.reduced_cost, result.point.x);
  if (dual.sign.max > kTolerance) return text("dual violation", dual.sign.max);
  const double scale = 1 + std::abs(result.objective) + sum_of_magnitudes(result.point.pi) +
                       sum_of_magnitudes(result.point.reduced_cost);
  if (dual.complementarity.sum > 2 * kTolerance * scale) return text("complementarity", dual.complementarity.sum);
  const double objective = primal.objective + lp.offset;
  if (std::abs(objective - result.objective) > 1e-9 * std::max(1.0, std::abs(objective))) {
    return text("objective off by", objective - result.objective);
  }
  return "";
}

}  // namespace

bool is_undecided(SolveStatus status) { return status == SolveStatus::kNumeric || status == SolveStatus::kSuboptimal; }

std::string faults_of(const LpData& lp, const LpDriverResult& result) {
  switch (result.status) {
    case SolveStatus::kOptimal:
      return faults_of_point(lp, result);
    case SolveStatus::kInfeasible: {
      if (widest_crossing(lp) > kTolerance) return "";
      if (result.farkas.size() != lp.row_lower.size()) return "no proof of infeasibility";
      return proof_of(lp, result).gap > 0 ? "" : "the proof of infeasibility proves nothing";
    }
    case SolveStatus::kUnbounded: {
      if (result.ray.size() != lp.cost.size()) return "no ray";
      return descent_of(lp, result, {}).gap > 0 ? "" : "the ray leads nowhere";
    }
    case SolveStatus::kNumeric:
    case SolveStatus::kSuboptimal:
      return "";  // honest answers: the caller counts them
    default:
      return text("status", static_cast<int>(result.status));
  }
}

std::string contradiction(const LpData& lp, const LpDriverResult& a, const LpDriverResult& b) {
  if (is_undecided(a.status) || is_undecided(b.status)) return "";
  if (a.status == b.status) {
    if (a.status != SolveStatus::kOptimal) return "";
    // Weak duality between the points of the one and the duals of the other, all within the tolerances.
    const double slack = 4 * kTolerance *
                         (1 + std::abs(a.objective) + sum_of_magnitudes(a.point.pi) + sum_of_magnitudes(b.point.pi) +
                          sum_of_magnitudes(a.point.reduced_cost) + sum_of_magnitudes(b.point.reduced_cost) +
                          sum_of_magnitudes(a.point.x) + sum_of_magnitudes(b.point.x) +
                          sum_of_magnitudes(a.point.row_activity) + sum_of_magnitudes(b.point.row_activity));
    const double difference = std::abs(a.objective - b.objective);
    return difference <= slack ? "" : text("objectives differ by", difference) + text(" against", slack);
  }
  for (const LpDriverResult* claim : {&a, &b}) {
    const LpDriverResult& other = claim == &a ? b : a;
    if (claim->status == SolveStatus::kInfeasible) {
      const Proof proof = proof_of(lp, *claim);
      return proof.gap <= proof.slack ? "" : text("infeasible against status", static_cast<int>(other.status));
    }
  }
  const LpDriverResult& unbounded = a.status == SolveStatus::kUnbounded ? a : b;
  const Proof descent = descent_of(lp, unbounded, (&unbounded == &a ? b : a).point);
  return descent.gap <= descent.slack ? "" : "unbounded against optimal";
}

}  // namespace zorvex::differential
