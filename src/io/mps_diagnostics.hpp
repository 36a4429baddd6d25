// Warnings and the one fatal error of an MPS file, collected while it is parsed: a file may be parsed twice, in free
// and in fixed layout, and only the attempt that counts is reported.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace zorvex {

// Kinds of warnings; each kind is reported at most kMaxPerKind times, then counted.
enum class MpsWarning : int {
  kNoObjective,
  kSeveralObjectives,
  kObjectiveNotFound,
  kDuplicateNonzero,
  kUndefinedRowInColumns,
  kDuplicateRhs,
  kUndefinedRowInRhs,
  kDuplicateRange,
  kUndefinedRowInRanges,
  kDuplicateBound,
  kUndefinedColumn,
  kWrongMarker,
  kNegativeUpper,
  kOtherSet,
  kCount,
};

class MpsDiagnostics {
 public:
  // The abort of a read: `log` is the line for the log, `text` the error text of the environment.
  struct Error {
    std::string log, text;
  };

  void warn(MpsWarning kind, std::string text);
  // Nothing when the same text was given before.
  void warn_once(MpsWarning kind, std::string text);

  // Each sets the error unless there is one, and returns false for the caller to pass on.
  bool fail(std::string log, std::string text, long line);
  bool fail_at_line(long line, std::string_view content);
  bool fail_not_right(long line);
  // The words of the line cannot be told apart without knowing their columns.
  bool fail_not_free(long line);

  [[nodiscard]] bool failed() const { return failed_; }
  [[nodiscard]] const Error& error() const { return error_; }
  [[nodiscard]] long error_line() const { return error_line_; }

  // Names that nothing defines: the mark of names with blanks read in free layout.
  [[nodiscard]] long undefined_names() const;

  // All warnings, in order, with the counts of those left out.
  [[nodiscard]] std::vector<std::string> warnings() const;

 private:
  static constexpr long kMaxPerKind = 100;

  std::vector<std::string> warnings_;
  std::array<long, static_cast<int>(MpsWarning::kCount)> count_{};
  bool failed_ = false;
  Error error_;
  long error_line_ = 0;
};

// printf into a string.
[[nodiscard]] std::string format_text(const char* format, ...) __attribute__((format(printf, 1, 2)));

// For messages: at most 200 bytes of the text, trailing blanks dropped, control characters as '?'.
[[nodiscard]] std::string printable(std::string_view text);

}  // namespace zorvex
