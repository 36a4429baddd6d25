// C entry points: creation and end of environments, log, error text, version.
#include <array>
#include <cstdio>
#include <string>

#include "env/environment.hpp"
#include "env/errors.hpp"
#include "env/guarded.hpp"
#include "env/log_channel.hpp"
#include "env/parameter_lines.hpp"
#include "env/processors.hpp"

namespace zorvex {

namespace {

constexpr const char* kEnvironmentFile = "zorvex.env";

// Settings for every environment made in this working directory.
void apply_environment_file(ZLPenv& env) {
  LogFile file(std::fopen(kEnvironmentFile, "r"));  // closes it whatever happens
  if (file.file() == nullptr) return;
  std::string text;
  std::array<char, 4096> chunk;
  while (const std::size_t count = std::fread(chunk.data(), 1, chunk.size(), file.file())) {
    text.append(chunk.data(), count);
  }
  apply_parameter_lines(env, text, kEnvironmentFile);
}

int start_environment(ZLPenv& env, const char* log_file) {
  make_error_buffer(env);
  if (log_file != nullptr) open_log_file(&env, log_file, true);  // goes on without a log file when that fails
  if (!processor_has_sse2()) {
    set_error(&env, kErrorNoLicense, true, "Processor does not support SSE2 instructions");
    return kErrorNoLicense;
  }
  build_parameters(env);
  apply_environment_file(env);
  return env.license->acquire();
}

int load_environment(ZLPenv** result, const char* log_file) {
  EnvironmentPtr env = new_master_environment();
  const int code = code_of([&] { return start_environment(*env, log_file); });
  set_default_message(env.get(), code);
  if (code != kOk) {
    // The caller gets no handle to ask for the text, so the log has to tell.
    log_printf(env.get(), "\n");
    log_printf(env.get(), "ERROR: %s\n", env->error_text == nullptr ? standard_text(code) : env->error_text->data());
    log_printf(env.get(), "\n");
    return code;
  }
  clear_error(env.get());
  *result = env.release();
  return kOk;
}

}  // namespace

}  // namespace zorvex

using namespace zorvex;

int ZLPloadenv(ZLPenv** env, const char* log_file) {
  if (env == nullptr) return kErrorNullArgument;
  *env = nullptr;
  return code_of([&] { return load_environment(env, log_file); });
}

void ZLPfreeenv(ZLPenv* env) {
  // A model's record goes with its model.
  if (env != nullptr && env->owns_store) free_environment(env);
}

const char* ZLPgeterrormsg(ZLPenv* env) {
  if (check_environment(env) != kOk || env->error_text == nullptr) return "";
  return env->error_text->data();
}

void ZLPmsg(ZLPenv* env, const char* text) {
  if (text != nullptr) log_text(env, text);
}

int ZLPsetlogfile(ZLPenv* env, FILE* stream) {
  return guarded(env, [&](ZLPenv& alive) {
    adopt_log_file(alive, stream);
    return kOk;
  });
}

int ZLPgetlogfile(ZLPenv* env, FILE** stream) {
  return guarded(env, [&](ZLPenv& alive) {
    if (stream == nullptr) return kErrorNullArgument;
    *stream = alive.log_file == nullptr ? nullptr : alive.log_file->file();
    return kOk;
  });
}

void ZLPversion(int* major, int* minor, int* technical) {
  if (major != nullptr) *major = ZLP_VERSION_MAJOR;
  if (minor != nullptr) *minor = ZLP_VERSION_MINOR;
  if (technical != nullptr) *technical = ZLP_VERSION_TECHNICAL;
}

const char* ZLPplatform(void) { return "win64"; }

int ZLPreleaselicense(ZLPenv* env) {
  return guarded(env, [](ZLPenv& alive) {
    if (alive.license == nullptr) return kErrorDataNotAvailable;  // a model's record: its master holds the licence
    alive.license->release();
    return kOk;
  });
}
