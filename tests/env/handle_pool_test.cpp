#include "env/handle_pool.hpp"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <deque>
#include <set>
#include <thread>

namespace zorvex {
namespace {

struct Record {
  int value = 0;
};

TEST(HandlePool, RecordsComeBackInOrderAndOnlyAfterTheQuarantine) {
  HandlePool<Record> pool;
  std::deque<Record*> alive, released;
  std::set<Record*> ever;
  const auto acquire = [&] {
    Record* record = pool.acquire();
    if (released.size() > HandlePool<Record>::kQuarantine) {
      EXPECT_EQ(released.front(), record);
      released.pop_front();
    } else {
      EXPECT_TRUE(ever.insert(record).second) << "a record that is still quarantined";
    }
    alive.push_back(record);
  };
  const auto release = [&] {
    pool.release(alive.front());
    released.push_back(alive.front());
    alive.pop_front();
  };
  // Growing, shrinking and growing again, so that the ring wraps around at several sizes.
  for (const int wanted : {10, 200, 3, 150, 0, 500, 1, 2}) {
    while (static_cast<int>(alive.size()) < wanted) acquire();
    for (int turn = 0; turn < 300 && !alive.empty(); ++turn) {
      release();
      acquire();
    }
    while (static_cast<int>(alive.size()) > wanted / 2) release();
  }
  EXPECT_EQ(ever.size(), alive.size() + released.size());
}

// Another thread is inside the pool nearly all the time: a child that inherited its lock would wait for ever.
TEST(HandlePool, ForkedChildrenFindItUsable) {
  auto& pool = HandlePool<Record>::instance();
  pool.release(pool.acquire());  // no allocation is needed from here on
  std::atomic<bool> stop{false};
  std::thread other([&] {
    while (!stop) pool.release(pool.acquire());
  });
  int good = 0;
  constexpr int kForks = 100;
  for (int k = 0; k < kForks; ++k) {
    const pid_t child = fork();
    if (child == 0) {
      alarm(20);  // ends a child that hangs
      pool.release(pool.acquire());
      _exit(0);
    }
    int status = -1;
    if (child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status)) ++good;
  }
  stop = true;
  other.join();
  EXPECT_EQ(kForks, good);
}

}  // namespace
}  // namespace zorvex
