// Error state of a model: that of its environment record, with the checks every entry point on a model opens with.
#pragma once

#include <utility>

#include "env/errors.hpp"
#include "env/guarded.hpp"
#include "model/model.hpp"
#include "zorvex.h"

namespace zorvex {

// 0 for a model that may be used: not null (10002), alive (10003), no optimization running unless called from one of
// the model's own callbacks (10017), its environment present (10002) and usable (10003, see check_environment).
int check_model(const ZLPmodel* model);

// The same for calls that change the model: 10017 also from one of its own callbacks.
int check_model_change(const ZLPmodel* model);

// check_model; success clears the error state.
int check_model_and_clear(ZLPmodel* model);

// Records a failure. The text is written only while messages are unlocked, and then into an empty buffer or, with
// `overwrite`, any. Ignored for a null or dead model and for code 0.
void set_model_error(ZLPmodel* model, int code, bool overwrite, const char* format, ...)
    __attribute__((format(printf, 4, 5)));
// The same rule on the environment itself, for failures before there is a model.
void set_building_error(ZLPenv* env, int code, bool overwrite, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

void set_default_message(ZLPmodel* model, int code);

// While locked, recorded texts stay as they are.
void lock_messages(ZLPmodel& model);
void unlock_messages(ZLPmodel& model);

// The frame of a C entry point on a model: check, body, context text (null: none), default message. `body` takes a
// ZLPmodel& that passed its check and returns a code. Nothing throws through it.
template <class Body>
int guarded_model(ZLPmodel* model, const char* context, Body&& body,
                  int (*check)(const ZLPmodel*) = check_model) noexcept {
  int code = check(model);
  if (code == kOk) code = code_of([&] { return body(*model); });
  if (code != kOk && context != nullptr) set_model_error(model, code, false, "%s", context);
  set_default_message(model, code);
  return code;
}

// The frame of a C entry point that changes the model.
template <class Body>
int guarded_change(ZLPmodel* model, const char* context, Body&& body) noexcept {
  return guarded_model(model, context, std::forward<Body>(body), check_model_change);
}

}  // namespace zorvex
