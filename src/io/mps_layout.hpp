// The two layouts of the lines of an MPS file, brought to one form.
//   Free    words separated by blanks or tabs. Which word is which follows from their number, and where that is not
//           enough from the names that are already defined.
//   Fixed   field 1 in columns 2-3, names in 5-12, 15-22 and 40-47, numbers from 25 and from 50; the columns between
//           must be blank, so a line in any other layout is recognised as such. Names may hold blanks; a blank first
//           name means the name of the line before.
// A word that starts with '$' or '*' where a line could end, and that is no known name, starts a comment.
#pragma once

#include <array>
#include <string_view>

#include "io/name_table.hpp"

namespace zorvex {

enum class MpsLayout { kFree, kFixed };

inline bool is_blank(char c) { return static_cast<unsigned char>(c) <= ' '; }

inline std::string_view trim(std::string_view text) {
  while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
  return text;
}

// The blank-separated words of a line; overflow when it holds more than fit.
struct MpsWords {
  static constexpr int kMax = 64;
  std::array<std::string_view, kMax> word;
  int count = 0;
  bool overflow = false;

  [[nodiscard]] std::string_view operator[](int i) const { return word[i]; }
};
void split_words(std::string_view line, MpsWords* words);

// A line of COLUMNS, RHS, RANGES or a quadratic section: a name and pairs of name and number.
struct MpsPairs {
  static constexpr int kMax = MpsWords::kMax / 2;
  std::string_view head;  // column or set name; empty when the line has none
  int count = 0;
  std::array<std::string_view, kMax> name;
  std::array<std::string_view, kMax> number;
};

// A line of BOUNDS. number is empty when none is given.
struct MpsBound {
  std::string_view type, set, column, number;
};

// A line of ROWS.
struct MpsRow {
  std::string_view type, name;
};

enum class LineShape { kGood, kMalformed, kNotThisLayout };

// A member line of SOS: [set] column [weight]. weight is empty when none is given.
struct MpsMember {
  std::string_view column, weight;
};

// Takes lines apart. Every line given is not blank. Views point into the line.
class MpsLineScanner {
 public:
  explicit MpsLineScanner(MpsLayout layout) : layout_(layout) {}

  [[nodiscard]] MpsLayout layout() const { return layout_; }

  // `optional_head`: the name in front may be missing (set names of RHS and RANGES). `names`, and `more_names` unless
  // null, only tell names from comments.
  [[nodiscard]] LineShape pairs(std::string_view line, bool optional_head, const NameTable& names,
                                const NameTable* more_names, MpsPairs* pairs);
  [[nodiscard]] LineShape row(std::string_view line, MpsRow* row);
  [[nodiscard]] LineShape bound(std::string_view line, const NameTable& columns, MpsBound* bound);
  [[nodiscard]] LineShape member(std::string_view line, const NameTable& columns, MpsMember* member);

 private:
  [[nodiscard]] LineShape free_pairs(std::string_view line, bool optional_head, const NameTable& names,
                                     const NameTable* more_names, MpsPairs* pairs);
  [[nodiscard]] LineShape free_bound(std::string_view line, const NameTable& columns, MpsBound* bound);
  [[nodiscard]] LineShape free_member(std::string_view line, const NameTable& columns, MpsMember* member);

  MpsLayout layout_;
  MpsWords words_;  // kept: clearing it for every line would cost as much as the scan
};

// Bound types that take no number.
[[nodiscard]] bool is_plain_bound(std::string_view type);

}  // namespace zorvex
