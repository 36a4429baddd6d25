#include "differential/nasty_lp.hpp"

#include <algorithm>
#include <cmath>
#include <vector>

#include "support/random_lp.hpp"

namespace zorvex::differential {
namespace {

bool chance(RandomStream& random, double probability) { return random.uniform() < probability; }

double power_of_ten(RandomStream& random, int most) {
  return std::pow(10.0, static_cast<double>(random.below(2 * most + 1) - most));
}

// Units change: the scaled model has the scaled solutions of the old one.
void change_units(LpData& lp, RandomStream& random) {
  const int most = chance(random, 0.5) ? 4 : 2;
  std::vector<double> row_factor;
  for (Index row = 0; row < lp.num_rows(); ++row) {
    const double factor = chance(random, 0.5) ? power_of_ten(random, most) : 1;
    row_factor.push_back(factor);
    lp.row_lower[row] *= factor;
    lp.row_upper[row] *= factor;
  }
  for (Index col = 0; col < lp.num_cols(); ++col) {
    const double factor = chance(random, 0.5) ? power_of_ten(random, most) : 1;
    for (Offset k = lp.matrix.begin(col); k < lp.matrix.end(col); ++k) {
      lp.matrix.value[k] *= factor * row_factor[lp.matrix.index[k]];
    }
    lp.cost[col] *= factor;
    lp.col_lower[col] /= factor;
    lp.col_upper[col] /= factor;
  }
}

void empty_some(LpData& lp, RandomStream& random) {
  std::vector<char> row_empty(lp.row_lower.size()), col_empty(lp.cost.size());
  for (char& empty : row_empty) empty = chance(random, 0.15);
  for (char& empty : col_empty) empty = chance(random, 0.15);
  SparseMatrix kept;
  kept.num_rows = lp.num_rows();
  for (Index col = 0; col < lp.num_cols(); ++col) {
    std::vector<Index> rows;
    std::vector<double> values;
    for (Offset k = lp.matrix.begin(col); k < lp.matrix.end(col); ++k) {
      if (row_empty[lp.matrix.index[k]] || col_empty[col]) continue;
      rows.push_back(lp.matrix.index[k]);
      values.push_back(lp.matrix.value[k]);
    }
    kept.append_col(rows.data(), values.data(), static_cast<Index>(rows.size()));
  }
  lp.matrix = std::move(kept);
}

// A copy of a row times a factor with one coefficient, and perhaps the sides, a little off.
void add_near_copy(LpData& lp, RandomStream& random) {
  const SparseMatrix rows = lp.matrix.transpose();
  const auto row = static_cast<Index>(random.below(lp.num_rows()));
  if (rows.col_length(row) == 0) return;
  const double factor = chance(random, 0.5) ? 1 : -2.5;
  SparseMatrix added;
  added.num_rows = lp.num_cols();
  std::vector<double> values(rows.value.begin() + rows.begin(row), rows.value.begin() + rows.end(row));
  for (double& value : values) value *= factor;
  if (chance(random, 0.7)) {
    values[static_cast<std::size_t>(random.below(static_cast<std::int64_t>(values.size())))] *=
        1 + power_of_ten(random, 3) * 1e-6;
  }
  added.append_col(rows.index.data() + rows.begin(row), values.data(), rows.col_length(row));
  const double shift = chance(random, 0.3) ? 1e-4 : 0;
  const double lower = lp.row_lower[row] * factor;
  const double upper = lp.row_upper[row] * factor;
  lp.matrix.append_rows(added);
  lp.row_lower.push_back(std::min(lower, upper) - shift);
  lp.row_upper.push_back(std::max(lower, upper) + shift);
}

void spoil_sides(LpData& lp, RandomStream& random) {
  if (chance(random, 0.3)) {
    const auto col = static_cast<Index>(random.below(lp.num_cols()));
    lp.col_upper[col] = lp.col_lower[col] - (chance(random, 0.5) ? 1 : 1e-9);
    if (!std::isfinite(lp.col_upper[col])) lp.col_upper[col] = kInf;
    return;
  }
  for (Index col = 0; col < lp.num_cols(); ++col) {
    if (chance(random, 0.3) && std::isinf(lp.col_upper[col])) lp.col_upper[col] = 1e6;
    if (chance(random, 0.3) && std::isinf(lp.col_lower[col])) lp.col_lower[col] = -1e6;
  }
}

}  // namespace

LpData nasty_lp(RandomStream& random) {
  static constexpr oracle::RandomLpShape kShapes[] = {
      {3, 4, 0.6, 0.8}, {8, 10, 0.4, 0.8}, {12, 12, 0.15, 0.85}, {6, 20, 0.3, 0.9}, {20, 8, 0.3, 0.9}};
  LpData lp = oracle::random_lp(random, kShapes[random.below(5)]);
  if (chance(random, 0.25)) empty_some(lp, random);
  if (chance(random, 0.2)) add_near_copy(lp, random);
  if (chance(random, 0.15)) spoil_sides(lp, random);
  if (chance(random, 0.4)) change_units(lp, random);
  return lp;
}

}  // namespace zorvex::differential
