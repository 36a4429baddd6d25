// Does a file name end in `suffix`, for example ".sol", possibly followed by the suffix of a compressed file?
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace zorvex_cli {

inline bool has_suffix(std::string_view name, std::string_view suffix) {
  for (const std::string_view packed : {".gz", ".bz2", ".zip", ".7z"}) {
    if (name.ends_with(packed)) {
      name.remove_suffix(packed.size());
      break;
    }
  }
  if (name.size() < suffix.size()) return false;
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  const std::string_view tail = name.substr(name.size() - suffix.size());
  return std::equal(tail.begin(), tail.end(), suffix.begin(), [&](char a, char b) { return lower(a) == b; });
}

}  // namespace zorvex_cli
