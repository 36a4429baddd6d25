// Reading speed of model files: read_bench [FILE ...], files plain or gzipped. Without arguments it writes a model of
// its own into the temporary directory (50 MB of MPS) and reads that, as MPS and LP file, plain and gzipped.
// Prints for each file
//   the best of three reads: megabytes of text per second of processor time and of wall time;
//   memory in bytes per nonzero: what the model holds after reading and after an update that rebuilds its matrix, and
//   the highest that the resident set rose above that of the start during either; the queries, in nanoseconds per
//   nonzero (best of three): columns and rows, all at once and one by one, and the first query of rows, which makes the
//   row-wise copy.
#include <malloc.h>
#include <stdlib.h>
#include <time.h>
#include <zlib.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
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

double seconds_of(const std::function<void()>& body) {
  const auto start = std::chrono::steady_clock::now();
  body();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

int count_of(ZLPmodel* model, const char* attribute) {
  int value = 0;
  ZLPgetintattr(model, attribute, &value);
  return value;
}

double live_bytes() {
  const struct mallinfo2 info = mallinfo2();
  return static_cast<double>(info.uordblks + info.hblkhd);
}

double status_bytes(const std::string& field) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    double kilobytes = 0;
    if (word == field && status >> kilobytes) return kilobytes * 1024;
  }
  return 0;
}

// From here on the highest resident set counts anew.
void forget_peak() {
  malloc_trim(0);
  std::ofstream("/proc/self/clear_refs") << "5";
}

void measure_memory(ZLPenv* env, const std::string& name) {
  forget_peak();
  const double live = live_bytes(), resident = status_bytes("VmRSS:");
  ZLPmodel* model = nullptr;
  if (ZLPreadmodel(env, name.c_str(), &model) != 0) return;
  const double nonzeros = count_of(model, "NumNZs");
  const double read_live = live_bytes() - live, read_peak = status_bytes("VmHWM:") - resident;
  forget_peak();
  const int zero = 0;
  const double one = 1;
  ZLPaddconstr(model, 1, &zero, &one, ZLP_LESS_EQUAL, 1e9, nullptr);
  ZLPupdatemodel(model);
  const double update_live = live_bytes() - live, update_peak = status_bytes("VmHWM:") - resident;
  ZLPfreemodel(model);
  std::printf("  bytes per nonzero: read %.1f held, %.1f at most; update %.1f held, %.1f at most\n",
              read_live / nonzeros, read_peak / nonzeros, update_live / nonzeros, update_peak / nonzeros);
}

using Query = int (*)(ZLPmodel*, int*, int*, int*, double*, int, int);

struct QueryTimes {
  double first, whole, single;  // nanoseconds per nonzero
};

QueryTimes time_queries(ZLPmodel* model, Query query, int vectors) {
  const auto nonzeros = static_cast<std::size_t>(count_of(model, "NumNZs"));
  std::vector<int> begin(static_cast<std::size_t>(vectors)), index(nonzeros);
  std::vector<double> value(nonzeros);
  int count = 0;
  QueryTimes best{1e30, 1e30, 1e30};
  const auto whole = [&] { query(model, &count, begin.data(), index.data(), value.data(), 0, vectors); };
  best.first = seconds_of([&] { query(model, &count, nullptr, nullptr, nullptr, 0, vectors); });
  for (int repeat = 0; repeat < 3; ++repeat) {
    best.whole = std::min(best.whole, seconds_of(whole));
    best.single = std::min(best.single, seconds_of([&] {
                             for (int k = 0; k < vectors; ++k) {
                               query(model, &count, begin.data(), index.data(), value.data(), k, 1);
                             }
                           }));
  }
  const double scale = 1e9 / static_cast<double>(nonzeros);
  return {best.first * scale, best.whole * scale, best.single * scale};
}

void measure_queries(ZLPenv* env, const std::string& name) {
  ZLPmodel* model = nullptr;
  if (ZLPreadmodel(env, name.c_str(), &model) != 0) return;
  const QueryTimes cols = time_queries(model, ZLPgetvars, count_of(model, "NumVars"));
  const QueryTimes rows = time_queries(model, ZLPgetconstrs, count_of(model, "NumConstrs"));
  ZLPfreemodel(model);
  std::printf("  ns per nonzero: columns %.2f, one by one %.2f; rows %.2f, one by one %.2f, first query %.2f\n",
              cols.whole, cols.single, rows.whole, rows.single, rows.first);
}

bool measure(ZLPenv* env, const std::string& name) {
  const double megabytes = text_megabytes(name);
  double processor = 1e30, wall = 1e30;
  for (int repeat = 0; repeat < 3; ++repeat) {
    const double before = processor_seconds();
    ZLPmodel* model = nullptr;
    wall = std::min(wall, seconds_of([&] { ZLPreadmodel(env, name.c_str(), &model); }));
    if (model == nullptr) {
      std::fprintf(stderr, "%s: %s\n", name.c_str(), ZLPgeterrormsg(env));
      return false;
    }
    processor = std::min(processor, processor_seconds() - before);
    ZLPfreemodel(model);
  }
  std::printf("%-50s %8.1f MB  cpu %6.3f s %7.1f MB/s  wall %6.3f s %7.1f MB/s\n", fs::path(name).filename().c_str(),
              megabytes, processor, megabytes / processor, wall, megabytes / wall);
  measure_memory(env, name);
  measure_queries(env, name);
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
