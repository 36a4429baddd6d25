// Every refused call: its code, its text, and that it changes nothing.
#include <cmath>
#include <functional>
#include <limits>

#include "env/environment.hpp"
#include "model/messages.hpp"
#include "model_fixture.hpp"

namespace zorvex::test {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinite = std::numeric_limits<double>::infinity();
const int kIndex[] = {0, 1, 2};
const int kOutside[] = {0, 9};
const int kTwice[] = {1, 1};
const int kBegin[] = {0, 1};
const int kBadBegin[] = {2, 1};
const double kOnes[] = {1, 1, 1, 1};
const double kHoled[] = {1, 1, 1, kInfinite};
const double kNans[] = {1, kNan, 1};
const int kBadTypes[] = {1, 3};
const int kTypes[] = {1, 2};
const std::string kName255(255, 'n');
const std::string kName256(256, 'n');
const char* const kLongNames[] = {"a", kName256.c_str()};
constexpr char kNullText[] = "NULL argument for required parameter";
constexpr char kNameText[] = "Name too long (maximum name length is 255 characters)";

constexpr char kAddVars[] = "Problem adding variables";
constexpr char kAddRows[] = "Problem adding constraints";
constexpr char kAddSos[] = "Problem adding SOS constraints";
constexpr char kAddQ[] = "Problem adding quadratic coefficients";
constexpr char kChange[] = "Problem changing coefficient";
constexpr char kNotFinite[] = "Double value is Nan or Inf.";
constexpr char kSecondBad[] = "Element 1 of a double array is Nan or Inf.";
constexpr char kIsNan[] = "Double value is Nan.";
using M = ZLPmodel*;
double coefficient_out;
int count_out;

struct WrongCall {
  const char* what;
  int code;
  std::string text;
  std::function<int(ZLPmodel*)> call;
};

// Model: 3 rows, 4 columns, one SOS set.
const WrongCall kBuilding[] = {
    {"row index", 10006, kAddVars, [](M m) { return ZLPaddvar(m, 2, kOutside, kOnes, 1, 0, 1, 'C', nullptr); }},
    {"negative count", 10003, kAddVars, [](M m) { return ZLPaddvar(m, -1, kIndex, kOnes, 1, 0, 1, 'C', nullptr); }},
    {"row twice", 10018, kAddVars, [](M m) { return ZLPaddvar(m, 2, kTwice, kOnes, 1, 0, 1, 'C', nullptr); }},
    {"null rows", 10002, kAddVars, [](M m) { return ZLPaddvar(m, 2, nullptr, kOnes, 1, 0, 1, 'C', nullptr); }},
    {"null values", 10002, kAddVars, [](M m) { return ZLPaddvar(m, 2, kIndex, nullptr, 1, 0, 1, 'C', nullptr); }},
    {"infinite objective", 10003, kNotFinite,
     [](M m) { return ZLPaddvar(m, 0, nullptr, nullptr, kInfinite, 0, 1, 'C', nullptr); }},
    {"NaN lower bound", 10003, kIsNan, [](M m) { return ZLPaddvar(m, 0, nullptr, nullptr, 1, kNan, 1, 'C', nullptr); }},
    {"NaN upper bound", 10003, kIsNan, [](M m) { return ZLPaddvar(m, 0, nullptr, nullptr, 1, 0, kNan, 'C', nullptr); }},
    {"type", 10003, kAddVars, [](M m) { return ZLPaddvar(m, 0, nullptr, nullptr, 1, 0, 1, 'X', nullptr); }},
    {"long name", 10003, kNameText,
     [](M m) { return ZLPaddvar(m, 0, nullptr, nullptr, 1, 0, 1, 'C', kName256.c_str()); }},
    {"objective array", 10003, "Element 3 of a double array is Nan or Inf.",
     [](M m) { return ZLPaddvars(m, 4, 0, nullptr, nullptr, nullptr, kHoled, nullptr, nullptr, nullptr, nullptr); }},
    {"bound array", 10003, "Element 1 of a double array is Nan.",
     [](M m) { return ZLPaddvars(m, 3, 0, nullptr, nullptr, nullptr, nullptr, kNans, nullptr, nullptr, nullptr); }},
    {"names", 10003, kNameText,
     [](M m) {
       return ZLPaddvars(m, 2, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, kLongNames);
     }},
    {"begins out of order", 10003, kAddVars,
     [](M m) { return ZLPaddvars(m, 2, 3, kBadBegin, kIndex, kOnes, nullptr, nullptr, nullptr, nullptr, nullptr); }},
    {"null begins", 10002, kAddVars,
     [](M m) { return ZLPaddvars(m, 2, 2, nullptr, kIndex, kOnes, nullptr, nullptr, nullptr, nullptr, nullptr); }},
    {"column index", 10006, kAddRows, [](M m) { return ZLPaddconstr(m, 2, kOutside, kOnes, '<', 1, nullptr); }},
    {"column twice", 10018, kAddRows, [](M m) { return ZLPaddconstr(m, 2, kTwice, kOnes, '<', 1, nullptr); }},
    {"sense", 10003, kAddRows, [](M m) { return ZLPaddconstr(m, 1, kIndex, kOnes, 'R', 1, nullptr); }},
    {"infinite right-hand side", 10003, kNotFinite,
     [](M m) { return ZLPaddconstr(m, 1, kIndex, kOnes, '<', kInfinite, nullptr); }},
    {"NaN coefficient", 10003, kSecondBad, [](M m) { return ZLPaddconstr(m, 3, kIndex, kNans, '<', 1, nullptr); }},
    {"null senses", 10002, kAddRows,
     [](M m) { return ZLPaddconstrs(m, 2, 2, kBegin, kIndex, kOnes, nullptr, kOnes, nullptr); }},
    {"second row bad", 10006, kAddRows,
     [](M m) { return ZLPaddconstrs(m, 2, 2, kBegin, kOutside, kOnes, "<<", kOnes, nullptr); }},
    {"NaN range", 10003, kIsNan, [](M m) { return ZLPaddrangeconstr(m, 1, kIndex, kOnes, kNan, 1, nullptr); }},
    {"crossed range", 10003, kAddRows, [](M m) { return ZLPaddrangeconstr(m, 1, kIndex, kOnes, 2, 1, nullptr); }},
    {"null range", 10002, kAddRows,
     [](M m) { return ZLPaddrangeconstrs(m, 1, 1, kBegin, kIndex, kOnes, nullptr, kOnes, nullptr); }},
    {"SOS type", 10003, kAddSos, [](M m) { return ZLPaddsos(m, 2, 2, kBadTypes, kBegin, kIndex, kOnes); }},
    {"SOS member", 10006, kAddSos, [](M m) { return ZLPaddsos(m, 2, 2, kTypes, kBegin, kOutside, kOnes); }},
    {"SOS member twice", 10018, kAddSos, [](M m) { return ZLPaddsos(m, 1, 2, kTypes, kBegin, kTwice, kOnes); }},
    {"quadratic index", 10006, kAddQ, [](M m) { return ZLPaddqpterms(m, 2, kIndex, kOutside, kOnes); }},
    {"quadratic value", 10003, kSecondBad, [](M m) { return ZLPaddqpterms(m, 2, kIndex, kIndex, kNans); }},
    {"quadratic null", 10002, kAddQ, [](M m) { return ZLPaddqpterms(m, 2, kIndex, nullptr, kOnes); }},
    {"change row", 10006, kChange, [](M m) { return ZLPchgcoeffs(m, 2, kOutside, kIndex, kOnes); }},
    {"change column", 10006, kChange, [](M m) { return ZLPchgcoeffs(m, 2, kIndex, kOutside, kOnes); }},
    {"change value", 10003, kSecondBad, [](M m) { return ZLPchgcoeffs(m, 2, kIndex, kIndex, kNans); }},
    {"change null", 10002, kChange, [](M m) { return ZLPchgcoeffs(m, 2, kIndex, kIndex, nullptr); }},
    {"delete null", 10002, "Problem deleting variable", [](M m) { return ZLPdelvars(m, 1, nullptr); }},
    {"delete row null", 10002, "Problem deleting constraint", [](M m) { return ZLPdelconstrs(m, 1, nullptr); }},
    {"delete set outside", 10006, "Problem deleting sos", [](M m) { return ZLPdelsos(m, 1, kIndex + 1); }},
};

const WrongCall kQuerying[] = {
    {"coefficient row", 10006, "Row index 3 out of range in coefficient query",
     [](M m) { return ZLPgetcoeff(m, 3, 0, &coefficient_out); }},
    {"coefficient column", 10006, "Column index -1 out of range in coefficient query",
     [](M m) { return ZLPgetcoeff(m, 0, -1, &coefficient_out); }},
    {"coefficient null", 10002, "Failed to retrieve coefficient", [](M m) { return ZLPgetcoeff(m, 0, 0, nullptr); }},
    {"empty variable range", 10006, "Invalid index range for variable query: [1, 1]",
     [](M m) { return ZLPgetvars(m, &count_out, nullptr, nullptr, nullptr, 1, 0); }},
    {"variable count null", 10002, "Failed to retrieve variables",
     [](M m) { return ZLPgetvars(m, nullptr, nullptr, nullptr, nullptr, 0, 1); }},
    {"constraint range", 10006, "Invalid index range for constraint query: [2, 4]",
     [](M m) { return ZLPgetconstrs(m, &count_out, nullptr, nullptr, nullptr, 2, 2); }},
    {"constraint count null", 10002, "Failed to retrieve constraints",
     [](M m) { return ZLPgetconstrs(m, nullptr, nullptr, nullptr, nullptr, 0, 1); }},
    {"sides range", 10006, "Invalid index range for constraint query: [0, 0]",
     [](M m) { return ZLPgetconstrsides(m, nullptr, nullptr, 0, 0); }},
    {"SOS range", 10006, "Invalid index range for SOS query: [-1, 0]",
     [](M m) { return ZLPgetsos(m, &count_out, nullptr, nullptr, nullptr, nullptr, -1, 1); }},
    {"SOS count null", 10002, "Failed to retrieve SOS constraints",
     [](M m) { return ZLPgetsos(m, nullptr, nullptr, nullptr, nullptr, nullptr, 0, 1); }},
    {"Q count null", 10002, "Failed to retrieve Q matrix",
     [](M m) { return ZLPgetq(m, nullptr, nullptr, nullptr, nullptr); }},
};

class WrongCalls : public ModelTest {
 protected:
  void SetUp() override {
    ModelTest::SetUp();
    make_model(3, 4);
    const int type = 1, begin = 0;
    ASSERT_EQ(ZLPaddsos(model_, 1, 2, &type, &begin, kIndex, nullptr), 0);
    update();
  }

