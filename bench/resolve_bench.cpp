// Cost of warm-started solves: resolve_bench [--seconds S] FILE...
// Solves the continuous relaxation of each model and then, for S seconds (default 3) each, two sequences of bound
// changes with fixed seeds as a tree search makes them:
//   plunge  bounds move one step down a random path, each solve from the last basis; back to the root's basis and
//   bounds
//           when the path ends;
//   probe   bounds of one column move, the solve starts from the root's basis and stops after few iterations.
// Prints solves, microseconds a solve, iterations a solve, microseconds an iteration, and the mean objective of the
// first thousand solves, which two builds must share where the relaxations have one optimum.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "base/random_stream.hpp"
#include "base/stop_token.hpp"
#include "model_file.hpp"
#include "simplex/lp_solver.hpp"

namespace zorvex {
namespace {

constexpr int kMaxDepth = 40;
constexpr double kProbeLimit = 50;
constexpr double kFractional = 1e-5;
constexpr int kChecked = 1000;

struct Tally {
  double solves = 0, iterations = 0, seconds = 0, objective = 0, checked = 0;
  int status[16] = {};

  void add(const LpSolver& solver) {
    ++solves;
    iterations += solver.iterations();
    ++status[static_cast<int>(solver.status())];
    if (solves <= kChecked && solver.status() == SolveStatus::kOptimal) {
      objective += solver.objective();
      ++checked;
    }
  }
  void print(const char* name, const char* kind) const {
    std::printf(
        "%-28s %-6s %9.0f solves %10.1f us/solve %7.2f it/solve %8.2f us/it  opt %d inf %d lim %d  mean %.10g\n", name,
        kind, solves, 1e6 * seconds / solves, iterations / solves, 1e6 * seconds / std::max(1.0, iterations), status[2],
        status[3], status[7], objective / std::max(1.0, checked));
    std::fflush(stdout);
  }
};

// The integers next to x, never x itself.
double below(double x) { return std::ceil(x - kFractional) - 1; }
double above(double x) { return std::floor(x + kFractional) + 1; }

class ResolveBench {
 public:
  ResolveBench(const LpData& lp, std::vector<char> candidate, double seconds)
      : lp_(lp), candidate_(std::move(candidate)), seconds_(seconds), solver_(lp, options(), log_) {}

  bool solve_root();
  Tally plunge();
  Tally probe();
  [[nodiscard]] const LpSolver& solver() const { return solver_; }

 private:
  static SimplexOptions options() { return {}; }
  [[nodiscard]] std::vector<Index> fractional() const;
  void back_to_root();
  void move_bound(Index col, bool up);

