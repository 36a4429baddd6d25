// The race of several solves: who wins, who is stopped, and what becomes of trouble. The contestants wait for each
// other, so that every order of finishing is forced, not hoped for.
#include "opt/race.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <new>
#include <thread>

namespace zorvex {
namespace {

EngineAnswer answer_with(SolveStatus status, double x = 0) {
  EngineAnswer answer;
  answer.status = status;
  answer.point.x = {x};
  return answer;
}

void wait_for(const std::atomic<bool>& flag) {
  while (!flag.load()) std::this_thread::yield();
}

EngineAnswer until_stopped(const StopToken& stop) {
  while (!stop.stop_requested()) std::this_thread::yield();
  return answer_with(stop.poll());
}

TEST(Race, TheFirstToDecideStopsTheOthers) {
  const std::vector<Contestant> contestants{
      {"endless", until_stopped},
      {"quick", [](const StopToken&) { return answer_with(SolveStatus::kOptimal, 7); }},
      {"endless too", until_stopped}};
  const RaceResult result = run_race(contestants, false, {});
  EXPECT_EQ(result.winner, 1);
  EXPECT_EQ(result.answer.point.x[0], 7);
}

TEST(Race, EveryDecisionCounts) {
  for (const SolveStatus status :
       {SolveStatus::kOptimal, SolveStatus::kInfeasible, SolveStatus::kUnbounded, SolveStatus::kCutoff}) {
    const std::vector<Contestant> contestants{{"decides", [status](const StopToken&) { return answer_with(status); }},
                                              {"endless", until_stopped}};
    const RaceResult result = run_race(contestants, false, {});
    EXPECT_EQ(result.winner, 0);
    EXPECT_EQ(result.answer.status, status);
  }
}

TEST(Race, GivingUpDecidesNothing) {
  std::atomic<bool> given_up{false};
  const std::vector<Contestant> contestants{{"gives up",
                                             [&](const StopToken&) {
                                               given_up = true;
                                               return answer_with(SolveStatus::kNumeric);
                                             }},
                                            {"suboptimal",
                                             [&](const StopToken&) {
                                               wait_for(given_up);
                                               return answer_with(SolveStatus::kSuboptimal);
                                             }},
                                            {"solves", [&](const StopToken& stop) {
                                               wait_for(given_up);
                                               EXPECT_FALSE(stop.stop_requested());
                                               return answer_with(SolveStatus::kOptimal);
                                             }}};
  EXPECT_EQ(run_race(contestants, false, {}).winner, 2);
}

// The one with less work comes in last, and wins.
TEST(Race, ByWorkTheClockDoesNotMatter) {
  for (const bool by_work : {true, false}) {
    std::atomic<bool> other_done{false};
    const std::vector<Contestant> contestants{{"little work, late",
                                               [&](const StopToken& stop) {
                                                 wait_for(other_done);
                                                 stop.spend(100);
                                                 return answer_with(SolveStatus::kOptimal, 1);
                                               }},
                                              {"much work, early", [&](const StopToken& stop) {
                                                 stop.spend(101);
                                                 other_done = true;
                                                 return answer_with(SolveStatus::kOptimal, 2);
                                               }}};
    const RaceResult result = run_race(contestants, by_work, {});
    if (!by_work) continue;  // either may be first to report
    EXPECT_EQ(result.winner, 0);
    EXPECT_EQ(result.work, 100);
    EXPECT_EQ(result.answer.point.x[0], 1);
  }
}

TEST(Race, ByWorkATieGoesToTheEarlier) {
  const auto even = [](const StopToken& stop) {
    stop.spend(10);
    return answer_with(SolveStatus::kOptimal);
  };
  for (int k = 0; k < 20; ++k) EXPECT_EQ(run_race({{"a", even}, {"b", even}, {"c", even}}, true, {}).winner, 0);
}

TEST(Race, ByWorkTheOthersStopBeyondTheWinnersWork) {
  double spent = 0;
  const std::vector<Contestant> contestants{{"endless",
                                             [&](const StopToken& stop) {
                                               while (!stop.stop_requested()) {
                                                 stop.spend(1);
                                                 ++spent;
                                                 std::this_thread::yield();
                                               }
                                               return answer_with(stop.poll());
                                             }},
                                            {"hundred", [](const StopToken& stop) {
                                               stop.spend(100);
                                               return answer_with(SolveStatus::kOptimal);
                                             }}};
  EXPECT_EQ(run_race(contestants, true, {}).winner, 1);
  EXPECT_GT(spent, 100);
}

TEST(Race, TroubleOfOneIsNotTroubleOfAll) {
  const auto fails = [](const StopToken&) -> EngineAnswer { throw std::bad_alloc(); };
  EXPECT_EQ(
      run_race({{"fails", fails}, {"solves", [](const StopToken&) { return answer_with(SolveStatus::kOptimal); }}},
               false, {})
          .winner,
      1);
  EXPECT_THROW((void)run_race({{"fails", fails}, {"fails", fails}}, true, {}), std::bad_alloc);
  const auto error = [](const StopToken&) {
    EngineAnswer answer;
    answer.error = kErrorOutOfMemory;
    return answer;
  };
  const RaceResult limited = run_race(
      {{"error", error}, {"limit", [](const StopToken&) { return answer_with(SolveStatus::kIterationLimit); }}}, false,
      {});
  EXPECT_EQ(limited.winner, -1);
  EXPECT_EQ(limited.answer.status, SolveStatus::kIterationLimit);
  EXPECT_EQ(run_race({{"error", error}}, false, {}).answer.error, kErrorOutOfMemory);
}

// Polled by the race itself; asks for the end at the third poll.
class Impatient final : public SolveHooks {
 public:
  void poll() override {
    if (std::this_thread::get_id() != thread_) ++foreign;
    if (++polls_ == 3) terminate = 1;
  }
  std::atomic<int> terminate{0};
  std::atomic<int> foreign{0};

 private:
  std::thread::id thread_ = std::this_thread::get_id();
  int polls_ = 0;
};

TEST(Race, TheCallersRequestReachesEveryone) {
  Impatient hooks;
  const StopToken stop(&hooks.terminate, kInf, &hooks);
  const RaceResult result = run_race({{"a", until_stopped}, {"b", until_stopped}}, true, stop);
  EXPECT_EQ(result.winner, -1);
  EXPECT_EQ(result.answer.status, SolveStatus::kInterrupted);
  EXPECT_EQ(hooks.foreign, 0);
  const RaceResult late = run_race({{"a", until_stopped}}, false, StopToken(nullptr, now_seconds() - 1));
  EXPECT_EQ(late.answer.status, SolveStatus::kTimeLimit);
}

}  // namespace
}  // namespace zorvex
