#include <array>
#include <cstdio>
#include <vector>

#include "commands.hpp"
#include "parameter_help.hpp"

namespace zorvex_cli {

namespace {

constexpr int kNameWidth = 24;

void print_line(const char* name, const char* type, const std::string& value, const std::string& range,
                const std::string& fallback) {
  std::printf("%-*s %-7s %-14s %-28s %s\n", kNameWidth, name, type, value.c_str(), range.c_str(), fallback.c_str());
}

std::string number_text(double value) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.10g", value);
  return text.data();
}

std::string range_text(double min, double max) { return "[" + number_text(min) + ", " + number_text(max) + "]"; }

std::string quoted(const char* text) { return "\"" + std::string(text) + "\""; }

// False when the library does not know the name.
bool print_parameter(ZLPenv* env, const char* name) {
  switch (ZLPgetparamtype(env, name)) {
    case ZLP_PARAM_INT: {
      int value = 0, min = 0, max = 0, fallback = 0;
      if (ZLPgetintparaminfo(env, name, &value, &min, &max, &fallback) != 0) return false;
      print_line(name, "int", number_text(value), range_text(min, max), number_text(fallback));
      return true;
    }
    case ZLP_PARAM_DBL: {
      double value = 0, min = 0, max = 0, fallback = 0;
      if (ZLPgetdblparaminfo(env, name, &value, &min, &max, &fallback) != 0) return false;
      print_line(name, "double", number_text(value), range_text(min, max), number_text(fallback));
      return true;
    }
    case ZLP_PARAM_STR: {
      std::array<char, ZLP_MAX_STRLEN> value{}, fallback{};
      if (ZLPgetstrparaminfo(env, name, value.data(), fallback.data()) != 0) return false;
      print_line(name, "string", quoted(value.data()), "", quoted(fallback.data()));
      return true;
    }
    default:
      return false;
  }
}

// Names are looked up as the library does: without regard to case and to underscores inside.
bool same_name(const char* a, const char* b) {
  const auto next = [](const char*& p, bool inside) {
    while (inside && *p == '_') ++p;
    const char c = *p;
    if (c != '\0') ++p;
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  };
  bool inside = false;
  for (;;) {
    const char left = next(a, inside);
    if (left != next(b, inside)) return false;
    if (left == '\0') return true;
    inside = inside || left != '_';
  }
}

void print_heading() { print_line("name", "type", "value", "range", "default"); }

// The library lists the public parameters; the hidden ones it knows by name only.
std::vector<const char*> parameter_names(ZLPenv* env, bool all) {
  std::vector<const char*> names;
  for (const ParameterHelp& help : parameter_help()) {
    if (all) names.push_back(help.name);
  }
  for (int i = 0; !all && i < ZLPgetnumparams(env); ++i) {
    const char* name = nullptr;
    if (ZLPgetparamname(env, i, &name) == 0) names.push_back(name);
  }
  return names;
}

}  // namespace

ExitCode run_params(const std::string& name, bool all) {
  const Env env = open_env();
  if (!name.empty()) {
    for (const ParameterHelp& help : parameter_help()) {
      if (!same_name(help.name, name.c_str())) continue;
      print_heading();
      print_parameter(env.get(), help.name);
      std::printf("%s\n", help.meaning);
      return kExitDone;
    }
    throw Failure(kExitUsage, "there is no parameter '" + name + "'");
  }
  print_heading();
  for (const char* listed : parameter_names(env.get(), all)) {
    if (!print_parameter(env.get(), listed)) throw Failure(kExitFailed, "cannot read parameter " + std::string(listed));
  }
  return kExitDone;
}

}  // namespace zorvex_cli
