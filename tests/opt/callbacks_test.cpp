// Callbacks: where they are called, what they may ask for, what their answers do, and what they may not do.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <thread>

#include "base/stop_token.hpp"
#include "model/model.hpp"
#include "opt/callback_hooks.hpp"
#include "tiny_model.hpp"

namespace zorvex::testing {
namespace {

using Body = std::function<int(ZLPmodel*, ZLPcbdata*, int)>;

int forward(ZLPmodel* model, ZLPcbdata* cbdata, int where, void* user) {
  return (*static_cast<Body*>(user))(model, cbdata, where);
}

double ask_double(ZLPcbdata* cbdata, int where, int what) {
  double value = std::nan("");
  EXPECT_EQ(0, ZLPcbget(cbdata, where, what, &value)) << what;
  return value;
}

int ask_int(ZLPcbdata* cbdata, int where, int what) {
  int value = -99;
  EXPECT_EQ(0, ZLPcbget(cbdata, where, what, &value)) << what;
  return value;
}

// A transport problem that presolve leaves something of.
Tiny transport() {
  Tiny tiny;
  constexpr int kPlants = 6, kShops = 9;
  tiny.obj.resize(kPlants * kShops);
  for (int k = 0; k < kPlants * kShops; ++k) tiny.obj[k] = 3 + (k * 37 + k * k * 11) % 23;
  for (int plant = 0; plant < kPlants; ++plant) {
    Row row{std::vector<double>(tiny.obj.size(), 0.0), '<', 30.0 + plant};
    for (int shop = 0; shop < kShops; ++shop) row.coefficient[plant * kShops + shop] = 1;
    tiny.rows.push_back(row);
  }
  for (int shop = 0; shop < kShops; ++shop) {
    Row row{std::vector<double>(tiny.obj.size(), 0.0), '>', 11.0 + shop};
    for (int plant = 0; plant < kPlants; ++plant) row.coefficient[plant * kShops + shop] = 1;
    tiny.rows.push_back(row);
  }
  return tiny;
}

// A knapsack with two rows, to be maximised, whose profits follow the weights: cuts do not settle it, its tree has some
// nodes.
Tiny knapsack() {
  Tiny tiny;
  tiny.sense = -1;
  constexpr int kItems = 15;
  Row first{{}, '<', 0}, second{{}, '<', 0};
  for (int item = 0; item < kItems; ++item) {
    first.coefficient.push_back(23 + (item * 17) % 41);
    second.coefficient.push_back(19 + (item * 31) % 53);
    tiny.obj.push_back(first.coefficient.back() + second.coefficient.back() + 10 + 0.25 * (item % 3));
    first.rhs += first.coefficient.back() / 2;
    second.rhs += second.coefficient.back() / 2;
    tiny.ub.push_back(1);
  }
  first.rhs = std::floor(first.rhs);
  second.rhs = std::floor(second.rhs);
  tiny.rows = {first, second};
  tiny.types = std::string(kItems, 'B');
  return tiny;
}

Model with_callback(ZLPenv* env, const Tiny& tiny, Body& body) {
  Model model = build(env, tiny);
  EXPECT_EQ(0, ZLPsetcallbackfunc(model.get(), forward, &body));
  return model;
}

constexpr int kSearch[] = {ZLP_WHERE_MIP, ZLP_WHERE_MIP_SOLUTION, ZLP_WHERE_MIP_NODE};

constexpr int kAllData[] = {ZLP_WHAT_RUNTIME,
                            ZLP_WHAT_PRESOLVE_ROWS_REMOVED,
                            ZLP_WHAT_PRESOLVE_COLS_REMOVED,
                            ZLP_WHAT_SIMPLEX_ITERATIONS,
                            ZLP_WHAT_SIMPLEX_OBJECTIVE,
                            ZLP_WHAT_SIMPLEX_PRIMAL_INF,
                            ZLP_WHAT_SIMPLEX_DUAL_INF,
                            ZLP_WHAT_MIP_INCUMBENT,
                            ZLP_WHAT_MIP_BOUND,
                            ZLP_WHAT_MIP_NODES,
                            ZLP_WHAT_MIP_OPEN_NODES,
                            ZLP_WHAT_MIP_ITERATIONS,
                            ZLP_WHAT_MIP_SOLUTIONS,
                            ZLP_WHAT_MIP_CUTS,
                            ZLP_WHAT_SOLUTION,
                            ZLP_WHAT_SOLUTION_OBJECTIVE,
                            ZLP_WHAT_NODE_RELAXATION,
                            ZLP_WHAT_NODE_OBJECTIVE,
                            ZLP_WHAT_NODE_DEPTH,
                            ZLP_WHAT_MESSAGE_TEXT,
                            ZLP_WHAT_BARRIER_ITERATIONS,
                            ZLP_WHAT_BARRIER_PRIMAL_OBJECTIVE,
                            ZLP_WHAT_BARRIER_DUAL_OBJECTIVE,
                            ZLP_WHAT_BARRIER_PRIMAL_RESIDUAL,
                            ZLP_WHAT_BARRIER_DUAL_RESIDUAL,
                            ZLP_WHAT_BARRIER_COMPLEMENTARITY};

bool in_search(int where) { return std::count(std::begin(kSearch), std::end(kSearch), where) > 0; }

// As the header promises: the thousands of a what code are its where code, those of the search exist in three places.
bool promised(int what, int where) {
  if (what == ZLP_WHAT_RUNTIME) return true;
  return what / 1000 == ZLP_WHERE_MIP ? in_search(where) : what / 1000 == where;
}

void ask_for_everything(ZLPcbdata* cbdata, int where) {
  std::vector<double> room(100);
  for (const int what : kAllData) {
    EXPECT_EQ(promised(what, where) ? 0 : 10011, ZLPcbget(cbdata, where, what, room.data()))
        << "what " << what << " where " << where;
  }
  EXPECT_EQ(10011, ZLPcbget(cbdata, where, 12345, room.data()));
  EXPECT_EQ(10011, ZLPcbget(cbdata, where + 1, ZLP_WHAT_RUNTIME, room.data()));
  EXPECT_EQ(10002, ZLPcbget(cbdata, where, ZLP_WHAT_RUNTIME, nullptr));
  EXPECT_EQ(10002, ZLPcbget(nullptr, where, ZLP_WHAT_RUNTIME, room.data()));
}

TEST(Callbacks, AreCalledWhereTheyShouldAndKnowWhatTheyShould) {
  const Env env = quiet_env();
  for (const bool integer : {false, true}) {
    std::set<int> seen;
    Body body = [&](ZLPmodel*, ZLPcbdata* cbdata, int where) {
      if (seen.insert(where).second) ask_for_everything(cbdata, where);
      return 0;
    };
    const Model model = with_callback(env.get(), integer ? knapsack() : transport(), body);
    EXPECT_EQ(0, ZLPoptimize(model.get()));
    EXPECT_EQ(2, int_attr(model.get(), "Status"));
    seen.insert(ZLP_WHERE_POLLING);  // only in silences that a small model need not have
    EXPECT_EQ(seen, integer ? std::set({0, 1, 2, 3, 4, 5, 6}) : std::set({0, 1, 2, 6}));
    EXPECT_STREQ("", ZLPgetmerrormsg(model.get())) << "refused questions leave no trace in a solve that went well";
  }
}

TEST(Callbacks, RefusedQuestionsGiveTheReason) {
  struct Case {
    int where_offset, what;
    const char* reason;
  };
  const Case cases[] = {
      {0, ZLP_WHAT_SOLUTION, "Callback data with what code 4000 does not exist at where code 3"},
      {0, 77, "There is no callback data with what code 77"},
      {1, ZLP_WHAT_RUNTIME, "Callback data was asked for with where code 4 in a callback with 3"},
  };
  const Env env = quiet_env();
  for (const Case& c : cases) {
    std::string inside;
    Body body = [&](ZLPmodel* model, ZLPcbdata* cbdata, int where) {
      if (where != ZLP_WHERE_MIP) return 0;
      double value = 0;
      const int code = ZLPcbget(cbdata, where + c.where_offset, c.what, &value);
      inside = ZLPgeterrormsg(ZLPgetenv(model));
      return code;
    };
    const Model model = with_callback(env.get(), knapsack(), body);
    EXPECT_EQ(10011, ZLPoptimize(model.get()));
    EXPECT_EQ(c.reason, inside);
    EXPECT_STREQ(c.reason, ZLPgetmerrormsg(model.get()));
  }
}

TEST(Callbacks, SimplexFiguresEndAtTheOptimum) {
  const Env env = quiet_env();
  for (const int sense : {1, -1}) {
    Tiny tiny = transport();
    tiny.sense = sense;
    tiny.obj_con = 5;
    if (sense < 0) {
      for (double& c : tiny.obj) c = -c;
    }
    double objective = std::nan(""), iterations = -1, primal = 1;
    Body body = [&](ZLPmodel*, ZLPcbdata* cbdata, int where) {
      if (where != ZLP_WHERE_SIMPLEX) return 0;
      const double now = ask_double(cbdata, where, ZLP_WHAT_SIMPLEX_ITERATIONS);
      EXPECT_GE(now, iterations);
      iterations = now;
      objective = ask_double(cbdata, where, ZLP_WHAT_SIMPLEX_OBJECTIVE);
      primal = ask_double(cbdata, where, ZLP_WHAT_SIMPLEX_PRIMAL_INF);
      EXPECT_GE(ask_double(cbdata, where, ZLP_WHAT_SIMPLEX_DUAL_INF), 0);
      return 0;
    };
    const Model model = with_callback(env.get(), tiny, body);
    ASSERT_EQ(0, ZLPoptimize(model.get()));
    EXPECT_NEAR(dbl_attr(model.get(), "ObjVal"), objective, 1e-9 * std::abs(objective));
    EXPECT_EQ(dbl_attr(model.get(), "IterCount"), iterations);
    EXPECT_NEAR(0, primal, 1e-9);
  }
}

TEST(Callbacks, SearchFiguresAreConsistent) {
  const Env env = quiet_env();
  double incumbent = -1e100, last_nodes = 0;
  int solutions = 0, nodes_asked = 0;
  std::vector<double> last(knapsack().obj.size());
  Body body = [&](ZLPmodel* model, ZLPcbdata* cbdata, int where) {
    if (!in_search(where)) return 0;
    EXPECT_EQ(incumbent, ask_double(cbdata, where, ZLP_WHAT_MIP_INCUMBENT));
    EXPECT_EQ(solutions, ask_int(cbdata, where, ZLP_WHAT_MIP_SOLUTIONS));
    const double bound = ask_double(cbdata, where, ZLP_WHAT_MIP_BOUND);
    EXPECT_GE(bound, incumbent - 1e-6);
    const double nodes = ask_double(cbdata, where, ZLP_WHAT_MIP_NODES);
    EXPECT_GE(nodes, last_nodes);
    last_nodes = nodes;
    if (where == ZLP_WHERE_MIP_NODE) {
      ++nodes_asked;
      std::vector<double> x(knapsack().obj.size());
      EXPECT_EQ(0, ZLPcbget(cbdata, where, ZLP_WHAT_NODE_RELAXATION, x.data()));
      double value = 0;
      bool fractional = false;
      const std::vector<double> obj = dbl_array(model, "Obj", "NumVars");
      for (std::size_t k = 0; k < x.size(); ++k) {
        value += obj[k] * x[k];
        fractional = fractional || std::abs(x[k] - std::round(x[k])) > 1e-6;
      }
      EXPECT_TRUE(fractional);
      EXPECT_NEAR(value, ask_double(cbdata, where, ZLP_WHAT_NODE_OBJECTIVE), 1e-6);
      EXPECT_GE(ask_int(cbdata, where, ZLP_WHAT_NODE_DEPTH), 0);
    }
    if (where == ZLP_WHERE_MIP_SOLUTION) {
      EXPECT_EQ(0, ZLPcbget(cbdata, where, ZLP_WHAT_SOLUTION, last.data()));
      const double objective = ask_double(cbdata, where, ZLP_WHAT_SOLUTION_OBJECTIVE);
      EXPECT_GT(objective, incumbent);
      incumbent = objective;  // nothing speaks against it
      ++solutions;
    }
    return 0;
  };
  const Model model = with_callback(env.get(), knapsack(), body);
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  EXPECT_EQ(incumbent, dbl_attr(model.get(), "ObjVal"));
  expect_near(last, dbl_array(model.get(), "X", "NumVars"), 0);
  EXPECT_GT(solutions, 0);
  EXPECT_GT(nodes_asked, 0);
}

TEST(Callbacks, NonzeroEndsTheSolve) {
  const Env env = quiet_env();
  for (const int stop : {0, 1, 2, 3, 4, 5, 6}) {
    bool stopped = false;
    Body body = [&](ZLPmodel*, ZLPcbdata*, int where) {
      EXPECT_FALSE(stopped && where != ZLP_WHERE_MESSAGE) << "called again at " << where;
      stopped = stopped || where == stop;
      return where == stop ? 7 : 0;
    };
    const Model model = with_callback(env.get(), stop == 1 ? transport() : knapsack(), body);
    EXPECT_EQ(10011, ZLPoptimize(model.get())) << stop;
    EXPECT_STREQ("Problem with callback", ZLPgetmerrormsg(model.get()));
    EXPECT_EQ(11, int_attr(model.get(), "Status")) << stop;
    if (stop == ZLP_WHERE_MIP_SOLUTION) {
      EXPECT_EQ(0, int_attr(model.get(), "SolCount"));
    }
    EXPECT_EQ(0, ZLPsetcallbackfunc(model.get(), nullptr, nullptr));
    EXPECT_EQ(0, ZLPoptimize(model.get()));
    EXPECT_EQ(2, int_attr(model.get(), "Status")) << "the next solve is a new one";
  }
}

TEST(Callbacks, FailureShowsInTheLog) {
  const Env env = quiet_env();
  Body body = [](ZLPmodel*, ZLPcbdata*, int where) { return where == ZLP_WHERE_MIP_NODE ? 1 : 0; };
  const Model model = with_callback(env.get(), knapsack(), body);
  set(model.get(), {{"OutputFlag", 1}});
  const std::string log = printed([&] { EXPECT_EQ(10011, ZLPoptimize(model.get())); });
  EXPECT_NE(log.find("Solve interrupted (error code 10011)\n"), std::string::npos) << log;
}

TEST(Callbacks, TerminateEndsTheSolveWithStatusInterrupted) {
  const Env env = quiet_env();
  for (const int stop : {0, 1, 2, 3, 4, 5, 6}) {
    Body body = [&](ZLPmodel* model, ZLPcbdata*, int where) {
      if (where == stop) ZLPterminate(model);
      return 0;
    };
    const Model model = with_callback(env.get(), stop == 1 ? transport() : knapsack(), body);
    EXPECT_EQ(0, ZLPoptimize(model.get())) << stop;
    EXPECT_EQ(11, int_attr(model.get(), "Status")) << stop;
  }
}

TEST(Callbacks, WhatTheModelAllowsInside) {
  const Env env = quiet_env();
  const Model other = build(env.get(), transport());
  struct Call {
    const char* what;
    std::function<int(ZLPmodel*)> make;
    int code;
  };
  double value = 0;
  int count = 0, zero = 0;
  ZLPmodel* made = nullptr;
  const Call calls[] = {
      {"attribute", [&](ZLPmodel* m) { return ZLPgetdblattrelement(m, "Obj", 0, &value); }, 0},
      {"coefficient", [&](ZLPmodel* m) { return ZLPgetcoeff(m, 0, 0, &value); }, 0},
      {"rows", [&](ZLPmodel* m) { return ZLPgetconstrs(m, &count, nullptr, nullptr, nullptr, 0, 1); }, 0},
      {"check", [](ZLPmodel* m) { return ZLPcheckmodel(m); }, 0},
      {"missing attribute", [&](ZLPmodel* m) { return ZLPgetdblattrelement(m, "X", 0, &value); }, 10005},
      {"copy",
       [&](ZLPmodel* m) {
         const int code = ZLPcopymodel(m, &made);
         return code == 0 ? ZLPfreemodel(made) : code;
       },
       0},
      {"solve another", [&](ZLPmodel*) { return ZLPoptimize(other.get()); }, 0},
      {"solve", [](ZLPmodel* m) { return ZLPoptimize(m); }, 10017},
      {"free", [](ZLPmodel* m) { return ZLPfreemodel(m); }, 10017},
      {"update", [](ZLPmodel* m) { return ZLPupdatemodel(m); }, 10017},
      {"reset", [](ZLPmodel* m) { return ZLPresetmodel(m); }, 10017},
      {"delete", [&](ZLPmodel* m) { return ZLPdelvars(m, 1, &zero); }, 10017},
      {"add", [](ZLPmodel* m) { return ZLPaddvar(m, 0, nullptr, nullptr, 0, 0, 1, 'C', nullptr); }, 10017},
      {"set", [](ZLPmodel* m) { return ZLPsetdblattrelement(m, "Start", 0, 1); }, 10017},
      {"callback", [](ZLPmodel* m) { return ZLPsetcallbackfunc(m, nullptr, nullptr); }, 10017},
      {"signal", [](ZLPmodel* m) { return ZLPsetsignal(m); }, 10017},
      {"read", [](ZLPmodel* m) { return ZLPread(m, "start.mst"); }, 10017},
  };
  std::set<int> seen;
  Body body = [&](ZLPmodel* model, ZLPcbdata*, int where) {
    if (!seen.insert(where).second) return 0;
    for (const Call& call : calls) EXPECT_EQ(call.code, call.make(model)) << call.what << " at " << where;
    return 0;
  };
  const Model model = with_callback(env.get(), knapsack(), body);
  EXPECT_EQ(0, ZLPoptimize(model.get()));
  EXPECT_EQ(2, int_attr(model.get(), "Status"));
  EXPECT_GE(seen.size(), 6u);
  EXPECT_EQ(0, ZLPupdatemodel(model.get())) << "outside everything is allowed again";
}

TEST(Callbacks, MessagesReachThemWithOutputOff) {
  const Env env = quiet_env();
  std::string text;
  double runtime = -1;
  Body body = [&](ZLPmodel* model, ZLPcbdata* cbdata, int where) {
    if (where != ZLP_WHERE_MESSAGE) return 0;
    const char* line = nullptr;
    EXPECT_EQ(0, ZLPcbget(cbdata, where, ZLP_WHAT_MESSAGE_TEXT, static_cast<void*>(&line)));
    text += line;
    runtime = ask_double(cbdata, where, ZLP_WHAT_RUNTIME);
    ZLPmsg(ZLPgetenv(model), "not heard: the callback runs already");
    return 1;  // means nothing outside a solve
  };
  const Model model = with_callback(env.get(), transport(), body);
  EXPECT_EQ("", printed([&] { ZLPmsg(ZLPgetenv(model.get()), "hello\n"); }));
  EXPECT_EQ("hello\n", text);
  EXPECT_EQ(0, runtime);
  ZLPmsg(ZLPgetenv(model.get()), std::string(600, 'x').c_str());
  EXPECT_EQ("hello\n" + std::string(511, 'x'), text);
  EXPECT_EQ(0, ZLPsetcallbackfunc(model.get(), nullptr, nullptr));
  ZLPmsg(ZLPgetenv(model.get()), "gone\n");
  EXPECT_EQ("hello\n" + std::string(511, 'x'), text);
}

TEST(Callbacks, HandlesOutsideACallAreRefused) {
  const Env env = quiet_env();
  ZLPcbdata* kept = nullptr;
  Body body = [&](ZLPmodel*, ZLPcbdata* cbdata, int) {
    kept = cbdata;
    return 0;
  };
  Model model = with_callback(env.get(), transport(), body);
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  ASSERT_NE(kept, nullptr);
  double value = 0;
  const int index = 0;
  EXPECT_EQ(10011, ZLPcbget(kept, ZLP_WHERE_POLLING, ZLP_WHAT_RUNTIME, &value));
  EXPECT_STREQ("Callback data exists only while the callback runs", ZLPgetmerrormsg(model.get()));
  EXPECT_EQ(10011, ZLPcbsolution(kept, &value));
  EXPECT_EQ(10011, ZLPcbcut(kept, 1, &index, &value, '<', 0));
  model.reset();
  EXPECT_EQ(10003, ZLPcbget(kept, ZLP_WHERE_POLLING, ZLP_WHAT_RUNTIME, &value));
  EXPECT_EQ(10002, ZLPcbsolution(nullptr, &value));
}

TEST(Callbacks, PollingFillsSilences) {
  const Env env = quiet_env();
  int calls = 0;
  Body body = [&](ZLPmodel*, ZLPcbdata* cbdata, int where) {
    ask_for_everything(cbdata, where);
    calls += where == ZLP_WHERE_POLLING;
    return 0;
  };
  const Model model = with_callback(env.get(), transport(), body);
  CallbackHooks hooks(*model->callback, 0, false);
  StopToken stop(nullptr, kInf, &hooks);
  EXPECT_FALSE(stop.stop_requested());
  EXPECT_EQ(1, calls);
  std::thread([&] { EXPECT_FALSE(stop.stop_requested()); }).join();
  EXPECT_EQ(1, calls) << "other threads never call it";
}

// The barrier figures, asked through the driver's own hooks.
TEST(Callbacks, BarrierFigures) {
  const Env env = quiet_env();
  std::vector<double> seen;
  Body body = [&](ZLPmodel*, ZLPcbdata* cbdata, int where) {
    ask_for_everything(cbdata, where);
    seen.push_back(ask_int(cbdata, where, ZLP_WHAT_BARRIER_ITERATIONS));
    for (int what = ZLP_WHAT_BARRIER_PRIMAL_OBJECTIVE; what <= ZLP_WHAT_BARRIER_COMPLEMENTARITY; ++what) {
      seen.push_back(ask_double(cbdata, where, what));
    }
    return 0;
  };
  Tiny tiny = transport();
  tiny.sense = -1;
  const Model model = with_callback(env.get(), tiny, body);
  CallbackHooks hooks(*model->callback, 0, false);
  hooks.barrier({3, 10, 20, 0.5, 0.25, 0.125});
  EXPECT_EQ(seen, (std::vector<double>{3, -10, -20, 0.5, 0.25, 0.125}));
}

// A relaxation without bound settles nothing as long as constraints may still come.
TEST(Callbacks, UnboundedModelsStayOpenWhileConstraintsMayCome) {
  const Env env = quiet_env();
  Body body = [](ZLPmodel*, ZLPcbdata*, int) { return 0; };
  for (const int pre_crush : {0, 1}) {
    const Model model = with_callback(env.get(), {1, {-1, 0}, {{{1, -1}, '>', -3}}, {}, {}, "II"}, body);
    set(model.get(), {{"PreCrush", pre_crush}});
    ASSERT_EQ(0, ZLPoptimize(model.get()));
    EXPECT_EQ(pre_crush == 0 ? ZLP_UNBOUNDED : ZLP_INF_OR_UNBD, int_attr(model.get(), "Status"));
  }
}

// --- answers ---

TEST(CallbackSolutions, AreTakenLikeStarts) {
  const Env env = quiet_env();
  const Model plain = build(env.get(), knapsack());
  ASSERT_EQ(0, ZLPoptimize(plain.get()));
  const std::vector<double> best = dbl_array(plain.get(), "X", "NumVars");
  std::vector<double> partial = best;
  for (std::size_t k = 0; k < partial.size(); k += 2) partial[k] = ZLP_UNDEFINED;
  struct Case {
    const char* what;
    std::vector<double> point;
    bool first;        // becomes the first solution of a search without heuristics; otherwise it would beat the optimum
    double share = 0;  // of the optimum that a completion may miss
  };
  const Case cases[] = {{"the optimum", best, true},
                        {"half of it", partial, true},
                        {"infeasible", std::vector<double>(best.size(), 1.0), false},
                        {"nothing fixed", std::vector<double>(best.size(), ZLP_UNDEFINED), true, 0.01}};
  for (const Case& c : cases) {
    std::vector<double> objectives;
    bool offered = false;
    Body body = [&](ZLPmodel*, ZLPcbdata* cbdata, int where) {
      if (where == ZLP_WHERE_MIP && !offered) {
        offered = true;
        EXPECT_EQ(0, ZLPcbsolution(cbdata, c.point.data()));
      }
      if (where == ZLP_WHERE_MIP_SOLUTION) {
        objectives.push_back(ask_double(cbdata, where, ZLP_WHAT_SOLUTION_OBJECTIVE));
      }
      return 0;
    };
    const Model model = with_callback(env.get(), knapsack(), body);
    set(model.get(), {{"Heuristics", 0}, {"MIPGap", 0}});
    ASSERT_EQ(0, ZLPoptimize(model.get()));
    EXPECT_NEAR(dbl_attr(plain.get(), "ObjVal"), dbl_attr(model.get(), "ObjVal"), 1e-9);
    ASSERT_FALSE(objectives.empty());
    if (c.first) {
      const double objective = dbl_attr(plain.get(), "ObjVal");
      EXPECT_NEAR(objective, objectives.front(), 1e-9 + c.share * objective) << c.what;
    } else {
      EXPECT_LE(objectives.front(), dbl_attr(plain.get(), "ObjVal") + 1e-9) << c.what;
    }
  }
}

TEST(CallbackAnswers, WrongOnesAreRefused) {
  const Env env = quiet_env();
  const double nan = std::nan(""), inf = HUGE_VAL;
  const int two[] = {0, 1}, twice[] = {3, 3}, far[] = {0, 24};
  const double ones[] = {1, 1}, zeros[] = {0, 0}, bad[] = {1, nan};
  std::vector<double> point(24, 0), not_a_number(24, nan);
  std::set<int> seen;
  Body body = [&](ZLPmodel*, ZLPcbdata* cbdata, int where) {
    if (!seen.insert(where).second) return 0;
    const bool search = in_search(where);
    EXPECT_EQ(search ? 0 : 10011, ZLPcbsolution(cbdata, point.data())) << where;
    EXPECT_EQ(search ? 10002 : 10011, ZLPcbsolution(cbdata, nullptr)) << where;
    EXPECT_EQ(search ? 10003 : 10011, ZLPcbsolution(cbdata, not_a_number.data())) << where;
    struct Row {
      const char* what;
      int count;
      const int* index;
      const double* value;
      char sense;
      double rhs;
      int code;
    };
    const Row rows[] = {{"good", 2, two, ones, '<', 9, 0},
                        {"no columns", 0, two, ones, '<', 9, 10003},
                        {"zeros only", 2, two, zeros, '<', 9, 10003},
                        {"null", 2, nullptr, ones, '<', 9, 10002},
                        {"null values", 2, two, nullptr, '<', 9, 10002},
                        {"sense", 2, two, ones, 'L', 9, 10003},
                        {"twice", 2, twice, ones, '<', 9, 10018},
                        {"range", 2, far, ones, '<', 9, 10006},
                        {"nan", 2, two, bad, '<', 9, 10003},
                        {"infinite", 2, two, ones, '>', -inf, 10003}};
    const bool takes = where == ZLP_WHERE_MIP_NODE || where == ZLP_WHERE_MIP_SOLUTION;
    for (const Row& row : rows) {
      EXPECT_EQ(takes ? row.code : 10011, ZLPcbcut(cbdata, row.count, row.index, row.value, row.sense, row.rhs))
          << row.what << " at " << where;
    }
    return 0;
  };
  const Model model = with_callback(env.get(), knapsack(), body);
  set(model.get(), {{"PreCrush", 1}});
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  EXPECT_EQ(std::set({0, 1, 2, 3, 4, 5, 6}), seen);

  int code = 0;
  Body unasked = [&](ZLPmodel*, ZLPcbdata* cbdata, int where) {
    if (where != ZLP_WHERE_MIP_SOLUTION) return 0;
    code = ZLPcbcut(cbdata, 2, two, ones, '<', 9);
    return code;
  };
  const Model plain = with_callback(env.get(), knapsack(), unasked);
  EXPECT_EQ(10011, ZLPoptimize(plain.get()));
  EXPECT_EQ(10011, code);
  EXPECT_STREQ("Cuts can be added only with parameter PreCrush at 1", ZLPgetmerrormsg(plain.get()));
}

TEST(CallbackAnswers, CutsTightenTheRoot) {
  // Pairs of x_i + x_j <= 1 over five columns in a ring: the relaxation packs 2.5, the odd-cycle cut says 2.
  const Env env = quiet_env();
  Tiny ring{-1, {1, 1, 1, 1, 1}, {}, {}, {1, 1, 1, 1, 1}, "BBBBB"};
  for (int k = 0; k < 5; ++k) {
    Row row{std::vector<double>(5, 0.0), '<', 1};
    row.coefficient[k] = row.coefficient[(k + 1) % 5] = 1;
    ring.rows.push_back(row);
  }
  int added = 0;
  double bound = 0;
  Body body = [&](ZLPmodel*, ZLPcbdata* cbdata, int where) {
    if (where != ZLP_WHERE_MIP_NODE) return 0;
    const int all[] = {0, 1, 2, 3, 4};
    const double ones[] = {1, 1, 1, 1, 1};
    bound = ask_double(cbdata, where, ZLP_WHAT_NODE_OBJECTIVE);
    ++added;
    return ZLPcbcut(cbdata, 5, all, ones, '<', 2);
  };
  const Model model = with_callback(env.get(), ring, body);
  for (const char* name : {"PreCrush"}) ASSERT_EQ(0, ZLPsetintparam(ZLPgetenv(model.get()), name, 1));
  for (const char* name : {"Cuts", "Presolve"}) ASSERT_EQ(0, ZLPsetintparam(ZLPgetenv(model.get()), name, 0));
  ASSERT_EQ(0, ZLPsetdblparam(ZLPgetenv(model.get()), "Heuristics", 0));
  ASSERT_EQ(0, ZLPoptimize(model.get()));
  EXPECT_NEAR(2, dbl_attr(model.get(), "ObjVal"), 1e-9);
  EXPECT_EQ(1, added);
  EXPECT_NEAR(2.5, bound, 1e-6);
  EXPECT_EQ(0, dbl_attr(model.get(), "NodeCount"));
}

}  // namespace
}  // namespace zorvex::testing
