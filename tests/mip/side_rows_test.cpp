// Problems that lack some of their rows, which a listener supplies when a solution breaks them, against enumeration of
// the whole problem.
#include <gtest/gtest.h>

#include <cmath>

#include "mip/mip_problem.hpp"
#include "mip/random_mip.hpp"
#include "mip/side_rows.hpp"

namespace zorvex::testing {
namespace {

struct Split {
  MipProblem visible;
  std::vector<SideRow> hidden;
};

// Every other row is hidden, the first always.
Split hide_rows(const MipProblem& whole) {
  Split split{whole, {}};
  const SparseMatrix by_row = whole.lp.matrix.transpose();
  std::vector<char> keep(static_cast<std::size_t>(whole.lp.num_rows()), 1);
  split.visible.lp.row_lower.clear();
  split.visible.lp.row_upper.clear();
  for (Index row = 0; row < whole.lp.num_rows(); ++row) {
    if (row % 2 == 1 || by_row.col_length(row) == 0) {
      split.visible.lp.row_lower.push_back(whole.lp.row_lower[row]);
      split.visible.lp.row_upper.push_back(whole.lp.row_upper[row]);
      continue;
    }
    keep[row] = 0;
    SideRow side;
    side.index.assign(by_row.index.begin() + by_row.begin(row), by_row.index.begin() + by_row.end(row));
    side.value.assign(by_row.value.begin() + by_row.begin(row), by_row.value.begin() + by_row.end(row));
    side.lower = whole.lp.row_lower[row];
    side.upper = whole.lp.row_upper[row];
    split.hidden.push_back(side);
  }
  split.visible.lp.matrix.compress(keep.data(), nullptr);
  return split;
}

// Supplies the hidden rows that a point breaks, one at a time so that several rounds are needed.
class HiddenRows final : public SolveHooks {
 public:
  HiddenRows(const std::vector<SideRow>& rows, bool cuts, std::vector<std::vector<double>> offers)
      : rows_(rows), cuts_(cuts), offers_(std::move(offers)) {}

  bool solution(const SearchProgress&, const std::vector<double>& x, double, std::vector<SideRow>& rows) override {
    add_broken(x, rows);
    ++solutions_;
    rejected_ += !rows.empty();
    return true;
  }
  void node(const SearchProgress&, int, const std::vector<double>& x, double, std::vector<SideRow>& rows) override {
    if (cuts_) add_broken(x, rows);
    cut_rounds_ += !rows.empty();
  }
  bool take_offered(std::vector<double>& x) override {
    if (offers_.empty()) return false;
    x = offers_.back();
    offers_.pop_back();
    return true;
  }

  int solutions_ = 0, rejected_ = 0, cut_rounds_ = 0;

 private:
  void add_broken(const std::vector<double>& x, std::vector<SideRow>& rows) const {
    for (const SideRow& row : rows_) {
      if (violation(row, x) <= 1e-9) continue;
      rows.push_back(row);
      return;
    }
  }

