#include "commands.hpp"

namespace zorvex_cli {

ExitCode run_convert(const std::string& input, const std::string& output) {
  const Env env = open_env();
  const Model model = read_model(env.get(), input);
  require(model.get(), ZLPwrite(model.get(), output.c_str()), "cannot write '" + output + "'");
  return kExitDone;
}

}  // namespace zorvex_cli
