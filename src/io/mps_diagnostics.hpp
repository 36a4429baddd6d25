// The error texts of the MPS format.
#pragma once

#include "io/read_diagnostics.hpp"

namespace zorvex {

// Each function sets the error unless there is one, and returns false for the caller to pass on.
class MpsDiagnostics : public ReadDiagnostics {
 public:
  bool fail_at_line(long line, std::string_view content);
  bool fail_not_right(long line);
  // The words of the line cannot be told apart without knowing their columns.
  bool fail_not_free(long line);

  // Names that nothing defines: the mark of names with blanks read in free layout.
  [[nodiscard]] long undefined_names() const;
};

}  // namespace zorvex
