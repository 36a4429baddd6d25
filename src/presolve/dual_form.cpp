#include "presolve/dual_form.hpp"

#include <algorithm>
#include <cmath>

namespace zorvex {
namespace {

constexpr Index kTallRows = 1000;  // below, either is quick
// Rows per column. Columns with two bounds make for long steps of the dual simplex, to which the dual of the model has
// no counterpart: such a model has to be taller, and its columns so long that solves with its own basis matrices fill.
constexpr double kTall = 2, kTallBoxed = 3;
constexpr double kBoxedShare = 0.8;  // of the columns from which a model counts as boxed
constexpr double kLongColumn = 20;   // nonzeros

}  // namespace

bool dual_pays(const LpData& primal) {
  if (primal.num_rows() < kTallRows || primal.num_rows() <= kTall * primal.num_cols()) return false;
  if (primal.boxed_share() < kBoxedShare) return true;
  const double nonzeros = static_cast<double>(primal.matrix.num_nonzeros());
  return primal.num_rows() > kTallBoxed * primal.num_cols() && nonzeros >= kLongColumn * primal.num_cols();
}

DualForm::DualForm(const LpData& primal, DualRows rows) : primal_(primal), rows_(rows) {
  dual_.matrix.num_rows = primal.num_cols();
  choose_references();
  add_multipliers();
  add_reduced_costs();
}

// A lower bound before an upper one, of two the one that is nearer to zero: its size goes into the sides.
bool DualForm::rests_at_upper(Index col) const {
  const double lower = primal_.col_lower[col];
  const double upper = primal_.col_upper[col];
  return std::isfinite(upper) && (!std::isfinite(lower) || std::abs(upper) < std::abs(lower));
}

void DualForm::choose_references() {
  Extended value = primal_.offset;
  for (Index col = 0; col < primal_.num_cols(); ++col) {
    const double bound = rests_at_upper(col) ? primal_.col_upper[col] : primal_.col_lower[col];
    reference_.push_back(std::isfinite(bound) ? bound : 0);
    value += Extended(primal_.cost[col]) * reference_[col];
  }
  dual_.offset = static_cast<double>(-value);
}

Index DualForm::add_column(const std::vector<Index>& index, const std::vector<double>& value, double cost,
                           bool positive) {
  dual_.matrix.append_col(index.data(), value.data(), static_cast<Index>(index.size()));
  dual_.cost.push_back(cost);
  dual_.col_lower.push_back(positive ? 0 : -kInf);
  dual_.col_upper.push_back(positive ? kInf : 0);
  return dual_.num_cols() - 1;
}

// max  sum_i (lower_i y_i for y_i > 0, upper_i y_i for y_i < 0) with sides less what the references contribute.
void DualForm::add_multipliers() {
  const SparseMatrix by_row = primal_.matrix.transpose();
  std::vector<Index> index;
  std::vector<double> value;
  for (Index row = 0; row < primal_.num_rows(); ++row) {
    index.assign(by_row.index.begin() + by_row.begin(row), by_row.index.begin() + by_row.end(row));
    value.assign(by_row.value.begin() + by_row.begin(row), by_row.value.begin() + by_row.end(row));
    Extended shift = 0;
    for (std::size_t k = 0; k < index.size(); ++k) shift += Extended(value[k]) * reference_[index[k]];
    const double lower = primal_.row_lower[row];
    const double upper = primal_.row_upper[row];
    RowColumns columns{-1, -1};
    if (std::isfinite(lower)) {
      columns.at_lower = add_column(index, value, static_cast<double>(shift - lower), true);
    }
    if (lower == upper) {
      dual_.col_lower.back() = -kInf;
    } else if (std::isfinite(upper)) {
      columns.at_upper = add_column(index, value, static_cast<double>(shift - upper), false);
    }
    row_columns_.push_back(columns);
  }
}

// a_j'y + d_j = c_j, where the sign of d_j is that of the bounds there are.
void DualForm::add_reduced_costs() {
  for (Index col = 0; col < primal_.num_cols(); ++col) {
    const double cost = primal_.cost[col];
    const double width = primal_.col_upper[col] - primal_.col_lower[col];
    const bool at_upper = rests_at_upper(col);
    const bool has_bound = std::isfinite(primal_.col_lower[col]) || std::isfinite(primal_.col_upper[col]);
    const bool as_columns = rows_ == DualRows::kEquations || !has_bound;
    dual_.row_lower.push_back(as_columns || at_upper ? cost : -kInf);
    dual_.row_upper.push_back(as_columns || !at_upper ? cost : kInf);
    ReducedCostColumns columns{-1, -1};
    if (has_bound && as_columns) columns.near = add_column({col}, {1.0}, 0, !at_upper);
    if (std::isfinite(width)) columns.far = add_column({col}, {1.0}, at_upper ? width : -width, at_upper);
    reduced_cost_columns_.push_back(columns);
  }
}

std::vector<double> DualForm::multipliers(const std::vector<double>& x) const {
  std::vector<double> pi;
  for (const RowColumns& columns : row_columns_) {
    pi.push_back((columns.at_lower >= 0 ? x[columns.at_lower] : 0) + (columns.at_upper >= 0 ? x[columns.at_upper] : 0));
  }
  return pi;
}

std::vector<double> DualForm::primal_proof(const std::vector<double>& ray) const { return multipliers(ray); }

// What is basic in the dual is nonbasic here: a multiplier at the side it prices, a reduced cost at its bound.
Basis DualForm::complementary(const Basis& dual) const {
  const auto basic = [&](Index col) { return col >= 0 && dual.col[col] == BasisStatus::kBasic; };
  Basis basis;
  for (const RowColumns& columns : row_columns_) {
    basis.row.push_back(basic(columns.at_lower)   ? BasisStatus::kAtLower
                        : basic(columns.at_upper) ? BasisStatus::kAtUpper
                                                  : BasisStatus::kBasic);
  }
  for (Index col = 0; col < primal_.num_cols(); ++col) {
    const auto& [near, far] = reduced_cost_columns_[col];
    const BasisStatus at_reference = rests_at_upper(col)                     ? BasisStatus::kAtUpper
                                     : std::isfinite(primal_.col_lower[col]) ? BasisStatus::kAtLower
                                                                             : BasisStatus::kNonbasicFree;
    const bool at_far = basic(far);
    const bool at_near = basic(near) || (dual.row[col] == BasisStatus::kBasic && !at_far);
    basis.col.push_back(at_far    ? (rests_at_upper(col) ? BasisStatus::kAtLower : BasisStatus::kAtUpper)
                        : at_near ? at_reference
                                  : BasisStatus::kBasic);
  }
  return basis;
}

PresolvePoint DualForm::primal_point(const PresolvePoint& dual) const {
  PresolvePoint point;
  point.pi = multipliers(dual.x);
  if (!dual.basis.empty()) point.basis = complementary(dual.basis);
  std::vector<Extended> activity(static_cast<std::size_t>(primal_.num_rows()), 0);
  for (Index col = 0; col < primal_.num_cols(); ++col) {
    double x = reference_[col] - dual.pi[col];
    const BasisStatus status = point.basis.empty() ? BasisStatus::kBasic : point.basis.col[col];
    if (status == BasisStatus::kAtLower) x = primal_.col_lower[col];
    if (status == BasisStatus::kAtUpper) x = primal_.col_upper[col];
    point.x.push_back(x);
    Extended d = primal_.cost[col];
    for (Offset k = primal_.matrix.begin(col); k < primal_.matrix.end(col); ++k) {
      const Index row = primal_.matrix.index[k];
      activity[row] += Extended(primal_.matrix.value[k]) * x;
      d -= Extended(primal_.matrix.value[k]) * point.pi[row];
    }
    point.reduced_cost.push_back(static_cast<double>(d));
  }
  for (const Extended value : activity) point.row_activity.push_back(static_cast<double>(value));
  return point;
}

}  // namespace zorvex
