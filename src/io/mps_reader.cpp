#include "io/mps_reader.hpp"

namespace zorvex {

namespace {

MpsParseResult parse_once(const std::string& name, MpsLayout layout, const ReadLimits& limits) {
  MpsParseResult result;
  MpsParser parser(layout, limits);
  const auto parse = [&](ModelStream* stream) { result.ok = parser.parse(stream); };
  if (!read_stream(name, "MPS", &result.diagnostics, parse)) {
    result.ok = false;
    return result;
  }
  result.diagnostics = parser.diagnostics();
  if (result.ok) result.data = parser.take_data();
  return result;
}

// Whether the fixed reading is the better one. Where both fail, the one that got further.
bool fixed_fits_better(const MpsParseResult& free, const MpsParseResult& fixed) {
  if (free.ok != fixed.ok) return fixed.ok;
  if (!free.ok) return fixed.diagnostics.error_line() > free.diagnostics.error_line();
  return fixed.diagnostics.undefined_names() < free.diagnostics.undefined_names();
}

}  // namespace

MpsParseResult parse_mps_file(const std::string& name, const ReadLimits& limits) {
  MpsParseResult free = parse_once(name, MpsLayout::kFree, limits);
  if (free.ok && free.diagnostics.undefined_names() == 0) return free;
  MpsParseResult fixed = parse_once(name, MpsLayout::kFixed, limits);
  return fixed_fits_better(free, fixed) ? std::move(fixed) : std::move(free);
}

ZLPmodel* read_mps(ZLPenv* env, const std::string& name) {
  return model_of_file(env, "MPS", [&name](ParsedModel* data) {
    MpsParseResult result = parse_mps_file(name);
    if (result.ok) *data = std::move(result.data);
    return result.diagnostics;
  });
}

}  // namespace zorvex
