// Environment with a recorded log, and a directory of its own for each test.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "env/environment.hpp"
#include "model/model.hpp"
#include "zorvex.h"

namespace zorvex::testing {

class TempDir {
 public:
  TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "zorvex_io_XXXXXX").string();
    path_ = mkdtemp(pattern.data());
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  ~TempDir() { std::filesystem::remove_all(path_); }
  [[nodiscard]] std::string file(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

struct FreeModel {
  void operator()(ZLPmodel* model) const { ZLPfreemodel(model); }
};
using ModelPtr = std::unique_ptr<ZLPmodel, FreeModel>;

class RecordingEnv {
 public:
  RecordingEnv() {
    EXPECT_EQ(ZLPloadenv(&env_, nullptr), 0);
    ZLPsetintparam(env_, "OutputFlag", 0);
    hook(env_);
  }
  RecordingEnv(const RecordingEnv&) = delete;
  RecordingEnv& operator=(const RecordingEnv&) = delete;
  ~RecordingEnv() { ZLPfreeenv(env_); }

  [[nodiscard]] ZLPenv* get() const { return env_; }
  // Models log through a record of their own.
  void hook(ZLPenv* env) {
    env->callback_data = std::make_unique<CallbackData>();
    env->callback_data->user = &log_;
    env->message_callback = [](CallbackData& data, int) { *static_cast<std::string*>(data.user) += data.text.data(); };
  }
  [[nodiscard]] const std::string& log() const { return log_; }
  void clear_log() { log_.clear(); }
  [[nodiscard]] std::string error() const { return ZLPgeterrormsg(env_); }

  // Null on failure; `code` receives what ZLPreadmodel returned.
  ModelPtr read(const std::string& name, int* code = nullptr) {
    ZLPmodel* model = nullptr;
    const int result = ZLPreadmodel(env_, name.c_str(), &model);
    if (code != nullptr) *code = result;
    if (model != nullptr) hook(model->env);
    return ModelPtr(model);
  }

 private:
  ZLPenv* env_ = nullptr;
  std::string log_;
};

inline void write_text(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

inline std::string read_text(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

// A maximisation model comes back as a minimisation and says so no more.
inline std::string without_max_remark(std::string text) {
  const std::string remark = "* Max problem is converted into Min one\n";
  if (const std::size_t at = text.find(remark); at != std::string::npos) text.erase(at, remark.size());
  return text;
}

}  // namespace zorvex::testing
