// A log sink that keeps what is written.
#pragma once

#include <string>
#include <utility>

#include "base/log_sink.hpp"

namespace zorvex {

class TextLog final : public LogSink {
 public:
  explicit TextLog(bool diagnostics = false) : diagnostics_(diagnostics) {}
  void write(const char* text) override { text_ += text; }
  [[nodiscard]] bool diagnostics() const override { return diagnostics_; }
  [[nodiscard]] const std::string& text() const { return text_; }
  [[nodiscard]] bool has(const std::string& part) const { return text_.find(part) != std::string::npos; }
  std::string take() { return std::exchange(text_, {}); }

 private:
  std::string text_;
  bool diagnostics_;
};

}  // namespace zorvex
