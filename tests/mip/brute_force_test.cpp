// The whole solver against enumeration on thousands of tiny problems.
#include <gtest/gtest.h>

#include <cmath>

#include "mip/mip_problem.hpp"
#include "mip/random_mip.hpp"

namespace zorvex::testing {
namespace {

struct Family {
  const char* name;
  RandomMipShape shape;
  int count;
  MipOptions options;
};

std::vector<Family> families() {
  MipOptions plain;
  MipOptions no_heuristics;
  no_heuristics.heuristics = 0;
  MipOptions no_cuts;
  no_cuts.cuts = 0;
  RandomMipShape pure;
  pure.integer_share = 1;
  RandomMipShape mixed;
  RandomMipShape semi;
  semi.semi_share = 0.5;
  RandomMipShape sos;
  sos.sos_share = 1;
  sos.integer_share = 0.3;
  RandomMipShape all;
  all.semi_share = 0.3;
  all.sos_share = 0.5;
  RandomMipShape open;
  open.unbounded_share = 0.5;
  RandomMipShape tall;
  tall.max_rows = 14;
  RandomMipShape quadratic = pure;
  quadratic.quadratic = true;
  RandomMipShape concave = quadratic;
  concave.concave_share = 0.7;
  RandomMipShape quadratic_mixed;
  quadratic_mixed.quadratic = true;
  quadratic_mixed.unbounded_share = 0.3;
  quadratic_mixed.max_cols = 6;
  RandomMipShape quadratic_all = quadratic_mixed;
  quadratic_all.semi_share = 0.3;
  quadratic_all.sos_share = 0.3;
  return {{"pure integer", pure, 1500, plain},
          {"mixed", mixed, 1500, plain},
          {"mixed, no heuristics", mixed, 800, no_heuristics},
          {"mixed, no cuts", mixed, 800, no_cuts},
          {"semi-continuous", semi, 1000, plain},
          {"sets", sos, 1000, plain},
          {"sets and gaps", all, 1000, no_heuristics},
          {"unbounded columns", open, 1000, plain},
          {"many rows", tall, 800, plain},
          {"quadratic", quadratic, 800, plain},
          {"quadratic, concave in binaries", concave, 400, plain},
          {"quadratic, mixed", quadratic_mixed, 300, plain},
          {"quadratic, sets and gaps", quadratic_all, 300, no_heuristics}};
}

TEST(BruteForce, AgreesWithEnumeration) {
  int optimal = 0;
  int infeasible = 0;
  int unbounded = 0;
  int doubtful = 0;
  int refused = 0;
  for (const Family& family : families()) {
    RandomStream random(20240611, family.name);
    for (int k = 0; k < family.count; ++k) {
      const MipProblem problem = random_mip(random, family.shape);
      const EnumeratedMip expected = enumerate_mip(problem);
      if (expected.doubtful) {
        ++doubtful;
        continue;
      }
      QuietLog log;
      MipSolver solver(problem, log);
      MipOptions options = family.options;
      options.mip_gap = 0;
      options.node_limit = 20000;  // far more than any of these needs
      const MipResult& result = solver.run(options, nullptr, now_seconds());
      const std::string place = std::string(family.name) + " " + std::to_string(k);
      if (family.shape.concave_share > 0 && result.error == kErrorQNotPsd) {
        ++refused;  // other columns share in what the binaries lack
        continue;
      }
      if (expected.status == SolveStatus::kUnbounded) {
        EXPECT_EQ(result.status, SolveStatus::kUnbounded) << place;
        ++unbounded;
        continue;
      }
      ASSERT_EQ(result.status, expected.status) << place;
      if (expected.status == SolveStatus::kInfeasible) {
        ++infeasible;
        continue;
      }
      ++optimal;
      ASSERT_NEAR(result.objective, expected.objective, 1e-6 * std::max(1.0, std::abs(expected.objective))) << place;
      ASSERT_NEAR(result.bound, expected.objective, 1e-6 * std::max(1.0, std::abs(expected.objective))) << place;
      ASSERT_FALSE(result.solutions.empty());
      for (std::size_t col = 0; col < problem.type.size(); ++col) {
        const VarType type = problem.type[col];
        if (type == VarType::kContinuous || type == VarType::kSemiContinuous) continue;
        ASSERT_EQ(result.solutions[0][col], std::round(result.solutions[0][col])) << place;
      }
    }
  }
  // The generator must reach every verdict often.
  EXPECT_GT(optimal, 4000);
  EXPECT_GT(infeasible, 500);
  EXPECT_GT(unbounded, 50);
  EXPECT_LT(doubtful, 30);
  EXPECT_LT(refused, 200);
}

}  // namespace
}  // namespace zorvex::testing
