// Limits, interruption, resuming, threads, lifetimes, and running out of memory.
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <ctime>
#include <random>
#include <string>
#include <thread>

#include "env/environment.hpp"
#include "opt/tiny_model.hpp"
#include "support/failing_allocation.hpp"
#include "support/models.hpp"

namespace zorvex::testing {
namespace {

const Tiny kLp{-1, {3, 2}, {{{1, 1}, '<', 4}, {{1, 3}, '<', 6}}, {}, {3, ZLP_INFINITY}};
const Tiny kMip{-1, {10, 13, 7, 8}, {{{3, 4, 2, 3}, '<', 6}}, {}, {}, "BBBB"};

TEST(OptimizeLimits, EachLimitHasItsStatusAndLine) {
  const struct {
    const char* name;
    bool integer;
    const char* parameter;
    const char* value;
    int status;
    const char* line;
  } cases[] = {
      {"LP iterations", false, "IterationLimit", "0", ZLP_ITERATION_LIMIT, "Iteration limit exceeded\n"},
      {"LP time", false, "TimeLimit", "0", ZLP_TIME_LIMIT, "Time limit exceeded\n"},
      {"MIP nodes", true, "NodeLimit", "20", ZLP_NODE_LIMIT, "\nNode limit reached\n"},
      {"MIP iterations", true, "IterationLimit", "200", ZLP_ITERATION_LIMIT, "\nIteration limit reached\n"},
      {"MIP time", true, "TimeLimit", "0", ZLP_TIME_LIMIT, "\nTime limit reached\n"},
      {"MIP solutions", true, "SolutionLimit", "1", ZLP_SOLUTION_LIMIT, "\nSolution limit reached\n"},
  };
  const Env env = quiet_env();
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const Model model =
        build(env.get(), c.integer ? market_split(4, 30) : kLp, {{"Presolve", 0}, {c.parameter, c.value}});
    const std::string log = log_of(model.get());
    EXPECT_EQ(c.status, int_attr(model.get(), "Status")) << log;
    EXPECT_NE(std::string::npos, log.find(c.line)) << log;
    EXPECT_NE(std::string::npos, log.find(c.integer ? "\nExplored " : "Stopped in ")) << log;
    double x = 0;
    const bool has_solution = int_attr(model.get(), "SolCount") > 0;
    EXPECT_EQ(has_solution ? 0 : 10005, ZLPgetdblattrarray(model.get(), "X", 0, 1, &x));
    if (has_solution && c.integer) expect_mip_quality(model.get());
  }
}

TEST(OptimizeLimits, SearchIsResumedUnlessTheModelChanged) {
  const Env env = quiet_env();
  const Model model = build(env.get(), market_split(4, 30), {{"OutputFlag", 1}, {"NodeLimit", 20}});
  ZLPenv* own = ZLPgetenv(model.get());
  const auto solve = [&] { return printed([&] { EXPECT_EQ(0, ZLPoptimize(model.get())); }); };
  EXPECT_EQ(std::string::npos, solve().find("Continuing optimization..."));
  const double nodes = dbl_attr(model.get(), "NodeCount");
  ASSERT_EQ(0, ZLPsetdblparam(own, "NodeLimit", 60));
  const std::string resumed = solve();
  EXPECT_NE(std::string::npos, resumed.find("\nContinuing optimization...\n\n")) << resumed;
  EXPECT_EQ(std::string::npos, resumed.find("Root relaxation")) << resumed;
  EXPECT_GE(dbl_attr(model.get(), "NodeCount"), std::max(60.0, nodes));
  EXPECT_EQ(ZLP_NODE_LIMIT, int_attr(model.get(), "Status"));

  const double cost = 2;
  ASSERT_EQ(0, ZLPsetdblattrelement(model.get(), "Obj", 30, cost));
  const std::string fresh = solve();
  EXPECT_EQ(std::string::npos, fresh.find("Continuing optimization...")) << "another model";
  EXPECT_NE(std::string::npos, fresh.find("Root relaxation")) << fresh;
  ASSERT_EQ(0, ZLPresetmodel(model.get()));
  EXPECT_EQ(ZLP_LOADED, int_attr(model.get(), "Status"));
  EXPECT_EQ(std::string::npos, solve().find("Continuing optimization...")) << "after a reset";
}

// Keeps asking until the solve has returned, so that no request can come too early to count.
class Terminator {
 public:
  explicit Terminator(ZLPmodel* model)
      : thread_([this, model] {
          while (!done_.load()) {
            ZLPterminate(model);
            std::this_thread::yield();
          }
        }) {}
  ~Terminator() {
    done_ = true;
    thread_.join();
  }

