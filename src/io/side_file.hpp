// What the readers and writers of side files share: opening, errors with line numbers, names to columns and rows.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "io/line_reader.hpp"
#include "io/model_stream.hpp"
#include "io/name_table.hpp"
#include "io/text_writer.hpp"
#include "io/unique_names.hpp"
#include "model/model.hpp"

namespace zorvex {

// Names of columns and rows in side files: their own, except those that are empty, not unique, or that a line cannot
// carry (control characters, blanks at an end, '#' or '*' in front).
[[nodiscard]] UniqueNames side_file_columns(const ModelData& data);
[[nodiscard]] UniqueNames side_file_rows(const ModelData& data);

// The objects by these names: a table in which object i has number i.
[[nodiscard]] NameTable index_of_names(const UniqueNames& names, Index count);

// Lines of a side file. Failures are logged, recorded on the model, and kept as code().
class SideFileReader {
 public:
  SideFileReader(ZLPmodel& model, const std::string& name);

  [[nodiscard]] bool is_open() const { return stream_ != nullptr; }
  bool next(std::string_view* line) { return lines_.next(line); }
  int fail_line(std::string_view line);
  // Any other complaint, without the words "Error: " and newline.
  int fail(const std::string& text);
  // After the last line: false when the data were cut off or damaged.
  [[nodiscard]] bool close();
  [[nodiscard]] long line_number() const { return lines_.line_number(); }
  [[nodiscard]] int code() const { return code_; }

 private:
  ZLPmodel& model_;
  std::string name_;
  std::unique_ptr<ModelStream> stream_;
  LineReader lines_;
  int code_ = 0;
};

// kErrorDataNotAvailable with a text made from `format`, whose one "%s" is the name.
int no_data(ZLPmodel& model, const char* format, const std::string& name);

// Opens, lets `body` write to a TextWriter, closes. kErrorFileWrite when any of it fails.
template <class Body>
int write_side_file(const std::string& name, Body body) {
  const auto stream = open_model_stream(name, 'w', nullptr);
  if (stream == nullptr) return kErrorFileWrite;
  TextWriter out(stream.get());
  body(out);
  const bool written = out.flush();
  const bool closed = stream->close(nullptr);
  return written && closed ? kOk : kErrorFileWrite;
}

}  // namespace zorvex
