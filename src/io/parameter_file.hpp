// Parameter files (.prm), compressed or not: the text form of env/parameter_lines.hpp through the stream opener.
#pragma once

#include "zorvex.h"

namespace zorvex {

// Both return 0, or kErrorInvalidArgument with the text recorded on the environment when the file cannot be opened or
// does not come through whole. Lines that cannot be applied are reported in the log only.
int read_parameter_file(ZLPenv& env, const char* file_name);
int write_parameter_file(ZLPenv& env, const char* file_name);

}  // namespace zorvex
