// A fixed set of threads that run the same loop body over a range of indices. The caller's thread takes part.
//   Order    which thread runs which index depends on timing: bodies must not depend on it.
//   Errors   the first exception of a body is thrown again by run(), after all bodies have ended.
#pragma once

#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace zorvex {

class WorkerPool {
 public:
  // `threads` counts the caller's; 1 starts none. A thread that the system refuses is done without.
  explicit WorkerPool(int threads);
  ~WorkerPool();
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  // body(index, worker) for every index in [0, count); worker is in [0, size()). Not to be called from a body.
  void run(int count, const std::function<void(int, int)>& body);
  [[nodiscard]] int size() const { return static_cast<int>(threads_.size()) + 1; }

 private:
  void wait_for_work(int worker);
  void take_part(int worker, std::unique_lock<std::mutex>& lock);

  std::mutex mutex_;
  std::condition_variable work_or_end_, done_;
  const std::function<void(int, int)>* body_ = nullptr;
  int count_ = 0, next_ = 0, unfinished_ = 0;
  bool end_ = false;
  std::exception_ptr error_;
  std::vector<std::thread> threads_;
};

}  // namespace zorvex
