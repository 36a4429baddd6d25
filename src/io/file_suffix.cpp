#include "io/file_suffix.hpp"

namespace zorvex {

namespace {

char fold(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool ends_with_folded(std::string_view name, std::string_view suffix) {
  if (name.size() < suffix.size()) return false;
  name.remove_prefix(name.size() - suffix.size());
  for (std::size_t i = 0; i < suffix.size(); ++i) {
    if (fold(name[i]) != suffix[i]) return false;
  }
  return true;
}

}  // namespace

Compression compression_of(std::string_view name) {
  for (int c = 1; c < static_cast<int>(kCompressionSuffixes.size()); ++c) {
    if (name.ends_with(kCompressionSuffixes[c])) return static_cast<Compression>(c);
  }
  return Compression::kNone;
}

std::string_view without_compression(std::string_view name) {
  const std::string_view suffix = kCompressionSuffixes[static_cast<int>(compression_of(name))];
  name.remove_suffix(suffix.size());
  return name;
}

FileType file_type_of(std::string_view name) {
  for (int type = 1; type < static_cast<int>(kTypeSuffixes.size()); ++type) {
    for (const std::string_view compression : kCompressionSuffixes) {
      if (!name.ends_with(compression)) continue;
      if (ends_with_folded(name.substr(0, name.size() - compression.size()), kTypeSuffixes[type])) {
        return static_cast<FileType>(type);
      }
    }
  }
  return FileType::kUnknown;
}

FileType probed_type(int probe) {
  constexpr int kNumLowerCase = 6;
  const int lower = probe > kNumLowerCase ? probe - kNumLowerCase : probe;
  return lower == kNumLowerCase ? FileType::kMps : static_cast<FileType>(lower);
}

}  // namespace zorvex
