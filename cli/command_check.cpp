// zorvex check: is the solution in a file one of this model? Independent of the solver: reads the text itself, fetches
// the model's data and recomputes everything.
#include <cstdio>

#include "commands.hpp"
#include "quality.hpp"
#include "solution_file.hpp"

namespace zorvex_cli {

namespace {

void print_violation(const char* what, const Violation& violation, const std::string& where, double tolerance) {
  std::printf("%-12s max %-10.3Lg sum %-10.3Lg over %g: %d", what, violation.max, violation.sum, tolerance,
              violation.count);
  std::printf(violation.at < 0 ? "\n" : "  worst: %s\n", where.c_str());
}

std::string name_at(const std::vector<std::string>& names, int at) { return at < 0 ? "" : names[at]; }

}  // namespace

ExitCode run_check(const std::string& model_path, const std::string& solution_path, double tolerance,
                   double integer_tolerance) {
  const Env env = open_env();
  const Model model = read_model(env.get(), model_path);
  const ModelView view = fetch_model(model.get());
  const SolutionValues values = match_names(read_solution_file(solution_path), view.var_name, solution_path);
  const PointQuality quality = measure_point(view, values.value, tolerance, integer_tolerance);

  if (values.missing > 0) std::printf("%d variables are not in the file and count as 0\n", values.missing);
  std::printf("objective    %.15Lg\n", quality.objective);
  print_violation("bounds", quality.bound, name_at(view.var_name, quality.bound.at), tolerance);
  print_violation("constraints", quality.constraint, name_at(view.row_name, quality.constraint.at), tolerance);
  print_violation("integrality", quality.integrality, name_at(view.var_name, quality.integrality.at),
                  integer_tolerance);
  if (!view.sos.empty()) print_violation("SOS", quality.sos, "set " + std::to_string(quality.sos.at), tolerance);
  std::printf("%s\n", quality.is_feasible() ? "feasible" : "infeasible");
  return quality.is_feasible() ? kExitDone : kExitViolated;
}

}  // namespace zorvex_cli
