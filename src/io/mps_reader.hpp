// MPS files into models.
#pragma once

#include <string>

#include "io/model_builder.hpp"
#include "io/mps_parser.hpp"
#include "io/parsed_model.hpp"
#include "model/model.hpp"

namespace zorvex {

// A parsed file and what there was to say about it. The file is read in free layout; when that fails or meets names
// that nothing defines, it is read once more in fixed layout, and the reading that fits better counts.
struct MpsParseResult {
  bool ok = false;
  ParsedModel data;  // when ok
  MpsDiagnostics diagnostics;
};
[[nodiscard]] MpsParseResult parse_mps_file(const std::string& name, const ReadLimits& limits = {});

// Reads `name` as it stands. Warnings and errors go to the log, an error also into the error text. Null on failure.
[[nodiscard]] ZLPmodel* read_mps(ZLPenv* env, const std::string& name);

}  // namespace zorvex
