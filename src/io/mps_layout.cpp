#include "io/mps_layout.hpp"

#include <cstddef>

#include "io/number_text.hpp"

namespace zorvex {

namespace {

// Zero-based columns of the fixed fields, [begin, end). Numbers end at their first blank.
struct Field {
  std::size_t begin, end;
};
constexpr Field kField1{1, 3};
constexpr Field kField2{4, 12};
constexpr Field kField3{14, 22};
constexpr std::size_t kNumber1 = 24;
constexpr Field kField5{39, 47};
constexpr std::size_t kNumber2 = 49;
constexpr std::size_t kLastColumn = 61;      // from here up to the sequence field nothing may stand
constexpr std::size_t kSequenceColumn = 72;  // card sequence numbers of old decks

bool is_number(std::string_view text) {
  double value;
  return parse_number(text, &value);
}

bool starts_comment(std::string_view word) { return word.front() == '$' || word.front() == '*'; }

// Drops a comment that starts at word `first` or later.
void cut_comment(int first, const NameTable& names, const NameTable* more_names, MpsWords* words) {
  for (int i = first; i < words->count; ++i) {
    const std::string_view word = (*words)[i];
    if (!starts_comment(word)) continue;
    if (names.find(word) < 0 && (more_names == nullptr || more_names->find(word) < 0)) {
      words->count = i;
      words->overflow = false;
      return;
    }
  }
}

std::string_view field(std::string_view line, Field f) {
  if (line.size() <= f.begin) return {};
  return trim(line.substr(f.begin, f.end - f.begin));
}

bool blank_between(std::string_view line, std::size_t begin, std::size_t end) {
  return begin >= line.size() || trim(line.substr(begin, end - begin)).empty();
}

// The word that starts in columns [begin, limit); it may run past the limit.
std::string_view number_from(std::string_view line, std::size_t begin, std::size_t limit, std::size_t* end) {
  while (begin < limit && begin < line.size() && is_blank(line[begin])) ++begin;
  std::size_t stop = begin;
  if (begin < limit) {
    while (stop < line.size() && !is_blank(line[stop])) ++stop;
  }
  *end = stop;
  return begin < line.size() ? line.substr(begin, stop - begin) : std::string_view{};
}

// Drops the sequence field and what follows a '$' in the first place of field 3 or 5. Tabs have no column.
bool is_fixed_line(std::string_view* line) {
  if (line->find('\t') != std::string_view::npos) return false;
  if (line->size() > kSequenceColumn) *line = line->substr(0, kSequenceColumn);
  for (const std::size_t place : {kField3.begin, kField5.begin}) {
    if (line->size() > place && (*line)[place] == '$') *line = line->substr(0, place);
  }
  return is_blank(line->front());
}

// Fields 3 to 6 as pairs.
LineShape fixed_pairs(std::string_view line, MpsPairs* pairs) {
  if (!is_fixed_line(&line) || !blank_between(line, 0, kField2.begin) ||
      !blank_between(line, kField2.end, kField3.begin)) {
    return LineShape::kNotThisLayout;
  }
  pairs->head = field(line, kField2);
  const std::string_view name = field(line, kField3);
  if (name.empty()) return LineShape::kNotThisLayout;
  std::size_t end = 0;
  const std::string_view number = number_from(line, kNumber1, kField5.begin - 1, &end);
  if (!blank_between(line, kField3.end, kNumber1)) return LineShape::kNotThisLayout;
  pairs->name[0] = name;
  pairs->number[0] = number;
  pairs->count = 1;
  if (number.empty()) return LineShape::kMalformed;
  const std::string_view second = field(line, kField5);
  if (blank_between(line, end, line.size())) return LineShape::kGood;
  if (end > kField5.begin || second.empty() || !blank_between(line, end, kField5.begin) ||
      !blank_between(line, kField5.end, kNumber2)) {
    return LineShape::kNotThisLayout;
  }
  pairs->name[1] = second;
  pairs->number[1] = number_from(line, kNumber2, kLastColumn, &end);
  pairs->count = 2;
  if (pairs->number[1].empty()) return LineShape::kMalformed;
  return blank_between(line, end, line.size()) ? LineShape::kGood : LineShape::kNotThisLayout;
}

LineShape fixed_bound(std::string_view line, MpsBound* bound) {
  if (!is_fixed_line(&line) || !blank_between(line, kField1.end, kField2.begin) ||
      !blank_between(line, kField2.end, kField3.begin) || !blank_between(line, kField3.end, kNumber1)) {
    return LineShape::kNotThisLayout;
  }
  std::size_t end = 0;
  *bound = {field(line, kField1), field(line, kField2), field(line, kField3),
            number_from(line, kNumber1, kField5.begin - 1, &end)};
  if (!blank_between(line, end, line.size())) return LineShape::kNotThisLayout;
  return bound->type.empty() || bound->column.empty() ? LineShape::kMalformed : LineShape::kGood;
}

LineShape fixed_member(std::string_view line, MpsMember* member) {
  if (!is_fixed_line(&line) || !blank_between(line, 0, kField2.begin)) return LineShape::kNotThisLayout;
  member->column = field(line, kField2);
  std::size_t end = kField2.end;
  member->weight = number_from(line, kField2.end, kLastColumn, &end);
  if (!blank_between(line, end, line.size())) return LineShape::kNotThisLayout;
  return member->column.empty() ? LineShape::kMalformed : LineShape::kGood;
}

}  // namespace

void split_words(std::string_view line, MpsWords* words) {
  const char* p = line.data();
  const char* const end = p + line.size();
  int count = 0;
  words->overflow = false;
  for (;;) {
    while (p < end && is_blank(*p)) ++p;
    if (p == end) break;
    const char* const start = p;
    while (p < end && !is_blank(*p)) ++p;
    if (count == MpsWords::kMax) {
      words->overflow = true;
      break;
    }
    words->word[count++] = std::string_view(start, static_cast<std::size_t>(p - start));
  }
  words->count = count;
}

bool is_plain_bound(std::string_view type) { return type == "FR" || type == "MI" || type == "PL" || type == "BV"; }

LineShape MpsLineScanner::free_pairs(std::string_view line, bool optional_head, const NameTable& names,
                                     const NameTable* more_names, MpsPairs* pairs) {
  MpsWords& words = words_;
  split_words(line, &words);
  if (words.count > 2) cut_comment(2, names, more_names, &words);
  if (words.overflow || words.count < 2) return LineShape::kMalformed;
  const bool has_head = words.count % 2 == 1;
  if (!has_head && !optional_head) return LineShape::kMalformed;
  int at = has_head ? 1 : 0;
  pairs->head = has_head ? words[0] : std::string_view{};
  for (pairs->count = 0; at < words.count; at += 2) {
    pairs->name[pairs->count] = words[at];
    pairs->number[pairs->count++] = words[at + 1];
  }
  return LineShape::kGood;
}

LineShape MpsLineScanner::free_bound(std::string_view line, const NameTable& columns, MpsBound* bound) {
  MpsWords& words = words_;
  split_words(line, &words);
  if (words.count > 2) cut_comment(2, columns, nullptr, &words);
  if (words.overflow || words.count < 2 || words.count > 4) return LineShape::kMalformed;
  bound->type = words[0];
  if (words.count == 2) {
    bound->column = words[1];
  } else if (words.count == 4) {
    *bound = {words[0], words[1], words[2], words[3]};
  } else if (is_plain_bound(words[0]) || words[0] == "SC") {
    // A set name in front or a number behind: the name that is a column decides.
    const bool number_behind = columns.find(words[2]) < 0 && columns.find(words[1]) >= 0 && is_number(words[2]);
    bound->set = number_behind ? std::string_view{} : words[1];
    bound->column = number_behind ? words[1] : words[2];
    bound->number = number_behind ? words[2] : std::string_view{};
  } else {
    *bound = {words[0], {}, words[1], words[2]};
  }
  return LineShape::kGood;
}

LineShape MpsLineScanner::free_member(std::string_view line, const NameTable& columns, MpsMember* member) {
  split_words(line, &words_);
  cut_comment(1, columns, nullptr, &words_);
  const int count = words_.count;
  if (words_.overflow || count < 1 || count > 3) return LineShape::kMalformed;
  const bool has_set = count == 3 || (count == 2 && columns.find(words_[0]) < 0 && !is_number(words_[1]));
  member->column = words_[has_set ? 1 : 0];
  if (count == (has_set ? 3 : 2)) member->weight = words_[count - 1];
  return LineShape::kGood;
}

LineShape MpsLineScanner::pairs(std::string_view line, bool optional_head, const NameTable& names,
                                const NameTable* more_names, MpsPairs* pairs) {
  return layout_ == MpsLayout::kFixed ? fixed_pairs(line, pairs)
                                      : free_pairs(line, optional_head, names, more_names, pairs);
}

LineShape MpsLineScanner::row(std::string_view line, MpsRow* row) {
  if (layout_ == MpsLayout::kFixed) {
    if (!is_fixed_line(&line) || !blank_between(line, kField1.end, kField2.begin) ||
        !blank_between(line, kField2.end, line.size())) {
      return LineShape::kNotThisLayout;
    }
    *row = {field(line, kField1), field(line, kField2)};
    return row->type.empty() || row->name.empty() ? LineShape::kMalformed : LineShape::kGood;
  }
  split_words(line, &words_);
  if (words_.count > 2 && starts_comment(words_[2])) words_.count = 2;
  if (words_.count < 2) return LineShape::kMalformed;
  *row = {words_[0], words_[1]};
  return words_.count > 2 ? LineShape::kNotThisLayout : LineShape::kGood;
}

LineShape MpsLineScanner::bound(std::string_view line, const NameTable& columns, MpsBound* bound) {
  *bound = {};
  return layout_ == MpsLayout::kFixed ? fixed_bound(line, bound) : free_bound(line, columns, bound);
}

LineShape MpsLineScanner::member(std::string_view line, const NameTable& columns, MpsMember* member) {
  *member = {};
  return layout_ == MpsLayout::kFixed ? fixed_member(line, member) : free_member(line, columns, member);
}

}  // namespace zorvex
