// Random quadratic programs, convex of any rank and a few that are not: the quadratic simplex in both precisions and
// the barrier, behind presolve and without it. Each answer has to prove itself, and no two may contradict each other; a
// solve that goes on after changes of bounds has to agree with one from scratch.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <map>
#include <memory>

#include "barrier/convexity.hpp"
#include "barrier/quadratic_engine.hpp"
#include "base/status.hpp"
#include "differential/certificate.hpp"
#include "differential/nasty_lp.hpp"
#include "differential/trials.hpp"
#include "support/convex_q.hpp"
#include "support/random_lp.hpp"

namespace zorvex::differential {
namespace {

constexpr long kUsualTrials = 400;
constexpr int kMaxShown = 20;

struct Way {
  int method;  // 0 primal, 1 dual, 2 barrier
  Precision precision;
  int presolve = -1;
};
constexpr Way kWays[] = {{2, Precision::kAutomatic, 0}, {0, Precision::kAutomatic},    {1, Precision::kExtended},
                         {2, Precision::kAutomatic},    {1, Precision::kAutomatic, 0}, {1, Precision::kAutomatic}};

std::string name_of(const Way& way) {
  const std::string names[] = {"primal", "dual", "barrier"};
  return names[way.method] + (way.precision == Precision::kExtended ? " extended" : "") +
         (way.presolve == 0 ? " without presolve" : "");
}

// One in three is nasty in its linear part, one in ten is not convex.
LpData random_qp(RandomStream& random, bool& convex) {
  const bool nasty = random.below(3) == 0;
  LpData lp = nasty ? nasty_lp(random) : oracle::random_lp(random, {});
  oracle::add_convex_q(random, lp);
  convex = random.below(10) > 0;
  if (!convex) {
    std::vector<double> shift(lp.cost.size(), 0);
    const auto col = static_cast<std::size_t>(random.below(lp.num_cols()));
    shift[col] = -1000;  // far below what the outer products can bring
    add_to_diagonal(lp.quadratic, shift);
  }
  return lp;
}

LpDriverResult solve(const LpData& lp, const Way& way) {
  BarrierEngineOptions barrier;
  barrier.crossover.crossover = 0;
  SimplexOptions simplex;
  simplex.precision = way.precision;
  simplex.algorithm = way.method == 0 ? SimplexAlgorithm::kPrimal : SimplexAlgorithm::kDual;
  std::unique_ptr<LpEngine> engine;
  if (way.method == 2) {
    engine = std::make_unique<BarrierEngine>(barrier);
  } else {
    engine = std::make_unique<QuadraticSimplexEngine>(simplex, barrier, Basis());
  }
  LpDriverOptions options;
  options.method = way.method;
  options.want_proofs = true;
  options.presolve.level = way.presolve;
  options.engine = engine.get();
  QuietLog log;
  return solve_lp(lp, options, nullptr, {}, log);
}

bool is_undecided(SolveStatus status) { return status == SolveStatus::kNumeric || status == SolveStatus::kSuboptimal; }

double quadratic_part(const LpData& lp, const std::vector<double>& x) {
  const std::vector<double> gradient = oracle::gradient_of(lp, x);
  Extended sum = 0;
  for (std::size_t j = 0; j < x.size(); ++j) sum += (Extended(gradient[j]) - lp.cost[j]) * x[j] / 2;
  return static_cast<double>(sum);
}

std::string faults_of_quadratic(const LpData& lp, const LpDriverResult& result) {
  if (is_undecided(result.status)) return "";
  if (result.status == SolveStatus::kUnbounded) {
    double largest = 0;
    for (const double entry : result.ray) largest = std::max(largest, std::abs(entry));
    const double bend = quadratic_part(lp, result.ray);
    if (bend > 1e-9 * largest * largest) return "the ray bends by " + std::to_string(bend);
  }
  if (result.status != SolveStatus::kOptimal) return faults_of(lp, result);
  return faults_of(oracle::linear_model_at(lp, result.point.x), result);
}

// One bound of some columns moves in, or back out.
void change_bounds(RandomStream& random, const LpData& original, LpSolver& solver, LpData& lp) {
  for (std::int64_t change = 1 + random.below(2); change > 0; --change) {
    const auto col = static_cast<Index>(random.below(lp.num_cols()));
    lp.col_lower[col] = original.col_lower[col];
    lp.col_upper[col] = original.col_upper[col];
    const double at = std::floor(solver.point().x.empty() ? 0 : solver.point().x[col]);
    if (random.below(3) == 0) {
      lp.col_upper[col] = std::min(lp.col_upper[col], at);
    } else if (random.below(2) == 0) {
      lp.col_lower[col] = std::max(lp.col_lower[col], at + 1);
    }
    solver.set_col_bounds(col, lp.col_lower[col], lp.col_upper[col]);
  }
}

LpDriverResult result_of(const LpSolver& solver) {
  LpDriverResult result;
  result.status = solver.status();
  result.objective = solver.objective();
  result.point = solver.point();
  result.farkas = solver.farkas();
  result.ray = solver.ray();
  return result;
}

TEST(QuadraticDifferential, EveryWayGivesAProvenAnswerThatNoOtherContradicts) {
  const Trials trials(kUsualTrials);
  std::map<SolveStatus, long> statuses;
  std::map<std::string, long> undecided;
  int shown = 0;
  for (long trial = trials.first; trial < trials.end && shown < kMaxShown; ++trial) {
    RandomStream random(static_cast<std::uint64_t>(trial), "quadratic program");
    bool convex = true;
    const LpData lp = random_qp(random, convex);
    std::vector<LpDriverResult> results;
    for (const Way& way : kWays) {
      results.push_back(solve(lp, way));
      const LpDriverResult& result = results.back();
      const std::string where = "trial " + std::to_string(trial) + ", " + name_of(way);
      if (!convex) {
        EXPECT_EQ(result.error, static_cast<int>(kErrorQNotPsd)) << where;
        continue;
      }
      EXPECT_EQ(result.error, 0) << where;
      if (is_undecided(result.status)) {
        ++undecided[name_of(way)];
        continue;
      }
      const std::string faults = faults_of_quadratic(lp, result);
      std::string against;
      for (const LpDriverResult& other : results) {
        if (against.empty() && other.error == kOk && !is_undecided(other.status))
          against = contradiction(lp, other, result);
      }
      if (faults.empty() && against.empty()) continue;
      ADD_FAILURE() << where << ": " << faults << "; " << against;
      ++shown;
    }
    ++statuses[results[1].status];
  }
  std::printf("%ld models: %ld optimal, %ld infeasible, %ld unbounded\n", trials.end - trials.first,
              statuses[SolveStatus::kOptimal], statuses[SolveStatus::kInfeasible], statuses[SolveStatus::kUnbounded]);
  for (const auto& [name, count] : undecided) {
    std::printf("%s: %ld undecided\n", name.c_str(), count);
    if (name.find("barrier") == std::string::npos) {
      EXPECT_LE(count, (trials.end - trials.first) / 100) << name;
    }
  }
}

// Points without a basis, too, get their multipliers back row by row.
TEST(QuadraticDifferential, InteriorPointsOfLinearModelsComeBackFromPresolve) {
  const Trials trials(kUsualTrials);
  long optimal = 0, undecided = 0;
  for (long trial = trials.first; trial < trials.end; ++trial) {
    RandomStream random(static_cast<std::uint64_t>(trial), "interior point");
    const LpData lp = oracle::random_lp(random, {});
    const LpDriverResult interior = solve(lp, {2, Precision::kAutomatic});
    const LpDriverResult vertex = solve(lp, {1, Precision::kAutomatic, 0});
    optimal += vertex.status == SolveStatus::kOptimal ? 1 : 0;
    undecided += vertex.status == SolveStatus::kOptimal && is_undecided(interior.status) ? 1 : 0;
    EXPECT_EQ(faults_of(lp, interior), "") << "trial " << trial;
    if (is_undecided(interior.status)) continue;
    EXPECT_EQ(contradiction(lp, vertex, interior), "") << "trial " << trial;
  }
  std::printf("%ld models with an optimum, %ld undecided\n", optimal, undecided);
  EXPECT_LE(undecided, optimal / 200);
}

TEST(QuadraticDifferential, WarmSolvesAgreeWithColdOnes) {
  const Trials trials(kUsualTrials);
  QuietLog log;
  long numeric = 0, solves = 0;
  int shown = 0;
  for (long trial = trials.first; trial < trials.end && shown < kMaxShown; ++trial) {
    RandomStream random(static_cast<std::uint64_t>(trial), "quadratic warm");
    const LpData original = oracle::random_lp(random, {});
    LpData lp = original;
    oracle::add_convex_q(random, lp);
    LpSolver warm(lp, {}, log);
    warm.solve({}, {});
    const Basis first = warm.basis();
    for (int step = 0; step < 8; ++step) {
      change_bounds(random, original, warm, lp);
      if (random.below(6) == 0) warm.set_basis(first);
      warm.solve({}, {});
      LpSolver cold(lp, {}, log);
      cold.solve({}, {});
      const LpDriverResult a = result_of(warm), b = result_of(cold);
      ++solves;
      numeric += is_undecided(a.status) || is_undecided(b.status) ? 1 : 0;
      const std::string faults = faults_of_quadratic(lp, a);
      const std::string against = contradiction(lp, a, b);
      if (faults.empty() && against.empty()) continue;
      ADD_FAILURE() << "trial " << trial << ", step " << step << ": " << faults << "; " << against;
      ++shown;
    }
  }
  std::printf("%ld solves, %ld numeric\n", solves, numeric);
  EXPECT_LE(numeric, solves / 200);
}

}  // namespace
}  // namespace zorvex::differential
