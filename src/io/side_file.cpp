#include "io/side_file.hpp"

#include "env/log_channel.hpp"
#include "io/object_names.hpp"
#include "io/read_diagnostics.hpp"
#include "model/messages.hpp"

namespace zorvex {

ObjectIndex ObjectIndex::columns(const ModelData& data) {
  ObjectIndex index;
  ObjectNames names(data, true);
  for (Index col = 0; col < data.num_cols(); ++col) index.add(names.col(col), col);
  return index;
}

ObjectIndex ObjectIndex::rows(const ModelData& data) {
  ObjectIndex index;
  ObjectNames names(data, true);
  for (Index row = 0; row < data.num_rows(); ++row) index.add(names.row(row), row);
  return index;
}

SideFileReader::SideFileReader(ZLPmodel& model, const std::string& name)
    : model_(model), name_(name), stream_(open_model_stream(name, 'r', nullptr)), lines_(stream_.get()) {
  if (stream_ == nullptr) fail("cannot open file " + printable(name_));
}

int SideFileReader::fail(const std::string& text) {
  code_ = kErrorFileRead;
  log_printf(model_.env, "Error: %s\n", text.c_str());
  set_model_error(&model_, code_, true, "%s", text.c_str());
  return code_;
}

int SideFileReader::fail_line(std::string_view line) {
  return fail(format_text("line %ld of file %s is wrong: %s", lines_.line_number(), printable(name_).c_str(),
                          printable(line).c_str()));
}

bool SideFileReader::close() {
  std::string reason;
  if (stream_->close(&reason)) return true;
  fail(format_text("cannot read file %s: %s", printable(name_).c_str(), reason.c_str()));
  return false;
}

int no_data(ZLPmodel& model, const char* format, const std::string& name) {
  const std::string text = std::string(format).replace(std::string_view(format).find("%s"), 2, name);
  set_model_error(&model, kErrorDataNotAvailable, true, "%s", text.c_str());
  return kErrorDataNotAvailable;
}

}  // namespace zorvex
