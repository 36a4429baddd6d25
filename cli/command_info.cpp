#include <cmath>
#include <cstdio>
#include <map>
#include <string>

#include "commands.hpp"
#include "model_view.hpp"
#include "row_classes.hpp"

namespace zorvex_cli {

namespace {

// Smallest and largest absolute value of the finite nonzeros seen.
class Range {
 public:
  void add(double value) {
    const double size = std::fabs(value);
    if (size == 0 || !std::isfinite(size)) return;
    if (count_ == 0 || size < min_) min_ = size;
    if (count_ == 0 || size > max_) max_ = size;
    ++count_;
  }

  void print(const char* what) const {
    if (count_ == 0) {
      std::printf("  %-14s -\n", what);
    } else {
      std::printf("  %-14s [%.3g, %.3g]\n", what, min_, max_);
    }
  }

 private:
  double min_ = 0, max_ = 0;
  long count_ = 0;
};

void print_sizes(const ModelView& model) {
  std::printf("model        %s\n", model.name.empty() ? "(unnamed)" : model.name.c_str());
  std::printf("sense        %s\n", model.sense < 0 ? "maximize" : "minimize");
  std::printf("rows         %d\n", model.num_rows());
  std::printf("columns      %d\n", model.num_vars());
  std::printf("nonzeros     %d\n", static_cast<int>(model.value.size()));
  if (!model.q_value.empty()) std::printf("quadratic    %d terms\n", static_cast<int>(model.q_value.size()));
  int sos1 = 0;
  for (const Sos& sos : model.sos) sos1 += sos.type == 1 ? 1 : 0;
  const int sos2 = static_cast<int>(model.sos.size()) - sos1;
  if (!model.sos.empty()) std::printf("SOS          %d of type 1, %d of type 2\n", sos1, sos2);
}

using Counts = std::map<std::string, int>;

void print_counts(const char* title, const Counts& counts) {
  std::printf("%s\n", title);
  for (const auto& [what, count] : counts) std::printf("  %-18s %d\n", what.c_str(), count);
}

const char* type_name(const ModelView& model, int var) {
  switch (model.type[var]) {
    case ZLP_SEMICONT:
      return "semicontinuous";
    case ZLP_SEMIINT:
      return "semi-integer";
    case ZLP_CONTINUOUS:
      return "continuous";
    default:
      return model.is_binary(var) ? "binary" : "integer";
  }
}

// Of a variable's bounds or a row's sides.
const char* interval_name(double lower, double upper, bool row) {
  if (lower == upper) return row ? "equality" : "fixed";
  if (std::isinf(lower) && std::isinf(upper)) return "free";
  if (std::isinf(lower)) return row ? "at most" : "upper bound only";
  if (std::isinf(upper)) return row ? "at least" : "lower bound only";
  return row ? "range" : "boxed";
}

void print_columns(const ModelView& model) {
  Counts types, bounds;
  for (int var = 0; var < model.num_vars(); ++var) {
    ++types[type_name(model, var)];
    ++bounds[interval_name(model.lower[var], model.upper[var], false)];
  }
  print_counts("column types", types);
  print_counts("column bounds", bounds);
}

void print_rows(const ModelView& model) {
  Counts sides;
  for (int row = 0; row < model.num_rows(); ++row) {
    ++sides[interval_name(model.row_lower[row], model.row_upper[row], true)];
  }
  print_counts("row sides", sides);
  std::printf("row classes\n");
  const auto classes = count_row_classes(model);
  for (int k = 0; k < kNumRowClasses; ++k) {
    if (classes[k] > 0) std::printf("  %-18s %d\n", row_class_name(static_cast<RowClass>(k)), classes[k]);
  }
}

void print_ranges(const ModelView& model) {
  Range matrix, objective, bounds, sides, quadratic;
  for (const double value : model.value) matrix.add(value);
  for (const double value : model.q_value) quadratic.add(value);
  for (int var = 0; var < model.num_vars(); ++var) {
    objective.add(model.obj[var]);
    bounds.add(model.lower[var]);
    bounds.add(model.upper[var]);
  }
  for (int row = 0; row < model.num_rows(); ++row) {
    sides.add(model.row_lower[row]);
    if (model.row_upper[row] != model.row_lower[row]) sides.add(model.row_upper[row]);
  }
  std::printf("ranges of absolute values\n");
  matrix.print("matrix");
  objective.print("objective");
  if (!model.q_value.empty()) quadratic.print("quadratic");
  bounds.print("bounds");
  sides.print("right sides");
}

}  // namespace

ExitCode run_info(const std::string& path) {
  const Env env = open_env();
  const Model handle = read_model(env.get(), path);
  const ModelView model = fetch_model(handle.get());
  print_sizes(model);
  print_columns(model);
  print_rows(model);
  print_ranges(model);
  return kExitDone;
}

}  // namespace zorvex_cli
