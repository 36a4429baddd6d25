#include "row_classes.hpp"

#include <cmath>
#include <span>

namespace zorvex_cli {

namespace {

struct Row {
  std::span<const int> col;
  std::span<const double> coef;
  double lower, upper;

  [[nodiscard]] bool is_equality() const { return lower == upper; }
  [[nodiscard]] bool is_ranged() const { return !is_equality() && std::isfinite(lower) && std::isfinite(upper); }
};

bool is_whole(double value) { return value == std::floor(value); }

// What the classes ask about the variables and coefficients of a row.
struct Traits {
  bool all_binary = true;
  bool all_integer = true;  // binaries included
  bool binary_or_continuous = true;
  bool whole_coefs = true;
  bool equal_sizes = true;  // |a_j| the same for all j
  bool any_binary = false;
  int negative = 0;         // coefficients below zero
  double negative_sum = 0;  // their sum
};

Traits examine(const ModelView& model, const Row& row) {
  Traits traits;
  for (std::size_t k = 0; k < row.col.size(); ++k) {
    const int var = row.col[k];
    const double coef = row.coef[k];
    const bool binary = model.is_binary(var);
    const bool integer = binary || (model.is_integer(var) && !model.is_semicontinuous(var));
    traits.all_binary &= binary;
    traits.all_integer &= integer;
    traits.any_binary |= binary;
    traits.binary_or_continuous &= binary || model.type[var] == 'C';
    traits.whole_coefs &= is_whole(coef);
    traits.equal_sizes &= std::fabs(coef) == std::fabs(row.coef[0]);
    if (coef < 0) {
      ++traits.negative;
      traits.negative_sum += coef;
    }
  }
  return traits;
}

RowClass classify_pair(const ModelView& model, const Row& row, const Traits& traits) {
  if (row.is_equality()) return RowClass::kAggregation;
  const bool opposite = row.coef[0] == -row.coef[1];
  if (opposite && model.type[row.col[0]] == model.type[row.col[1]]) return RowClass::kPrecedence;
  return traits.any_binary && !traits.all_binary ? RowClass::kVariableBound : RowClass::kGeneral;
}

// Binary rows whose coefficients are all of one size: divided by it, and with x replaced by 1 - x where the
// coefficient is negative, they read lower <= sum x <= upper.
RowClass classify_counting(const Row& row, const Traits& traits) {
  const double size = std::fabs(row.coef[0]);
  const double upper = std::floor(row.upper / size + traits.negative);
  const double lower = std::ceil(row.lower / size + traits.negative);
  const auto count = static_cast<double>(row.col.size());
  if (row.is_equality()) {
    if (lower != upper) return RowClass::kGeneral;  // no whole number fits
    if (upper == 1 || upper == count - 1) return RowClass::kSetPartitioning;
    return upper >= 2 ? RowClass::kCardinality : RowClass::kGeneral;
  }
  // A lower side on the x is an upper side on the 1 - x.
  const double most = std::isfinite(row.upper) ? upper : count - lower;
  if (most == 1) return RowClass::kSetPacking;
  if (most == count - 1) return RowClass::kSetCovering;
  return most >= 2 ? RowClass::kInvariantKnapsack : RowClass::kGeneral;
}

// Binary rows with whole coefficients, complemented so that all are positive: sum a x <= capacity.
RowClass classify_weighted(const Row& row, const Traits& traits) {
  if (row.is_equality()) return is_whole(row.upper) ? RowClass::kEqualityKnapsack : RowClass::kGeneral;
  double total = 0;
  for (const double coef : row.coef) total += std::fabs(coef);
  const bool at_most = std::isfinite(row.upper);
  const double capacity = at_most ? row.upper - traits.negative_sum : total - (row.lower - traits.negative_sum);
  for (const double coef : row.coef) {
    if (std::fabs(coef) == capacity && capacity >= 2) return RowClass::kBinPacking;
  }
  return RowClass::kKnapsack;
}

RowClass classify(const ModelView& model, const Row& row) {
  if (row.col.empty()) return RowClass::kEmpty;
  if (std::isinf(row.lower) && std::isinf(row.upper)) return RowClass::kFree;
  if (row.col.size() == 1) return RowClass::kSingleton;
  const Traits traits = examine(model, row);
  if (!row.is_ranged()) {
    if (traits.all_binary && traits.equal_sizes) {
      const RowClass counting = classify_counting(row, traits);
      if (counting != RowClass::kGeneral) return counting;
    }
    if (row.col.size() == 2) {
      const RowClass pair = classify_pair(model, row, traits);
      if (pair != RowClass::kGeneral) return pair;
    }
    if (traits.all_binary && traits.whole_coefs) return classify_weighted(row, traits);
    if (traits.all_integer && traits.whole_coefs && !row.is_equality()) return RowClass::kIntegerKnapsack;
  }
  const bool mixed = traits.any_binary && traits.binary_or_continuous && !traits.all_binary;
  return mixed ? RowClass::kMixedBinary : RowClass::kGeneral;
}

}  // namespace

const char* row_class_name(RowClass row_class) {
  static constexpr std::array<const char*, kNumRowClasses> kNames = {
      "empty",         "free",           "singleton",          "aggregation",
      "precedence",    "variable bound", "set partitioning",   "set packing",
      "set covering",  "cardinality",    "invariant knapsack", "equality knapsack",
      "bin packing",   "knapsack",       "integer knapsack",   "mixed binary",
      "general linear"};
  return kNames[static_cast<int>(row_class)];
}

RowClass classify_row(const ModelView& model, int row) {
  const int begin = model.row_start[row];
  const std::size_t count = model.row_start[row + 1] - begin;
  return classify(model, {{model.col_index.data() + begin, count},
                          {model.value.data() + begin, count},
                          model.row_lower[row],
                          model.row_upper[row]});
}

std::array<int, kNumRowClasses> count_row_classes(const ModelView& model) {
  std::array<int, kNumRowClasses> counts{};
  for (int row = 0; row < model.num_rows(); ++row) ++counts[static_cast<int>(classify_row(model, row))];
  return counts;
}

}  // namespace zorvex_cli
