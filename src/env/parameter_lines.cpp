#include "env/parameter_lines.hpp"

#include <array>
#include <cstdio>

#include "env/c_locale.hpp"
#include "env/environment.hpp"
#include "env/errors.hpp"
#include "env/log_channel.hpp"
#include "env/parameter_access.hpp"

namespace zorvex {

namespace {

constexpr std::size_t kLineSize = 160;

// Whether the line counts as a warning.
bool apply_line(ZLPenv& env, const char* line, const char* file_name) {
  if (line[0] == '#') return false;
  std::array<char, kLineSize> name;
  std::array<char, kLineSize> value;
  name.front() = value.front() = '\0';
  if (std::sscanf(line, "%159s %159s", name.data(), value.data()) < 1) return false;
  if (find_parameter(env, name.data()) == nullptr) {
    log_printf(&env, "Warning: unknown parameter %s in %s\n", name.data(), file_name);
    return true;
  }
  if (set_parameter_from_text(env, name.data(), value.data()) != kOk) {
    log_printf(&env, "Failed to set ");
    log_printf(&env, "parameter %s to value %s\n", name.data(), value.data());
  }
  return false;
}

}  // namespace

void apply_parameter_lines(ZLPenv& env, std::string_view text, const char* file_name) {
  int warnings = 0;
  while (!text.empty()) {
    const std::string_view piece = text.substr(0, kLineSize - 1);
    const std::size_t newline = piece.find('\n');
    const std::string line(piece.substr(0, newline == std::string_view::npos ? piece.size() : newline + 1));
    text.remove_prefix(line.size());
    if (apply_line(env, line.c_str(), file_name)) ++warnings;
  }
  if (warnings > 0) log_printf(&env, "%d warnings while reading parameter file %s\n", warnings, file_name);
}

std::string parameter_lines(const ZLPenv& env) {
  const CNumericLocale c_locale;
  std::string text;
  std::array<char, kLineSize> line;
  for (const ParameterDescriptor& descriptor : env.store->descriptors()) {
    if (descriptor.flag != 0) continue;
    if (descriptor.type == ParamType::kInt) {
      const int value = int_value(env, descriptor);
      if (value == static_cast<int>(descriptor.def)) continue;
      std::snprintf(line.data(), line.size(), "%s  %d\n", descriptor.name, value);
    } else if (descriptor.type == ParamType::kDouble) {
      const double value = double_value(env, descriptor);
      if (value == descriptor.def) continue;
      std::snprintf(line.data(), line.size(), "%s  %g\n", descriptor.name, value);
    } else {
      continue;
    }
    text += line.data();
  }
  return text;
}

}  // namespace zorvex
