// Handles that free themselves, and environments for tests; public interface only.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "zorvex.h"

namespace zorvex::testing {

struct FreeEnv {
  void operator()(ZLPenv* env) const { ZLPfreeenv(env); }
};
struct FreeModel {
  void operator()(ZLPmodel* model) const { ZLPfreemodel(model); }
};
using Env = std::unique_ptr<ZLPenv, FreeEnv>;
using Model = std::unique_ptr<ZLPmodel, FreeModel>;

inline Env load(const char* log_file = nullptr) {
  ZLPenv* env = nullptr;
  EXPECT_EQ(0, ZLPloadenv(&env, log_file));
  return Env(env);
}

inline Env quiet_env() {
  Env env = load();
  EXPECT_EQ(0, ZLPsetintparam(env.get(), "OutputFlag", 0));
  return env;
}

inline Model read_model(ZLPenv* env, const std::string& path) {
  ZLPmodel* model = nullptr;
  EXPECT_EQ(0, ZLPreadmodel(env, path.c_str(), &model)) << ZLPgeterrormsg(env);
  return Model(model);
}

}  // namespace zorvex::testing
