#include "io/parameter_file.hpp"

#include <cstdio>
#include <memory>

#include "env/errors.hpp"
#include "env/parameter_lines.hpp"
#include "io/model_stream.hpp"

namespace zorvex {

namespace {

// A C stream on top of a model stream, for code that works line by line with stdio. Does not own the model stream.
struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using CStream = std::unique_ptr<std::FILE, FileCloser>;

CStream c_stream(ModelStream* stream, const char* mode) {
  cookie_io_functions_t functions{};
  functions.read = [](void* cookie, char* buffer, std::size_t size) {
    return static_cast<ssize_t>(static_cast<ModelStream*>(cookie)->read(buffer, size));
  };
  functions.write = [](void* cookie, const char* data, std::size_t size) {
    return static_cast<ModelStream*>(cookie)->write(data, size) ? static_cast<ssize_t>(size) : ssize_t{0};
  };
  return CStream(fopencookie(stream, mode, functions));
}

}  // namespace

int read_parameter_file(ZLPenv& env, const std::string& name) {
  const auto stream = open_model_stream(name, 'r', nullptr);
  CStream file = stream == nullptr ? nullptr : c_stream(stream.get(), "r");
  if (file != nullptr) {
    apply_parameter_lines(env, file.get(), name.c_str());
    file.reset();
    if (stream->close(nullptr)) return kOk;
  }
  set_error(&env, kErrorInvalidArgument, true, "Unable to read parameter file %s", name.c_str());
  return kErrorInvalidArgument;
}

int write_parameter_file(ZLPenv& env, const std::string& name) {
  const auto stream = open_model_stream(name, 'w', nullptr);
  CStream file = stream == nullptr ? nullptr : c_stream(stream.get(), "w");
  if (file != nullptr) {
    const bool written = write_parameter_lines(env, file.get()) && std::fflush(file.get()) == 0;
    file.reset();
    if (stream->close(nullptr) && written) return kOk;
  }
  set_error(&env, kErrorInvalidArgument, true, "Unable to write to parameter file %s", name.c_str());
  return kErrorInvalidArgument;
}

}  // namespace zorvex
