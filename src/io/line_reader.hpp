// Lines of a stream, one at a time, out of one buffer: the view of a line is valid until the next call.
#pragma once

#include <cstring>
#include <string_view>
#include <vector>

#include "io/model_stream.hpp"

namespace zorvex {

class LineReader {
 public:
  explicit LineReader(ModelStream* stream) : stream_(stream), buffer_(kInitialSize) {}

  // The next line without its newline; a carriage return before it stays. False at the end of the data. A last line
  // without a newline counts as a line.
  bool next(std::string_view* line) {
    const char* newline = find_newline(0);
    if (newline == nullptr) newline = refill();
    if (newline == nullptr) {
      if (begin_ == end_) return false;
      newline = buffer_.data() + end_;
    }
    const char* start = buffer_.data() + begin_;
    *line = std::string_view(start, static_cast<std::size_t>(newline - start));
    begin_ = std::min(end_, begin_ + line->size() + 1);
    ++line_number_;
    return true;
  }

  // Number of the line returned last, from 1.
  [[nodiscard]] long line_number() const { return line_number_; }

 private:
  static constexpr std::size_t kInitialSize = 256 * 1024;

  // The first newline from `skip` bytes behind begin_ on.
  [[nodiscard]] const char* find_newline(std::size_t skip) const {
    const char* from = buffer_.data() + begin_ + skip;
    return static_cast<const char*>(std::memchr(from, '\n', end_ - begin_ - skip));
  }

  // Reads on until a newline is held. The buffer grows when one line fills it.
  const char* refill() {
    std::size_t searched = end_ - begin_;
    std::memmove(buffer_.data(), buffer_.data() + begin_, searched);
    begin_ = 0;
    end_ = searched;
    while (!at_end_) {
      if (end_ == buffer_.size()) buffer_.resize(buffer_.size() * 2);
      const std::size_t got = stream_->read(buffer_.data() + end_, buffer_.size() - end_);
      at_end_ = got == 0;
      end_ += got;
      if (const char* newline = find_newline(searched)) return newline;
      searched = end_;
    }
    return nullptr;
  }

  ModelStream* stream_;
  std::vector<char> buffer_;
  std::size_t begin_ = 0, end_ = 0;  // unread part of the buffer
  bool at_end_ = false;
  long line_number_ = 0;
};

}  // namespace zorvex
