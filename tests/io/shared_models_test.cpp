// The shared model collection: sizes as listed in its manifest, and write, read, write as a fixed point.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "io/io_fixture.hpp"
#include "support/model_comparison.hpp"
#include "support/models.hpp"

namespace zorvex::testing {
namespace {

struct Listed {
  std::string path, rows, cols, nonzeros;
};

std::vector<Listed> mps_files_of_manifest() {
  std::vector<Listed> files;
  std::ifstream manifest(models_dir() / "manifest.tsv");
  std::string line;
  std::getline(manifest, line);
  while (std::getline(manifest, line)) {
    std::istringstream fields(line);
    Listed file;
    std::string kind, klass;
    std::getline(fields, file.path, '\t');
    std::getline(fields, kind, '\t');
    std::getline(fields, klass, '\t');
    std::getline(fields, file.rows, '\t');
    std::getline(fields, file.cols, '\t');
    std::getline(fields, file.nonzeros, '\t');
    if (file.path.find(".lp") == std::string::npos) files.push_back(file);
  }
  return files;
}

// The manifest counts words: it counts zeros, names given twice and columns continued on the next line, and stops at
// odd lines. What these files really hold was checked by hand.
const std::map<std::string, std::string> kRealSizes = {{"format-mps/glpk-furnace.mps", "17 18 81"},
                                                       {"format-mps/glpk-icecream.mps", "16 27 238"},
                                                       {"format-mps/glpk-plan.mps", "7 7 41"},
                                                       {"format-mps/highs-comment.mps", "3 2 6"},
                                                       {"format-mps/highs-warnings.mps", "6 9 9"},
                                                       {"format-mps/moi-duplicate_coefficient.mps", "1 1 1"},
                                                       {"format-mps/moi-stacked_data.mps", "4 3 4"},
                                                       {"format-mps/qpsreader-rim_obj.qps", "2 2 4"},
                                                       {"lp/forplan.mps.gz", "161 421 4563"},
                                                       {"qp/qforplan.qps.gz", "161 421 4563"},
                                                       {"lp/stocfor3.mps.gz", "16675 15695 64875"},
                                                       {"mip/lrn.mps.gz", "8491 7253 46123"},
                                                       {"mip/mad.mps.gz", "51 220 2808"},
                                                       {"mip/mod011.mps.gz", "4480 10958 22254"},
                                                       {"mip/neos-906865.mps.gz", "1634 1184 5728"},
                                                       {"mip/neos17.mps.gz", "486 535 4931"},
                                                       {"mip/p6000.mps.gz", "2176 6000 48243"},
                                                       {"mip/pigeon-08.mps.gz", "601 344 5176"},
                                                       {"mip/pigeon-10.mps.gz", "931 490 8150"},
                                                       {"mip/pigeon-11.mps.gz", "1123 572 9889"},
                                                       {"mip/pigeon-12.mps.gz", "1333 660 11796"},
                                                       {"mip/pigeon-13.mps.gz", "1561 754 13871"},
                                                       {"mip/pigeon-16.mps.gz", "2353 1072 21104"},
                                                       {"mip/pigeon-19.mps.gz", "3307 1444 29849"},
                                                       {"qp/cylp-hs268_2.qps", "5 5 21"}};

// Files that are refused, by what the log must say.
const std::map<std::string, std::string> kRefused = {
    {"format-mps/coin-spec_sections.mps", "Error: line 50 not right"},
    {"format-mps/highs-2821-duplicate.mps", "Error: duplicate quadratic elements"},
    {"format-mps/highs-dD2e.mps", "Error: no constraints."},
    {"format-mps/highs-garbage.mps", "Error: line 2 not right"},
    {"format-mps/highs-qjh_quadobj_qmatrix.mps", "Error: duplicate quadratic elements"},
    {"format-mps/highs-qjh_uncon.mps", "Error: no constraints."},
    {"format-mps/lpp-infile_comments2.mps", "Error: no constraints."},
    {"format-mps/moi-bad-bad_objective_sense.mps", "Error: no constraints."},
    {"format-mps/moi-bad-bad_objective_sense_newline.mps", "Error: no constraints."},
    {"format-mps/moi-bad-bounds_invalid_type.mps", "Error: no constraints."},
    {"format-mps/moi-bad-bounds_malformed.mps", "Error: no constraints."},
    {"format-mps/moi-bad-bounds_missing_column.mps", "Error: no constraints."},
    {"format-mps/moi-bad-bounds_missing_column2.mps", "Error: no constraints."},
    {"format-mps/moi-bad-columns_malformed.mps", "Error: no constraints."},
    {"format-mps/moi-bad-columns_marker.mps", "Error at line 9:"},
    {"format-mps/moi-bad-columns_marker2.mps", "Error at line 10:"},
    {"format-mps/moi-bad-malformed_qcmatrix.mps", "Error: line 11 not right"},
    {"format-mps/moi-bad-malformed_qcmatrix_header.mps", "Error: line 11 not right"},
    {"format-mps/moi-bad-malformed_qmatrix.mps", "Error: no constraints."},
    {"format-mps/moi-bad-malformed_qsection.mps", "Error: no constraints."},
    {"format-mps/moi-bad-malformed_quadobj.mps", "Error: no constraints."},
    {"format-mps/moi-bad-ranges_malformed.mps", "Error at line 11:"},
    {"format-mps/moi-bad-rhs_malformed.mps", "Error at line 9:"},
    {"format-mps/moi-bad-rows_bad_sense.mps", "Error at line 3:"},
    {"format-mps/moi-bad-rows_duplicate.mps", "Error at line 4:"},
    {"format-mps/moi-bad-rows_duplicate_2.mps", "Error at line 5:"},
    {"format-mps/moi-bad-rows_malformed.mps", "Error at line 3:"},
    {"format-mps/moi-bad-sos.mps", "Error: no constraints."},
    {"format-mps/moi-integer_default_bounds.mps", "Error: no constraints."},
    {"format-mps/moi-integer_default_bounds_LI.mps", "Error: no constraints."},
    {"format-mps/moi-integer_default_bounds_PL.mps", "Error: no constraints."},
    {"format-mps/papilo-simple_subsitution_gdc_detection.mps", "Error: line 4 not right"},
    {"format-mps/qpsreader-milp.mps", "Error: no constraints."},
    {"format-mps/scip-ex1266.mps", "Error: line 589 not right"},
    {"format-mps/scip-flugpl_rational.mps", "Error at line 39:"},
    {"format-mps/scip-tltr.mps", "Error: line 227 not right"},
    {"qp/scip-meanvarx.mps", "Error: line 171 not right"}};

std::string sizes_of(const ModelData& data) {
  return std::to_string(data.num_rows()) + " " + std::to_string(data.num_cols()) + " " +
         std::to_string(data.matrix.num_nonzeros());
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::uintmax_t kLargestFile = 60'000;  // compressed bytes; sanitizers are an order of magnitude slower
#else
constexpr std::uintmax_t kLargestFile = 600'000;
#endif

TEST(SharedModels, SizesAndFixedPoint) {
  if (models_dir().empty()) GTEST_SKIP() << "shared models are not available (set ZORVEX_MODELS)";
  const TempDir dir;
  int read = 0;
  for (const Listed& listed : mps_files_of_manifest()) {
    const std::string path = model_path(listed.path);
    if (path.empty() || std::filesystem::file_size(path) > kLargestFile) continue;
    RecordingEnv env;
    const Model model = env.read(path);
    if (const auto refused = kRefused.find(listed.path); refused != kRefused.end()) {
      EXPECT_EQ(model, nullptr) << path;
      EXPECT_NE(env.log().find(refused->second), std::string::npos) << path << "\n" << env.log();
      continue;
    }
    ASSERT_NE(model, nullptr) << path << "\n" << env.log();
    ++read;
    const auto real = kRealSizes.find(listed.path);
    EXPECT_EQ(sizes_of(model->data),
              real != kRealSizes.end() ? real->second : listed.rows + " " + listed.cols + " " + listed.nonzeros)
        << path;
    const std::string file = dir.file("written.mps");
    ASSERT_EQ(ZLPwrite(model.get(), file.c_str()), 0) << path;
    const std::string first = slurp(file);
    env.clear_log();
    const Model again = env.read(file);
    ASSERT_NE(again, nullptr) << path << "\n" << env.log();
    EXPECT_EQ(env.log().find("Warning"), std::string::npos) << path << "\n" << env.log();
    EXPECT_EQ(difference(model->data, again->data, false), "") << path;
    ASSERT_EQ(ZLPwrite(again.get(), file.c_str()), 0) << path;
    EXPECT_TRUE(slurp(file) == without_max_remark(first)) << path << " is not a fixed point";
  }
  EXPECT_GT(read, 0);
}

}  // namespace
}  // namespace zorvex::testing
