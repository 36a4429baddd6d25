#include "face_point.hpp"

#include <cmath>

#include "simplex/answer_check.hpp"

namespace zorvex::oracle {

namespace {

constexpr double kActive = 1e-9;  // duals above this hold their row or column at its bound on the whole optimal face
constexpr double kShift = 1e-5;   // of the right-hand sides for other dual vertices

void average_primal(const LpData& lp, const LpPoint& optimum, RandomStream& random, int count, InteriorPoint& point) {
  LpData face = lp;
  for (Index col = 0; col < lp.num_cols(); ++col) {
    const double d = optimum.reduced_cost[col];
    if (d > kActive) face.col_upper[col] = lp.col_lower[col];
    if (d < -kActive) face.col_lower[col] = lp.col_upper[col];
  }
  for (Index row = 0; row < lp.num_rows(); ++row) {
    const double d = optimum.pi[row];
    if (d > kActive) face.row_upper[row] = lp.row_lower[row];
    if (d < -kActive) face.row_lower[row] = lp.row_upper[row];
  }
  QuietLog log;
  LpSolver solver(face, {}, log);
  double weight = 1;
  for (int k = 0; k < count; ++k) {
    for (Index col = 0; col < lp.num_cols(); ++col) solver.set_cost(col, random.uniform() - 0.5);
    if (solver.solve({}, {}) != SolveStatus::kOptimal) continue;
    weight += 1;
    for (Index col = 0; col < lp.num_cols(); ++col) point.x[col] += (solver.point().x[col] - point.x[col]) / weight;
  }
}

void average_dual(const LpData& lp, double objective, RandomStream& random, int count, InteriorPoint& point) {
  QuietLog log;
  double weight = 1;
  for (int k = 0; k < count; ++k) {
    LpData shifted = lp;
    const auto shift = [&](double& low, double& up) {
      const double amount = kShift * random.uniform();
      if (low == up) {
        low = up = low + amount - kShift / 2;
      } else {
        low -= amount;
        up += amount;
      }
    };
    for (Index row = 0; row < lp.num_rows(); ++row) shift(shifted.row_lower[row], shifted.row_upper[row]);
    for (Index col = 0; col < lp.num_cols(); ++col) shift(shifted.col_lower[col], shifted.col_upper[col]);
    LpSolver solver(shifted, {}, log);
    if (solver.solve({}, {}) != SolveStatus::kOptimal) continue;
    const LpPoint& other = solver.point();
    const DualQuality dual = measure_dual(view_of(lp), other.pi, other.reduced_cost, {});
    if (!(std::abs(dual.objective + lp.offset - objective) <= 1e-10 * (1 + std::abs(objective)))) continue;
    weight += 1;
    for (Index row = 0; row < lp.num_rows(); ++row) point.pi[row] += (other.pi[row] - point.pi[row]) / weight;
    for (Index col = 0; col < lp.num_cols(); ++col) {
      point.reduced_cost[col] += (other.reduced_cost[col] - point.reduced_cost[col]) / weight;
    }
  }
}

}  // namespace

InteriorPoint average_over_faces(const LpData& lp, RandomStream& random, int count) {
  QuietLog log;
  LpSolver solver(lp, {}, log);
  if (solver.solve({}, {}) != SolveStatus::kOptimal) return {};
  const LpPoint& optimum = solver.point();
  InteriorPoint point{optimum.x, optimum.row_activity, optimum.pi, optimum.reduced_cost};
  average_primal(lp, optimum, random, count, point);
  average_dual(lp, solver.objective(), random, count, point);
  point.row_activity.assign(point.row_activity.size(), 0.0);
  for (Index col = 0; col < lp.num_cols(); ++col) {
    for (Offset k = lp.matrix.begin(col); k < lp.matrix.end(col); ++k) {
      point.row_activity[lp.matrix.index[k]] += lp.matrix.value[k] * point.x[col];
    }
  }
  return point;
}

void add_noise(InteriorPoint& point, RandomStream& random, double size) {
  for (std::vector<double>* part : {&point.x, &point.row_activity, &point.pi, &point.reduced_cost}) {
    for (double& v : *part) v += size * (1 + std::abs(v)) * (random.uniform() - 0.5);
  }
}

LpData transportation(Index sources, Index sinks, RandomStream& random) {
  LpData lp;
  lp.matrix.num_rows = sources + sinks;
  for (Index i = 0; i < sources; ++i) {
    for (Index j = 0; j < sinks; ++j) {
      const Index rows[] = {i, sources + j};
      const double ones[] = {1, 1};
      lp.matrix.append_col(rows, ones, 2);
      lp.cost.push_back(static_cast<double>(1 + random.below(4)));
    }
  }
  const auto cols = lp.cost.size();
  lp.col_lower.assign(cols, 0.0);
  lp.col_upper.assign(cols, kInf);
  // Supplies as large as the demands together: all rows are tight and one of them follows from the others.
  for (Index i = 0; i < sources; ++i) lp.row_lower.push_back(static_cast<double>(sinks));
  for (Index j = 0; j < sinks; ++j) lp.row_lower.push_back(static_cast<double>(sources));
  lp.row_upper = lp.row_lower;
  return lp;
}

}  // namespace zorvex::oracle
