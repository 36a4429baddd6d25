// Error state of an environment: the text of the most recent failure, its code, and the checks every entry point opens
// with. The most specific text is written first; set_default_message supplies the code's own text at the end.
#pragma once

#include <cstdarg>

#include "base/status.hpp"
#include "zorvex.h"

namespace zorvex {

inline constexpr char kFreedTooEarly[] = "Warning: invalid Zorvex environment. Was it freed too early?\n";

// Text of a code, or null for the codes without one.
const char* standard_text(int code);

// Records `code`; the text lands in an empty buffer, or, with `overwrite` and unlocked messages, in any. Longer texts
// are cut at 511 bytes. Ignored for a null env or code 0.
void set_error(ZLPenv* env, int code, bool overwrite, const char* format, ...) __attribute__((format(printf, 4, 5)));
// The general form: records `code` and writes the text when `write_text` says so.
void record_error(ZLPenv* env, int code, bool write_text, const char* format, va_list arguments)
    __attribute__((format(printf, 4, 0)));

// On the way out of every entry point. 0 empties the buffer; out of memory replaces any text; other codes fill an
// empty buffer with their standard text or "Error number ...".
void set_default_message(ZLPenv* env, int code);

// Forgets code and text unless messages are locked.
void clear_error(ZLPenv* env);

[[nodiscard]] bool message_empty(const ZLPenv& env);

// 0 for an environment that may be used: not null (10002), alive (10003), its master alive (10003, with a warning on
// standard output when output is on).
int check_environment(const ZLPenv* env);

}  // namespace zorvex
