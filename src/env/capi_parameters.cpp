// C entry points: reading and setting parameters.
#include <cstring>

#include "env/environment.hpp"
#include "env/errors.hpp"
#include "env/guarded.hpp"
#include "env/parameter_access.hpp"

namespace zorvex {

namespace {

template <class Value>
void put(Value* target, Value value) {
  if (target != nullptr) *target = value;
}

// Finds the parameter, then hands its descriptor to `body`.
template <class Body>
int with_parameter(ZLPenv* env, const char* name, ParamType type, Body&& body) {
  return guarded(env, [&](ZLPenv& alive) {
    if (name == nullptr) return static_cast<int>(kErrorNullArgument);
    const ParameterDescriptor* descriptor = find_parameter(alive, name, type);
    return descriptor == nullptr ? static_cast<int>(kErrorUnknownParameter) : body(alive, *descriptor);
  });
}

template <class Setter>
int with_name(ZLPenv* env, const char* name, Setter&& setter) {
  return guarded(env,
                 [&](ZLPenv& alive) { return name == nullptr ? static_cast<int>(kErrorNullArgument) : setter(alive); });
}

}  // namespace

}  // namespace zorvex

using namespace zorvex;

int ZLPsetintparam(ZLPenv* env, const char* name, int value) {
  return with_name(env, name, [&](ZLPenv& alive) { return set_int_parameter(alive, name, value); });
}

int ZLPsetdblparam(ZLPenv* env, const char* name, double value) {
  return with_name(env, name, [&](ZLPenv& alive) { return set_double_parameter(alive, name, value); });
}

int ZLPsetstrparam(ZLPenv* env, const char* name, const char* value) {
  // A null text is an empty one: that is how a log file is switched off.
  return with_name(env, name,
                   [&](ZLPenv& alive) { return set_text_parameter(alive, name, value == nullptr ? "" : value); });
}

int ZLPsetparam(ZLPenv* env, const char* name, const char* value) {
  return with_name(env, name, [&](ZLPenv& alive) {
    return value == nullptr ? static_cast<int>(kErrorNullArgument) : set_parameter_from_text(alive, name, value);
  });
}

int ZLPgetintparam(ZLPenv* env, const char* name, int* value) {
  return with_parameter(env, name, ParamType::kInt, [&](ZLPenv& alive, const ParameterDescriptor& descriptor) {
    if (value == nullptr) return kErrorNullArgument;
    *value = int_value(alive, descriptor);
    return kOk;
  });
}

int ZLPgetdblparam(ZLPenv* env, const char* name, double* value) {
  return with_parameter(env, name, ParamType::kDouble, [&](ZLPenv& alive, const ParameterDescriptor& descriptor) {
    if (value == nullptr) return kErrorNullArgument;
    *value = double_value(alive, descriptor);
    return kOk;
  });
}

int ZLPgetstrparam(ZLPenv* env, const char* name, char* value) {
  return with_parameter(env, name, ParamType::kString, [&](ZLPenv& alive, const ParameterDescriptor& descriptor) {
    if (value == nullptr) return kErrorNullArgument;
    std::strcpy(value, text_value(alive, descriptor));  // the caller's buffer holds ZLP_MAX_STRLEN bytes
    return kOk;
  });
}

int ZLPgetintparaminfo(ZLPenv* env, const char* name, int* value, int* min, int* max, int* def) {
  return with_parameter(env, name, ParamType::kInt, [&](ZLPenv& alive, const ParameterDescriptor& descriptor) {
    put(value, int_value(alive, descriptor));
    put(min, static_cast<int>(descriptor.min));
    put(max, static_cast<int>(descriptor.max));
    put(def, static_cast<int>(descriptor.def));
    return kOk;
  });
}

int ZLPgetdblparaminfo(ZLPenv* env, const char* name, double* value, double* min, double* max, double* def) {
  return with_parameter(env, name, ParamType::kDouble, [&](ZLPenv& alive, const ParameterDescriptor& descriptor) {
    put(value, double_value(alive, descriptor));
    put(min, descriptor.min);
    put(max, descriptor.max);
    put(def, descriptor.def);
    return kOk;
  });
}

int ZLPgetstrparaminfo(ZLPenv* env, const char* name, char* value, char* def) {
  return with_parameter(env, name, ParamType::kString, [&](ZLPenv& alive, const ParameterDescriptor& descriptor) {
    if (value != nullptr) std::strcpy(value, text_value(alive, descriptor));
    if (def != nullptr) std::strcpy(def, descriptor.default_text);
    return kOk;
  });
}

int ZLPgetparamtype(ZLPenv* env, const char* name) {
  if (check_environment(env) != kOk || name == nullptr) return -1;
  int type = -1;
  guarded(env, [&](ZLPenv& alive) {
    const ParameterDescriptor* descriptor = find_parameter(alive, name);
    if (descriptor == nullptr) return kErrorUnknownParameter;
    type = static_cast<int>(descriptor->type);
    return kOk;
  });
  return type;
}

int ZLPgetnumparams(ZLPenv* env) { return check_environment(env) == kOk ? env->store->public_count() : 0; }

int ZLPgetparamname(ZLPenv* env, int i, const char** name) {
  return guarded(env, [&](ZLPenv& alive) {
    if (name == nullptr) return kErrorNullArgument;
    *name = nullptr;
    if (i < 0 || i >= alive.store->public_count()) return kErrorInvalidArgument;
    *name = alive.store->descriptors()[i].name;
    return kOk;
  });
}

int ZLPresetparams(ZLPenv* env) {
  return guarded(env, [](ZLPenv& alive) {
    alive.store->reset_numbers(*alive.values);
    return kOk;
  });
}
