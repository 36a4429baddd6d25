#include "env/parameter_access.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>

#include "base/tolerances.hpp"
#include "env/c_locale.hpp"
#include "env/errors.hpp"
#include "env/log_channel.hpp"

namespace zorvex {

namespace {

const ParameterDescriptor* unknown_parameter(ZLPenv& env, const char* name, bool overwrite) {
  set_error(&env, kErrorUnknownParameter, overwrite, "Unknown parameter: %s", name);
  return nullptr;
}

// Models keep the values they were made with, which surprises whoever changes the master afterwards.
void warn_on_master_change(ZLPenv& env) {
  if (!env.owns_store || env.models_made == 0 || !env.master_warning_armed) return;
  if (param<Param::OutputFlag>(env) == 0) return;
  env.master_warning_armed = false;
  log_printf(&env, "Warning: parameter changes on this environment will not affect existing models.\n");
}

int store_int(ZLPenv& env, const ParameterDescriptor& descriptor, double wanted) {
  const int value = static_cast<int>(
      std::clamp(wanted, -static_cast<double>(kMaxIntParameter), static_cast<double>(kMaxIntParameter)));
  if (descriptor.min > value) {
    set_error(&env, kErrorValueOutOfRange, true, "Unable to set parameter %s to value %d (minimum is %.0f)",
              descriptor.name, value, descriptor.min);
    return kErrorValueOutOfRange;
  }
  if (value > descriptor.max) {
    set_error(&env, kErrorValueOutOfRange, true, "Unable to set parameter %s to value %d (maximum is %.0f)",
              descriptor.name, value, descriptor.max);
    return kErrorValueOutOfRange;
  }
  env.values->ints[descriptor.position - 1] = value;
  return kOk;
}

int store_double(ZLPenv& env, const ParameterDescriptor& descriptor, double wanted) {
  const double value = std::clamp(wanted, -kParameterInfinity, kParameterInfinity);
  if (!(descriptor.min <= value)) {  // also refuses NaN
    set_error(&env, kErrorValueOutOfRange, true, "Unable to set parameter %s to value %g (minimum is %g)",
              descriptor.name, value, descriptor.min);
    return kErrorValueOutOfRange;
  }
  if (value > descriptor.max) {
    set_error(&env, kErrorValueOutOfRange, true, "Unable to set parameter %s to value %g (maximum is %g)",
              descriptor.name, value, descriptor.max);
    return kErrorValueOutOfRange;
  }
  env.values->doubles[descriptor.position - 1] = value;
  return kOk;
}

int store_number(ZLPenv& env, const ParameterDescriptor& descriptor, double value) {
  return descriptor.type == ParamType::kInt ? store_int(env, descriptor, std::nearbyint(value))
                                            : store_double(env, descriptor, value);
}

// `name` is as the caller spelled it.
int store_number_text(ZLPenv& env, const ParameterDescriptor& descriptor, const char* name, const char* text) {
  double number = 0;
  const bool parsed = parse_number(text, number) && !std::isnan(number);
  // The text's own distance may be exactly the tolerance: allow for the rounding of the number as a double.
  const double tolerance = kIntegerText + std::numeric_limits<double>::epsilon() * std::abs(number);
  const bool fits = descriptor.type == ParamType::kDouble || std::abs(number - std::nearbyint(number)) <= tolerance;
  if (parsed && fits) return store_number(env, descriptor, number);
  set_error(&env, kErrorValueOutOfRange, true, "Invalid value '%s' for parameter '%s'\n", text, name);
  return kErrorValueOutOfRange;
}

// The Dummy parameter: "NAME NUMBER" sets a numeric parameter through a string interface.
int set_through_dummy(ZLPenv& env, const char* text) {
  std::array<char, kParameterTextSize> name;
  std::array<char, kParameterTextSize> number;
  double ignored = 0;
  if (std::sscanf(text, "%511s %511s", name.data(), number.data()) != 2 || !parse_number(number.data(), ignored)) {
    return kErrorUnknownParameter;
  }
  const ParameterDescriptor* descriptor = find_parameter(env, name.data());
  if (descriptor == nullptr) return kErrorUnknownParameter;
  if (descriptor->type == ParamType::kString) {
    set_error(&env, kErrorUnknownParameter, true, "Wrong type for parameter: %s", name.data());
    return kErrorUnknownParameter;
  }
  return store_number_text(env, *descriptor, name.data(), number.data());
}

int store_text(ZLPenv& env, const ParameterDescriptor& descriptor, const char* value) {
  warn_on_master_change(env);
  const int slot = descriptor.position - 1;
  if (slot == slot_of(Param::LogFile)) return open_log_file(&env, value, true);
  if (slot == slot_of(Param::Dummy)) return set_through_dummy(env, value);
  copy_parameter_text(env.values->texts[slot], value);
  return kOk;
}

}  // namespace

bool parse_number(const char* text, double& value) {
  const CNumericLocale c_locale;
  return std::sscanf(text, "%le", &value) == 1;
}

const ParameterDescriptor* find_parameter(ZLPenv& env, const char* name, ParamType type) {
  const ParameterDescriptor* descriptor = env.store == nullptr ? nullptr : env.store->find(name);
  if (descriptor == nullptr) return unknown_parameter(env, name, true);
  if (descriptor->type != type) {
    set_error(&env, kErrorUnknownParameter, true, "Wrong type for parameter: %s", name);
    return nullptr;
  }
  return descriptor->position == 0 ? unknown_parameter(env, name, false) : descriptor;
}

const ParameterDescriptor* find_parameter(ZLPenv& env, const char* name) {
  const ParameterDescriptor* descriptor = env.store == nullptr ? nullptr : env.store->find(name);
  if (descriptor == nullptr) return unknown_parameter(env, name, true);
  return descriptor->position == 0 ? unknown_parameter(env, name, false) : descriptor;
}

int set_int_parameter(ZLPenv& env, const char* name, int value) {
  const ParameterDescriptor* descriptor = find_parameter(env, name, ParamType::kInt);
  if (descriptor == nullptr) return kErrorUnknownParameter;
  warn_on_master_change(env);
  return store_int(env, *descriptor, value);
}

int set_double_parameter(ZLPenv& env, const char* name, double value) {
  const ParameterDescriptor* descriptor = find_parameter(env, name, ParamType::kDouble);
  if (descriptor == nullptr) return kErrorUnknownParameter;
  warn_on_master_change(env);
  return store_double(env, *descriptor, value);
}

int set_text_parameter(ZLPenv& env, const char* name, const char* value) {
  const ParameterDescriptor* descriptor = find_parameter(env, name, ParamType::kString);
  return descriptor == nullptr ? kErrorUnknownParameter : store_text(env, *descriptor, value);
}

int set_parameter_from_text(ZLPenv& env, const char* name, const char* value) {
  const ParameterDescriptor* descriptor = find_parameter(env, name);
  if (descriptor == nullptr) return kErrorUnknownParameter;
  if (descriptor->type == ParamType::kString) return store_text(env, *descriptor, value);
  warn_on_master_change(env);
  return store_number_text(env, *descriptor, name, value);
}

}  // namespace zorvex
