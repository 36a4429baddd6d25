// The one way in which model, side and parameter files are opened: plain, or compressed by the name's suffix.
//   .gz    read in process with zlib (faster than a pipe and needs no program), written through "gzip -c"
//   .bz2   "bzip2 -dc", "bzip2 -c"
//   .zip   "7z e -so"; cannot be written
//   .7z    "7z e -so", "7z a -si"
#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace zorvex {

// Plain files are 'f'; streams that go through a compressor are 'p'.
enum class StreamKind : char { kFile = 'f', kPipe = 'p' };

// An open stream in one direction. The destructor closes it and drops any failure; call close() where it matters.
class ModelStream {
 public:
  virtual ~ModelStream() = default;

  // Reads at most `size` bytes. Returns how many, 0 at the end of the data or after a failure (see close()).
  [[nodiscard]] virtual std::size_t read(char* buffer, std::size_t size) = 0;

  // Writes all bytes. False after a failure.
  virtual bool write(const char* data, std::size_t size) = 0;

  // Closes and tells whether all data went through: reads ended at a regular end of file, writes arrived, and the
  // compressor ended well. A reading stream that is closed before its end counts as good. On failure `reason`
  // holds one line without a newline.
  [[nodiscard]] virtual bool close(std::string* reason) = 0;
};

// Opens for reading (mode 'r') or writing (mode 'w'). Null when the file cannot be opened, the compressor cannot be
// started or the suffix cannot be written; `reason`, if given, then says why in one line. Directories do not open.
[[nodiscard]] std::unique_ptr<ModelStream> open_model_stream(const std::string& name, char mode, StreamKind* kind,
                                                             std::string* reason = nullptr);

}  // namespace zorvex
