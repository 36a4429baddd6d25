// Random sequences of edits through the public interface: after each, the solve that goes on from the last basis and a
// cold one of a copy must agree.
#include <gtest/gtest.h>

#include <cmath>

#include "base/random_stream.hpp"
#include "differential/trials.hpp"
#include "opt/lp_as_model.hpp"
#include "support/random_lp.hpp"

namespace zorvex::differential {
namespace {

using namespace zorvex::testing;

constexpr long kUsualTrials = 400;
constexpr int kSteps = 6;
constexpr int kMaxShown = 20;

class Editor {
 public:
  Editor(ZLPmodel* model, RandomStream& random) : model_(model), random_(random) {}

  // One random edit of the kinds that re-solves are made of; its name.
  const char* edit() {
    const int num_vars = int_attr(model_, "NumVars");
    const int num_rows = int_attr(model_, "NumConstrs");
    switch (random_.below(8)) {
      case 0:
        return num_vars == 0 ? "nothing" : change_bound(pick(num_vars));
      case 1:
        return num_rows == 0 ? "nothing" : change_rhs(pick(num_rows));
      case 2:
        return num_vars == 0 ? "nothing" : change_cost(pick(num_vars));
      case 3:
        return add_row(num_vars);
      case 4:
        return add_column(num_rows);
      case 5:
        return num_rows < 3 ? "nothing" : delete_row(pick(num_rows));
      case 6:
        return num_vars < 3 ? "nothing" : delete_column(pick(num_vars));
      default:
        return num_vars == 0 || num_rows == 0 ? "nothing" : change_coefficient(pick(num_rows), pick(num_vars));
    }
  }

 private:
  int pick(int count) { return static_cast<int>(random_.below(count)); }
  double number() { return static_cast<double>(random_.below(9) - 4); }

  const char* change_bound(int col) {
    double lower = 0;
    double upper = 0;
    EXPECT_EQ(0, ZLPgetdblattrelement(model_, "LB", col, &lower));
    EXPECT_EQ(0, ZLPgetdblattrelement(model_, "UB", col, &upper));
    const double value = number();
    if (random_.below(2) == 0) {
      EXPECT_EQ(0, ZLPsetdblattrelement(model_, "LB", col, std::min(value, upper)));
    } else {
      EXPECT_EQ(0, ZLPsetdblattrelement(model_, "UB", col, std::max(value, lower)));
    }
    return "bound";
  }
  const char* change_rhs(int row) {
    double rhs = 0;
    EXPECT_EQ(0, ZLPgetdblattrelement(model_, "RHS", row, &rhs));
    if (std::abs(rhs) < 1e20) {
      EXPECT_EQ(0, ZLPsetdblattrelement(model_, "RHS", row, rhs + number()));
    }
    return "right-hand side";
  }
  const char* change_cost(int col) {
    EXPECT_EQ(0, ZLPsetdblattrelement(model_, "Obj", col, number()));
    return "cost";
  }
  const char* change_coefficient(int row, int col) {
    const double value = number();
    EXPECT_EQ(0, ZLPchgcoeffs(model_, 1, &row, &col, &value));
    return "coefficient";
  }
  const char* add_row(int num_vars) {
    std::vector<int> index;
    std::vector<double> value;
    entries(num_vars, index, value);
    const double side = number();
    const double sides[][2] = {{-kInf, side}, {side, kInf}, {side, side}, {side, side + 3}};
    const auto& [lower, upper] = sides[random_.below(4)];
    EXPECT_EQ(0, zorvex::testing::add_row(model_, index, value, lower, upper));
    return "row added";
  }
  const char* add_column(int num_rows) {
    std::vector<int> index;
    std::vector<double> value;
    entries(num_rows, index, value);
    const double lower = random_.below(4) == 0 ? -kInf : 0;
    const double upper = random_.below(2) == 0 ? kInf : 5;
    EXPECT_EQ(0, ZLPaddvar(model_, static_cast<int>(index.size()), index.data(), value.data(), number(), lower, upper,
                           ZLP_CONTINUOUS, nullptr));
    return "column added";
  }
  void entries(int size, std::vector<int>& index, std::vector<double>& value) {
    for (int k = 0; k < size; ++k) {
      if (random_.below(3) != 0) continue;
      index.push_back(k);
      value.push_back(number());
    }
  }
  const char* delete_row(int row) {
    EXPECT_EQ(0, ZLPdelconstrs(model_, 1, &row));
    return "row deleted";
  }
  const char* delete_column(int col) {
    EXPECT_EQ(0, ZLPdelvars(model_, 1, &col));
    return "column deleted";
  }

  ZLPmodel* model_;
  RandomStream& random_;
};

// Solves the model as it is and a copy of it from scratch. Empty when they agree.
std::string solve_twice(ZLPmodel* model) {
  ZLPmodel* copied = nullptr;
  EXPECT_EQ(0, ZLPupdatemodel(model));
  EXPECT_EQ(0, ZLPcopymodel(model, &copied));
  const Model cold(copied);
  EXPECT_EQ(0, ZLPresetmodel(cold.get()));
  EXPECT_EQ(0, ZLPoptimize(cold.get()));
  EXPECT_EQ(0, ZLPoptimize(model));
  const int expected = int_attr(cold.get(), "Status");
  const int found = int_attr(model, "Status");
  if (expected != found) return "status " + std::to_string(found) + ", cold " + std::to_string(expected);
  if (found != ZLP_OPTIMAL)
    return found == ZLP_INFEASIBLE || found == ZLP_UNBOUNDED ? "" : "status " + std::to_string(found);
  const double objective = dbl_attr(cold.get(), "ObjVal");
  const double difference = std::abs(dbl_attr(model, "ObjVal") - objective);
  if (difference > 1e-6 * std::max(1.0, std::abs(objective))) return "objective off by " + std::to_string(difference);
  for (const char* name : {"BoundVio", "ConstrVio", "DualVio"}) {
    if (dbl_attr(model, name) > 1.001e-6) return name;
  }
  if (dbl_attr(model, "ComplVioSum") > 1e-6 * std::max(1.0, std::abs(objective))) return "ComplVioSum";
  return "";
}

TEST(WarmSequence, GivesTheColdObjective) {
  const Env env = quiet_env();
  const Trials trials(kUsualTrials);
  int shown = 0;
  long solves = 0;
  for (long trial = trials.first; trial < trials.end && shown < kMaxShown; ++trial) {
    RandomStream random(static_cast<std::uint64_t>(trial), "warm sequence");
    const LpData lp = oracle::random_lp(random, {10, 12, 0.4, 0.95});
    const Model model = model_of(env.get(), lp, trial % 2 == 0 ? 1 : -1);
    EXPECT_EQ(0, ZLPsetintparam(ZLPgetenv(model.get()), "Method", trial % 3 == 0 ? 0 : -1));
    EXPECT_EQ(0, ZLPoptimize(model.get()));
    std::string history;
    Editor editor(model.get(), random);
    for (int step = 0; step < kSteps; ++step) {
      const auto edits = 1 + random.below(3);
      for (std::int64_t k = 0; k < edits; ++k) {
        history += std::string(history.empty() ? "" : ", ") + editor.edit();
        EXPECT_EQ(0, ZLPupdatemodel(model.get()));
      }
      const std::string fault = solve_twice(model.get());
      ++solves;
      if (fault.empty()) continue;
      ADD_FAILURE() << "trial " << trial << " after " << history << ": " << fault;
      ++shown;
      break;
    }
  }
  std::printf("%ld sequences, %ld warm solves\n", trials.end - trials.first, solves);
}

}  // namespace
}  // namespace zorvex::differential