  const std::vector<SideRow>& rows_;
  bool cuts_;
  std::vector<std::vector<double>> offers_;
};

struct Family {
  const char* name;
  RandomMipShape shape;
  bool cuts;    // hidden rows also cut off relaxations
  bool offers;  // random points are given as MIP start and offered during the search
  double heuristics;
};

std::vector<double> random_point(RandomStream& random, const MipProblem& problem) {
  std::vector<double> x;
  for (Index col = 0; col < problem.lp.num_cols(); ++col) {
    const double upper = std::min(problem.lp.col_upper[col], problem.lp.col_lower[col] + 3);
    const double value = problem.lp.col_lower[col] + random.uniform() * (upper - problem.lp.col_lower[col]);
    x.push_back(random.uniform() < 0.3 ? 1e101 : std::round(value));
  }
  return x;
}

TEST(SideRows, HiddenConstraintsHoldWhateverFoundTheSolution) {
  RandomMipShape pure;
  pure.integer_share = 1;
  RandomMipShape mixed;
  mixed.max_rows = 10;
  RandomMipShape all = mixed;
  all.semi_share = 0.3;
  all.sos_share = 0.5;
  const Family families[] = {{"pure, tree only", pure, false, false, 0},   {"pure", pure, false, true, 0.05},
                             {"mixed, tree only", mixed, false, false, 0}, {"mixed", mixed, false, true, 0.05},
                             {"mixed, cuts", mixed, true, false, 0},       {"gaps and sets", all, true, true, 0.05}};
  int optimal = 0, infeasible = 0, rejected = 0, cut_rounds = 0;
  for (const Family& family : families) {
    RandomStream random(20240702, family.name);
    for (int k = 0; k < 600; ++k) {
      const MipProblem whole = random_mip(random, family.shape);
      Split split = hide_rows(whole);
      std::vector<std::vector<double>> offers;
      if (family.offers) {
        split.visible.start = random_point(random, whole);
        for (int offer = 0; offer < 4; ++offer) offers.push_back(random_point(random, whole));
      }
      const EnumeratedMip expected = enumerate_mip(whole);
      HiddenRows hooks(split.hidden, family.cuts, offers);
      QuietLog log;
      MipSolver solver(split.visible, log);
      MipOptions options;
      options.heuristics = family.heuristics;
      options.mip_gap = 0;
      options.node_limit = 20000;
      options.keep_all_solutions = true;
      options.hooks = &hooks;
      const MipResult& result = solver.run(options, nullptr, now_seconds());
      const std::string place = std::string(family.name) + " " + std::to_string(k);
      rejected += hooks.rejected_;
      cut_rounds += hooks.cut_rounds_;
      // An unbounded relaxation may hide a bounded problem: the search says that it cannot tell.
      if (result.status == SolveStatus::kInfOrUnbd) continue;
      ASSERT_EQ(result.status, expected.status) << place;
      if (expected.status != SolveStatus::kOptimal) {
        ++infeasible;
        continue;
      }
      ++optimal;
      ASSERT_NEAR(result.objective, expected.objective, 1e-6 * std::max(1.0, std::abs(expected.objective))) << place;
      for (const std::vector<double>& x : result.solutions) {
        for (const SideRow& row : split.hidden) ASSERT_LE(violation(row, x), 1e-6) << place;
      }
    }
  }
  EXPECT_GT(optimal, 1500);
  EXPECT_GT(infeasible, 300);
  EXPECT_GT(rejected, 1000) << "the hidden rows must matter";
  EXPECT_GT(cut_rounds, 25);
}

// A listener that refuses to look keeps the search from taking anything.
TEST(SideRows, NothingIsTakenUnseen) {
  class Blind final : public SolveHooks {
   public:
    bool solution(const SearchProgress&, const std::vector<double>&, double, std::vector<SideRow>&) override {
      return false;
    }
  };
  RandomStream random(3, "blind");
  RandomMipShape pure;
  pure.integer_share = 1;
  for (int k = 0; k < 50; ++k) {
    Blind hooks;
    QuietLog log;
    MipSolver solver(random_mip(random, pure), log);
    MipOptions options;
    options.hooks = &hooks;
    const MipResult& result = solver.run(options, nullptr, now_seconds());
    EXPECT_TRUE(result.solutions.empty());
    EXPECT_NE(result.status, SolveStatus::kOptimal);
  }
}

// Slack cuts leave the LP, constraints stay.
TEST(SideRows, PinnedCutsStayInTheLp) {
  MipProblem problem;
  problem.lp.matrix.num_rows = 1;
  const Index row = 0;
  const double one = 1;
  for (int col = 0; col < 2; ++col) problem.lp.matrix.append_col(&row, &one, 1);
  problem.lp.row_lower = {1};
  problem.lp.row_upper = {kInf};
  problem.lp.cost = {1, 2};
  problem.lp.col_lower = {0, 0};
  problem.lp.col_upper = {5, 5};
  problem.type.assign(2, VarType::kInteger);
  const SearchModel model = make_search_model(problem);
  QuietLog log;
  LpRelaxation lp(model, {}, log);
  CutPool pool;
  const auto add = [&](double rhs, bool pinned) {
    Cut cut;
    cut.index = {0, 1};
    cut.value = {1, pinned ? 1.0 : 2.0};
    cut.rhs = rhs;
    cut.pinned = pinned;
    return pool.add(cut);
  };
  const std::vector<std::int64_t> ids{add(8, true), add(9, false)};
  lp.add_cuts(pool, ids);
  ASSERT_EQ(lp.solve({}, {}), SolveStatus::kOptimal);
  EXPECT_EQ(lp.remove_slack_cuts(pool, 0), 1u);
  EXPECT_EQ(lp.cut_ids(), std::vector<std::int64_t>{ids[0]});
  lp.add_cuts(pool, {add(9, false)});
  lp.drop_cuts(pool);
  EXPECT_EQ(lp.cut_ids(), std::vector<std::int64_t>{ids[0]});
  EXPECT_EQ(lp.solver().num_rows(), 2);
  EXPECT_EQ(pool.size(), 1u);
}

}  // namespace
}  // namespace zorvex::testing
