#include "io/parameter_file.hpp"

#include "env/errors.hpp"
#include "env/parameter_lines.hpp"
#include "io/model_stream.hpp"

namespace zorvex {

int read_parameter_file(ZLPenv& env, const std::string& name) {
  const auto stream = open_model_stream(name, 'r', nullptr);
  std::string text;
  if (stream != nullptr) {
    char block[4096];
    while (const std::size_t got = stream->read(block, sizeof block)) text.append(block, got);
  }
  if (stream == nullptr || !stream->close(nullptr)) {
    set_error(&env, kErrorInvalidArgument, true, "Unable to read parameter file %s", name.c_str());
    return kErrorInvalidArgument;
  }
  apply_parameter_lines(env, text, name.c_str());
  return kOk;
}

int write_parameter_file(ZLPenv& env, const std::string& name) {
  const auto stream = open_model_stream(name, 'w', nullptr);
  const std::string text = parameter_lines(env);
  const bool written = stream != nullptr && stream->write(text.data(), text.size());
  if (stream == nullptr || !stream->close(nullptr) || !written) {
    set_error(&env, kErrorInvalidArgument, true, "Unable to write to parameter file %s", name.c_str());
    return kErrorInvalidArgument;
  }
  return kOk;
}

}  // namespace zorvex
