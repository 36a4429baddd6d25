// The shared models through the LP format and back, compared as data.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "io/io_fixture.hpp"
#include "support/model_comparison.hpp"
#include "support/models.hpp"

namespace zorvex::testing {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::uintmax_t kLargestFile = 20'000;  // bytes, compressed; sanitizers are an order of magnitude slower
#else
constexpr std::uintmax_t kLargestFile = 300'000;
#endif

std::vector<std::string> shared_files(bool lp_format) {
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(models_dir())) {
    const std::string name = entry.path().filename().string();
    const bool is_lp = name.find(".lp") != std::string::npos;
    const bool is_mps = name.find(".mps") != std::string::npos || name.find(".qps") != std::string::npos;
    if ((lp_format ? is_lp : is_mps) && entry.file_size() <= kLargestFile) files.push_back(entry.path().string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

class RoundTrip : public ::testing::Test {
 protected:
  // Writes the model as `file` and reads it back; it must be the same. `names`: with its names, where the format
  // carries them.
  Model through(const Model& model, const std::string& file, const std::string& origin) {
    env_.clear_log();
    EXPECT_EQ(ZLPwrite(model.get(), dir_.file(file).c_str()), 0) << origin;
    const bool names = env_.log().find("generic names") == std::string::npos && file.find(".r") == std::string::npos;
    env_.clear_log();
    Model again = env_.read(dir_.file(file));
    EXPECT_NE(again, nullptr) << origin << " as " << file << "\n" << env_.log();
    if (again == nullptr) return nullptr;
    EXPECT_EQ(difference(model->data, again->data, names && all_named(model->data)), "") << origin << " as " << file;
    return again;
  }
  static bool all_named(const ModelData& data) {
    for (Index row = 0; row < data.num_rows(); ++row) {
      if (data.constr_names[row].empty()) return false;
    }
    return true;
  }

  RecordingEnv env_;
  TempDir dir_;
};

TEST_F(RoundTrip, MpsToLpToMps) {
  if (models_dir().empty()) GTEST_SKIP() << "shared models are not available (set ZORVEX_MODELS)";
  int read = 0;
  for (const std::string& path : shared_files(false)) {
    const Model model = env_.read(path);
    if (model == nullptr) continue;  // other tests say which ones must be refused
    ++read;
    const Model as_lp = through(model, "m.lp", path);
    ASSERT_NE(as_lp, nullptr);
    const Model back = through(as_lp, "m.mps", path);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(difference(model->data, back->data, false), "") << path;
    EXPECT_EQ(model->data.name, as_lp->data.name);
  }
  EXPECT_GT(read, 0);
}

TEST_F(RoundTrip, LpToLp) {
  if (models_dir().empty()) GTEST_SKIP() << "shared models are not available (set ZORVEX_MODELS)";
  int read = 0;
  for (const std::string& path : shared_files(true)) {
    const Model model = env_.read(path);
    if (model == nullptr) continue;
    ++read;
    through(model, "m.lp", path);
    through(model, "m.rlp", path);
  }
  EXPECT_GT(read, 0);
}

}  // namespace
}  // namespace zorvex::testing
