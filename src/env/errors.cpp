#include "env/errors.hpp"

#include <array>
#include <cstdio>

#include "env/environment.hpp"

namespace zorvex {

namespace {

constexpr int kFirstCode = kErrorOutOfMemory;
constexpr std::array<const char*, 20> kStandardTexts = {
    "Out of memory",
    "NULL argument for required parameter",
    "Invalid argument value for required parameter",
    "Unknown attribute",
    "Requested data not available",
    "Index is out of range",
    "Unknown parameter requested",
    "Tried to set parameter to value outside its valid range",
    "License was released",
    "Model too large for current Zorvex license",
    "Problem with callback",
    "Unable to read file",
    "Unable to write file",
    "Numerical error encountered",
    nullptr,
    "Not available for MIP models",
    "Attempted to access a model while optimization is in progress",
    nullptr,
    "Trouble reading or writing a MIP node file",
    "Q matrix is not positive semi-definite (PSD)",
};

}  // namespace

const char* standard_text(int code) {
  const int i = code - kFirstCode;
  return i >= 0 && i < static_cast<int>(kStandardTexts.size()) ? kStandardTexts[i] : nullptr;
}

bool message_empty(const ZLPenv& env) { return env.error_text == nullptr || env.error_text->front() == '\0'; }

void record_error(ZLPenv* env, int code, bool write_text, const char* format, va_list arguments) {
  if (env == nullptr || code == 0) return;
  env->last_error = code;
  if (env->error_text == nullptr || !write_text) return;
  // The arguments may point into the buffer itself.
  ErrorBuffer text;
  std::vsnprintf(text.data(), text.size(), format, arguments);
  *env->error_text = text;
}

void set_error(ZLPenv* env, int code, bool overwrite, const char* format, ...) {
  if (env == nullptr) return;
  va_list arguments;
  va_start(arguments, format);
  record_error(env, code, (overwrite && env->message_lock == 0) || message_empty(*env), format, arguments);
  va_end(arguments);
}

void set_default_message(ZLPenv* env, int code) {
  if (env == nullptr || env->error_text == nullptr) return;
  ErrorBuffer& buffer = *env->error_text;
  if (code == kOk) {
    buffer.front() = '\0';
    return;
  }
  if (code != kErrorOutOfMemory && !message_empty(*env)) return;
  const char* text = standard_text(code);
  if (text != nullptr) {
    std::snprintf(buffer.data(), buffer.size(), "%s", text);
  } else {
    std::snprintf(buffer.data(), buffer.size(), "Error number %d", code);
  }
}

void clear_error(ZLPenv* env) {
  if (env == nullptr || env->message_lock != 0) return;
  env->last_error = 0;
  if (env->error_text != nullptr) env->error_text->front() = '\0';
}

int check_environment(const ZLPenv* env) {
  if (env == nullptr) return kErrorNullArgument;
  if (env->magic.load(std::memory_order_acquire) != kEnvironmentMagic) return kErrorInvalidArgument;
  if (master_alive(*env)) return kOk;
  if (param<Param::OutputFlag>(*env) > 0) {
    std::fputs(kFreedTooEarly, stdout);
    std::fflush(stdout);
  }
  return kErrorInvalidArgument;
}

}  // namespace zorvex
