// Damaged files: whatever the bytes, reading ends with a model or with an error, and a model that was read can be
// written and read again.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "io/io_fixture.hpp"
#include "io/mps_reader.hpp"

namespace zorvex::testing {
namespace {

const char kFreeSeed[] =
    "NAME seed with objcon=           3\nOBJSENSE\n    MAX\nROWS\n N  cost\n L  lim1\n G  lim2\n E  eq1\n N  other\n"
    "COLUMNS\n    x         cost      1.5       lim1      1\n    x         lim2      -2e3\n"
    "    M1        'MARKER'                 'INTORG'\n    y         cost      2         eq1       1D2\n"
    "    y         lim1      .5\n    M2        'MARKER'                 'INTEND'\n    z         other     1\n"
    "    z         lim2      1         eq1       -1\nRHS\n    B         lim1      4         lim2      1\n"
    "    B         cost      -7\nRANGES\n    R         lim1      2.5       eq1       -3\nBOUNDS\n UP BND       x    4\n"
    " LI BND       y         0\n MI BND       z\n SC BND       z         10\nSOS\n S1 s0\n    x         1\n"
    "    y         2\nQUADOBJ\n    x         x         2\n    x         z         1\nENDATA\n";

const char kFixedSeed[] =
    "NAME          SEED\nROWS\n N  OB J\n L  L 1\n G  L2\nCOLUMNS\n"
    "    X 1       OB J                1.   L 1                 2.\n"
    "              L2                 -1.\n    Y         L 1                 3.   L2                  4.\nRHS\n"
    "    RHS       L 1                 5.   L2                  6.\nBOUNDS\n UP BND       X 1                 7.\n"
    "ENDATA\n";

std::vector<std::string> pieces() {
  std::vector<std::string> list{std::string(1, '\0'), std::string(300, 'a'), std::string(100, ' ')};
  std::istringstream rest(
      "\n| |\t|\r\n|*|$|ROWS\n|COLUMNS\n|RHS\n|RANGES\n|BOUNDS\n|SOS\n|ENDATA|NAME|QMATRIX\n| S2 q\n|'MARKER'|'INTORG'|"
      "1e308|-1e308|inf|nan|x|y| N  n\n| FR BND z\n|\xff\xfe|0x1p3|1e-400");
  for (std::string piece; std::getline(rest, piece, '|');) list.push_back(piece);
  return list;
}
const std::vector<std::string> kPieces = pieces();

std::string mutate(std::string text, std::mt19937& random) {
  const auto below = [&](std::size_t n) { return static_cast<std::size_t>(random() % std::max<std::size_t>(n, 1)); };
  for (std::size_t count = 1 + below(3); count > 0; --count) {
    const std::size_t at = below(text.size());
    switch (below(8)) {
      case 0:
        if (!text.empty()) text[at] = static_cast<char>(random());
        break;
      case 1:
        text.erase(at, 1 + below(20));
        break;
      case 2:
        text.insert(at, kPieces[below(kPieces.size())]);
        break;
      case 3:
        text.insert(at, text.substr(below(text.size()), below(80)));
        break;
      case 4:
        text.resize(at);
        break;
      case 5:
      case 6: {
        // One digit or letter becomes another one of its kind, as when names and values are mixed up.
        const char c = text.empty() ? ' ' : text[at];
        if (c >= '0' && c <= '9') text[at] = static_cast<char>('0' + below(10));
        if (c >= 'a' && c <= 'z') text[at] = static_cast<char>('a' + below(26));
        break;
      }
      default: {
        // Two lines change places.
        const std::size_t first = text.find('\n', at);
        const std::size_t second = first == std::string::npos ? first : text.find('\n', first + 1);
        if (second != std::string::npos) {
          std::rotate(text.begin() + at, text.begin() + first + 1, text.begin() + second + 1);
        }
      }
    }
  }
  return text;
}

void check_consistent(const ModelData& data) {
  const auto rows = static_cast<std::size_t>(data.num_rows());
  const auto cols = static_cast<std::size_t>(data.num_cols());
  ASSERT_EQ(data.row_sense.size(), rows);
  ASSERT_TRUE(data.range_lower.empty() || data.range_lower.size() == rows);
  ASSERT_EQ(data.lb.size(), cols);
  ASSERT_EQ(data.ub.size(), cols);
  ASSERT_EQ(data.vtype.size(), cols);
  ASSERT_EQ(data.matrix.start.size(), cols + 1);
  for (const double value : data.matrix.value) ASSERT_TRUE(std::isfinite(value) && value != 0);
  for (const double cost : data.obj) ASSERT_TRUE(std::isfinite(cost));
  for (const double side : data.rhs) ASSERT_TRUE(std::isfinite(side));
  for (std::size_t j = 0; j < cols; ++j) {
    std::vector<Index> seen(data.matrix.index.begin() + data.matrix.start[j],
                            data.matrix.index.begin() + data.matrix.start[j + 1]);
    std::sort(seen.begin(), seen.end());
    ASSERT_EQ(std::adjacent_find(seen.begin(), seen.end()), seen.end());
    ASSERT_TRUE(seen.empty() || (seen.front() >= 0 && seen.back() < data.num_rows()));
    ASSERT_FALSE(std::isnan(data.lb[j]) || std::isnan(data.ub[j]));
  }
}

TEST(MpsFuzz, MutatedFilesAreReadOrRefused) {
  const TempDir dir;
  const std::string path = dir.file("m.mps");
  RecordingEnv env;
  std::mt19937 random(12345);
  for (const char* seed : {kFreeSeed, kFixedSeed}) {
    spit(path, seed);
    ASSERT_NE(env.read(path), nullptr) << env.log();
  }
  int read = 0;
  constexpr int kRounds = 2000;
  for (int round = 0; round < kRounds; ++round) {
    const std::string text = mutate(round % 2 == 0 ? kFreeSeed : kFixedSeed, random);
    spit(path, text);
    env.clear_log();
    int code = -1;
    const Model model = env.read(path, &code);
    ASSERT_EQ(model != nullptr, code == 0) << text;
    if (model == nullptr) {
      ASSERT_EQ(code, 10012) << text;
      ASSERT_NE(env.error(), "") << text;
      continue;
    }
    ++read;
    check_consistent(model->data);
    ASSERT_EQ(ZLPwrite(model.get(), path.c_str()), 0) << text;
    const std::string first = slurp(path);
    const Model again = env.read(path, &code);
    ASSERT_NE(again, nullptr) << text << "\nwritten as\n" << first << env.log();
    ASSERT_EQ(ZLPwrite(again.get(), path.c_str()), 0);
    ASSERT_EQ(slurp(path), without_max_remark(first)) << text;
  }
  // Both outcomes must be common for the test to mean anything.
  EXPECT_GT(read, kRounds / 10);
  EXPECT_LT(read, kRounds * 9 / 10);
}

}  // namespace
}  // namespace zorvex::testing
