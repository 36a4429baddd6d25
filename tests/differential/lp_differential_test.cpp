// Random nasty linear programs, each solved in every way there is: dual and primal simplex, double and extended
// precision, with and without presolve. Each answer has to prove itself, and no two may contradict each other.
#include <gtest/gtest.h>

#include <cstdio>
#include <map>

#include "differential/certificate.hpp"
#include "differential/nasty_lp.hpp"
#include "differential/trials.hpp"

namespace zorvex::differential {
namespace {

constexpr long kUsualTrials = 1500;
constexpr int kMaxShown = 20;

struct Way {
  int method;  // 0 primal, 1 dual
  Precision precision;
  int presolve;  // 2 with what is off by default
};

std::string name_of(const Way& way) {
  return std::string(way.method == 0 ? "primal" : "dual") + (way.precision == Precision::kExtended ? " extended" : "") +
         " presolve " + std::to_string(way.presolve);
}

std::vector<Way> all_ways() {
  std::vector<Way> ways;
  for (const int method : {1, 0}) {
    for (const Precision precision : {Precision::kAutomatic, Precision::kExtended}) {
      for (const int presolve : {0, -1, 2}) ways.push_back({method, precision, presolve});
    }
  }
  return ways;
}

bool verbose() { return std::getenv("ZORVEX_VERBOSE") != nullptr; }

void print_model(const LpData& lp) {
  for (Index row = 0; row < lp.num_rows(); ++row) {
    std::printf("row %d in [%.17g, %.17g]\n", row, lp.row_lower[row], lp.row_upper[row]);
  }
  for (Index col = 0; col < lp.num_cols(); ++col) {
    std::printf("column %d in [%.17g, %.17g], cost %.17g:", col, lp.col_lower[col], lp.col_upper[col], lp.cost[col]);
    for (Offset k = lp.matrix.begin(col); k < lp.matrix.end(col); ++k) {
      std::printf(" (%d) %.17g", lp.matrix.index[k], lp.matrix.value[k]);
    }
    std::printf("\n");
  }
}

LpDriverResult solve(const LpData& lp, const Way& way, int pricing) {
  LpDriverOptions options;
  options.method = way.method;
  options.simplex.precision = way.precision;
  options.simplex.pricing = pricing;
  options.presolve.level = way.presolve;
  options.want_proofs = true;
  if (way.presolve != 2) options.presolve.off = {"sparsify"};
  if (way.presolve == 2) options.presolve.dual_effort = options.presolve.dualize = 1;
  QuietLog log;
  return solve_lp(lp, options, nullptr, {}, log);
}

TEST(Differential, EveryWayGivesAProvenAnswerThatNoOtherContradicts) {
  const Trials trials(kUsualTrials);
  const std::vector<Way> ways = all_ways();
  std::map<SolveStatus, long> statuses;
  long numeric = 0;
  int shown = 0;
  for (long trial = trials.first; trial < trials.end && shown < kMaxShown; ++trial) {
    RandomStream random(static_cast<std::uint64_t>(trial), "nasty lp");
    const LpData lp = nasty_lp(random);
    std::vector<LpDriverResult> results;
    for (const Way& way : ways) {
      results.push_back(solve(lp, way, static_cast<int>(trial % 5) - 1));
      const std::string faults = faults_of(lp, results.back());
      const std::string against = contradiction(lp, results.front(), results.back());
      if (is_undecided(results.back().status)) {
        ++numeric;
        if (std::getenv("ZORVEX_VERBOSE") != nullptr)
          std::printf("trial %ld, %s: numeric\n", trial, name_of(way).c_str());
      }
      if (faults.empty() && against.empty()) continue;
      ADD_FAILURE() << "trial " << trial << ", " << name_of(way) << ": " << faults << (faults.empty() ? "" : "; ")
                    << against;
      if (verbose()) print_model(lp);
      ++shown;
    }
    ++statuses[results.front().status];
  }
  std::printf("%ld models: %ld optimal, %ld infeasible, %ld unbounded; %ld of %ld answers numeric\n",
              trials.end - trials.first, statuses[SolveStatus::kOptimal], statuses[SolveStatus::kInfeasible],
              statuses[SolveStatus::kUnbounded], numeric, (trials.end - trials.first) * static_cast<long>(ways.size()));
  EXPECT_LE(numeric, (trials.end - trials.first) * static_cast<long>(ways.size()) / 200);
}

}  // namespace
}  // namespace zorvex::differential
