// C entry points: parameter files.
#include "env/environment.hpp"
#include "env/guarded.hpp"
#include "io/parameter_file.hpp"

using namespace zorvex;

int ZLPreadparams(ZLPenv* env, const char* filename) {
  return guarded(env, [&](ZLPenv& alive) {
    return filename == nullptr ? static_cast<int>(kErrorNullArgument) : read_parameter_file(alive, filename);
  });
}

int ZLPwriteparams(ZLPenv* env, const char* filename) {
  return guarded(env, [&](ZLPenv& alive) {
    return filename == nullptr ? static_cast<int>(kErrorNullArgument) : write_parameter_file(alive, filename);
  });
}
