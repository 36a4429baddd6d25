// What the fuzz targets share: data as a stream, data as a file without a disk, a quiet environment.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "io/model_stream.hpp"
#include "zorvex.h"

namespace zorvex::fuzz {

inline void require(bool condition) {
  if (!condition) std::abort();
}

class MemoryStream final : public ModelStream {
 public:
  explicit MemoryStream(std::string_view data) : data_(data) {}
  std::size_t read(char* buffer, std::size_t size) override {
    // Small pieces, so that lines end up across them.
    const std::size_t got = std::min({size, data_.size(), std::size_t{61}});
    std::memcpy(buffer, data_.data(), got);
    data_.remove_prefix(got);
    return got;
  }
  bool write(const char*, std::size_t) override { return false; }
  bool close(std::string*) override { return true; }

 private:
  std::string_view data_;
};

// A file in memory; name() can be opened like any other for reading and writing.
class MemoryFile {
 public:
  explicit MemoryFile(std::string_view data) : descriptor_(memfd_create("fuzz", 0)) {
    require(descriptor_ >= 0);
    require(::write(descriptor_, data.data(), data.size()) == static_cast<ssize_t>(data.size()));
  }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() { ::close(descriptor_); }
  [[nodiscard]] std::string name() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};

// One environment for the whole run, without output.
inline ZLPenv* quiet_env() {
  static ZLPenv* const env = [] {
    ZLPenv* made = nullptr;
    require(ZLPloadenv(&made, nullptr) == 0);
    ZLPsetintparam(made, "OutputFlag", 0);
    return made;
  }();
  return env;
}

inline std::string_view text_of(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

}  // namespace zorvex::fuzz
