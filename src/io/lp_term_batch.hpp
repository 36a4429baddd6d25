// Terms of an expression whose variables are yet to be looked up. A few are collected so that the table's memory is on
// its way while the next names are scanned: on large models its misses are what reading costs.
#pragma once

#include <array>
#include <string>

#include "io/lp_lexer.hpp"
#include "io/name_table.hpp"

namespace zorvex {

class LpTermBatch {
 public:
  static constexpr int kSize = 16;

  struct Pending {
    NameTable::Key key;
    std::size_t end = 0;  // of its name in the text
    double value = 0;
    long line = 0, column = 0;
  };

  // Only while not full().
  void add(const NameTable& names, const LpLexeme& name, double value) {
    text_.append(name.text);
    terms_[count_++] = {names.prepare(name.text), text_.size(), value, name.line, name.column};
  }
  [[nodiscard]] int size() const { return count_; }
  [[nodiscard]] bool full() const { return count_ == kSize; }
  [[nodiscard]] const Pending& operator[](int k) const { return terms_[k]; }
  [[nodiscard]] std::string_view name(int k) const {
    const std::size_t begin = k == 0 ? 0 : terms_[k - 1].end;
    return std::string_view(text_).substr(begin, terms_[k].end - begin);
  }
  void clear() {
    count_ = 0;
    text_.clear();
  }

 private:
  std::array<Pending, kSize> terms_;
  std::string text_;  // the names, one after the other: lines do not last
  int count_ = 0;
};

}  // namespace zorvex
