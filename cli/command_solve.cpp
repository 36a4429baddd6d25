#include <cstdio>
#include <fstream>

#include "commands.hpp"
#include "file_name.hpp"
#include "model_view.hpp"
#include "solution_file.hpp"
#include "summary.hpp"

namespace zorvex_cli {

namespace {

Model relaxed(ZLPmodel* model) {
  ZLPmodel* made = nullptr;
  require(model, ZLPrelaxmodel(model, &made), "cannot relax the model");
  return Model(made);
}

// A solution file serves as a MIP start: the variables it names get their values, the others stay open.
void start_from_solution(ZLPmodel* model, const std::string& path) {
  const std::vector<std::string> names = fetch_names(model, "VarName", int_attribute(model, "NumVars"));
  const SolutionValues values = match_names(read_solution_file(path), names, path);
  std::vector<int> index;
  std::vector<double> start;
  for (std::size_t var = 0; var < names.size(); ++var) {
    if (!values.found[var]) continue;
    index.push_back(static_cast<int>(var));
    start.push_back(values.value[var]);
  }
  require(model, ZLPsetdblattrlist(model, "Start", static_cast<int>(index.size()), index.data(), start.data()),
          "cannot start from '" + path + "'");
}

void read_start(ZLPmodel* model, const std::string& path) {
  if (has_suffix(path, ".sol")) {
    start_from_solution(model, path);
  } else {
    require(model, ZLPread(model, path.c_str()), "cannot read '" + path + "'");
  }
}

bool has_solution(ZLPmodel* model) {
  double objective = 0;
  return int_attribute(model, "SolCount") > 0 || ZLPgetdblattr(model, "ObjVal", &objective) == 0;
}

void write_solution(ZLPmodel* model, const std::string& path) {
  if (!has_solution(model)) {
    std::fprintf(stderr, "zorvex: there is no solution to write to '%s'\n", path.c_str());
    return;
  }
  require(model, ZLPwrite(model, path.c_str()), "cannot write '" + path + "'");
}

void write_basis(ZLPmodel* model, const std::string& path) {
  if (ZLPisattravailable(model, "VBasis") == 0) {
    std::fprintf(stderr, "zorvex: there is no basis to write to '%s'\n", path.c_str());
    return;
  }
  require(model, ZLPwrite(model, path.c_str()), "cannot write '" + path + "'");
}

void require_suffix(const char* option, const std::string& path, const std::string& suffix) {
  if (path.empty() || has_suffix(path, suffix)) return;
  throw Failure(kExitUsage, std::string(option) + ": '" + path + "' does not end in " + suffix);
}

void write_summary(ZLPmodel* model, const SolveRequest& request) {
  const std::string text = summary_json(model, request.model);
  if (request.json == "-") {
    std::fputs(text.c_str(), stdout);
    return;
  }
  std::ofstream stream(request.json);
  stream << text;
  stream.flush();
  if (!stream) throw Failure(kExitFailed, "cannot write '" + request.json + "'");
}

}  // namespace

ExitCode run_solve(const SolveRequest& request) {
  require_suffix("--solution", request.solution, ".sol");
  require_suffix("--basis", request.basis, ".bas");
  const Env env = open_env();
  apply_settings(env.get(), request.settings);
  Model model = read_model(env.get(), request.model);
  if (request.relax) model = relaxed(model.get());
  if (!request.start.empty()) read_start(model.get(), request.start);

  // The first Ctrl-C ends the solve at the best solution so far, the second one the program.
  require(model.get(), ZLPsetsignal(model.get()), "cannot handle interrupts");
  require(model.get(), ZLPoptimize(model.get()), "cannot solve '" + request.model + "'");

  if (!request.solution.empty()) write_solution(model.get(), request.solution);
  if (!request.basis.empty()) write_basis(model.get(), request.basis);
  if (!request.json.empty()) write_summary(model.get(), request);
  return kExitDone;
}

}  // namespace zorvex_cli
