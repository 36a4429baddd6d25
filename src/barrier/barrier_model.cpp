#include "barrier/barrier_model.hpp"

#include <algorithm>
#include <cmath>

#include "base/tolerances.hpp"
#include "simplex/answer_check.hpp"
#include "simplex/scaling.hpp"

namespace zorvex {

namespace {

bool coincide(double lower, double upper) {
  return std::isfinite(lower) && upper - lower <= BarrierTolerances::kFixedWidth * std::max(1.0, std::abs(lower));
}

double power_of_two_near(double value) {
  if (!(value > 0) || !std::isfinite(value)) return 1;
  return std::exp2(std::round(std::log2(value)));
}

// Builds the model step by step.
class Builder {
 public:
  Builder(const LpData& lp, double feasibility_tol, bool only_largest)
      : lp_(lp), feasibility_tol_(feasibility_tol), only_largest_(only_largest) {}
  BarrierModel build();

 private:
  void choose_columns();
  void choose_rows();
  Scaling scale_matrix() const;
  void balance(Scaling& scaling) const;
  void add_structurals(const Scaling& scaling);
  void add_quadratic();
  void add_rows(const Scaling& scaling);
  void scale_objective();

  const LpData& lp_;
  double feasibility_tol_;
  bool only_largest_;
  BarrierModel model_;
  std::vector<Index> col_of_;             // user column -> structural, -1 when fixed
  std::vector<Index> row_of_;             // user row -> row, -1 when left out
  std::vector<Extended> fixed_activity_;  // of the user's rows
  std::vector<Extended> cost_;            // user columns, with what Q adds for fixed ones
};

void Builder::choose_columns() {
  const auto cols = static_cast<std::size_t>(lp_.num_cols());
  col_of_.assign(cols, -1);
  model_.fixed_value.assign(cols, 0);
  fixed_activity_.assign(static_cast<std::size_t>(lp_.num_rows()), 0);
  for (Index col = 0; col < lp_.num_cols(); ++col) {
    const double lower = lp_.col_lower[col], upper = lp_.col_upper[col];
    if (lower > upper) model_.is_consistent = false;
    if (!coincide(lower, upper)) {
      col_of_[col] = static_cast<Index>(model_.user_col.size());
      model_.user_col.push_back(col);
      continue;
    }
    const double value = lower == upper ? lower : lower + (upper - lower) / 2;
    model_.fixed_value[col] = value;
    if (value == 0) continue;
    for (Offset k = lp_.matrix.begin(col); k < lp_.matrix.end(col); ++k) {
      fixed_activity_[lp_.matrix.index[k]] += Extended(lp_.matrix.value[k]) * value;
    }
  }
  model_.num_structurals = static_cast<Index>(model_.user_col.size());
}

void Builder::choose_rows() {
  std::vector<char> used(static_cast<std::size_t>(lp_.num_rows()), 0);
  for (const Index col : model_.user_col) {
    for (Offset k = lp_.matrix.begin(col); k < lp_.matrix.end(col); ++k) used[lp_.matrix.index[k]] = 1;
  }
  row_of_.assign(used.size(), -1);
  for (Index row = 0; row < lp_.num_rows(); ++row) {
    if (lp_.row_lower[row] > lp_.row_upper[row]) model_.is_consistent = false;
    const bool bounded = lp_.row_lower[row] > -kInf || lp_.row_upper[row] < kInf;
    if (!used[row]) {
      const auto activity = static_cast<double>(fixed_activity_[row]);
      const double outside = std::max(lp_.row_lower[row] - activity, activity - lp_.row_upper[row]);
      if (outside > feasibility_tol_) model_.is_consistent = false;
    }
    if (!used[row] || !bounded) continue;
    row_of_[row] = static_cast<Index>(model_.user_row.size());
    model_.user_row.push_back(row);
  }
}

// Equilibration of [Q A'; A 0] by square roots of the largest entries, so that columns of Q get their share.
//   Source  D. Ruiz, Technical Report RAL-TR-2001-034.
Scaling equilibrate(const LpData& lp, Scaling scaling) {
  std::vector<double> col_max, row_max;
  for (int pass = 0; pass < 8; ++pass) {
    col_max.assign(scaling.col.size(), 0);
    row_max.assign(scaling.row.size(), 0);
    for (Index col = 0; col < lp.num_cols(); ++col) {
      for (Offset k = lp.matrix.begin(col); k < lp.matrix.end(col); ++k) {
        const Index row = lp.matrix.index[k];
        const double size = std::abs(lp.matrix.value[k]) * scaling.col[col] * scaling.row[row];
        col_max[col] = std::max(col_max[col], size);
        row_max[row] = std::max(row_max[row], size);
      }
      for (Offset k = lp.quadratic.begin(col); k < lp.quadratic.end(col); ++k) {
        const Index other = lp.quadratic.index[k];
        const double size = std::abs(lp.quadratic.value[k]) * scaling.col[col] * scaling.col[other];
        col_max[col] = std::max(col_max[col], size);
        col_max[other] = std::max(col_max[other], size);
      }
    }
    for (std::size_t j = 0; j < col_max.size(); ++j) scaling.col[j] *= power_of_two_near(1 / std::sqrt(col_max[j]));
    for (std::size_t i = 0; i < row_max.size(); ++i) scaling.row[i] *= power_of_two_near(1 / std::sqrt(row_max[i]));
  }
  return scaling;
}

Scaling Builder::scale_matrix() const {
  return lp_.is_quadratic() ? equilibrate(lp_, unit_scaling(lp_)) : compute_scaling(lp_, only_largest_);
}

// Regularization is meant for values near one, on both sides.
void Builder::balance(Scaling& scaling) const {
  if (lp_.is_quadratic()) return;  // there it would change Q against the costs
  double largest = 0;
  const auto look_at = [&](double side, double scale) {
    if (std::isfinite(side)) largest = std::max(largest, std::abs(side) * scale);
  };
  for (const Index col : model_.user_col) {
    look_at(lp_.col_lower[col], 1 / scaling.col[col]);
    look_at(lp_.col_upper[col], 1 / scaling.col[col]);
  }
  for (const Index row : model_.user_row) {
    const auto shift = static_cast<double>(fixed_activity_[row]);
    look_at(lp_.row_lower[row] - shift, scaling.row[row]);
    look_at(lp_.row_upper[row] - shift, scaling.row[row]);
  }
  const double size = power_of_two_near(largest);
  for (double& scale : scaling.col) scale *= size;
  for (double& scale : scaling.row) scale /= size;
}

void Builder::add_structurals(const Scaling& scaling) {
  cost_.assign(lp_.cost.begin(), lp_.cost.end());
  if (lp_.is_quadratic()) {  // cross terms with fixed columns are linear
    LpData fixed;
    fixed.cost.assign(lp_.cost.size(), 0);
    fixed.quadratic = lp_.quadratic;
    const std::vector<double> extra = gradient_at(fixed, model_.fixed_value);
    for (std::size_t j = 0; j < extra.size(); ++j) cost_[j] += extra[j];
  }
  model_.offset = objective_at(lp_, model_.fixed_value);
  model_.matrix.num_rows = static_cast<Index>(model_.user_row.size());
  std::vector<Index> rows;
  std::vector<double> values;
  for (const Index col : model_.user_col) {
    rows.clear();
    values.clear();
    for (Offset k = lp_.matrix.begin(col); k < lp_.matrix.end(col); ++k) {
      const Index row = lp_.matrix.index[k];
      if (row_of_[row] < 0 || lp_.matrix.value[k] == 0) continue;
      rows.push_back(row_of_[row]);
      values.push_back(lp_.matrix.value[k] * scaling.row[row] * scaling.col[col]);
    }
    model_.matrix.append_col(rows.data(), values.data(), static_cast<Index>(rows.size()));
    model_.col_scale.push_back(scaling.col[col]);
    model_.cost.push_back(static_cast<double>(cost_[col]) * scaling.col[col]);
    model_.lower.push_back(lp_.col_lower[col] / scaling.col[col]);
    model_.upper.push_back(lp_.col_upper[col] / scaling.col[col]);
  }
}

void Builder::add_quadratic() {
  if (!lp_.is_quadratic()) return;
  SparseMatrix& q = model_.quadratic;
  q.num_rows = model_.num_structurals;
  std::vector<Index> rows;
  std::vector<double> values;
  for (const Index col : model_.user_col) {
    rows.clear();
    values.clear();
    for (Offset k = lp_.quadratic.begin(col); k < lp_.quadratic.end(col); ++k) {
      const Index other = col_of_[lp_.quadratic.index[k]];
      if (other < 0 || lp_.quadratic.value[k] == 0) continue;
      rows.push_back(other);
      values.push_back(lp_.quadratic.value[k] * model_.col_scale[other] * model_.col_scale[col_of_[col]]);
    }
    q.append_col(rows.data(), values.data(), static_cast<Index>(rows.size()));
  }
}

void Builder::add_rows(const Scaling& scaling) {
  constexpr double kSlackEntry = -1;
  for (Index i = 0; i < model_.num_rows(); ++i) {
    const Index row = model_.user_row[i];
    const double scale = scaling.row[row];
    const auto shift = static_cast<double>(fixed_activity_[row]);
    model_.row_scale.push_back(scale);
    const double lower = lp_.row_lower[row] - shift, upper = lp_.row_upper[row] - shift;
    if (coincide(lp_.row_lower[row], lp_.row_upper[row])) {
      model_.rhs.push_back((lower == upper ? lower : lower + (upper - lower) / 2) * scale);
      model_.slack_of_row.push_back(-1);
      continue;
    }
    model_.rhs.push_back(0);
    model_.slack_of_row.push_back(model_.num_cols());
    model_.matrix.append_col(&i, &kSlackEntry, 1);
    model_.col_scale.push_back(1 / scale);
    model_.cost.push_back(0);
    model_.lower.push_back(lower * scale);
    model_.upper.push_back(upper * scale);
  }
}

void Builder::scale_objective() {
  double largest = 0;
  for (const double c : model_.cost) largest = std::max(largest, std::abs(c));
  if (model_.is_quadratic()) {
    for (const double q : model_.quadratic.value) largest = std::max(largest, std::abs(q));
  }
  model_.objective_scale = power_of_two_near(largest);
  for (double& c : model_.cost) c /= model_.objective_scale;
  for (double& q : model_.quadratic.value) q /= model_.objective_scale;
}

BarrierModel Builder::build() {
  choose_columns();
  choose_rows();
  Scaling scaling = scale_matrix();
  balance(scaling);
  add_structurals(scaling);
  add_quadratic();
  add_rows(scaling);
  scale_objective();
  model_.by_row = model_.matrix.transpose();
  model_.matrix = model_.by_row.transpose();  // entries of a column in increasing order
  for (Index col = 0; col < model_.num_cols(); ++col) {
    if (model_.lower[col] == -kInf && model_.upper[col] == kInf) ++model_.num_free;
  }
  return std::move(model_);
}

}  // namespace

BarrierModel make_barrier_model(const LpData& lp, double feasibility_tol, bool only_largest) {
  return Builder(lp, feasibility_tol, only_largest).build();
}

void add_quadratic_product(const BarrierModel& model, double factor, const std::vector<double>& v,
                           std::vector<double>& sum) {
  const SparseMatrix& q = model.quadratic;
  for (Index col = 0; col < q.num_cols; ++col) {
    for (Offset k = q.begin(col); k < q.end(col); ++k) {
      const Index row = q.index[k];
      const double entry = factor * q.value[k];
      sum[row] += entry * v[col];
      if (row != col) sum[col] += entry * v[row];
    }
  }
}

LpPoint user_point(const LpData& lp, const BarrierModel& model, const std::vector<double>& v,
                   const std::vector<double>& y) {
  LpPoint point;
  point.x = model.fixed_value;
  for (Index j = 0; j < model.num_structurals; ++j) {
    const Index col = model.user_col[j];
    point.x[col] = std::clamp(v[j] * model.col_scale[j], lp.col_lower[col], lp.col_upper[col]);
  }
  point.pi.assign(static_cast<std::size_t>(lp.num_rows()), 0);
  for (Index i = 0; i < model.num_rows(); ++i) {
    const Index row = model.user_row[i];
    double pi = y[i] * model.row_scale[i] * model.objective_scale;
    if (lp.row_lower[row] == -kInf) pi = std::min(pi, 0.0);
    if (lp.row_upper[row] == kInf) pi = std::max(pi, 0.0);
    point.pi[row] = pi;
  }
  const std::vector<double> gradient = gradient_at(lp, point.x);
  std::vector<Extended> activity(point.pi.size(), 0);
  for (Index col = 0; col < lp.num_cols(); ++col) {
    Extended d = gradient[col];
    for (Offset k = lp.matrix.begin(col); k < lp.matrix.end(col); ++k) {
      const Index row = lp.matrix.index[k];
      activity[row] += Extended(lp.matrix.value[k]) * point.x[col];
      d -= Extended(lp.matrix.value[k]) * point.pi[row];
    }
    point.reduced_cost.push_back(static_cast<double>(d));
  }
  for (const Extended value : activity) point.row_activity.push_back(static_cast<double>(value));
  return point;
}

}  // namespace zorvex
