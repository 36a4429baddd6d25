// The error texts of the LP format.
#pragma once

#include "io/lp_lexer.hpp"
#include "io/read_diagnostics.hpp"

namespace zorvex {

class LpDiagnostics : public ReadDiagnostics {
 public:
  // "Error at line 3, column 14: MESSAGE, found 'TEXT'"; the text of the token, or "end of file". Returns false.
  bool fail_at(const LpLexeme& token, const std::string& message);
};

}  // namespace zorvex
