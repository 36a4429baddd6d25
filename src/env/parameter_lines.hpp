// Parameter settings as text: one "NAME VALUE" per line, '#' in the first place starts a comment. The streams are
// opened and closed by the caller; numbers are read and written in the C locale.
#pragma once

#include <cstdio>

#include "zorvex.h"

namespace zorvex {

// Applies every line. Unknown names and values that cannot be set are reported in the log, under `file_name`, and
// otherwise skipped. Lines longer than 159 bytes are taken in pieces, each a line of its own.
void apply_parameter_lines(ZLPenv& env, std::FILE* file, const char* file_name);

// Writes every numeric parameter that differs from its default, in table order. False when the stream had an error.
bool write_parameter_lines(const ZLPenv& env, std::FILE* file);

}  // namespace zorvex
