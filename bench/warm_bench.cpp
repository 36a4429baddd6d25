// What a start from the last basis saves: warm_bench FILE...
// Solves the continuous relaxation of each model, then for each kind of change, several times with fixed seeds: changes
// a little of it, solves from the basis of the original's optimum, and solves the changed model from scratch with and
// without presolve. Prints mean iterations and milliseconds, and how often the objectives differ (never, they should).
//   bound   five columns off their bounds get the bound next to them moved halfway
//   rhs     five rows that bind get a right-hand side one percent off
//   cost    five columns get a cost ten percent off
//   rows    three rows that cut the optimum off
//   columns three copies of basic columns, ten percent cheaper
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "base/random_stream.hpp"
#include "zorvex.h"

namespace {

constexpr int kRepeats = 5;

struct Optimum {
  std::vector<double> x, obj, lb, ub, rhs, slack;
  std::vector<int> vbasis;
};

std::vector<double> doubles(ZLPmodel* model, const char* name, int count) {
  std::vector<double> values(static_cast<std::size_t>(count));
  ZLPgetdblattrarray(model, name, 0, count, values.data());
  return values;
}

int integer(ZLPmodel* model, const char* name) {
  int value = 0;
  ZLPgetintattr(model, name, &value);
  return value;
}

double number(ZLPmodel* model, const char* name) {
  double value = std::nan("");
  ZLPgetdblattr(model, name, &value);
  return value;
}

struct Tally {
  double iterations = 0, milliseconds = 0;
};

// Status and objective of a solve.
struct Answer {
  int status;
  double objective;
};

Answer timed_solve(ZLPmodel* model, Tally& tally) {
  using Clock = std::chrono::steady_clock;
  const auto start = Clock::now();
  ZLPoptimize(model);
  tally.milliseconds += std::chrono::duration<double, std::milli>(Clock::now() - start).count() / kRepeats;
  tally.iterations += number(model, "IterCount") / kRepeats;
  return {integer(model, "Status"), number(model, "ObjVal")};
}

class Changer {
 public:
  Changer(const Optimum& optimum, zorvex::RandomStream& random) : optimum_(optimum), random_(random) {}

  void bound(ZLPmodel* model) {
    for (int k = 0; k < 5; ++k) {
      const int j = pick(optimum_.x, [&](int col) { return optimum_.x[col] > optimum_.lb[col] + 1e-6; });
      if (j >= 0) ZLPsetdblattrelement(model, "UB", j, (std::max(optimum_.lb[j], -1e6) + optimum_.x[j]) / 2);
    }
  }
  void rhs(ZLPmodel* model) {
    for (int k = 0; k < 5; ++k) {
      const int i = pick(optimum_.rhs, [&](int row) { return std::abs(optimum_.slack[row]) < 1e-6; });
      if (i >= 0) ZLPsetdblattrelement(model, "RHS", i, optimum_.rhs[i] * 1.01 + 0.01);
    }
  }
  void cost(ZLPmodel* model) {
    for (int k = 0; k < 5; ++k) {
      const int j = pick(optimum_.obj, [](int) { return true; });
      ZLPsetdblattrelement(model, "Obj", j, optimum_.obj[j] * (random_.below(2) == 0 ? 0.9 : 1.1));
    }
  }
  void rows(ZLPmodel* model) {
    for (int k = 0; k < 3; ++k) {
      std::vector<int> index;
      double activity = 0;
      for (int entry = 0; entry < 10; ++entry) {
        const int j = pick(optimum_.x, [&](int col) { return optimum_.x[col] > optimum_.lb[col] + 1e-6; });
        if (j < 0 || std::find(index.begin(), index.end(), j) != index.end()) continue;
        index.push_back(j);
        activity += optimum_.x[j];
      }
      const std::vector<double> ones(index.size(), 1.0);
      ZLPaddconstr(model, static_cast<int>(index.size()), index.data(), ones.data(), '<',
                   activity - 0.05 * std::abs(activity), nullptr);
    }
  }
  void columns(ZLPmodel* model) {
    for (int k = 0; k < 3; ++k) {
      const int j = pick(optimum_.x, [&](int col) { return optimum_.vbasis[col] == ZLP_BASIC; });
      if (j < 0) continue;
      int count = 0;
      ZLPgetvars(model, &count, nullptr, nullptr, nullptr, j, 1);
      std::vector<int> index(static_cast<std::size_t>(count));
      std::vector<double> value(index.size());
      int begin = 0;
      ZLPgetvars(model, &count, &begin, index.data(), value.data(), j, 1);
      const double cheaper = optimum_.obj[j] - 0.1 * std::max(1.0, std::abs(optimum_.obj[j]));
      ZLPaddvar(model, count, index.data(), value.data(), cheaper, 0, std::max(1.0, optimum_.x[j] / 2), 'C', nullptr);
    }
  }

