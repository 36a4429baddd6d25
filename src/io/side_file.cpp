#include "io/side_file.hpp"

#include <algorithm>

#include "env/log_channel.hpp"
#include "io/read_diagnostics.hpp"
#include "model/messages.hpp"

namespace zorvex {

namespace {

bool fits_side_file(const std::string& name) {
  const bool printable_text =
      std::none_of(name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; });
  return printable_text && name.front() != ' ' && name.back() != ' ' && name.front() != '#' && name.front() != '*';
}

}  // namespace

UniqueNames side_file_columns(const ModelData& data) { return {data.var_names, 'C', fits_side_file}; }
UniqueNames side_file_rows(const ModelData& data) { return {data.constr_names, 'R', fits_side_file}; }

NameTable index_of_names(const UniqueNames& names, Index count) {
  NameTable table;
  for (Index i = 0; i < count; ++i) table.insert(names[i]);
  return table;
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
