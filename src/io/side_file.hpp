// What the readers and writers of side files share: opening, errors with line numbers, names to columns and rows.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "io/line_reader.hpp"
#include "io/model_stream.hpp"
#include "io/name_table.hpp"
#include "io/text_writer.hpp"
#include "model/model.hpp"

namespace zorvex {

// Columns or rows by the names that the writers give them, generic ones included. Of equal names the first counts.
class ObjectIndex {
 public:
  static ObjectIndex columns(const ModelData& data);
  static ObjectIndex rows(const ModelData& data);
  [[nodiscard]] Index find(std::string_view name) const {
    const Index k = names_.find(name);
    return k < 0 ? -1 : index_[k];
  }

 private:
  void add(std::string_view name, Index i) {
    if (names_.insert(name) == static_cast<Index>(index_.size())) index_.push_back(i);
  }

  NameTable names_;
  std::vector<Index> index_;  // of each distinct name
};

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
