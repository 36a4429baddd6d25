#include "io/model_writer.hpp"

#include "env/log_channel.hpp"

namespace zorvex {

int write_model_file(ZLPmodel& model, const std::string& name, const std::function<bool(ModelStream*)>& body) {
  const auto stream = open_model_stream(name, 'w', nullptr);
  if (stream == nullptr) return kErrorFileWrite;
  if (has_pending_changes(model)) {
    log_printf(model.env, "Warning: model has pending changes.\n");
    log_printf(model.env, "File '%s' does not contain these changes.\n", name.c_str());
  }
  const bool written = body(stream.get());
  const bool closed = stream->close(nullptr);
  return written && closed ? kOk : kErrorFileWrite;
}

}  // namespace zorvex
