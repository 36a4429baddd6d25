// Reading and setting parameters by name, with the messages of the interface. All functions expect an environment that
// passed its check and return an error code; a failed set leaves the old value in place. Names and texts are not null.
#pragma once

#include "env/environment.hpp"

namespace zorvex {

// Null, with error text and kErrorUnknownParameter recorded, unless the name is known, of the given type and with a
// value.
const ParameterDescriptor* find_parameter(ZLPenv& env, const char* name, ParamType type);
// As above for any type that has a value.
const ParameterDescriptor* find_parameter(ZLPenv& env, const char* name);

int set_int_parameter(ZLPenv& env, const char* name, int value);
int set_double_parameter(ZLPenv& env, const char* name, double value);
int set_text_parameter(ZLPenv& env, const char* name, const char* value);
// A parameter of any type from text.
int set_parameter_from_text(ZLPenv& env, const char* name, const char* value);

// The value as "%le" reads it, in the C locale whatever the program's; false when no number starts the text.
bool parse_number(const char* text, double& value);

[[nodiscard]] inline int int_value(const ZLPenv& env, const ParameterDescriptor& descriptor) {
  return env.values->ints[descriptor.position - 1];
}
[[nodiscard]] inline double double_value(const ZLPenv& env, const ParameterDescriptor& descriptor) {
  return env.values->doubles[descriptor.position - 1];
}
[[nodiscard]] inline const char* text_value(const ZLPenv& env, const ParameterDescriptor& descriptor) {
  return env.values->texts[descriptor.position - 1].data();
}

}  // namespace zorvex