 private:
  std::atomic<bool> done_{false};
  std::thread thread_;
};

TEST(OptimizeInterrupt, FromAnotherThread) {
  const Env env = quiet_env();
  const Model model = build(env.get(), market_split(5, 40));
  {
    const Terminator terminator(model.get());
    EXPECT_EQ(0, ZLPoptimize(model.get()));
  }
  EXPECT_EQ(ZLP_INTERRUPTED, int_attr(model.get(), "Status"));
  // The request does not outlive its solve.
  ASSERT_EQ(0, ZLPsetdblparam(ZLPgetenv(model.get()), "NodeLimit", 10));
  EXPECT_EQ(0, ZLPoptimize(model.get()));
  EXPECT_EQ(ZLP_NODE_LIMIT, int_attr(model.get(), "Status"));
}

TEST(OptimizeInterrupt, ContinuousModel) {
  ZORVEX_NEED_MODEL(path, "lp/25fv47.mps.gz");
  const Env env = quiet_env();
  const Model model = read_model(env.get(), path);
  {
    const Terminator terminator(model.get());
    EXPECT_EQ(0, ZLPoptimize(model.get()));
  }
  EXPECT_EQ(ZLP_INTERRUPTED, int_attr(model.get(), "Status"));
}

TEST(OptimizeInterrupt, RequestsWithoutASolveAreForgotten) {
  const Env env = quiet_env();
  const Model model = build(env.get(), kMip);
  ZLPterminate(nullptr);
  ZLPterminate(model.get());
  EXPECT_EQ(0, ZLPoptimize(model.get()));
  EXPECT_EQ(ZLP_OPTIMAL, int_attr(model.get(), "Status"));
}

// The signal comes with the second message, when the solve has certainly begun.
TEST(OptimizeInterrupt, ConsoleSignal) {
  const Env env = quiet_env();
  const Model model = build(env.get(), market_split(5, 40));
  ZLPenv* own = ZLPgetenv(model.get());
  int messages = 0;
  own->callback_data = std::make_unique<CallbackData>();
  own->callback_data->user = &messages;
  own->message_callback = [](CallbackData& data, int) {
    if (++*static_cast<int*>(data.user) == 2) std::raise(SIGINT);
  };
  ASSERT_EQ(0, ZLPsetsignal(model.get()));
  EXPECT_EQ("\nInterrupt request received\n", printed([&] { EXPECT_EQ(0, ZLPoptimize(model.get())); }));
  EXPECT_EQ(ZLP_INTERRUPTED, int_attr(model.get(), "Status"));
}

// The same models one after the other and on two threads with an environment each: the same answers.
std::vector<double> solve_many(unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_int_distribution<int> coefficient(1, 9);
  const Env env = quiet_env();
  std::vector<double> objectives;
  for (int k = 0; k < 12; ++k) {
    Tiny tiny{-1, {}, {}, {}, {}, std::string(k % 2 == 0 ? 8 : 0, 'I')};
    for (int col = 0; col < 8; ++col) tiny.obj.push_back(coefficient(random));
    for (int row = 0; row < 5; ++row) {
      Row line{{}, '<', 20.0 + coefficient(random)};
      for (int col = 0; col < 8; ++col) line.coefficient.push_back(coefficient(random));
      tiny.rows.push_back(std::move(line));
    }
    const Model model = build(env.get(), tiny);
    EXPECT_EQ(0, ZLPoptimize(model.get()));
    objectives.push_back(dbl_attr(model.get(), "ObjVal"));
  }
  return objectives;
}

TEST(OptimizeThreads, TwoEnvironmentsSideBySide) {
  const std::vector<double> first = solve_many(1), second = solve_many(2);
  std::vector<double> first_beside, second_beside;
  std::thread one([&] { first_beside = solve_many(1); });
  std::thread two([&] { second_beside = solve_many(2); });
  one.join();
  two.join();
  EXPECT_EQ(first, first_beside);
  EXPECT_EQ(second, second_beside);
}

TEST(OptimizeLifetime, HandlesAreFreedInAnyOrderAndFromAnyThread) {
  const std::string warning = "Warning: invalid Zorvex environment. Was it freed too early?\n";
  ZLPenv* env = quiet_env().release();
  ASSERT_EQ(0, ZLPsetintparam(env, "OutputFlag", 1));
  ZLPmodel* model = build(env, kMip).release();
  ZLPmodel* early = build(env, kLp).release();
  printed([&] { EXPECT_EQ(0, ZLPoptimize(model)); });
  std::thread([&] { EXPECT_EQ(0, ZLPfreemodel(early)); }).join();
  EXPECT_EQ(10003, ZLPoptimize(early));
  EXPECT_EQ(10003, ZLPfreemodel(early));
  std::thread([&] { ZLPfreeenv(env); }).join();
  EXPECT_EQ(warning, printed([&] { EXPECT_EQ(10003, ZLPoptimize(model)); }));
  EXPECT_EQ(0, ZLPfreemodel(model));
  EXPECT_EQ(10002, ZLPoptimize(nullptr));
}

// Forked while another thread makes and frees handles of its own.
TEST(OptimizeLifetime, EnvironmentIsUsableInAForkedChild) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the sanitizer's own allocator may be locked in a child";
#endif
  const Env env = quiet_env();
  const Model model = build(env.get(), kLp);
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  std::atomic<bool> stop{false};
  std::thread other([&] {
    while (!stop) build(quiet_env().get(), kLp);
  });
  int good = 0;
  constexpr int kForks = 50;
  for (int k = 0; k < kForks; ++k) {
    const pid_t child = fork();
    if (child == 0) {
      alarm(20);  // ends a child that hangs
      ZLPmodel* fresh = nullptr;
      int status = 0;
      const bool solved = load_tiny(env.get(), kMip, &fresh) == 0 && ZLPoptimize(fresh) == 0 &&
                          ZLPgetintattr(fresh, "Status", &status) == 0 && status == ZLP_OPTIMAL &&
                          ZLPoptimize(model.get()) == 0 && ZLPfreemodel(fresh) == 0;
      _exit(solved ? 0 : 1);
    }
    int status = -1;
    if (child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0) ++good;
  }
  stop = true;
  other.join();
  EXPECT_EQ(kForks, good);
  EXPECT_EQ(0, ZLPoptimize(model.get()));
}

