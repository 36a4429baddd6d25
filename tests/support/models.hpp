// Shared benchmark instances, which live outside the source tree and may be absent.
//   models_dir() is $ZORVEX_MODELS when set, else the directory the build was configured with ("../shared/models"
//   beside the sources), or an empty path when neither exists.
//   ZORVEX_NEED_MODEL(variable, "lp/afiro.mps.gz") defines `variable` (std::string) or skips the test.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace zorvex::testing {

inline std::filesystem::path models_dir() {
  const char* chosen = std::getenv("ZORVEX_MODELS");
  const std::filesystem::path dir = chosen != nullptr ? chosen : ZORVEX_MODELS_DIR;
  return std::filesystem::is_directory(dir) ? dir : std::filesystem::path{};
}

// Empty when the instance is not there.
inline std::string model_path(const std::string& relative) {
  const std::filesystem::path dir = models_dir();
  if (dir.empty() || !std::filesystem::exists(dir / relative)) {
    return {};
  }
  return (dir / relative).string();
}

}  // namespace zorvex::testing

#define ZORVEX_NEED_MODEL(variable, relative)                             \
  const std::string variable = ::zorvex::testing::model_path(relative);   \
  if (variable.empty()) {                                                 \
    GTEST_SKIP() << "shared model " << (relative) << " is not available " \
                 << "(set ZORVEX_MODELS to the directory that holds it)"; \
  }
