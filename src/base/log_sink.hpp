// Where a solver layer writes its log lines. The environment's log channel implements it; sub-solves get a quiet one.
#pragma once

namespace zorvex {

class LogSink {
 public:
  virtual ~LogSink() = default;

  // Writes finished text (any number of lines, '\n' included where wanted).
  virtual void write(const char* text) = 0;

  // True when lines that only help to study the solver itself are wanted.
  [[nodiscard]] virtual bool diagnostics() const { return false; }
  // False when everything written is dropped, so that callers can skip formatting.
  [[nodiscard]] virtual bool enabled() const { return true; }

  void print(const char* format, ...) __attribute__((format(printf, 2, 3)));
  // As print, but only when diagnostics() holds.
  void diagnose(const char* format, ...) __attribute__((format(printf, 2, 3)));
};

// Drops everything.
class QuietLog final : public LogSink {
 public:
  void write(const char*) override {}
  [[nodiscard]] bool enabled() const override { return false; }
};

}  // namespace zorvex
