// C interface: parameter files.
#include "env/guarded.hpp"
#include "io/parameter_file.hpp"
#include "zorvex.h"

using zorvex::guarded;

int ZLPreadparams(ZLPenv* env, const char* filename) {
  return guarded(env, [&](ZLPenv& alive) {
    return filename == nullptr ? zorvex::kErrorNullArgument : zorvex::read_parameter_file(alive, filename);
  });
}

int ZLPwriteparams(ZLPenv* env, const char* filename) {
  return guarded(env, [&](ZLPenv& alive) {
    return filename == nullptr ? zorvex::kErrorNullArgument : zorvex::write_parameter_file(alive, filename);
  });
}
