#include "env/environment.hpp"

#include <csignal>
#include <cstring>
#include <thread>

#include "env/errors.hpp"
#include "env/interrupt.hpp"
#include "env/log_channel.hpp"
#include "env/processors.hpp"
#include "support/scratch.hpp"
#include "support/session.hpp"

namespace zorvex::testing {
namespace {

std::size_t count_of(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

TEST(LoadEnvironment, PlainIsQuiet) {
  const ScratchDirectory scratch;
  Env env;
  EXPECT_EQ("", printed([&] { env = load(); }));
  EXPECT_STREQ("", ZLPgeterrormsg(env.get()));
  EXPECT_EQ(10002, ZLPloadenv(nullptr, nullptr));
  ZLPfreeenv(nullptr);
}

TEST(LoadEnvironment, BannerIsAppendedEachTime) {
  const ScratchDirectory scratch;
  load("a.log");
  const std::string first = slurp("a.log");
  const std::string head = "\nZorvex 4.6.1 (win64) logging started ";
  EXPECT_EQ(head, first.substr(0, head.size()));
  EXPECT_GT(first.size(), head.size() + 10) << "the date";
  EXPECT_EQ(first.size() - 2, first.find('\n', 1)) << "one line, then an empty one";
  const auto env = load("a.log");
  EXPECT_EQ(2U, count_of(slurp("a.log"), "logging started"));
  char name[ZLP_MAX_STRLEN];
  EXPECT_EQ(0, ZLPgetstrparam(env.get(), "LogFile", name));
  EXPECT_STREQ("a.log", name);
}

TEST(LoadEnvironment, GoesOnWithoutALogFileThatCannotBeOpened) {
  const ScratchDirectory scratch;
  Env env;
  EXPECT_EQ("Warning: Failed to open log file 'no/such/dir/a.log'\n",
            printed([&] { env = load("no/such/dir/a.log"); }));
  EXPECT_STREQ("", ZLPgeterrormsg(env.get()));
  EXPECT_EQ(0, env->last_error);
}

TEST(LoadEnvironment, EnvironmentFileIsApplied) {
  const ScratchDirectory scratch;
  spit("zorvex.env", "# comment\nMIPGap 0.25\nNoSuch 1\nmethod 9\nLogFile from_env.log\n");
  Env env;
  const std::string out = printed([&] { env = load(); });
  EXPECT_NE(std::string::npos, out.find("Warning: unknown parameter NoSuch in zorvex.env\n")) << out;
  EXPECT_NE(std::string::npos, out.find("Failed to set parameter method to value 9\n")) << out;
  EXPECT_EQ(0.25, param<Param::MIPGap>(*env));
  EXPECT_STREQ("from_env.log", param<Param::LogFile>(*env));
  EXPECT_STREQ("", ZLPgeterrormsg(env.get()));
}

TEST(Log, OneSwitchForConsoleAndFile) {
  const ScratchDirectory scratch;
  const auto env = load("a.log");
  const std::string banner = slurp("a.log");
  EXPECT_EQ("100%s\n", printed([&] { ZLPmsg(env.get(), "100%s\n"); })) << "texts are not formats";
  EXPECT_EQ(banner + "100%s\n", slurp("a.log"));
  ASSERT_EQ(0, ZLPsetintparam(env.get(), "OutputFlag", 0));
  EXPECT_EQ("", printed([&] { ZLPmsg(env.get(), "unseen\n"); }));
  EXPECT_EQ(banner + "100%s\n", slurp("a.log"));
  ZLPmsg(nullptr, "x");
  ZLPmsg(env.get(), nullptr);
}

TEST(Log, CallbackGetsMessagesWhateverOutputFlag) {
  const auto env = load();
  std::string seen;
  env->callback_data = std::make_unique<CallbackData>();
  env->callback_data->user = &seen;
  env->message_callback = [](CallbackData& data, int where) {
    EXPECT_EQ(6, where);
    *static_cast<std::string*>(data.user) += data.text.data();
  };
  ASSERT_EQ(0, ZLPsetintparam(env.get(), "OutputFlag", 0));
  ZLPmsg(env.get(), "hello");
  EXPECT_EQ("hello", seen);
  EXPECT_TRUE(EnvironmentLog(*env).enabled());
  ZLPmsg(env.get(), std::string(2000, 'x').c_str());
  EXPECT_EQ("hello" + std::string(511, 'x'), seen);
}

TEST(Log, LongTextsAreNotCut) {
  const auto env = load();
  for (const std::size_t length : {511UL, 1023UL, 1024UL, 5000UL}) {
    const std::string text(length, 'y');
    EXPECT_EQ(text, printed([&] { log_printf(env.get(), "%s", text.c_str()); })) << length;
    EXPECT_EQ(text, printed([&] { EnvironmentLog(*env).print("%s", text.c_str()); })) << length;
  }
  EXPECT_EQ(10002, log_printf(nullptr, "x"));
}

TEST(Log, DiagnosticsFollowTheirParameter) {
  const auto env = load();
  EnvironmentLog log(*env);
  EXPECT_EQ("", printed([&] { log.diagnose("detail\n"); }));
  ASSERT_EQ(0, ZLPsetintparam(env.get(), "ZORV_PAR_ITEST", 1));
  EXPECT_EQ("detail\n", printed([&] { log.diagnose("detail\n"); }));
}

TEST(Log, SinkOutlivesItsRecord) {
  const auto master = load();
  EnvironmentPtr model = new_model_environment(*master);
  EnvironmentLog log(*model);
  EXPECT_TRUE(log.enabled());
  model.reset();
  EXPECT_FALSE(log.enabled());
  EXPECT_FALSE(log.diagnostics());
  EXPECT_EQ("", printed([&] { log.write("lost\n"); }));
}

TEST(Log, StreamsAreAdoptedAndClosed) {
  const ScratchDirectory scratch;
  const auto env = load("a.log");
  std::FILE* stream = std::fopen("b.log", "w");
  ASSERT_NE(nullptr, stream);
  EXPECT_EQ(0, ZLPsetlogfile(env.get(), stream));
  std::FILE* current = nullptr;
  EXPECT_EQ(0, ZLPgetlogfile(env.get(), &current));
  EXPECT_EQ(stream, current);
  EXPECT_EQ(10002, ZLPgetlogfile(env.get(), nullptr));
  printed([&] { ZLPmsg(env.get(), "to b\n"); });
  EXPECT_EQ(1U, count_of(slurp("b.log"), "logging started"));
  EXPECT_EQ(1U, count_of(slurp("b.log"), "to b\n"));
  EXPECT_EQ(0U, count_of(slurp("a.log"), "to b\n"));
  EXPECT_EQ(0, ZLPsetlogfile(env.get(), nullptr));
  EXPECT_EQ(0, ZLPgetlogfile(env.get(), &current));
  EXPECT_EQ(nullptr, current);
}

TEST(Log, ModelRecordsShareTheFileUntilTheMasterEnds) {
  const ScratchDirectory scratch;
  auto master = load("a.log");
  const EnvironmentPtr model = new_model_environment(*master);
  printed([&] { log_printf(model.get(), "from the model\n"); });
  EXPECT_EQ(1U, count_of(slurp("a.log"), "from the model\n"));
  EXPECT_EQ(0, ZLPsetstrparam(master.get(), "LogFile", ""));
  printed([&] { log_printf(model.get(), "still there\n"); });
  EXPECT_EQ(1U, count_of(slurp("a.log"), "still there\n"));
  master.reset();
  EXPECT_EQ(10003, log_printf(model.get(), "lost\n"));
  EXPECT_EQ(0U, count_of(slurp("a.log"), "lost\n"));
}

TEST(ModelRecord, CopiesValuesAndIsFreedBeforeOrAfterItsMaster) {
  auto master = load();
  ASSERT_EQ(0, ZLPsetdblparam(master.get(), "MIPGap", 0.5));
  EnvironmentPtr first = new_model_environment(*master);
  const EnvironmentPtr second = new_model_environment(*first);
  ASSERT_EQ(0, ZLPsetdblparam(master.get(), "MIPGap", 0.25));
  EXPECT_EQ(0.5, param<Param::MIPGap>(*first));
  ZLPfreeenv(first.get());
  EXPECT_EQ(0, check_environment(first.get())) << "a model's record goes with its model only";
  first.reset();
  EXPECT_EQ(0, check_environment(second.get())) << "a copy of a model depends on the environment, not on that model";
  EXPECT_EQ(10005, ZLPreleaselicense(second.get()));
  master.reset();
  EXPECT_EQ(10003, ZLPsetintparam(second.get(), "Method", 1));
}

TEST(Interruption, RequestsReachLiveRecordsOnly) {
  auto master = load();
  const EnvironmentPtr model = new_model_environment(*master);
  request_termination(nullptr);
  std::thread([&] { request_termination(model.get()); }).join();
  EXPECT_EQ(1, model->terminate.load());
  EXPECT_EQ(0, master->terminate.load());
  model->terminate = 0;
  master.reset();
  EXPECT_EQ("Warning: invalid Zorvex environment. Was it freed too early?\n",
            printed([&] { request_termination(model.get()); }));
  EXPECT_EQ(0, model->terminate.load());
}

TEST(Interruption, FirstSignalStopsTheLastRegisteredModelSecondIsNotCaught) {
  const auto master = load();
  const EnvironmentPtr first = new_model_environment(*master);
  EnvironmentPtr second = new_model_environment(*master);
  install_interrupt_handler(first.get());
  install_interrupt_handler(second.get());
  EXPECT_EQ("\nInterrupt request received\n", printed([] { std::raise(SIGINT); }));
  EXPECT_EQ(0, first->terminate.load());
  EXPECT_EQ(1, second->terminate.load());
  EXPECT_EQ(SIG_DFL, std::signal(SIGINT, SIG_DFL));

  install_interrupt_handler(second.get());
  second.reset();
  EXPECT_EQ("\nInterrupt request received\n", printed([] { std::raise(SIGINT); })) << "the model is gone";
}

TEST(Processors, VariableCapsTheCount) {
  const char* before = std::getenv("NUMBER_OF_PROCESSORS");
  const std::string saved = before == nullptr ? "" : before;
  unsetenv("NUMBER_OF_PROCESSORS");
  const int all = count_logical_processors();
  ASSERT_GE(all, 1);
  const struct {
    const char* value;
    int expected;
  } cases[] = {{"1", 1}, {"0", all}, {"-3", all}, {"2000", all}, {"1024", all}, {"many", all}, {"1023", all}};
  for (const auto& c : cases) {
    setenv("NUMBER_OF_PROCESSORS", c.value, 1);
    EXPECT_EQ(c.expected, count_logical_processors()) << c.value;
    EXPECT_LE(count_physical_cores(), count_logical_processors()) << c.value;
    EXPECT_GE(count_physical_cores(), 1) << c.value;
  }
  if (before == nullptr) {
    unsetenv("NUMBER_OF_PROCESSORS");
  } else {
    setenv("NUMBER_OF_PROCESSORS", saved.c_str(), 1);
  }
}

TEST(Version, Constants) {
  int major = 0, minor = 0, technical = 0;
  ZLPversion(&major, &minor, &technical);
  EXPECT_EQ(4, major);
  EXPECT_EQ(6, minor);
  EXPECT_EQ(1, technical);
  ZLPversion(nullptr, nullptr, nullptr);
  EXPECT_STREQ("win64", ZLPplatform());
  EXPECT_STREQ("Zorvex Optimizer, version 4.6.1", load()->version_text);
}

TEST(License, ReleaseIsKnownToLaterChecks) {
  const auto env = load();
  EXPECT_EQ(0, env->license->status());
  EXPECT_EQ(0, ZLPreleaselicense(env.get()));
  EXPECT_EQ(10009, env->license->status());
  EXPECT_EQ(0, ZLPreleaselicense(env.get()));
}

}  // namespace
}  // namespace zorvex::testing
