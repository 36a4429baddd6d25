#include "base/worker_pool.hpp"

#include <system_error>

namespace zorvex {

WorkerPool::WorkerPool(int threads) {
  try {
    for (int worker = 1; worker < threads; ++worker) threads_.emplace_back([this, worker] { wait_for_work(worker); });
  } catch (const std::system_error&) {  // fewer threads give the same results, later
  }
}

WorkerPool::~WorkerPool() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    end_ = true;
  }
  work_or_end_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

void WorkerPool::run(int count, const std::function<void(int, int)>& body) {
  if (threads_.empty() || count == 1) {
    for (int index = 0; index < count; ++index) body(index, 0);
    return;
  }
  std::unique_lock<std::mutex> lock(mutex_);
  body_ = &body;
  count_ = unfinished_ = count;
  next_ = 0;
  error_ = nullptr;
  work_or_end_.notify_all();
  take_part(0, lock);
  done_.wait(lock, [this] { return unfinished_ == 0; });
  body_ = nullptr;
  if (error_) std::rethrow_exception(error_);
}

void WorkerPool::wait_for_work(int worker) {
  std::unique_lock<std::mutex> lock(mutex_);
  while (true) {
    work_or_end_.wait(lock, [this] { return end_ || (body_ != nullptr && next_ < count_); });
    if (end_) return;
    take_part(worker, lock);
  }
}

void WorkerPool::take_part(int worker, std::unique_lock<std::mutex>& lock) {
  while (next_ < count_) {
    const int index = next_++;
    const auto* body = body_;
    std::exception_ptr error;
    lock.unlock();
    try {
      (*body)(index, worker);
    } catch (...) {
      error = std::current_exception();
    }
    lock.lock();
    if (error && !error_) error_ = error;
    if (--unfinished_ == 0) done_.notify_one();
  }
}

}  // namespace zorvex
