// The frame of a C entry point on an environment: the check, the body, the code's default message. Nothing throws
// through it.
#pragma once

#include <exception>
#include <new>
#include <stdexcept>

#include "env/errors.hpp"

namespace zorvex {

// Runs `body` (returning an error code) and turns exceptions into codes.
template <class Body>
int code_of(Body&& body) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return kErrorOutOfMemory;
  } catch (const std::length_error&) {  // a container asked for more than it can ever hold
    return kErrorOutOfMemory;
  } catch (const std::exception&) {
    return kErrorInvalidArgument;
  } catch (...) {
    return kErrorInvalidArgument;
  }
}

// `body` takes a ZLPenv& that passed its check.
template <class Body>
int guarded(ZLPenv* env, Body&& body) noexcept {
  int code = check_environment(env);
  if (code != kOk) return code;
  code = code_of([&] { return body(*env); });
  set_default_message(env, code);
  return code;
}

}  // namespace zorvex
