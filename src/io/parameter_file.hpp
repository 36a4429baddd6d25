// Parameter files (.prm) through the stream opener; the line rules are the environment's.
#pragma once

#include <string>

#include "zorvex.h"

namespace zorvex {

// Applies the lines of the file. Returns 0, or kErrorInvalidArgument with its text when the file cannot be opened.
int read_parameter_file(ZLPenv& env, const std::string& name);

// Writes what differs from the defaults. Returns 0, or kErrorInvalidArgument with its text.
int write_parameter_file(ZLPenv& env, const std::string& name);

}  // namespace zorvex
