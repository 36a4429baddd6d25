// Rate of the barrier's factorization: factor_bench [--threads N] [--ordering 0|1] [--seconds S] FILE...
// For each model: presolve, then ordering and analysis of the Newton system as the barrier chooses them (or with the
// given ordering), then repeated factorizations of it at unit scaling for S seconds (default 1) on one thread and on N.
// Prints operations of the factor, seconds of ordering and analysis, of one factorization without and with assembly
// and of one solve, Gflop/s, that as a share of what OpenBLAS, where it is installed, reaches on a large matrix
// product, and the memory for the factor as predicted beside what the whole Newton system holds once it is factored.
#include <dlfcn.h>
#include <malloc.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "barrier/barrier_model.hpp"
#include "barrier/newton_system.hpp"
#include "base/stop_token.hpp"
#include "model_file.hpp"

namespace zorvex {
namespace {

struct Settings {
  int threads = 1, ordering = -1;
  double seconds = 1;
};

// Shortest of several runs: other work on the machine only ever adds.
template <class Body>
double shortest_time(double budget, const Body& body) {
  const double begin = now_seconds();
  double best = kInf;
  do {
    const double start = now_seconds();
    body();
    best = std::min(best, now_seconds() - start);
  } while (now_seconds() - begin < budget);
  return best;
}

// Gflop/s of dgemm on one thread; not a number without the library.
double product_rate() {
  using Product = void (*)(const char*, const char*, const int*, const int*, const int*, const double*, const double*,
                           const int*, const double*, const int*, const double*, double*, const int*);
  constexpr int kOrder = 1024;
  constexpr double kOne = 1, kZero = 0;
  setenv("OPENBLAS_NUM_THREADS", "1", 1);
  void* const library = dlopen("libopenblas.so.0", RTLD_NOW | RTLD_LOCAL);
  const auto product = library == nullptr ? nullptr : reinterpret_cast<Product>(dlsym(library, "dgemm_"));
  if (product == nullptr) return std::nan("");
  const std::vector<double> a(std::size_t{kOrder} * kOrder, 0.5);
  std::vector<double> c(a.size());
  const double time = shortest_time(1, [&] {
    product("N", "T", &kOrder, &kOrder, &kOrder, &kOne, a.data(), &kOrder, a.data(), &kOrder, &kZero, c.data(),
            &kOrder);
  });
  return 2e-9 * kOrder * kOrder * kOrder / time;
}

// Bytes that the program holds from the heap.
double allocated() {
  const struct mallinfo2 info = mallinfo2();
  return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

void measure(const std::string& name, const LpData& lp, const Settings& settings, double peak) {
  const BarrierModel model = make_barrier_model(lp, 1e-6);
  const std::vector<double> theta(static_cast<std::size_t>(model.num_cols()), 1.0);
  const std::vector<double> r1(theta.size(), 1.0), r2(static_cast<std::size_t>(model.num_rows()), 1.0);
  std::vector<double> dv, dy;
  for (int threads = 1; threads <= settings.threads; ++threads) {
    if (threads > 1 && threads < settings.threads) continue;
    WorkerPool pool(threads);
    NewtonSystem newton(model, pool);
    const double before = allocated();
    const double begin = now_seconds();
    QuietLog log;
    if (newton.analyze(settings.ordering, false, {}, log) != SolveStatus::kLoaded) return;
    const double analysis = now_seconds() - begin;
    const double both = shortest_time(settings.seconds, [&] { static_cast<void>(newton.factor(theta, 1e-8, {})); });
    const double assembly = shortest_time(settings.seconds / 4, [&] { newton.assemble(theta, 1e-8); });
    const double solve = shortest_time(settings.seconds / 4, [&] { newton.solve(r1, r2, {1e30, 1e30}, dv, dy); });
    const double held = allocated() - before;
    const double rate = 1e-9 * newton.statistics().factor_operations / (both - assembly);
    std::printf(
        "%-24s %2d  %9.3e ops %9.3e nz  analysis %7.3fs  factor %8.4fs  %8.4fs  solve %8.5fs  %6.2f Gflop/s %5.1f%%  "
        "memory predicted %.1f MB, held %.1f MB\n",
        name.c_str(), threads, newton.statistics().factor_operations, newton.statistics().factor_nonzeros, analysis,
        both - assembly, both, solve, rate, 100 * rate / (peak * threads), newton.statistics().bytes / 1e6, held / 1e6);
    std::fflush(stdout);
  }
}

bool run(ZLPenv* env, const std::string& file, const Settings& settings, double peak) {
  return with_presolved(env, file,
                        [&](const std::string& name, const LpData& lp) { measure(name, lp, settings, peak); });
}

}  // namespace
}  // namespace zorvex

int main(int argc, char** argv) {
  ZLPenv* env = nullptr;
  if (ZLPloadenv(&env, nullptr) != 0) return 1;
  ZLPsetintparam(env, "OutputFlag", 0);
  const double peak = zorvex::product_rate();
  std::printf("matrix product %.2f Gflop/s\n", peak);
  zorvex::Settings settings;
  bool ok = true;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word == "--threads" && i + 1 < argc) {
      settings.threads = std::atoi(argv[++i]);
    } else if (word == "--ordering" && i + 1 < argc) {
      settings.ordering = std::atoi(argv[++i]);
    } else if (word == "--seconds" && i + 1 < argc) {
      settings.seconds = std::atof(argv[++i]);
    } else {
      ok = zorvex::run(env, word, settings, peak) && ok;
    }
  }
  ZLPfreeenv(env);
  return ok ? 0 : 1;
}
