// Buffered text output on a model stream, with the shared number format.
#pragma once

#include <string>
#include <string_view>

#include "io/model_stream.hpp"
#include "io/number_text.hpp"

namespace zorvex {

class TextWriter {
 public:
  explicit TextWriter(ModelStream* stream) : stream_(stream) { buffer_.reserve(kFlushSize + kSlack); }

  TextWriter& operator<<(std::string_view text) {
    buffer_.append(text);
    if (buffer_.size() >= kFlushSize) flush();
    return *this;
  }
  TextWriter& operator<<(char c) { return *this << std::string_view(&c, 1); }
  // As format_number.
  TextWriter& operator<<(double value) {
    char text[kNumberTextSize];
    return *this << std::string_view(text, static_cast<std::size_t>(format_number(value, text)));
  }
  // At least `width` characters, blanks behind.
  TextWriter& padded(std::string_view text, std::size_t width) {
    *this << text;
    if (text.size() < width) buffer_.append(width - text.size(), ' ');
    return *this;
  }

  // Writes what is held. False once a write has failed.
  bool flush() {
    good_ = good_ && stream_->write(buffer_.data(), buffer_.size());
    buffer_.clear();
    return good_;
  }

 private:
  static constexpr std::size_t kFlushSize = 64 * 1024;
  static constexpr std::size_t kSlack = 1024;

  ModelStream* stream_;
  std::string buffer_;
  bool good_ = true;
};

}  // namespace zorvex
