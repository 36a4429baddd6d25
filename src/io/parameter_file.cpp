#include "io/parameter_file.hpp"

#include <array>
#include <string>

#include "env/environment.hpp"
#include "env/errors.hpp"
#include "env/parameter_lines.hpp"
#include "io/model_stream.hpp"

namespace zorvex {

namespace {

constexpr std::size_t kChunk = 1 << 16;

int cannot_read(ZLPenv& env, const char* file_name) {
  set_error(&env, kErrorInvalidArgument, true, "Unable to read parameter file %s", file_name);
  return kErrorInvalidArgument;
}

int cannot_write(ZLPenv& env, const char* file_name) {
  set_error(&env, kErrorInvalidArgument, true, "Unable to write to parameter file %s", file_name);
  return kErrorInvalidArgument;
}

}  // namespace

int read_parameter_file(ZLPenv& env, const char* file_name) {
  StreamKind kind = StreamKind::kFile;
  const auto stream = open_model_stream(file_name, 'r', &kind);
  if (stream == nullptr) return cannot_read(env, file_name);
  std::string text;
  std::array<char, kChunk> chunk;
  while (const std::size_t count = stream->read(chunk.data(), chunk.size())) text.append(chunk.data(), count);
  std::string reason;
  if (!stream->close(&reason)) return cannot_read(env, file_name);
  apply_parameter_lines(env, text, file_name);
  return kOk;
}

int write_parameter_file(ZLPenv& env, const char* file_name) {
  StreamKind kind = StreamKind::kFile;
  const auto stream = open_model_stream(file_name, 'w', &kind);
  if (stream == nullptr) return cannot_write(env, file_name);
  const std::string text = parameter_lines(env);
  std::string reason;
  const bool written = stream->write(text.data(), text.size());
  return stream->close(&reason) && written ? static_cast<int>(kOk) : cannot_write(env, file_name);
}

}  // namespace zorvex
