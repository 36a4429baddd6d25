// Every allocation of an edit and of an update fails once: the call answers 10001, nothing is half done, and the same
// call then succeeds.
#include <functional>
#include <memory>

#include "model/model.hpp"
#include "model_fixture.hpp"
#include "support/failing_allocation.hpp"

namespace zorvex::test {
namespace {

class OutOfMemory : public ModelTest {
 protected:
  static int with_allocations(long granted, const std::function<int()>& call) {
    const testing::FailingAllocations failing(granted);
    return call();
  }

  // Runs `call` with ever more allocations granted until it succeeds; `after_failure` looks at the model each time.
  void starve(const std::function<int()>& call, const std::function<void()>& after_failure) {
    for (long granted = 0; granted < 1000; ++granted) {
      const int code = with_allocations(granted, call);
      if (code == 0) return;
      ASSERT_EQ(code, 10001);
      ASSERT_EQ(message(), "Out of memory");
      after_failure();
    }
    FAIL() << "never succeeded";
  }
};

const int kIndex[] = {0, 1, 2};
const double kOnes[] = {1, 1, 1};
constexpr char kLongName[] = "a name too long to be held inside the string object";

// Model of 3 rows and 3 columns, then one edit of every kind.
struct Edit {
  const char* what;
  std::function<int(ZLPmodel*)> call;
  int vars, constrs, sets, terms;  // after the update
};
const Edit kEdits[] = {
    {"addvar", [](ZLPmodel* m) { return ZLPaddvar(m, 3, kIndex, kOnes, 1, 0, 1, 'C', kLongName); }, 4, 3, 0, 0},
    {"addconstr", [](ZLPmodel* m) { return ZLPaddconstr(m, 3, kIndex, kOnes, '>', 1, kLongName); }, 3, 4, 0, 0},
    {"addrange", [](ZLPmodel* m) { return ZLPaddrangeconstr(m, 3, kIndex, kOnes, 1, 2, kLongName); }, 3, 4, 0, 0},
    {"addsos", [](ZLPmodel* m) { return ZLPaddsos(m, 1, 3, kIndex + 1, kIndex, kIndex, nullptr); }, 3, 3, 1, 0},
    {"addqpterms", [](ZLPmodel* m) { return ZLPaddqpterms(m, 3, kIndex, kIndex, kOnes); }, 3, 3, 0, 3},
    {"chgcoeffs", [](ZLPmodel* m) { return ZLPchgcoeffs(m, 3, kIndex, kIndex, kOnes); }, 3, 3, 0, 0},
    {"delvars", [](ZLPmodel* m) { return ZLPdelvars(m, 2, kIndex); }, 1, 3, 0, 0},
    {"delconstrs", [](ZLPmodel* m) { return ZLPdelconstrs(m, 1, kIndex); }, 3, 2, 0, 0},
    {"sense", [](ZLPmodel* m) { return ZLPsetcharattrarray(m, "Sense", 0, 3, "><="); }, 3, 3, 0, 0},
    {"name", [](ZLPmodel* m) { return ZLPsetstrattrelement(m, "VarName", 1, kLongName); }, 3, 3, 0, 0},
    {"bound", [](ZLPmodel* m) { return ZLPsetdblattrarray(m, "LB", 0, 3, kOnes); }, 3, 3, 0, 0},
};

TEST_F(OutOfMemory, EditsQueueAllOrNothing) {
  for (const Edit& edit : kEdits) {
    SCOPED_TRACE(edit.what);
    make_model(3, 3);
    starve([&] { return edit.call(model_); }, [&] { EXPECT_FALSE(has_pending_changes(*model_)); });
    update();
    EXPECT_EQ(get_int("NumVars"), edit.vars);
    EXPECT_EQ(get_int("NumConstrs"), edit.constrs);
    EXPECT_EQ(get_int("NumSOS"), edit.sets);
    EXPECT_EQ(get_int("NumQNZs"), edit.terms);
    ASSERT_EQ(ZLPfreemodel(model_), 0);
    model_ = nullptr;
  }
}

// Whatever `edits` change, a failing update leaves the model as it was.
TEST_F(OutOfMemory, UpdateIsAllOrNothing) {
  for (int skipped = -1; skipped < static_cast<int>(std::size(kEdits)); ++skipped) {
    SCOPED_TRACE(skipped);
    make_model(3, 3);
    ASSERT_EQ(ZLPsetintattrelement(model_, "VBasis", 0, -1), 0);
    ASSERT_EQ(ZLPsetdblattrelement(model_, "VDualNorm", 0, 2), 0);
    ASSERT_EQ(ZLPsetdblattrelement(model_, "Start", 0, 2), 0);
    ASSERT_EQ(ZLPsetintattrelement(model_, "BranchPriority", 0, 2), 0);
    for (int k = 0; k < static_cast<int>(std::size(kEdits)); ++k) {
      if (k != skipped) {
        ASSERT_EQ(kEdits[k].call(model_), 0);
      }
    }
    starve([&] { return ZLPupdatemodel(model_); },
           [&] {
             EXPECT_TRUE(has_pending_changes(*model_));
             EXPECT_EQ(get_int("NumVars"), 3);
             EXPECT_EQ(get_int("NumConstrs"), 3);
             EXPECT_EQ(get_int("NumNZs"), 5);
             EXPECT_EQ(get_char("Sense", 1), '>');
             EXPECT_EQ(coefficient(1, 1), 12);
             EXPECT_EQ(get_str("VarName", 1), "C0000001");
             EXPECT_EQ(get_int("VBasis", 0), -1);
           });
    EXPECT_FALSE(has_pending_changes(*model_));
    ASSERT_EQ(ZLPfreemodel(model_), 0);
    model_ = nullptr;
  }
}

TEST_F(OutOfMemory, MakingAModel) {
  for (long granted = 0; granted < 1000 && model_ == nullptr; ++granted) {
    const int code = with_allocations(granted, [this] {
      return ZLPnewmodel(env_, &model_, kLongName, 3, kOnes, nullptr, nullptr, nullptr, nullptr);
    });
    if (code == 0) break;
    ASSERT_EQ(code, 10001);
    ASSERT_EQ(model_, nullptr);
    ASSERT_STREQ(ZLPgeterrormsg(env_), "Out of memory");
  }
  EXPECT_EQ(get_int("NumVars"), 3);
}

}  // namespace
}  // namespace zorvex::test
