#include "summary.hpp"

#include <array>
#include <cmath>
#include <optional>

#include "json_text.hpp"

namespace zorvex_cli {

namespace {

std::optional<double> number(ZLPmodel* model, const char* attribute) {
  double value = 0;
  if (ZLPgetdblattr(model, attribute, &value) != 0) return std::nullopt;
  return value;
}

// Attributes that are counts in the model, whichever type they are kept in.
std::optional<double> count(ZLPmodel* model, const char* attribute) {
  int value = 0;
  if (ZLPgetintattr(model, attribute, &value) != 0) return std::nullopt;
  return value;
}

// Relative to the objective, as the log prints it (there in percent).
std::optional<double> gap(std::optional<double> objective, std::optional<double> bound) {
  if (!objective || !bound) return std::nullopt;
  if (!(std::fabs(*objective) < ZLP_INFINITY) || !(std::fabs(*bound) < ZLP_INFINITY)) return std::nullopt;
  const double difference = std::fabs(*objective - *bound);
  if (difference < 1e-10) return 0.0;
  if (std::fabs(*objective) > 1e-6) return difference / std::fabs(*objective);
  return std::nullopt;
}

}  // namespace

const char* status_name(int status) {
  static constexpr std::array<const char*, 14> kNames = {
      "UNKNOWN",         "LOADED",     "OPTIMAL",    "INFEASIBLE",     "INF_OR_UNBD", "UNBOUNDED", "CUTOFF",
      "ITERATION_LIMIT", "NODE_LIMIT", "TIME_LIMIT", "SOLUTION_LIMIT", "INTERRUPTED", "NUMERIC",   "SUBOPTIMAL"};
  return status >= 0 && status < static_cast<int>(kNames.size()) ? kNames[status] : kNames[0];
}

std::string summary_json(ZLPmodel* model, const std::string& model_path) {
  const int status = int_attribute(model, "Status");
  const std::optional<double> objective = number(model, "ObjVal");
  const std::optional<double> bound = number(model, "ObjBound");
  int major = 0, minor = 0, technical = 0;
  ZLPversion(&major, &minor, &technical);

  JsonObject json;
  json.add("model", model_path);
  json.add("rows", int_attribute(model, "NumConstrs"));
  json.add("columns", int_attribute(model, "NumVars"));
  json.add("nonzeros", int_attribute(model, "NumNZs"));
  json.add("status", status);
  json.add("status_name", std::string(status_name(status)));
  json.add("objective", objective);
  json.add("bound", bound);
  json.add("gap", gap(objective, bound));
  json.add("solutions", count(model, "SolCount"));
  json.add("runtime", number(model, "Runtime"));
  json.add("iterations", number(model, "IterCount"));
  json.add("barrier_iterations", count(model, "BarIterCount"));
  json.add("nodes", number(model, "NodeCount"));
  json.add("max_bound_violation", number(model, "BoundVio"));
  json.add("max_constraint_violation", number(model, "ConstrVio"));
  json.add("max_integrality_violation", number(model, "IntVio"));
  json.add("max_dual_violation", number(model, "DualVio"));
  json.add("max_complementarity_violation", number(model, "ComplVio"));
  json.add("version", std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(technical));
  return json.text();
}

}  // namespace zorvex_cli