 private:
  // One of up to a hundred draws that will do, -1 for none.
  template <class Fits>
  int pick(const std::vector<double>& from, Fits fits) {
    for (int attempt = 0; attempt < 100 && !from.empty(); ++attempt) {
      const int at = static_cast<int>(random_.below(static_cast<std::int64_t>(from.size())));
      if (fits(at)) return at;
    }
    return -1;
  }

  const Optimum& optimum_;
  zorvex::RandomStream& random_;
};

void measure(ZLPmodel* solved, const Optimum& optimum, const char* kind, void (Changer::*change)(ZLPmodel*)) {
  Tally warm, cold, bare;
  int differing = 0;
  zorvex::RandomStream random(1, kind);
  for (int repeat = 0; repeat < kRepeats; ++repeat) {
    ZLPmodel* model = nullptr;
    ZLPcopymodel(solved, &model);
    Changer changer(optimum, random);
    (changer.*change)(model);
    ZLPupdatemodel(model);
    const Answer first = timed_solve(model, warm);
    for (Tally* tally : {&cold, &bare}) {
      ZLPresetmodel(model);
      ZLPsetintparam(ZLPgetenv(model), "Presolve", tally == &cold ? -1 : 0);
      const Answer again = timed_solve(model, *tally);
      const bool same = first.status == again.status &&
                        (first.status != ZLP_OPTIMAL || std::abs(first.objective - again.objective) <=
                                                            1e-6 * std::max(1.0, std::abs(again.objective)));
      differing += same ? 0 : 1;
    }
    ZLPfreemodel(model);
  }
  std::printf("  %-8s %9.1f %9.1f %9.1f %10.2f %10.2f %10.2f %4d\n", kind, warm.iterations, cold.iterations,
              bare.iterations, warm.milliseconds, cold.milliseconds, bare.milliseconds, differing);
  std::fflush(stdout);
}

void run(ZLPenv* env, const char* file) {
  ZLPmodel* read = nullptr;
  ZLPmodel* model = nullptr;
  if (ZLPreadmodel(env, file, &read) != 0 || ZLPrelaxmodel(read, &model) != 0 || ZLPoptimize(model) != 0 ||
      integer(model, "Status") != ZLP_OPTIMAL) {
    std::printf("%s: no optimum\n", file);
  } else {
    const int n = integer(model, "NumVars");
    const int m = integer(model, "NumConstrs");
    Optimum optimum{doubles(model, "X", n),
                    doubles(model, "Obj", n),
                    doubles(model, "LB", n),
                    doubles(model, "UB", n),
                    doubles(model, "RHS", m),
                    doubles(model, "Slack", m),
                    {}};
    optimum.vbasis.resize(optimum.x.size());
    ZLPgetintattrarray(model, "VBasis", 0, n, optimum.vbasis.data());
    const std::string name = std::string(file).substr(std::string(file).find_last_of('/') + 1);
    std::printf("%s: %d rows, %d columns\n", name.c_str(), m, n);
    std::printf("  %-8s %9s %9s %9s %10s %10s %10s %4s\n", "change", "it warm", "it cold", "it bare", "ms warm",
                "ms cold", "ms bare", "diff");
    measure(model, optimum, "bound", &Changer::bound);
    measure(model, optimum, "rhs", &Changer::rhs);
    measure(model, optimum, "cost", &Changer::cost);
    measure(model, optimum, "rows", &Changer::rows);
    measure(model, optimum, "columns", &Changer::columns);
  }
  ZLPfreemodel(model);
  ZLPfreemodel(read);
}

}  // namespace

int main(int argc, char** argv) {
  ZLPenv* env = nullptr;
  if (ZLPloadenv(&env, nullptr) != 0) return 1;
  ZLPsetintparam(env, "OutputFlag", 0);
  for (int i = 1; i < argc; ++i) run(env, argv[i]);
  ZLPfreeenv(env);
  return 0;
}
