// LP-format files into models.
#pragma once

#include <string>

#include "io/lp_diagnostics.hpp"
#include "io/model_builder.hpp"
#include "io/parsed_model.hpp"

namespace zorvex {

struct LpParseResult {
  bool ok = false;
  ParsedModel data;  // when ok
  LpDiagnostics diagnostics;
};
[[nodiscard]] LpParseResult parse_lp_file(const std::string& name, const ReadLimits& limits = {});

// Reads `name` as it stands. Warnings and errors go to the log, an error also into the error text. Null on failure.
[[nodiscard]] ZLPmodel* read_lp(ZLPenv* env, const std::string& name);

}  // namespace zorvex
