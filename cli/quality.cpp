#include "quality.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zorvex_cli {

namespace {

constexpr long double kInf = std::numeric_limits<long double>::infinity();

// How far `value` lies outside [lower, upper]; infinite for what is not a finite number.
long double outside(long double value, double lower, double upper) {
  if (!std::isfinite(value)) return kInf;
  return std::max({static_cast<long double>(lower) - value, value - static_cast<long double>(upper), 0.0L});
}

void measure_columns(const ModelView& model, const std::vector<double>& x, double tolerance, double integer_tolerance,
                     PointQuality& quality) {
  for (int var = 0; var < model.num_vars(); ++var) {
    const long double value = x[var];
    long double amount = outside(value, model.lower[var], model.upper[var]);
    if (model.is_semicontinuous(var)) amount = std::min(amount, std::fabs(value));
    quality.bound.add(amount, var, tolerance);
    if (model.is_integer(var)) {
      quality.integrality.add(std::fabs(value - std::round(value)), var, integer_tolerance);
    }
  }
}

void measure_rows(const ModelView& model, const std::vector<double>& x, double tolerance, PointQuality& quality) {
  for (int row = 0; row < model.num_rows(); ++row) {
    long double activity = 0;
    for (int k = model.row_start[row]; k < model.row_start[row + 1]; ++k) {
      activity += static_cast<long double>(model.value[k]) * x[model.col_index[k]];
    }
    quality.constraint.add(outside(activity, model.row_lower[row], model.row_upper[row]), row, tolerance);
  }
}

// At most `type` neighbours may be nonzero: what lies outside the best such group must vanish.
void measure_sos(const ModelView& model, const std::vector<double>& x, double tolerance, PointQuality& quality) {
  for (int k = 0; k < static_cast<int>(model.sos.size()); ++k) {
    const std::vector<int>& member = model.sos[k].member;
    const std::size_t window = static_cast<std::size_t>(model.sos[k].type);
    long double best = kInf;
    for (std::size_t first = 0; first == 0 || first + window <= member.size(); ++first) {
      long double rest = 0;
      for (std::size_t j = 0; j < member.size(); ++j) {
        if (j < first || j >= first + window) rest += std::fabs(static_cast<long double>(x[member[j]]));
      }
      best = std::min(best, rest);
    }
    quality.sos.add(best, k, tolerance);
  }
}

long double objective_of(const ModelView& model, const std::vector<double>& x) {
  long double objective = model.obj_con;
  for (int var = 0; var < model.num_vars(); ++var) objective += static_cast<long double>(model.obj[var]) * x[var];
  for (std::size_t k = 0; k < model.q_value.size(); ++k) {
    objective += 0.5L * model.q_value[k] * x[model.q_first[k]] * x[model.q_second[k]];
  }
  return objective;
}

}  // namespace

void Violation::add(long double amount, int where, long double tolerance) {
  if (std::isnan(amount)) amount = kInf;
  if (!(amount > 0)) return;
  sum += amount;
  if (amount > tolerance) ++count;
  if (amount > max) {
    max = amount;
    at = where;
  }
}

PointQuality measure_point(const ModelView& model, const std::vector<double>& x, double tolerance,
                           double integer_tolerance) {
  PointQuality quality;
  quality.objective = objective_of(model, x);
  measure_columns(model, x, tolerance, integer_tolerance, quality);
  measure_rows(model, x, tolerance, quality);
  measure_sos(model, x, tolerance, quality);
  return quality;
}

}  // namespace zorvex_cli
