#include "io/lp_keywords.hpp"

#include <array>

#include "io/lp_lexer.hpp"
#include "io/mps_layout.hpp"

namespace zorvex {

namespace {

struct Entry {
  std::string_view text;  // lower case; a blank stands for one or more blanks
  LpSection section;
};

// Of two words of which one starts the other, any order will do: the match must end where a name ends.
constexpr Entry kKeywords[] = {
    {"minimize", LpSection::kMinimize},
    {"minimise", LpSection::kMinimize},
    {"minimum", LpSection::kMinimize},
    {"min", LpSection::kMinimize},
    {"maximize", LpSection::kMaximize},
    {"maximise", LpSection::kMaximize},
    {"maximum", LpSection::kMaximize},
    {"max", LpSection::kMaximize},
    {"subject to", LpSection::kConstraints},
    {"such that", LpSection::kConstraints},
    {"st", LpSection::kConstraints},
    {"st.", LpSection::kConstraints},
    {"s.t.", LpSection::kConstraints},
    {"lazy constraints", LpSection::kLazyConstraints},
    {"user cuts", LpSection::kUserCuts},
    {"bounds", LpSection::kBounds},
    {"bound", LpSection::kBounds},
    {"general constraints", LpSection::kUnsupported},
    {"general constraint", LpSection::kUnsupported},
    {"general", LpSection::kGenerals},
    {"generals", LpSection::kGenerals},
    {"gen", LpSection::kGenerals},
    {"integer", LpSection::kGenerals},
    {"integers", LpSection::kGenerals},
    {"int", LpSection::kGenerals},
    {"binary", LpSection::kBinaries},
    {"binaries", LpSection::kBinaries},
    {"bin", LpSection::kBinaries},
    {"semi-continuous", LpSection::kSemicontinuous},
    {"semicontinuous", LpSection::kSemicontinuous},
    {"semi", LpSection::kSemicontinuous},
    {"semis", LpSection::kSemicontinuous},
    {"semi-integer", LpSection::kSemiinteger},
    {"semiinteger", LpSection::kSemiinteger},
    {"sos", LpSection::kSos},
    {"sos1", LpSection::kSos1},
    {"sos2", LpSection::kSos2},
    {"end", LpSection::kEnd},
};

constexpr std::array<bool, 256> kFirstLetters = [] {
  std::array<bool, 256> letters{};
  for (const Entry& entry : kKeywords) {
    const auto first = static_cast<unsigned char>(entry.text.front());
    letters[first] = letters[static_cast<std::size_t>(first - 'a' + 'A')] = true;
  }
  return letters;
}();

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// The length of `word` at the front of `text`, 0 when it is not there as a whole word.
std::size_t match(std::string_view text, std::string_view word) {
  std::size_t at = 0;
  for (const char wanted : word) {
    if (wanted == ' ') {
      const std::size_t before = at;
      while (at < text.size() && is_blank(text[at])) ++at;
      if (at == before) return 0;
    } else if (at < text.size() && lower(text[at]) == wanted) {
      ++at;
    } else {
      return 0;
    }
  }
  const bool whole = at == text.size() || !(is_lp_name_character(text[at]) || text[at] == '[');
  return whole ? at : 0;
}

bool is_word(std::string_view name, std::string_view word) {
  return name.size() == word.size() && match(name, word) == word.size();
}

}  // namespace

LpKeyword lp_keyword(std::string_view text) {
  if (text.empty() || !kFirstLetters[static_cast<unsigned char>(text.front())]) return {};
  const char first = lower(text.front());
  LpKeyword found;
  for (const Entry& entry : kKeywords) {
    if (entry.text.front() != first) continue;
    const std::size_t length = match(text, entry.text);
    if (length > found.length) found = {entry.section, length};
  }
  return found;
}

bool is_lp_infinity(std::string_view name) { return is_word(name, "inf") || is_word(name, "infinity"); }

bool is_lp_free(std::string_view name) { return is_word(name, "free"); }

bool is_lp_reserved(std::string_view name) {
  if (is_lp_infinity(name) || lp_keyword(name).length == name.size()) return true;
  for (const std::string_view word : {"free", "s1", "s2", "subject", "such", "lazy", "user", "to", "that"}) {
    if (is_word(name, word)) return true;
  }
  return false;
}

}  // namespace zorvex