  void expect_refused(const WrongCall& wrong) {
    SCOPED_TRACE(wrong.what);
    ASSERT_EQ(ZLPcheckmodel(model_), 0);  // empties the buffer
    EXPECT_EQ(wrong.call(model_), wrong.code);
    EXPECT_EQ(message(), wrong.text);
  }
};

TEST_F(WrongCalls, RefusedEditsLeaveNothingBehind) {
  for (const WrongCall& wrong : kBuilding) {
    expect_refused(wrong);
    EXPECT_FALSE(has_pending_changes(*model_)) << wrong.what;
  }
  update();
  EXPECT_EQ(get_int("NumVars"), 4);
  EXPECT_EQ(get_int("NumConstrs"), 3);
  EXPECT_EQ(get_int("NumSOS"), 1);
}

TEST_F(WrongCalls, Queries) {
  for (const WrongCall& wrong : kQuerying) expect_refused(wrong);
}

TEST_F(WrongCalls, BadHandles) {
  EXPECT_EQ(ZLPupdatemodel(nullptr), 10002);
  EXPECT_EQ(ZLPcheckmodel(nullptr), 10002);
  EXPECT_EQ(ZLPfreemodel(nullptr), 10002);
  EXPECT_STREQ(ZLPgetmerrormsg(nullptr), "");
  EXPECT_EQ(ZLPgetenv(nullptr), nullptr);
  ZLPmodel* freed = nullptr;
  ASSERT_EQ(ZLPnewmodel(env_, &freed, nullptr, 0, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
  ASSERT_EQ(ZLPfreemodel(freed), 0);
  EXPECT_EQ(ZLPfreemodel(freed), 10003);
  EXPECT_EQ(ZLPcheckmodel(freed), 10003);
  EXPECT_EQ(ZLPaddvar(freed, 0, nullptr, nullptr, 0, 0, 1, 'C', nullptr), 10003);
  EXPECT_STREQ(ZLPgetmerrormsg(freed), "");
}

TEST_F(WrongCalls, FirstTextStaysUntilCleared) {
  EXPECT_EQ(ZLPdelvars(model_, 1, nullptr), 10002);
  EXPECT_EQ(ZLPdelconstrs(model_, 1, nullptr), 10002);
  EXPECT_EQ(message(), "Problem deleting variable");
  EXPECT_EQ(ZLPaddvar(model_, 0, nullptr, nullptr, 0, 0, 1, 'C', kName256.c_str()), 10003);
  EXPECT_EQ(message(), kNameText) << "names are reported over an older text";
  EXPECT_EQ(ZLPaddvar(model_, 0, nullptr, nullptr, 0, 0, 1, 'C', kName255.c_str()), 0);
  EXPECT_EQ(message(), "");
}

TEST_F(WrongCalls, LockedMessagesAndRunningOptimization) {
  lock_messages(*model_);
  set_model_error(model_, 10003, true, "hidden");
  EXPECT_EQ(message(), "") << "nothing is written on a locked model, not even into an empty buffer";
  unlock_messages(*model_);
  set_model_error(model_, 10015, false, "%s", "first");
  set_model_error(model_, 10015, false, "second");
  EXPECT_EQ(message(), "first");
  set_default_message(model_, 10001);
  EXPECT_EQ(message(), "Out of memory");
  set_default_message(model_, 0);
  set_default_message(model_, 10018);
  EXPECT_EQ(message(), "Error number 10018");

  model_->in_progress = 1;
  EXPECT_EQ(ZLPupdatemodel(model_), 10017);
  EXPECT_EQ(ZLPfreemodel(model_), 10017);
  EXPECT_EQ(ZLPgetmerrormsg(model_), std::string());
  model_->callback_allowed = true;
  EXPECT_EQ(ZLPcheckmodel(model_), 0) << "a callback may read";
  EXPECT_EQ(ZLPupdatemodel(model_), 10017) << "but not change";
  model_->callback_allowed = false;
  model_->in_progress = 0;
}

TEST_F(WrongCalls, EnvironmentFreedFirst) {
  ASSERT_EQ(ZLPsetintparam(ZLPgetenv(model_), "OutputFlag", 1), 0);
  ZLPfreeenv(env_);
  env_ = nullptr;
  testing::internal::CaptureStdout();
  EXPECT_EQ(ZLPupdatemodel(model_), 10003);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Warning: invalid Zorvex environment. Was it freed too early?\n");
  EXPECT_EQ(ZLPfreemodel(model_), 0);
  model_ = nullptr;
}

TEST_F(WrongCalls, EnvironmentCallsOnAModel) {
  EXPECT_EQ(ZLPdelvars(model_, 1, nullptr), 10002);
  EXPECT_EQ(ZLPgetenv(model_), model_->env);
  EXPECT_EQ(message(), "") << "fetching the environment clears the text";
  EXPECT_EQ(ZLPsetsignal(nullptr), 10002);
  ZLPterminate(nullptr);
  EXPECT_EQ(model_->env->terminate.load(), 0);
  model_->in_progress = 1;
  ZLPterminate(model_);
  model_->in_progress = 0;
  EXPECT_NE(model_->env->terminate.load(), 0);
}

TEST_F(WrongCalls, MakingModels) {
  ZLPmodel* made = model_;
  EXPECT_EQ(ZLPnewmodel(nullptr, &made, "m", 0, nullptr, nullptr, nullptr, nullptr, nullptr), 10002);
  EXPECT_EQ(made, nullptr);
  EXPECT_EQ(ZLPnewmodel(env_, nullptr, "m", 0, nullptr, nullptr, nullptr, nullptr, nullptr), 10002);
  EXPECT_STREQ(ZLPgeterrormsg(env_), kNullText);
  EXPECT_EQ(ZLPnewmodel(env_, &made, kName256.c_str(), 0, nullptr, nullptr, nullptr, nullptr, nullptr), 10003);
  EXPECT_STREQ(ZLPgeterrormsg(env_), kNameText);
  const int begin[] = {0, 2}, length[] = {2, 1};
  const auto load = [&](int sense, double constant, const int* vind, const double* vval) {
    return ZLPloadmodel(env_, &made, "m", 2, 2, sense, constant, kOnes, "<>", kOnes, begin, length, vind, vval, nullptr,
                        nullptr, nullptr, nullptr, nullptr);
  };
  EXPECT_EQ(load(0, 0, kIndex, kOnes), 10003);
  EXPECT_EQ(load(1, kNan, kIndex, kOnes), 10003);
  EXPECT_EQ(load(1, 0, kTwice, kOnes), 10018);
  EXPECT_EQ(load(1, 0, kOutside, kOnes), 10006);
  EXPECT_EQ(load(1, 0, nullptr, kOnes), 10002);
  EXPECT_EQ(load(1, 0, kIndex, kNans), 10003);
  EXPECT_EQ(made, nullptr);
}

}  // namespace
}  // namespace zorvex::test
