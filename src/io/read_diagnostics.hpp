// Warnings and the one fatal error of a model file, collected while it is parsed and reported afterwards: a file may
// be parsed twice, and only the attempt that counts is reported.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace zorvex {

// Kinds of warnings; each kind is reported at most kMaxPerKind times, then counted.
enum class ReadWarning : int {
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
  kUnusedVariable,
  kEmptyDomain,
  kSpecialConstraints,
  kNoEnd,
  kCount,
};

class ReadDiagnostics {
 public:
  // The abort of a read: `log` is the line for the log, `text` the error text of the environment.
  struct Error {
    std::string log, text;
  };

  void warn(ReadWarning kind, std::string text);
  // Nothing when the same text was given before.
  void warn_once(ReadWarning kind, std::string text);

  // Sets the error unless there is one, and returns false for the caller to pass on.
  bool fail(std::string log, std::string text, long line);

  [[nodiscard]] bool failed() const { return failed_; }
  [[nodiscard]] const Error& error() const { return error_; }
  [[nodiscard]] long error_line() const { return error_line_; }
  [[nodiscard]] long count(ReadWarning kind) const { return count_[static_cast<int>(kind)]; }

  // All warnings, in order, with the counts of those left out.
  [[nodiscard]] std::vector<std::string> warnings() const;

 private:
  static constexpr long kMaxPerKind = 100;

  std::vector<std::string> warnings_;
  std::array<long, static_cast<int>(ReadWarning::kCount)> count_{};
  bool failed_ = false;
  Error error_;
  long error_line_ = 0;
};

// printf into a string.
[[nodiscard]] std::string format_text(const char* format, ...) __attribute__((format(printf, 1, 2)));

// For messages: at most 200 bytes of the text, trailing blanks dropped, control characters as '?'.
[[nodiscard]] std::string printable(std::string_view text);

}  // namespace zorvex
