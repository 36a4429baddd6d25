// Owned handles of the library and the failure every command reports the same way.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "zorvex.h"

namespace zorvex_cli {

enum ExitCode : int {
  kExitDone = 0,      // the command did its work; for solve: the solve ended with a status
  kExitUsage = 1,     // unknown command, option, parameter or value
  kExitFailed = 2,    // unreadable input, unwritable output, failed solve
  kExitViolated = 3,  // check: the solution breaks the model
};

// Ends a command: what() goes to standard error, code to the caller of the program.
struct Failure : std::runtime_error {
  Failure(ExitCode exit_code, const std::string& text) : std::runtime_error(text), code(exit_code) {}
  ExitCode code;
};

struct EnvDeleter {
  void operator()(ZLPenv* env) const { ZLPfreeenv(env); }
};
struct ModelDeleter {
  void operator()(ZLPmodel* model) const { ZLPfreemodel(model); }
};
using Env = std::unique_ptr<ZLPenv, EnvDeleter>;
using Model = std::unique_ptr<ZLPmodel, ModelDeleter>;

// A new environment. The library has logged the reason when there is none.
Env open_env();

// Applies settings of the form NAME=VALUE. Models copy the parameters when they are made, so this comes first.
void apply_settings(ZLPenv* env, const std::vector<std::string>& settings);

// Reads a model file.
Model read_model(ZLPenv* env, const std::string& path);

// Fails with the library's text for the error of a call on `model`; does nothing when `error` is 0.
void require(ZLPmodel* model, int error, const std::string& action);

int int_attribute(ZLPmodel* model, const char* name);

}  // namespace zorvex_cli
