#include "io/lp_diagnostics.hpp"

namespace zorvex {

namespace {

std::string shown(const LpLexeme& token) {
  if (token.kind == LpToken::kEnd) return "end of file";
  const auto first = static_cast<unsigned char>(token.text.front());
  if (token.kind == LpToken::kUnknown && (first < ' ' || first == 0x7f)) return format_text("byte 0x%02x", first);
  return "'" + printable(token.text) + "'";
}

}  // namespace

bool LpDiagnostics::fail_at(const LpLexeme& token, const std::string& message) {
  const std::string text = format_text("rror at line %ld, column %ld: %s, found %s\n", token.line, token.column,
                                       message.c_str(), shown(token).c_str());
  return fail("E" + text, "LP read e" + text, token.line);
}

}  // namespace zorvex
