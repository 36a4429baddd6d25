// A log sink that keeps what is written.
#pragma once

#include <string>

#include "base/log_sink.hpp"

namespace zorvex::testing {

class TextLog final : public LogSink {
 public:
  void write(const char* text) override { text_ += text; }
  [[nodiscard]] const std::string& text() const { return text_; }
  std::string take() {
    std::string result;
    result.swap(text_);
    return result;
  }

 private:
  std::string text_;
};

}  // namespace zorvex::testing
