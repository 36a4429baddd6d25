// The one output routine of the library. OutputFlag switches standard output and the log file together; an installed
// message callback gets every message either way.
#pragma once

#include <cstdio>

#include "base/log_sink.hpp"
#include "zorvex.h"

namespace zorvex {

// Returns the environment check's code. Texts of any length reach standard output and the file whole; the callback's
// message area takes the first 511 bytes.
int log_printf(ZLPenv* env, const char* format, ...) __attribute__((format(printf, 2, 3)));
// As log_printf with "%s", without copying the text.
int log_text(ZLPenv* env, const char* text);

// Appends to the named file from now on and remembers its name in LogFile; null or empty: no log file. When it cannot
// be opened the old one stays: a warning goes to standard output and the code is kErrorFileWrite. The environment must
// pass its check. Throws std::bad_alloc.
int open_log_file(ZLPenv* env, const char* name, bool banner);
// Lets go of the current file and adopts an open stream, which receives the banner, or none. Throws std::bad_alloc.
void adopt_log_file(ZLPenv& env, std::FILE* stream);

// The log channel as the solver layers see it. Drops everything once its record is dead.
class EnvironmentLog final : public LogSink {
 public:
  explicit EnvironmentLog(ZLPenv& env) : env_(&env) {}
  void write(const char* text) override { log_text(env_, text); }
  [[nodiscard]] bool diagnostics() const override;
  [[nodiscard]] bool enabled() const override;

 private:
  [[nodiscard]] bool alive() const;

  ZLPenv* env_;
};

}  // namespace zorvex
