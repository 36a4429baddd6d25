// Helpers of the environment tests.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <string>

#include "zorvex.h"

namespace zorvex::testing {

// A fresh empty working directory for one test; the old one comes back at the end.
class ScratchDirectory {
 public:
  ScratchDirectory() : before_(std::filesystem::current_path()) {
    std::string name = (std::filesystem::temp_directory_path() / "zorvex-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no scratch directory");
    path_ = name;
    std::filesystem::current_path(path_);
  }
  ~ScratchDirectory() {
    std::filesystem::current_path(before_);
    std::filesystem::remove_all(path_);
  }

 private:
  std::filesystem::path before_, path_;
};

inline std::string slurp(const std::string& file) {
  std::ifstream in(file);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

inline void spit(const std::string& file, const std::string& text) { std::ofstream(file) << text; }

// What `body` prints to standard output.
inline std::string printed(const std::function<void()>& body) {
  ::testing::internal::CaptureStdout();
  body();
  std::fflush(stdout);
  return ::testing::internal::GetCapturedStdout();
}

struct FreeEnv {
  void operator()(ZLPenv* env) const { ZLPfreeenv(env); }
};
using Env = std::unique_ptr<ZLPenv, FreeEnv>;

inline Env load(const char* log_file = nullptr) {
  ZLPenv* env = nullptr;
  EXPECT_EQ(0, ZLPloadenv(&env, log_file));
  return Env(env);
}

}  // namespace zorvex::testing
