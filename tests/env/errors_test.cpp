#include "env/errors.hpp"

#include <cstring>

#include "env/environment.hpp"
#include "env/guarded.hpp"
#include "support/scratch.hpp"
#include "support/session.hpp"

namespace zorvex::testing {
namespace {

TEST(ErrorTexts, StandardTextOfEveryCode) {
  const struct {
    int code;
    const char* text;
  } cases[] = {
      {10001, "Out of memory"},
      {10002, "NULL argument for required parameter"},
      {10003, "Invalid argument value for required parameter"},
      {10004, "Unknown attribute"},
      {10005, "Requested data not available"},
      {10006, "Index is out of range"},
      {10007, "Unknown parameter requested"},
      {10008, "Tried to set parameter to value outside its valid range"},
      {10009, "License was released"},
      {10010, "Model too large for current Zorvex license"},
      {10011, "Problem with callback"},
      {10012, "Unable to read file"},
      {10013, "Unable to write file"},
      {10014, "Numerical error encountered"},
      {10015, "Error number 10015"},
      {10016, "Not available for MIP models"},
      {10017, "Attempted to access a model while optimization is in progress"},
      {10018, "Error number 10018"},
      {10019, "Trouble reading or writing a MIP node file"},
      {10020, "Q matrix is not positive semi-definite (PSD)"},
      {10021, "Error number 10021"},
      {-7, "Error number -7"},
  };
  const auto env = load();
  for (const auto& c : cases) {
    set_default_message(env.get(), 0);
    set_default_message(env.get(), c.code);
    EXPECT_STREQ(c.text, ZLPgeterrormsg(env.get()));
  }
}

// Which of two successive texts survives.
TEST(ErrorTexts, RulesOfTheBuffer) {
  const struct {
    const char* name;
    bool lock, overwrite;
    const char* first;
    const char* expected;
  } cases[] = {
      {"empty buffer, no overwrite", false, false, "", "new"},
      {"empty buffer is filled even while locked", true, false, "", "new"},
      {"a text stays without overwrite", false, false, "old", "old"},
      {"overwrite replaces", false, true, "old", "new"},
      {"the lock protects against overwrite", true, true, "old", "old"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const auto env = load();
    if (*c.first != '\0') set_error(env.get(), 10004, true, "%s", c.first);
    env->message_lock = c.lock ? 1 : 0;
    set_error(env.get(), 10003, c.overwrite, "new");
    EXPECT_STREQ(c.expected, ZLPgeterrormsg(env.get()));
    EXPECT_EQ(10003, env->last_error) << "the code is that of the last failure whatever the text";
  }
}

TEST(ErrorTexts, OutOfMemoryReplacesAnyText) {
  const auto env = load();
  set_error(env.get(), 10003, true, "specific");
  env->message_lock = 1;
  set_default_message(env.get(), 10001);
  EXPECT_STREQ("Out of memory", ZLPgeterrormsg(env.get()));
}

TEST(ErrorTexts, ClearKeepsLockedTexts) {
  const auto env = load();
  set_error(env.get(), 10003, true, "text");
  env->message_lock = 1;
  clear_error(env.get());
  EXPECT_STREQ("text", ZLPgeterrormsg(env.get()));
  EXPECT_EQ(10003, env->last_error);
  env->message_lock = 0;
  clear_error(env.get());
  EXPECT_STREQ("", ZLPgeterrormsg(env.get()));
  EXPECT_EQ(0, env->last_error);
}

TEST(ErrorTexts, LongTextsAreCutAt511AndMayQuoteTheBuffer) {
  const auto env = load();
  set_error(env.get(), 10003, true, "%s", std::string(600, 'x').c_str());
  EXPECT_EQ(511U, std::strlen(ZLPgeterrormsg(env.get())));
  set_error(env.get(), 10003, true, "seen: %s", ZLPgeterrormsg(env.get()));
  EXPECT_EQ("seen: " + std::string(505, 'x'), ZLPgeterrormsg(env.get()));
}

TEST(ErrorTexts, NullHandlesAndCodeZeroAreIgnored) {
  set_error(nullptr, 10003, true, "x");
  set_default_message(nullptr, 10003);
  clear_error(nullptr);
  const auto env = load();
  set_error(env.get(), 0, true, "x");
  EXPECT_STREQ("", ZLPgeterrormsg(env.get()));
}

TEST(EnvironmentCheck, NullFreedAndOrphaned) {
  EXPECT_EQ(10002, check_environment(nullptr));
  auto master = load();
  EXPECT_EQ(0, check_environment(master.get()));
  const EnvironmentPtr child = new_model_environment(*master);
  EXPECT_EQ(0, check_environment(child.get()));
  ZLPenv* freed = master.get();
  master.reset();
  EXPECT_EQ(10003, check_environment(freed));
  EXPECT_STREQ("", ZLPgeterrormsg(freed));
  EXPECT_STREQ("", ZLPgeterrormsg(nullptr));

  int code = 0;
  const std::string warning = "Warning: invalid Zorvex environment. Was it freed too early?\n";
  EXPECT_EQ(warning, printed([&] { code = check_environment(child.get()); }));
  EXPECT_EQ(10003, code);
  child->values->ints[slot_of(Param::OutputFlag)] = 0;
  EXPECT_EQ("", printed([&] { code = check_environment(child.get()); }));
  EXPECT_EQ(10003, code);
}

// A record's memory is handed out again only much later, so a handle freed just now cannot come alive as another one.
TEST(EnvironmentCheck, FreedHandleStaysDeadWhileOthersAreMade) {
  ZLPenv* freed = load().release();
  ZLPfreeenv(freed);
  ZLPfreeenv(freed);
  for (int i = 0; i < 32; ++i) {
    const auto other = load();
    EXPECT_NE(freed, other.get());
    EXPECT_EQ(10003, ZLPsetintparam(freed, "Method", 1));
  }
}

TEST(Guarded, ExceptionsBecomeCodes) {
  const struct {
    const char* name;
    void (*act)();
    int code;
    const char* text;
  } cases[] = {
      {"bad_alloc", [] { throw std::bad_alloc(); }, 10001, "Out of memory"},
      {"length_error", [] { throw std::length_error("long"); }, 10001, "Out of memory"},
      {"runtime_error", [] { throw std::runtime_error("no"); }, 10003, "Invalid argument value for required parameter"},
      {"anything", [] { throw 1; }, 10003, "Invalid argument value for required parameter"},
      {"nothing", [] {}, 0, ""},
  };
  const auto env = load();
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    set_default_message(env.get(), 0);
    EXPECT_EQ(c.code, guarded(env.get(), [&](ZLPenv&) {
                c.act();
                return kOk;
              }));
    EXPECT_STREQ(c.text, ZLPgeterrormsg(env.get()));
  }
}

}  // namespace
}  // namespace zorvex::testing
