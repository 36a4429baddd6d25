#include "simplex/scaling.hpp"

#include <algorithm>
#include <cmath>

namespace zorvex {

namespace {

constexpr int kMaxPasses = 10;
constexpr double kWellScaledLow = 0.2;  // matrices whose entries all lie in [low, high] are left alone
constexpr double kWellScaledHigh = 5.0;
constexpr double kPassGain = 0.9;    // a geometric pass must narrow the spread by this factor to go on
constexpr double kMaxExponent = 20;  // factors stay within 2^-20 .. 2^20

double power_of_two(double factor) {
  return std::exp2(std::clamp(std::round(std::log2(factor)), -kMaxExponent, kMaxExponent));
}

// Smallest and largest magnitude of one row or column.
struct Spread {
  double low = kInf;
  double high = 0;
  void add(double magnitude) {
    low = std::min(low, magnitude);
    high = std::max(high, magnitude);
  }
};

// Sets every factor of `scale` to 1 / sqrt(low * high) of its line, given the other side's factors. Returns the worst
// ratio high / low seen.
double geometric_pass(const SparseMatrix& lines, const std::vector<double>& other, std::vector<double>& scale) {
  double worst = 1;
  for (Index line = 0; line < lines.num_cols; ++line) {
    Spread spread;
    for (Offset k = lines.begin(line); k < lines.end(line); ++k) {
      const double magnitude = std::abs(lines.value[k]) * other[lines.index[k]];
      if (magnitude > 0) spread.add(magnitude);
    }
    if (spread.high == 0) continue;
    scale[line] = 1 / std::sqrt(spread.low * spread.high);
    worst = std::max(worst, spread.high / spread.low);
  }
  return worst;
}

// Sets every factor so that the largest entry of its line becomes one, given the other side's factors.
void equilibrate(const SparseMatrix& lines, const std::vector<double>& other, std::vector<double>& scale) {
  for (Index line = 0; line < lines.num_cols; ++line) {
    double high = 0;
    for (Offset k = lines.begin(line); k < lines.end(line); ++k) {
      high = std::max(high, std::abs(lines.value[k]) * other[lines.index[k]]);
    }
    scale[line] = high > 0 ? 1 / high : 1.0;
  }
}

}  // namespace

Scaling unit_scaling(const LpData& lp) {
  return {std::vector<double>(static_cast<std::size_t>(lp.num_rows()), 1.0),
          std::vector<double>(static_cast<std::size_t>(lp.num_cols()), 1.0)};
}

void extend_scaling(Scaling& scaling, const SparseMatrix& rows) {
  std::vector<double> factor(static_cast<std::size_t>(rows.num_cols), 1.0);
  geometric_pass(rows, scaling.col, factor);
  for (const double f : factor) scaling.row.push_back(power_of_two(f));
}

Scaling compute_scaling(const LpData& lp, bool only_largest) {
  Scaling scaling = unit_scaling(lp);
  const SparseMatrix& matrix = lp.matrix;
  Spread overall;
  for (const double v : matrix.value) {
    if (v != 0) overall.add(std::abs(v));
  }
  if (overall.high == 0 || (overall.low >= kWellScaledLow && overall.high <= kWellScaledHigh)) return scaling;
  const SparseMatrix rows = matrix.transpose();
  double previous = kInf;
  if (only_largest) equilibrate(rows, scaling.col, scaling.row);
  for (int pass = 0; pass < kMaxPasses && !only_largest; ++pass) {
    geometric_pass(rows, scaling.col, scaling.row);
    const double worst = geometric_pass(matrix, scaling.row, scaling.col);
    if (worst > kPassGain * previous) break;
    previous = worst;
  }
  for (double& r : scaling.row) r = power_of_two(r);
  equilibrate(matrix, scaling.row, scaling.col);
  for (double& c : scaling.col) c = power_of_two(c);
  return scaling;
}

void report_costs(const LpData& lp, const Scaling& scaling, double cost_factor, LogSink& log) {
  if (!log.diagnostics()) return;
  Spread scaled, given;
  for (Index col = 0; col < lp.num_cols(); ++col) {
    if (lp.cost[col] == 0) continue;
    given.add(std::abs(lp.cost[col]));
    scaled.add(std::abs(lp.cost[col]) * scaling.col[col] * cost_factor);
  }
  if (given.high == 0) scaled.low = given.low = 0;
  log.diagnose("Scaled:\n");
  log.diagnose("MaxC=%12.5e, MinC=%12.5e, MaxOC=%12.5e, MinOC=%12.5e\n\n", scaled.high, scaled.low, given.high,
               given.low);
}

}  // namespace zorvex
