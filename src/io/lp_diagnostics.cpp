#include "io/lp_diagnostics.hpp"

namespace zorvex {

bool LpDiagnostics::fail_at(const LpLexeme& token, const std::string& message) {
  const std::string found = token.kind == LpToken::kEnd ? "end of file" : "'" + printable(token.text) + "'";
  const std::string text = format_text("rror at line %ld, column %ld: %s, found %s\n", token.line, token.column,
                                       message.c_str(), found.c_str());
  return fail("E" + text, "LP read e" + text, token.line);
}

}  // namespace zorvex
