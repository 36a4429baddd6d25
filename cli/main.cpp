// The program `zorvex`: a thin client of the C interface.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <string>

#include "commands.hpp"

using namespace zorvex_cli;

namespace {

std::string version_text() {
  int major = 0, minor = 0, technical = 0;
  ZLPversion(&major, &minor, &technical);
  return "zorvex " + std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(technical);
}

void add_solve(CLI::App& app, SolveRequest& request, ExitCode& code) {
  CLI::App* command = app.add_subcommand("solve", "Solve a model; the log goes to standard output");
  command->add_option("model", request.model, "Model file (.mps, .lp, ..., possibly compressed)")->required();
  command->add_option("settings", request.settings, "Parameters, NAME=VALUE; see 'zorvex params'");
  command->add_flag("--relax", request.relax, "Solve the continuous relaxation: no integrality, no SOS constraints");
  command->add_option("--solution", request.solution, "Write the solution to this .sol file");
  command->add_option("--basis", request.basis, "Write the simplex basis to this .bas file");
  command->add_option("--start", request.start, "Start from this .mst, .bas or .sol file (.ord: branching priorities)");
  command->add_option("--json", request.json, "Write a summary to this file ('-': standard output)");
  command->callback([&] { code = run_solve(request); });
}

struct CheckRequest {
  std::string model, solution;
  double tolerance = 1e-6;
  double integer_tolerance = 1e-5;
};

void add_check(CLI::App& app, CheckRequest& request, ExitCode& code) {
  CLI::App* command = app.add_subcommand("check", "Recompute a solution's objective and violations");
  command->add_option("model", request.model, "Model file")->required();
  command->add_option("solution", request.solution, "Solution file: lines NAME VALUE, '#' for comments")->required();
  command->add_option("--tolerance", request.tolerance, "Largest violation of a bound or constraint")
      ->capture_default_str();
  command->add_option("--integer-tolerance", request.integer_tolerance, "Largest distance from an integer")
      ->capture_default_str();
  command->callback(
      [&] { code = run_check(request.model, request.solution, request.tolerance, request.integer_tolerance); });
}

struct Arguments {
  SolveRequest solve;
  CheckRequest check;
  std::string model, output, parameter;
  bool all_parameters = false;
};

void add_commands(CLI::App& app, Arguments& arguments, ExitCode& code) {
  app.require_subcommand(1);
  app.set_version_flag("--version", version_text());
  app.footer("Exit code: 0 done, 1 bad usage, 2 unreadable input or failed solve, 3 check found violations.");
  add_solve(app, arguments.solve, code);

  CLI::App* info = app.add_subcommand("info", "Sizes, types, coefficient ranges and row classes of a model");
  info->add_option("model", arguments.model, "Model file")->required();
  info->callback([&] { code = run_info(arguments.model); });

  CLI::App* convert = app.add_subcommand("convert", "Read a model and write it in the format of the other name");
  convert->add_option("input", arguments.model, "Model file")->required();
  convert->add_option("output", arguments.output, "File to write")->required();
  convert->callback([&] { code = run_convert(arguments.model, arguments.output); });

  add_check(app, arguments.check, code);

  CLI::App* params = app.add_subcommand("params", "List the parameters, or tell about one");
  params->add_option("name", arguments.parameter, "Name of a parameter");
  params->add_flag("--all", arguments.all_parameters, "Hidden parameters too");
  params->callback([&] { code = run_params(arguments.parameter, arguments.all_parameters); });
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Zorvex: linear, quadratic and mixed-integer optimization", "zorvex");
  Arguments arguments;
  ExitCode code = kExitDone;
  try {
    add_commands(app, arguments, code);
    app.parse(argc, argv);
    return code;
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kExitDone : kExitUsage;
  } catch (const Failure& failure) {
    std::fflush(stdout);
    std::fprintf(stderr, "zorvex: %s\n", failure.what());
    return failure.code;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "zorvex: %s\n", error.what());
    return kExitFailed;
  }
}