TEST(OptimizeLifetime, ReleasedLicenceAndPendingDeletes) {
  const Env env = quiet_env();
  const Model model = build(env.get(), kLp);
  ASSERT_EQ(0, ZLPreleaselicense(env.get()));
  EXPECT_EQ(10009, ZLPoptimize(model.get()));
  EXPECT_STREQ("License was released", ZLPgetmerrormsg(model.get()));
}

// Every allocation of a solve fails once, and all after it: the call answers 10001 and the next solve is right again.
TEST(OptimizeMemory, ExhaustionAtEveryPoint) {
  const Env env = quiet_env();
  for (const Tiny* tiny : {&kLp, &kMip}) {
    const double expected = tiny == &kLp ? 11 : 20;
    for (const int presolve : {-1, 0}) {
      const Model model = build(env.get(), *tiny, {{"Presolve", presolve}});
      int failures = 0;
      int code = 10001;
      for (long allowed = 0; code != 0; ++allowed) {
        ASSERT_LT(allowed, 100000);
        ASSERT_EQ(0, ZLPresetmodel(model.get()));
        {
          const FailingAllocations failing(allowed);
          code = ZLPoptimize(model.get());
        }
        if (code == 0) break;
        ASSERT_EQ(10001, code) << "after " << allowed << " allocations";
        EXPECT_STREQ("Optimization exhausted available memory", ZLPgetmerrormsg(model.get()));
        ++failures;
      }
      EXPECT_GT(failures, 5);
      EXPECT_NEAR(expected, dbl_attr(model.get(), "ObjVal"), 1e-6);
      ASSERT_EQ(0, ZLPoptimize(model.get()));
      EXPECT_NEAR(expected, dbl_attr(model.get(), "ObjVal"), 1e-6);
    }
  }
}

