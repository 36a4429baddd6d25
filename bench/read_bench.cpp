// Reading speed of model files: read_bench [FILE ...], files plain or gzipped. Without arguments it writes a model of
// its own into the temporary directory (50 MB of MPS) and reads that, as MPS and LP file, plain and gzipped.
// Prints for each file the best of three reads: megabytes of text per second of processor time and of wall time.
#include <stdlib.h>
#include <time.h>
#include <zlib.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "zorvex.h"

namespace {

namespace fs = std::filesystem;

double processor_seconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

double text_megabytes(const std::string& name) {
  if (!name.ends_with(".gz")) return static_cast<double>(fs::file_size(name)) / 1e6;
  gzFile file = gzopen(name.c_str(), "rb");
  std::vector<char> block(1 << 20);
  double bytes = 0;
  for (int got; file != nullptr && (got = gzread(file, block.data(), static_cast<unsigned>(block.size()))) > 0;) {
    bytes += got;
  }
  if (file != nullptr) gzclose(file);
  return bytes / 1e6;
}

// Sparse columns with names of mixed length and values of every kind of length, as models of the wild have them.
void write_example(const std::string& name, double megabytes) {
  std::mt19937 random(1);
  FILE* out = std::fopen(name.c_str(), "w");
  constexpr int kRows = 100000;
  std::fputs("NAME example\nROWS\n N  COST\n", out);
  for (int row = 0; row < kRows; ++row) std::fprintf(out, " %c  row_%d\n", "LGE"[row % 3], row);
  std::fputs("COLUMNS\n", out);
  int cols = 0;
  for (; static_cast<double>(std::ftell(out)) < megabytes * 1e6; ++cols) {
    std::fprintf(out, "    x%d  COST  %g  row_%d  1\n", cols, static_cast<int>(random() % 1000) / 8.0, cols % kRows);
    for (int k = 0; k < 3; ++k) {
      std::fprintf(out, "    x%d  row_%d  %d  row_%d  %.15g\n", cols, static_cast<int>(random() % kRows),
                   static_cast<int>(random() % 99) + 1, static_cast<int>(random() % kRows),
                   static_cast<double>(random()) / 4294967296.0);
    }
  }
  std::fputs("RHS\n", out);
  for (int row = 0; row < kRows; ++row) std::fprintf(out, "    RHS  row_%d  %d\n", row, row % 77);
  std::fputs("BOUNDS\n", out);
  for (int col = 0; col < cols; col += 3) std::fprintf(out, " UP BND  x%d  %d\n", col, col % 50 + 1);
  std::fputs("ENDATA\n", out);
  std::fclose(out);
}

bool measure(ZLPenv* env, const std::string& name) {
  const double megabytes = text_megabytes(name);
  double processor = 1e30, wall = 1e30;
  for (int repeat = 0; repeat < 3; ++repeat) {
    const double before = processor_seconds();
    const auto start = std::chrono::steady_clock::now();
    ZLPmodel* model = nullptr;
    if (ZLPreadmodel(env, name.c_str(), &model) != 0) {
      std::fprintf(stderr, "%s: %s\n", name.c_str(), ZLPgeterrormsg(env));
      return false;
    }
    wall = std::min(wall, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    processor = std::min(processor, processor_seconds() - before);
    ZLPfreemodel(model);
  }
  std::printf("%-50s %8.1f MB  cpu %6.3f s %7.1f MB/s  wall %6.3f s %7.1f MB/s\n", fs::path(name).filename().c_str(),
              megabytes, processor, megabytes / processor, wall, megabytes / wall);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  ZLPenv* env = nullptr;
  if (ZLPloadenv(&env, nullptr) != 0) return 1;
  ZLPsetintparam(env, "OutputFlag", 0);
  std::vector<std::string> names(argv + 1, argv + argc);
  fs::path own;
  if (names.empty()) {
    std::string pattern = (fs::temp_directory_path() / "zorvex_read_XXXXXX").string();
    own = mkdtemp(pattern.data());
    const std::string plain = (own / "example.mps").string();
    write_example(plain, 50);
    ZLPmodel* model = nullptr;
    names = {plain, plain + ".gz", (own / "example.lp").string(), (own / "example.lp.gz").string()};
    if (ZLPreadmodel(env, plain.c_str(), &model) == 0) {
      for (std::size_t k = 1; k < names.size(); ++k) ZLPwrite(model, names[k].c_str());
    }
    ZLPfreemodel(model);
  }
  bool good = true;
  for (const std::string& name : names) good = measure(env, name) && good;
  if (!own.empty()) fs::remove_all(own);
  ZLPfreeenv(env);
  return good ? 0 : 1;
}