  const LpData& lp_;
  std::vector<char> candidate_;
  double seconds_;
  QuietLog log_;
  LpSolver solver_;
  Basis root_;
  std::vector<Index> moved_;
  bool any_nonzero_ = false;  // an integral relaxation: any column off zero may move
};

std::vector<Index> ResolveBench::fractional() const {
  std::vector<Index> result;
  const std::vector<double>& x = solver_.point().x;
  for (Index col = 0; col < lp_.num_cols(); ++col) {
    if (candidate_[col] && std::abs(x[col] - std::round(x[col])) > kFractional) result.push_back(col);
  }
  if (any_nonzero_) {
    for (Index col = 0; col < lp_.num_cols(); ++col) {
      if (candidate_[col] && x[col] > kFractional) result.push_back(col);
    }
  }
  return result;
}

bool ResolveBench::solve_root() {
  if (solver_.solve({}, {}) != SolveStatus::kOptimal) return false;
  root_ = solver_.basis();
  any_nonzero_ = fractional().empty();
  return true;
}

void ResolveBench::back_to_root() {
  for (const Index col : moved_) solver_.set_col_bounds(col, lp_.col_lower[col], lp_.col_upper[col]);
  moved_.clear();
  solver_.set_basis(root_);
}

void ResolveBench::move_bound(Index col, bool up) {
  const double x = solver_.point().x[col];
  const LpData& data = solver_.data();
  if (up) {
    solver_.set_col_bounds(col, above(x), data.col_upper[col]);
  } else {
    solver_.set_col_bounds(col, data.col_lower[col], below(x));
  }
  moved_.push_back(col);
}

Tally ResolveBench::plunge() {
  RandomStream random(1, "resolve bench plunge");
  Tally tally;
  int depth = 0;
  back_to_root();
  solver_.solve({}, {});
  for (const double start = now_seconds(); tally.seconds < seconds_; tally.seconds = now_seconds() - start) {
    std::vector<Index> candidates;
    if (solver_.status() == SolveStatus::kOptimal && depth < kMaxDepth) candidates = fractional();
    if (candidates.empty()) {
      if (depth == 0 && solver_.status() == SolveStatus::kOptimal) break;
      back_to_root();
      depth = 0;
    } else {
      move_bound(candidates[random.below(static_cast<std::uint32_t>(candidates.size()))], random.below(2) == 1);
      ++depth;
    }
    solver_.solve({}, {});
    tally.add(solver_);
  }
  return tally;
}

Tally ResolveBench::probe() {
  RandomStream random(2, "resolve bench probe");
  Tally tally;
  back_to_root();
  solver_.solve({}, {});
  const std::vector<Index> candidates = fractional();
  const std::vector<double> x = solver_.point().x;
  if (candidates.empty()) return tally;
  SimplexLimits limits;
  limits.iterations = kProbeLimit;
  for (const double start = now_seconds(); tally.seconds < seconds_; tally.seconds = now_seconds() - start) {
    back_to_root();
    const Index col = candidates[random.below(static_cast<std::uint32_t>(candidates.size()))];
    const bool up = random.below(2) == 1;
    solver_.set_col_bounds(col, up ? above(x[col]) : lp_.col_lower[col], up ? lp_.col_upper[col] : below(x[col]));
    moved_.push_back(col);
    solver_.solve(limits, {});
    tally.add(solver_);
  }
  return tally;
}

// Integer columns, or all where there are none.
std::vector<char> candidates_of(const ModelData& data) {
  std::vector<char> candidate(data.vtype.size());
  for (std::size_t k = 0; k < candidate.size(); ++k) candidate[k] = data.vtype[k] == 'B' || data.vtype[k] == 'I';
  if (std::find(candidate.begin(), candidate.end(), 1) == candidate.end()) candidate.assign(candidate.size(), 1);
  return candidate;
}

bool measure(const std::string& name, const ModelData& data, double seconds) {
  const LpData lp = make_lp_data(data);
  ResolveBench bench(lp, candidates_of(data), seconds);
  const double start = now_seconds();
  if (!bench.solve_root()) {
    std::printf("%s: root status %d\n", name.c_str(), static_cast<int>(bench.solver().status()));
    return false;
  }
  std::printf("%-28s root   %d rows %d cols %lld nonzeros, %.0f iterations %.2f s\n", name.c_str(), lp.num_rows(),
              lp.num_cols(), static_cast<long long>(lp.matrix.num_nonzeros()), bench.solver().iterations(),
              now_seconds() - start);
  bench.plunge().print(name.c_str(), "plunge");
  bench.probe().print(name.c_str(), "probe");
  return true;
}

bool run(ZLPenv* env, const std::string& file, double seconds) {
  bool solved = false;
  const auto body = [&](const std::string& name, const ZLPmodel& model) {
    solved = measure(name, model.data, seconds);
  };
  return with_model(env, file, body) && solved;
}

}  // namespace
}  // namespace zorvex

int main(int argc, char** argv) {
  ZLPenv* env = nullptr;
  if (ZLPloadenv(&env, nullptr) != 0) return 1;
  ZLPsetintparam(env, "OutputFlag", 0);
  double seconds = 3;
  bool ok = true;
  for (int i = 1; i < argc; ++i) {
    if (std::string(argv[i]) == "--seconds" && i + 1 < argc) {
      seconds = std::atof(argv[++i]);
    } else {
      ok = zorvex::run(env, argv[i], seconds) && ok;
    }
  }
  ZLPfreeenv(env);
  return ok ? 0 : 1;
}