TEST(OptimizeMemory, EnvironmentsAndModelsEndCleanlyToo) {
  int code = 10001, failures = 0;
  bool told = false;
  for (long allowed = 0; code != 0; ++allowed) {
    ZLPenv* env = nullptr;
    const std::string log = printed([&] {
      const FailingAllocations failing(allowed);
      code = ZLPloadenv(&env, nullptr);
    });
    EXPECT_EQ(code == 0, env != nullptr);
    if (code != 0) {
      ASSERT_EQ(10001, code);
      told = told || log == "\nERROR: Out of memory\n\n";
      ++failures;
    }
    ZLPfreeenv(env);
  }
  EXPECT_GT(failures, 5);
  EXPECT_TRUE(told);

  const Env env = quiet_env();
  ZLPmodel* model = nullptr;
  const double values[] = {1, 2, 3};
  code = 10001;
  for (long allowed = 0; code != 0; ++allowed) {
    const FailingAllocations failing(allowed);
    code = ZLPnewmodel(env.get(), &model, "small", 3, values, nullptr, values, nullptr, nullptr);
    ASSERT_TRUE(code == 0 || (code == 10001 && model == nullptr)) << code;
  }
  EXPECT_EQ(0, ZLPfreemodel(model));
}

// A thousand models of 20 rows: every answer is checked by its own quality figures, the time per model is recorded.
TEST(OptimizeLoop, ThousandSmallModels) {
  std::mt19937 random(7);
  std::uniform_int_distribution<int> coefficient(-5, 9);
  const Env env = quiet_env();
  double seconds = 0;
  for (int k = 0; k < 1000; ++k) {
    Tiny tiny{1, {}, {}, {}, std::vector<double>(20, 10.0)};
    for (int col = 0; col < 20; ++col) tiny.obj.push_back(coefficient(random));
    for (int row = 0; row < 20; ++row) {
      Row line{{}, row % 3 == 0 ? '>' : '<', 0};
      for (int col = 0; col < 20; ++col) {
        line.coefficient.push_back(coefficient(random) > 5 ? coefficient(random) : 0);
        line.rhs += line.coefficient.back();  // feasible at all ones
      }
      tiny.rows.push_back(std::move(line));
    }
    const std::clock_t start = std::clock();
    const Model model = build(env.get(), tiny);
    ASSERT_EQ(0, ZLPoptimize(model.get()));
    seconds += static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    ASSERT_EQ(ZLP_OPTIMAL, int_attr(model.get(), "Status")) << "model " << k;
    expect_lp_quality(model.get());
  }
  RecordProperty("microseconds_per_model", std::to_string(seconds * 1000));
  std::printf("building and solving one model of 20 rows: %.1f microseconds of processor time\n", seconds * 1000);
}

}  // namespace
}  // namespace zorvex::testing
