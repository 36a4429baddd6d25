// The commands. Each returns an exit code or throws Failure; the model's log goes to standard output.
#pragma once

#include <string>
#include <vector>

#include "session.hpp"

namespace zorvex_cli {

struct SolveRequest {
  std::string model;
  std::vector<std::string> settings;  // NAME=VALUE
  bool relax = false;                 // drop integrality, semicontinuity and SOS constraints
  std::string solution;               // .sol file to write; empty: none
  std::string basis;                  // .bas file to write; empty: none
  std::string start;                  // start to read: .mst, .bas, .ord or .sol; empty: none
  std::string json;                   // summary to write, "-" for standard output; empty: none
};
ExitCode run_solve(const SolveRequest& request);

ExitCode run_info(const std::string& model);
ExitCode run_convert(const std::string& input, const std::string& output);
ExitCode run_check(const std::string& model, const std::string& solution, double tolerance, double integer_tolerance);

// One parameter by name, all public ones for an empty name, the hidden ones too when `all` is set.
ExitCode run_params(const std::string& name, bool all);

}  // namespace zorvex_cli
