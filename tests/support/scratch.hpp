// Directories that live as long as a test, whole files, and what is printed.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <string>

namespace zorvex::testing {

class TempDir {
 public:
  TempDir() {
    std::string name = (std::filesystem::temp_directory_path() / "zorvex-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary directory");
    path_ = name;
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  ~TempDir() { std::filesystem::remove_all(path_); }
  [[nodiscard]] std::string file(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

// The working directory of one test; the old one comes back at the end.
class ScratchDirectory {
 public:
  ScratchDirectory() { std::filesystem::current_path(own_.file("")); }
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;
  ~ScratchDirectory() { std::filesystem::current_path(before_); }

 private:
  std::filesystem::path before_ = std::filesystem::current_path();
  TempDir own_;
};

inline std::string slurp(const std::string& file) {
  std::ostringstream text;
  text << std::ifstream(file, std::ios::binary).rdbuf();
  return text.str();
}

inline void spit(const std::string& file, const std::string& text) { std::ofstream(file, std::ios::binary) << text; }

// What `body` prints to standard output.
inline std::string printed(const std::function<void()>& body) {
  ::testing::internal::CaptureStdout();
  body();
  std::fflush(stdout);
  return ::testing::internal::GetCapturedStdout();
}

}  // namespace zorvex::testing
