// Methods of continuous models behind ZLPoptimize: concurrent by the clock and
// by work, sifting.
#include <algorithm>
#include <string>
#include <thread>

#include "opt/tiny_model.hpp"
#include "support/wide_lp.hpp"

namespace zorvex::testing {
namespace {

using oracle::WideKind;

// Rows of one kind: all bounded below, or all above, or equations.
Model model_of(ZLPenv* env, const LpData& lp) {
  std::string sense;
  std::vector<double> rhs;
  for (Index row = 0; row < lp.num_rows(); ++row) {
    const bool has_lower = lp.row_lower[row] > -kInf;
    sense += !has_lower ? '<' : lp.row_lower[row] == lp.row_upper[row] ? '=' : '>';
    rhs.push_back(has_lower ? lp.row_lower[row] : lp.row_upper[row]);
  }
  std::vector<int> begin(lp.matrix.start.begin(), lp.matrix.start.end());
  std::vector<double> upper;
  for (const double u : lp.col_upper) upper.push_back(std::min(u, ZLP_INFINITY));
  ZLPmodel* model = nullptr;
  EXPECT_EQ(0, ZLPloadmodel(env, &model, "wide", lp.num_cols(), lp.num_rows(), 1, 0, lp.cost.data(), sense.c_str(),
                            rhs.data(), begin.data(), nullptr, lp.matrix.index.data(), lp.matrix.value.data(),
                            lp.col_lower.data(), upper.data(), nullptr, nullptr, nullptr));
  return Model(model);
}

class OptimizeThreadsMethods : public ::testing::Test {
 protected:
  Model wide(WideKind kind, Index rows, Index cols) {
    RandomStream random(7, "optimize methods");
    return model_of(env_.get(), oracle::wide_lp(kind, rows, cols, random));
  }

