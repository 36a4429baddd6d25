// Environment with a recorded log, and a directory of its own for each test.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "env/environment.hpp"
#include "io/number_text.hpp"
#include "model/model.hpp"
#include "support/scratch.hpp"
#include "support/session.hpp"

namespace zorvex::testing {

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
  Model read(const std::string& name, int* code = nullptr) {
    ZLPmodel* model = nullptr;
    const int result = ZLPreadmodel(env_, name.c_str(), &model);
    if (code != nullptr) *code = result;
    if (model != nullptr) hook(model->env);
    return Model(model);
  }

 private:
  ZLPenv* env_ = nullptr;
  std::string log_;
};

// Models built through the C interface, what is written of them, and what is read back of that.
class WriterTest : public ::testing::Test {
 protected:
  explicit WriterTest(const char* file) : file_(file) {}

  Model model(const char* name) {
    ZLPmodel* made = nullptr;
    EXPECT_EQ(ZLPnewmodel(env_.get(), &made, name, 0, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
    env_.hook(made->env);
    return Model(made);
  }
  static void column(const Model& m, const char* name, double obj, double lb, double ub, char type) {
    EXPECT_EQ(ZLPaddvar(m.get(), 0, nullptr, nullptr, obj, lb, ub, type, name), 0);
  }
  static void row(const Model& m, const char* name, std::vector<int> ind, std::vector<double> val, char sense,
                  double rhs) {
    EXPECT_EQ(ZLPaddconstr(m.get(), static_cast<int>(ind.size()), ind.data(), val.data(), sense, rhs, name), 0);
  }
  static void range(const Model& m, const char* name, std::vector<int> ind, std::vector<double> val, double lower,
                    double upper) {
    EXPECT_EQ(ZLPaddrangeconstr(m.get(), static_cast<int>(ind.size()), ind.data(), val.data(), lower, upper, name), 0);
  }
  std::string written(const Model& m, std::string file = "") {
    file = dir_.file(file.empty() ? file_ : file);
    EXPECT_EQ(ZLPupdatemodel(m.get()), 0);
    env_.clear_log();
    EXPECT_EQ(ZLPwrite(m.get(), file.c_str()), 0) << ZLPgetmerrormsg(m.get());
    return slurp(file);
  }
  Model back(std::string file = "") {
    file = dir_.file(file.empty() ? file_ : file);
    env_.clear_log();
    Model again = env_.read(file);
    EXPECT_NE(again, nullptr) << env_.log() << slurp(file);
    return again;
  }
  // Queued edits are announced and left out of what is written of `m`.
  void expect_pending_changes_left_out(const Model& m) {
    const std::string before = written(m);
    column(m, "late", 1, 0, 1e30, 'C');
    EXPECT_EQ(ZLPwrite(m.get(), dir_.file(file_).c_str()), 0);
    EXPECT_EQ(slurp(dir_.file(file_)), before);
    EXPECT_EQ(env_.log(),
              "Warning: model has pending changes.\nFile '" + dir_.file(file_) + "' does not contain these changes.\n");
  }

  RecordingEnv env_;
  TempDir dir_;
  std::string file_;
};

inline std::string number(double value) {
  char text[kNumberTextSize];
  format_number(value, text);
  return text;
}

// A maximisation model comes back as a minimisation and says so no more.
inline std::string without_max_remark(std::string text) {
  const std::string remark = "* Max problem is converted into Min one\n";
  if (const std::size_t at = text.find(remark); at != std::string::npos) text.erase(at, remark.size());
  return text;
}

}  // namespace zorvex::testing
