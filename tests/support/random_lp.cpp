#include "support/random_lp.hpp"

#include <algorithm>
#include <utility>
#include <vector>

namespace zorvex::oracle {
namespace {

class Generator {
 public:
  Generator(RandomStream& random, const RandomLpShape& shape) : random_(random), shape_(shape) {}
  LpData make();

 private:
  bool chance(double probability) { return random_.uniform() < probability; }
  double coefficient();
  std::pair<double, double> range_around(double value, bool row);
  void make_columns(LpData& lp);
  void make_rows(LpData& lp);

  RandomStream& random_;
  const RandomLpShape& shape_;
  bool reals_ = false;
  double density_ = 0;
  std::vector<double> point_;
};

double Generator::coefficient() {
  const double magnitude = reals_ ? 0.1 + 3 * random_.uniform() : static_cast<double>(1 + random_.below(3));
  return chance(0.35) ? -magnitude : magnitude;
}

// Bounds that hold value, often tightly.
std::pair<double, double> Generator::range_around(double value, bool row) {
  const auto room = [&] { return chance(0.4) ? 0.0 : static_cast<double>(random_.below(4)); };
  const double kind = random_.uniform();
  if (kind < (row ? 0.3 : 0.05)) return {value, value};
  if (kind < (row ? 0.55 : 0.6)) return {value - room(), row ? kInf : value + 1 + room()};
  if (kind < 0.8) return {row ? -kInf : value - room(), row ? value + room() : kInf};
  if (kind < 0.9) return {value - room(), value + room()};
  return {-kInf, row ? value + room() : kInf};
}

void Generator::make_columns(LpData& lp) {
  const Index m = lp.matrix.num_rows;
  const Index n = static_cast<Index>(1 + random_.below(shape_.max_cols));
  std::vector<double> dense(m);
  for (Index j = 0; j < n; ++j) {
    point_.push_back(reals_ ? 4 * random_.uniform() - 1 : static_cast<double>(random_.below(4)));
    const auto [lower, upper] = range_around(point_[j], false);
    lp.col_lower.push_back(lower);
    lp.col_upper.push_back(upper);
    if (j > 0 && chance(0.15)) {  // parallel to the last column, often with parallel cost
      const double factor = chance(0.5) ? 1 : coefficient();
      for (double& entry : dense) entry *= factor;
      lp.cost.push_back(chance(0.5) ? lp.cost[j - 1] * factor : coefficient());
    } else {
      const double fill = chance(0.3) ? 1.2 / m : density_;
      for (double& entry : dense) entry = chance(fill) ? coefficient() : 0;
      lp.cost.push_back(chance(0.3) ? 0 : coefficient() + (chance(0.5) ? 1 : 0));
    }
    std::vector<Index> rows;
    std::vector<double> values;
    for (Index i = 0; i < m; ++i) {
      if (dense[i] == 0) continue;
      rows.push_back(i);
      values.push_back(dense[i]);
    }
    lp.matrix.append_col(rows.data(), values.data(), static_cast<Index>(rows.size()));
  }
}

// Some rows are thinned to one or two entries, some replaced by multiples of the row before; then the sides.
void Generator::make_rows(LpData& lp) {
  SparseMatrix by_row = lp.matrix.transpose();
  SparseMatrix rows;
  rows.num_rows = by_row.num_rows;
  for (Index i = 0; i < by_row.num_cols; ++i) {
    Index count = by_row.col_length(i);
    if (chance(0.25)) count = std::min<Index>(count, static_cast<Index>(1 + random_.below(2)));
    const Offset from = by_row.begin(i);
    std::vector<Index> index(by_row.index.begin() + from, by_row.index.begin() + from + count);
    std::vector<double> value(by_row.value.begin() + from, by_row.value.begin() + from + count);
    if (i > 0 && chance(0.12)) {
      const double factor = chance(0.4) ? 1 : coefficient();
      index.assign(rows.index.begin() + rows.begin(i - 1), rows.index.begin() + rows.end(i - 1));
      value.assign(rows.value.begin() + rows.begin(i - 1), rows.value.begin() + rows.end(i - 1));
      for (double& entry : value) entry *= factor;
    }
    rows.append_col(index.data(), value.data(), static_cast<Index>(index.size()));
  }
  lp.matrix = rows.transpose();
  const bool feasible = chance(shape_.feasible_share);
  for (Index i = 0; i < rows.num_cols; ++i) {
    double activity = 0;
    for (Offset k = rows.begin(i); k < rows.end(i); ++k) activity += rows.value[k] * point_[rows.index[k]];
    if (!feasible && chance(0.3)) activity += coefficient();
    const auto [lower, upper] = range_around(activity, true);
    lp.row_lower.push_back(lower);
    lp.row_upper.push_back(upper);
  }
}

LpData Generator::make() {
  LpData lp;
  reals_ = chance(1.0 / 3);
  density_ = shape_.density * (0.3 + 1.2 * random_.uniform());
  lp.matrix.num_rows = static_cast<Index>(1 + random_.below(shape_.max_rows));
  lp.offset = chance(0.5) ? 0 : coefficient();
  make_columns(lp);
  make_rows(lp);
  return lp;
}

}  // namespace

LpData random_lp(RandomStream& random, const RandomLpShape& shape) { return Generator(random, shape).make(); }

}  // namespace zorvex::oracle
