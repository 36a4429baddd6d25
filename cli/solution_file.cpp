#include "solution_file.hpp"

#include <charconv>
#include <fstream>
#include <string_view>
#include <unordered_map>

#include "session.hpp"

namespace zorvex_cli {

namespace {

constexpr const char* kBlanks = " \t\r";

std::string_view trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

[[noreturn]] void bad_line(const std::string& file, int line, const std::string& text) {
  throw Failure(kExitFailed, file + ":" + std::to_string(line) + ": " + text);
}

bool parse_number(std::string_view word, double& value) {
  if (!word.empty() && word.front() == '+') word.remove_prefix(1);
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
  return error == std::errc() && end == word.data() + word.size();
}

}  // namespace

std::vector<SolutionEntry> read_solution(std::istream& stream, const std::string& name) {
  std::vector<SolutionEntry> entries;
  std::string text;
  for (int line = 1; std::getline(stream, text); ++line) {
    const std::string_view content = trim(text);
    if (content.empty() || content.front() == '#') continue;
    const std::size_t blank = content.find_last_of(kBlanks);
    if (blank == std::string_view::npos) bad_line(name, line, "expected a name and a value");
    SolutionEntry entry{std::string(trim(content.substr(0, blank))), 0, line};
    const std::string_view word = content.substr(blank + 1);
    if (!parse_number(word, entry.value)) bad_line(name, line, "'" + std::string(word) + "' is not a number");
    entries.push_back(std::move(entry));
  }
  return entries;
}

std::vector<SolutionEntry> read_solution_file(const std::string& path) {
  std::ifstream stream(path);
  if (!stream) throw Failure(kExitFailed, "cannot read '" + path + "'");
  std::vector<SolutionEntry> entries = read_solution(stream, path);
  if (stream.bad()) throw Failure(kExitFailed, "cannot read '" + path + "' to its end");
  return entries;
}

SolutionValues match_names(const std::vector<SolutionEntry>& entries, const std::vector<std::string>& names,
                           const std::string& file) {
  std::unordered_map<std::string_view, std::size_t> position;
  for (std::size_t col = 0; col < names.size(); ++col) position.emplace(names[col], col);
  SolutionValues result{std::vector<double>(names.size(), 0.0), std::vector<bool>(names.size(), false), 0};
  for (const SolutionEntry& entry : entries) {
    const auto known = position.find(entry.name);
    if (known == position.end()) bad_line(file, entry.line, "the model has no variable '" + entry.name + "'");
    if (result.found[known->second]) bad_line(file, entry.line, "variable '" + entry.name + "' again");
    result.found[known->second] = true;
    result.value[known->second] = entry.value;
  }
  result.missing = static_cast<int>(names.size() - entries.size());
  return result;
}

}  // namespace zorvex_cli
