#include "session.hpp"

namespace zorvex_cli {

namespace {

// The library's text without its line end, or the bare code when there is none.
std::string error_text(const char* text, int error) {
  std::string found = text == nullptr ? "" : text;
  while (!found.empty() && found.back() == '\n') found.pop_back();
  return found.empty() ? "error " + std::to_string(error) : found;
}

}  // namespace

Env open_env() {
  ZLPenv* env = nullptr;
  const int error = ZLPloadenv(&env, nullptr);
  if (error != 0) throw Failure(kExitFailed, "cannot start the solver (error " + std::to_string(error) + ")");
  return Env(env);
}

void apply_settings(ZLPenv* env, const std::vector<std::string>& settings) {
  for (const std::string& setting : settings) {
    const std::size_t equals = setting.find('=');
    if (equals == std::string::npos || equals == 0) {
      throw Failure(kExitUsage, "'" + setting + "' is not of the form NAME=VALUE");
    }
    const std::string name = setting.substr(0, equals);
    const int error = ZLPsetparam(env, name.c_str(), setting.c_str() + equals + 1);
    if (error != 0) throw Failure(kExitUsage, setting + ": " + error_text(ZLPgeterrormsg(env), error));
  }
}

Model read_model(ZLPenv* env, const std::string& path) {
  ZLPmodel* model = nullptr;
  const int error = ZLPreadmodel(env, path.c_str(), &model);
  if (error != 0) {
    throw Failure(kExitFailed, "cannot read '" + path + "': " + error_text(ZLPgeterrormsg(env), error));
  }
  return Model(model);
}

void require(ZLPmodel* model, int error, const std::string& action) {
  if (error != 0) throw Failure(kExitFailed, action + ": " + error_text(ZLPgetmerrormsg(model), error));
}

int int_attribute(ZLPmodel* model, const char* name) {
  int value = 0;
  require(model, ZLPgetintattr(model, name, &value), std::string("cannot read ") + name);
  return value;
}

}  // namespace zorvex_cli
