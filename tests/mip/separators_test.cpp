// Cuts cut off the relaxation and nothing else: on small problems every integer point of the model is enumerated.
#include <gtest/gtest.h>

#include <array>

#include "mip/prepare.hpp"
#include "mip/random_mip.hpp"
#include "mip/separator.hpp"

namespace zorvex::testing {
namespace {

bool satisfies_rows(const LpData& lp, const std::vector<double>& x) {
  std::vector<double> activity(static_cast<std::size_t>(lp.num_rows()), 0);
  for (Index col = 0; col < lp.num_cols(); ++col) {
    for (Offset k = lp.matrix.begin(col); k < lp.matrix.end(col); ++k) {
      activity[lp.matrix.index[k]] += lp.matrix.value[k] * x[col];
    }
  }
  for (Index row = 0; row < lp.num_rows(); ++row) {
    if (activity[row] < lp.row_lower[row] - 1e-9 || activity[row] > lp.row_upper[row] + 1e-9) return false;
  }
  return true;
}

void enumerate(const LpData& lp, std::vector<double>& x, Index col, std::vector<std::vector<double>>& points) {
  if (col == lp.num_cols()) {
    if (satisfies_rows(lp, x)) points.push_back(x);
    return;
  }
  for (double value = lp.col_lower[col]; value <= lp.col_upper[col]; ++value) {
    x[col] = value;
    enumerate(lp, x, col + 1, points);
  }
}

std::vector<std::vector<double>> integer_points(const MipProblem& problem) {
  std::vector<std::vector<double>> points;
  std::vector<double> x(static_cast<std::size_t>(problem.lp.num_cols()));
  enumerate(problem.lp, x, 0, points);
  return points;
}

// Knapsacks, packings and parity rows over binaries and a few general integers.
MipProblem random_problem(RandomStream& random) {
  const auto n = static_cast<std::size_t>(5 + random.below(6));
  const auto m = static_cast<std::size_t>(2 + random.below(6));
  std::vector<std::vector<double>> rows(m, std::vector<double>(n, 0));
  std::vector<double> lower(m, -kInf);
  std::vector<double> upper(m, kInf);
  for (std::size_t i = 0; i < m; ++i) {
    const std::int64_t kind = random.below(4);
    double sum = 0;
    for (std::size_t j = 0; j < n; ++j) {
      if (random.uniform() < 0.35) continue;
      rows[i][j] = kind == 0                  ? 1
                   : kind == 1                ? static_cast<double>(1 + random.below(15))
                   : 2 * random.uniform() < 1 ? 1
                                              : 2;
      if (kind == 3 && random.uniform() < 0.4) rows[i][j] = -rows[i][j];
      sum += std::abs(rows[i][j]);
    }
    const double side =
        kind == 0 ? 1 + static_cast<double>(random.below(2)) : std::floor(sum * (0.3 + 0.4 * random.uniform()));
    if (kind == 2 && random.uniform() < 0.5) {
      lower[i] = side;
    } else {
      upper[i] = side;
    }
  }
  MipProblem problem = dense_problem(rows, lower, upper, 1);
  for (std::size_t j = 0; j < n; ++j) {
    problem.lp.cost[j] = static_cast<double>(random.below(21)) - 14;
    if (random.uniform() < 0.15) problem.lp.col_upper[j] = 3;
  }
  return problem;
}

TEST(Separators, NoIntegerPointIsCutOff) {
  RandomStream random(4711, "separators");
  std::array<int, kNumCutTypes> seen{};
  for (int trial = 0; trial < 800; ++trial) {
    const MipProblem problem = random_problem(random);
    const std::vector<std::vector<double>> points = integer_points(problem);
    QuietLog log;
    MipOptions options;
    SearchState state(problem, options, log);
    const bool prepared = trial % 2 == 1;
    if (prepared && prepare(state.model, prepare_options(options), state.stop).infeasible) {
      EXPECT_TRUE(points.empty()) << trial;
      continue;
    }
    state.domain.reload();
    state.make_lp();
    for (int round = 0; round < 5; ++round) {
      if (state.lp->solve({}, state.stop) != SolveStatus::kOptimal) break;
      NodeRelaxation relaxation;
      relaxation.x = state.lp->point().x;
      relaxation.reduced_cost = state.lp->point().reduced_cost;
      relaxation.objective = state.lp->objective();
      const std::vector<std::int64_t> ids = separate_round(state, relaxation);
      for (const std::int64_t id : ids) {
        const Cut& cut = state.cuts.cut(id);
        ++seen[static_cast<std::size_t>(cut.type)];
        for (const std::vector<double>& x : points) {
          double left = 0;
          for (std::size_t k = 0; k < cut.index.size(); ++k) left += cut.value[k] * x[cut.index[k]];
          ASSERT_LE(left, cut.rhs + 1e-7) << "trial " << trial << " type " << static_cast<int>(cut.type);
        }
      }
      if (ids.empty()) break;
      state.lp->add_cuts(state.cuts, ids);
    }
  }
  for (const CutType type : {CutType::kGomory, CutType::kCover, CutType::kClique, CutType::kMir, CutType::kZeroHalf}) {
    EXPECT_GT(seen[static_cast<std::size_t>(type)], 5) << static_cast<int>(type);
  }
}

// What preparation and probing claim holds at every integer point.
TEST(Separators, PreparationKeepsEveryIntegerPoint) {
  RandomStream random(1234, "preparation");
  int pairs = 0;
  for (int trial = 0; trial < 1500; ++trial) {
    const MipProblem problem = random_problem(random);
    SearchModel model = make_search_model(problem, true);
    PrepareOptions options;
    options.keep_all_solutions = true;
    const Preparation preparation = prepare(model, options, StopToken());
    const std::vector<std::vector<double>> points = integer_points(problem);
    if (preparation.infeasible) {
      ASSERT_TRUE(points.empty()) << trial;
      continue;
    }
    pairs += model.learned.count();
    for (const std::vector<double>& x : points) {
      ASSERT_TRUE(satisfies_rows(model.lp, x)) << trial;
      for (Index col = 0; col < model.num_cols(); ++col) {
        ASSERT_GE(x[col], model.lp.col_lower[col]) << trial;
        ASSERT_LE(x[col], model.lp.col_upper[col]) << trial;
      }
      for (Index clique = 0; clique < model.cliques.count(); ++clique) {
        int held = 0;
        for (const Literal lit : model.cliques.members(clique)) held += (x[column_of(lit)] == 1) == is_one(lit);
        ASSERT_LE(held, 1) << trial;
      }
    }
  }
  EXPECT_GT(pairs, 100);
}

}  // namespace
}  // namespace zorvex::testing
