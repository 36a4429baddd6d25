#include "model/messages.hpp"

#include <cstdarg>

#include "env/environment.hpp"

namespace zorvex {

namespace {

// Null when any link of the chain from the handle is broken.
ZLPenv* error_environment(const ZLPmodel* model) {
  if (model == nullptr || model->magic.load() != kModelMagic || model->env == nullptr) return nullptr;
  return model->env->magic.load() == kEnvironmentMagic ? model->env : nullptr;
}

void record_unless_locked(ZLPenv* env, int code, bool overwrite, const char* format, va_list arguments) {
  if (env == nullptr) return;
  record_error(env, code, env->message_lock == 0 && (overwrite || message_empty(*env)), format, arguments);
}

}  // namespace

int check_model(const ZLPmodel* model) {
  if (model == nullptr) return kErrorNullArgument;
  if (model->magic.load() != kModelMagic) return kErrorInvalidArgument;
  if (model->in_progress != 0 && !model->callback_allowed) return kErrorOptimizationInProgress;
  return check_environment(model->env);
}

int check_model_change(const ZLPmodel* model) {
  const int code = check_model(model);
  return code == kOk && model->callback_allowed ? kErrorOptimizationInProgress : code;
}

int check_model_and_clear(ZLPmodel* model) {
  const int code = check_model(model);
  if (code == kOk) clear_error(model->env);
  return code;
}

void set_model_error(ZLPmodel* model, int code, bool overwrite, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  record_unless_locked(error_environment(model), code, overwrite, format, arguments);
  va_end(arguments);
}

void set_building_error(ZLPenv* env, int code, bool overwrite, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  record_unless_locked(env, code, overwrite, format, arguments);
  va_end(arguments);
}

void set_default_message(ZLPmodel* model, int code) {
  if (ZLPenv* env = error_environment(model); env != nullptr) set_default_message(env, code);
}

void lock_messages(ZLPmodel& model) { model.env->message_lock = 1; }
void unlock_messages(ZLPmodel& model) { model.env->message_lock = 0; }

}  // namespace zorvex
