#include "io/mps_diagnostics.hpp"

namespace zorvex {

bool MpsDiagnostics::fail_at_line(long line, std::string_view content) {
  const std::string text(content);
  return fail(format_text("Error at line %ld:\n%s\n", line, text.c_str()),
              format_text("MPS read error at line %ld:\n%s\n", line, text.c_str()), line);
}

bool MpsDiagnostics::fail_not_right(long line) {
  return fail(format_text("Error: line %ld not right or no ENDATA.\n", line),
              format_text("MPS reader: line %ld not right or no ENDATA\n", line), line);
}

bool MpsDiagnostics::fail_not_free(long line) {
  return fail("Error: not free format mps file.\n", "MPS reader: not free format\n", line);
}

long MpsDiagnostics::undefined_names() const {
  return count(ReadWarning::kUndefinedRowInColumns) + count(ReadWarning::kUndefinedRowInRhs) +
         count(ReadWarning::kUndefinedRowInRanges) + count(ReadWarning::kUndefinedColumn);
}

}  // namespace zorvex
