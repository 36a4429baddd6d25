#include "io/lp_reader.hpp"

#include "io/lp_parser.hpp"

namespace zorvex {

LpParseResult parse_lp_file(const std::string& name, const ReadLimits& limits) {
  LpParseResult result;
  const auto parse = [&](ModelStream* stream) {
    LpParser parser(stream, limits);
    result.ok = parser.parse();
    result.diagnostics = parser.diagnostics();
    if (result.ok) result.data = parser.take_data();
  };
  // What was wrong with the stream counts more than what was wrong with its text.
  LpDiagnostics of_stream;
  if (!read_stream(name, "LP", &of_stream, parse)) {
    result.ok = false;
    result.diagnostics = of_stream;
  }
  return result;
}

ZLPmodel* read_lp(ZLPenv* env, const std::string& name) {
  return model_of_file(env, "LP", [&name](ParsedModel* data) {
    LpParseResult result = parse_lp_file(name);
    if (result.ok) *data = std::move(result.data);
    return result.diagnostics;
  });
}

}  // namespace zorvex
