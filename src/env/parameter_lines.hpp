// Parameter settings as text: one "NAME VALUE" per line, '#' in the first place starts a comment. Numbers are read and
// written in the C locale. Opening files is the caller's business.
#pragma once

#include <string>
#include <string_view>

#include "zorvex.h"

namespace zorvex {

// Applies every line. Unknown names and values that cannot be set are reported in the log, under `file_name`, and
// otherwise skipped. Lines longer than 159 bytes are taken in pieces, each a line of its own.
void apply_parameter_lines(ZLPenv& env, std::string_view text, const char* file_name);

// A line for every numeric parameter that differs from its default, in table order.
std::string parameter_lines(const ZLPenv& env);

}  // namespace zorvex