  Env env_ = quiet_env();
};

// The first relaxation by every method, the others by every method: the optimum of the search does not change.
TEST_F(OptimizeThreadsMethods, TreeSearchesTakeTheMethodsOfTheirRelaxations) {
  double expected = 0;
  bool first = true;
  for (const auto& [method, node_method] : {std::pair{-1, 1}, {0, 1}, {2, 1}, {3, 1}, {4, 1}, {1, 0}, {1, 2}}) {
    SCOPED_TRACE("Method " + std::to_string(method) + " NodeMethod " + std::to_string(node_method));
    const Model model = wide(WideKind::kCovering, 12, 40);
    for (int col = 0; col < 40; ++col) ASSERT_EQ(0, ZLPsetcharattrelement(model.get(), "VType", col, 'I'));
    set(model.get(), {{"Method", method}, {"NodeMethod", node_method}, {"Crossover", 0}});
    const std::string log = log_of(model.get());
    EXPECT_EQ(ZLP_OPTIMAL, int_attr(model.get(), "Status"));
    if (first) expected = dbl_attr(model.get(), "ObjVal");
    first = false;
    EXPECT_NEAR(expected, dbl_attr(model.get(), "ObjVal"), 1e-4 * std::abs(expected));
    EXPECT_EQ(method == 2, log.find("Root barrier log...") != std::string::npos) << log;
    if (method < 3) {
      EXPECT_EQ(method == 2 || node_method == 2, int_attr(model.get(), "BarIterCount") > 0);
    }
  }
}

// Cut rounds at the root go on from bases that are dual feasible, where the primal simplex finds poorer vertices to cut
// from: NodeMethod is for the tree below.
TEST_F(OptimizeThreadsMethods, TheRootIsCutTheSameWhateverSolvesTheNodes) {
  for (const WideKind kind : {WideKind::kCovering, WideKind::kPacking, WideKind::kBoxed}) {
    double bound[2], iterations[2];
    for (const int node_method : {0, 1}) {
      const Model model = wide(kind, 20, 60);
      for (int col = 0; col < 60; ++col) ASSERT_EQ(0, ZLPsetcharattrelement(model.get(), "VType", col, 'I'));
      set(model.get(), {{"NodeMethod", node_method}, {"NodeLimit", 1}, {"Heuristics", 0}});
      ASSERT_EQ(0, ZLPoptimize(model.get()));
      bound[node_method] = dbl_attr(model.get(), "ObjBound");
      iterations[node_method] = dbl_attr(model.get(), "IterCount");
    }
    EXPECT_EQ(bound[0], bound[1]);
    EXPECT_EQ(iterations[0], iterations[1]);
  }
}

// Everything that a user sees of an optimum.
struct Outcome {
  int status, barrier_iterations;
  double objective, iterations;
  std::vector<double> x, pi;
  bool operator==(const Outcome&) const = default;
};

Outcome outcome_of(ZLPmodel* model) {
  EXPECT_EQ(0, ZLPoptimize(model));
  return {int_attr(model, "Status"),    int_attr(model, "BarIterCount"),  dbl_attr(model, "ObjVal"),
          dbl_attr(model, "IterCount"), dbl_array(model, "X", "NumVars"), dbl_array(model, "Pi", "NumConstrs")};
}

TEST_F(OptimizeThreadsMethods, EveryMethodFindsTheOptimum) {
  for (const WideKind kind : {WideKind::kCovering, WideKind::kPartitioning, WideKind::kPacking, WideKind::kBoxed}) {
    double expected = 0;
    for (const int method : {1, 0, 2, 3, 4}) {
      for (const int threads : {1, 0}) {
        const Model model = wide(kind, 15, 120);
        set(model.get(), {{"Method", method}, {"Threads", threads}});
        ASSERT_EQ(0, ZLPoptimize(model.get()));
        ASSERT_EQ(ZLP_OPTIMAL, int_attr(model.get(), "Status"));
        const double objective = dbl_attr(model.get(), "ObjVal");
        if (method == 1) expected = objective;
        EXPECT_NEAR(expected, objective, 1e-7 * std::abs(expected)) << method;
        expect_lp_quality(model.get());
        EXPECT_EQ(0, ZLPgetBasisHead(model.get(), std::vector<int>(15).data())) << "a basis belongs to the optimum";
      }
    }
  }
}

TEST_F(OptimizeThreadsMethods, ByWorkEveryRunIsTheSame) {
  const Model first = wide(WideKind::kBoxed, 40, 400);
  set(first.get(), {{"Method", 4}});
  const Outcome expected = outcome_of(first.get());
  EXPECT_EQ(ZLP_OPTIMAL, expected.status);
  EXPECT_GT(expected.iterations + expected.barrier_iterations, 0);
  for (int run = 0; run < 10; ++run) {
    const Model again = wide(WideKind::kBoxed, 40, 400);
    set(again.get(), {{"Method", 4}});
    EXPECT_TRUE(outcome_of(again.get()) == expected) << run;
  }
}

TEST_F(OptimizeThreadsMethods, InfeasibleAndUnbounded) {
  const Tiny infeasible{1, {1, 1}, {{{1, 1}, '>', 5}, {{1, 2}, '<', 4}, {{2, 1}, '<', 4}}};
  const Tiny unbounded{1, {-1, -1}, {{{1, -1}, '<', 2}, {{-1, 1}, '<', 2}}};
  for (const int method : {3, 4}) {
    for (const int presolve : {0, -1}) {
      const Model no = build(env_.get(), infeasible);
      set(no.get(), {{"Method", method}, {"Presolve", presolve}});
      ASSERT_EQ(0, ZLPoptimize(no.get()));
      EXPECT_EQ(ZLP_INFEASIBLE, int_attr(no.get(), "Status"));
      const Model endless = build(env_.get(), unbounded);
      set(endless.get(), {{"Method", method}, {"Presolve", presolve}});
      ASSERT_EQ(0, ZLPoptimize(endless.get()));
      EXPECT_EQ(ZLP_UNBOUNDED, int_attr(endless.get(), "Status"));
    }
  }
}

TEST_F(OptimizeThreadsMethods, LogNamesTheSolvers) {
  const Model model = wide(WideKind::kCovering, 15, 120);
  set(model.get(), {{"Method", 4}, {"OutputFlag", 1}});
  const std::string log = printed([&] { ASSERT_EQ(0, ZLPoptimize(model.get())); });
  if (log.find("Concurrent optimizer") == std::string::npos) GTEST_SKIP() << "one processor, no race";
  const std::size_t start = log.find("Concurrent optimizer: dual simplex");
  const std::size_t winner = log.find("\nSolved by ");
  ASSERT_NE(std::string::npos, start) << log;
  ASSERT_NE(std::string::npos, winner) << log;
  EXPECT_LT(start, winner);
  EXPECT_NE(std::string::npos, log.find("\nSolved in ", winner)) << log;
  EXPECT_EQ(std::string::npos, log.find("Iteration ")) << "logs of the contestants: " << log;
}

struct Calls {
  std::thread::id thread = std::this_thread::get_id();
  int foreign = 0;
  bool stop = false;
};

int note_thread(ZLPmodel* model, ZLPcbdata*, int, void* user) {
  auto* calls = static_cast<Calls*>(user);
  if (std::this_thread::get_id() != calls->thread) ++calls->foreign;
  if (calls->stop) ZLPterminate(model);
  return 0;
}

TEST_F(OptimizeThreadsMethods, CallbacksStayOnTheCallersThread) {
  const Model model = wide(WideKind::kBoxed, 60, 3000);
  Calls calls;
  ASSERT_EQ(0, ZLPsetcallbackfunc(model.get(), note_thread, &calls));
  set(model.get(), {{"Method", 3}, {"OutputFlag", 0}});
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  EXPECT_EQ(ZLP_OPTIMAL, int_attr(model.get(), "Status"));
  EXPECT_EQ(0, calls.foreign);
}

TEST_F(OptimizeThreadsMethods, TerminationEndsTheRace) {
  for (const int method : {3, 4}) {
    const Model model = wide(WideKind::kBoxed, 150, 15000);
    Calls calls;
    calls.stop = true;
    ASSERT_EQ(0, ZLPsetcallbackfunc(model.get(), note_thread, &calls));
    set(model.get(), {{"Method", method}, {"Presolve", 0}});
    ASSERT_EQ(0, ZLPoptimize(model.get()));
    EXPECT_EQ(ZLP_INTERRUPTED, int_attr(model.get(), "Status"));
  }
}

TEST_F(OptimizeThreadsMethods, IterationLimitsHoldForEveryContestant) {
  const Model model = wide(WideKind::kBoxed, 60, 600);
  set(model.get(), {{"Method", 4}, {"BarIterLimit", 1}});
  ASSERT_EQ(0, ZLPsetdblparam(ZLPgetenv(model.get()), "IterationLimit", 2));
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  EXPECT_EQ(ZLP_ITERATION_LIMIT, int_attr(model.get(), "Status"));
}

TEST_F(OptimizeThreadsMethods, SiftingWhenAskedAndWhenWide) {
  const struct {
    const char* name;
    Index rows, cols;
    int sifting, sift_method;
    const char* text;  // null: no sifting
  } cases[] = {{"off", 30, 6000, 0, -1, nullptr},
               {"automatic, wide", 30, 6000, -1, -1, "Starting sifting (using primal simplex for sub-problems)...\n"},
               {"automatic, not wide", 30, 200, -1, -1, nullptr},
               {"asked for", 30, 300, 1, 1, "Starting sifting (using dual simplex for sub-problems)...\n"},
               {"barrier", 30, 300, 2, 2, "Starting sifting (using barrier for sub-problems)...\n"},
               {"too narrow", 60, 90, 1, 0, "Warning: sifting step skipped - too few columns\n"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const Model model = wide(WideKind::kCovering, c.rows, c.cols);
    set(model.get(), {{"Sifting", c.sifting}, {"SiftMethod", c.sift_method}, {"Presolve", 0}, {"OutputFlag", 1}});
    const std::string log = printed([&] { ASSERT_EQ(0, ZLPoptimize(model.get())); });
    ASSERT_EQ(ZLP_OPTIMAL, int_attr(model.get(), "Status"));
    expect_lp_quality(model.get());
    if (c.text == nullptr) {
      EXPECT_EQ(std::string::npos, log.find("ifting")) << log;
    } else {
      EXPECT_NE(std::string::npos, log.find(c.text)) << log;
    }
  }
}

}  // namespace
}  // namespace zorvex::testing
