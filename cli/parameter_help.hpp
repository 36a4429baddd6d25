// What each parameter means, hidden ones included, in the order of the library's table. The source of parameter_help()
// is generated from that table.
#pragma once

#include <span>

namespace zorvex_cli {

struct ParameterHelp {
  const char* name;
  const char* meaning;
};

std::span<const ParameterHelp> parameter_help();

}  // namespace zorvex_cli
