#include "env/log_channel.hpp"

#include <array>
#include <cstdarg>
#include <ctime>
#include <memory>
#include <string>

#include "env/environment.hpp"
#include "env/errors.hpp"

namespace zorvex {

namespace {

constexpr std::size_t kStackText = 1024;  // longer messages are formatted on the heap

void write_banner(std::FILE* file) {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  std::array<char, 128> date{};
  std::strftime(date.data(), date.size(), "%c", &local);
  std::fprintf(file, "\nZorvex %d.%d.%d (%s) logging started %s\n\n", ZLP_VERSION_MAJOR, ZLP_VERSION_MINOR,
               ZLP_VERSION_TECHNICAL, ZLPplatform(), date.data());
  std::fflush(file);
}

}  // namespace

int log_text(ZLPenv* env, const char* text) {
  const int code = check_environment(env);
  if (code != kOk) return code;
  if (param<Param::OutputFlag>(*env) > 0) {
    std::fputs(text, stdout);
    std::fflush(stdout);
    if (env->log_file != nullptr && env->log_file->file() != nullptr) {
      std::fputs(text, env->log_file->file());
      std::fflush(env->log_file->file());
    }
  }
  if (env->message_callback != nullptr && env->callback_data != nullptr) {
    std::snprintf(env->callback_data->text.data(), env->callback_data->text.size(), "%s", text);
    env->message_callback(*env->callback_data, kWhereMessage);
  }
  return kOk;
}

int log_printf(ZLPenv* env, const char* format, ...) {
  std::array<char, kStackText> small;
  va_list arguments;
  va_start(arguments, format);
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(small.data(), small.size(), format, arguments);
  va_end(arguments);
  int code = kOk;
  if (length < static_cast<int>(kStackText)) {
    code = log_text(env, length < 0 ? "" : small.data());
  } else {
    std::string text(static_cast<std::size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, again);
    code = log_text(env, text.c_str());
  }
  va_end(again);
  return code;
}

void adopt_log_file(ZLPenv& env, std::FILE* stream) {
  env.log_file = stream == nullptr ? nullptr : std::make_shared<LogFile>(stream);
  if (stream != nullptr) write_banner(stream);
}

int open_log_file(ZLPenv* env, const char* name, bool banner) {
  const int code = check_environment(env);
  if (code != kOk) return code;
  auto& stored_name = env->values->texts[slot_of(Param::LogFile)];
  if (name == nullptr || *name == '\0') {
    env->log_file.reset();
    copy_parameter_text(stored_name, "");
    return kOk;
  }
  auto opened = std::make_shared<LogFile>(std::fopen(name, "a"));
  if (opened->file() == nullptr) {
    std::printf("Warning: Failed to open log file '%s'\n", name);
    std::fflush(stdout);
    set_error(env, kErrorFileWrite, true, "%s", standard_text(kErrorFileWrite));
    return kErrorFileWrite;
  }
  if (banner) write_banner(opened->file());
  env->log_file = std::move(opened);
  copy_parameter_text(stored_name, name);
  return kOk;
}

// A search kept with a model may still close its files while the model, its environment record gone, is taken down.
bool EnvironmentLog::alive() const { return env_->magic.load(std::memory_order_acquire) == kEnvironmentMagic; }

bool EnvironmentLog::diagnostics() const { return alive() && param<Param::ZORV_PAR_ITEST>(*env_) != 0; }

bool EnvironmentLog::enabled() const {
  return alive() && (param<Param::OutputFlag>(*env_) > 0 || env_->message_callback != nullptr);
}

}  // namespace zorvex
