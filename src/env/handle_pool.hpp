// Memory of handle records. A released record stays readable with its magic cleared and is handed out again only after
// kQuarantine later releases, so that a check on a handle that was freed (by an earlier call, or by another owner)
// reads a dead magic instead of unmapped memory.
//   Record   default-constructible, with a member `magic` (std::atomic<std::uint32_t>) that is non-zero while alive
//   Threads  acquire and release may be called from any thread; there is one pool per record type in a process, since
//            a handle may be freed by another thread than the one that made it.
//   Fork     waits until no thread is inside the process's pools, so that a child finds them whole and unlocked
//            whatever other threads were doing.
//   Memory   the pool keeps the largest number of records that were alive at once, plus the quarantine; what a record
//            owns must have been given back before release().
#pragma once

#include <pthread.h>

#include <cstddef>
#include <memory>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace zorvex {

template <class Record>
class HandlePool {
 public:
  static constexpr std::size_t kQuarantine = 64;

  // The pool lives as long as the process: a handle may outlive every static object.
  static HandlePool& instance() {
    static_cast<void>(kMadeAtLoad);
    static HandlePool* pool = make_guarded();  // deliberately never destroyed
    return *pool;
  }

  // A default-constructed record; magic is 0. Throws std::bad_alloc.
  Record* acquire() {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (count_ > kQuarantine) {
      Record* record = released_[first_];
      first_ = (first_ + 1) % released_.size();
      --count_;
      return record;
    }
    if (records_.size() == released_.size()) grow();
    records_.push_back(std::make_unique<Record>());
    return records_.back().get();
  }

  // `record` must be dead (magic 0) and otherwise as default-constructed. Never fails: acquire() has made the room.
  void release(Record* record) noexcept {
    const std::lock_guard<std::mutex> lock(mutex_);
    released_[(first_ + count_++) % released_.size()] = record;
  }

 private:
  static HandlePool* make_guarded() {
    auto pool = std::make_unique<HandlePool>();
    const auto lock = [] { instance().mutex_.lock(); };
    const auto unlock = [] { instance().mutex_.unlock(); };
    if (pthread_atfork(lock, unlock, unlock) != 0) throw std::bad_alloc();
    return pool.release();
  }
  // Without a call the pool would be made by the first user, and a fork by another thread at that moment would leave
  // the child with a pool that never gets ready. Out of memory: the first use tries again.
  static bool make_at_load() noexcept {
    try {
      instance();
      return true;
    } catch (const std::bad_alloc&) {
      return false;
    }
  }

  void grow() {
    std::vector<Record*> larger(2 * released_.size() + kQuarantine);
    for (std::size_t k = 0; k < count_; ++k) larger[k] = released_[(first_ + k) % released_.size()];
    released_ = std::move(larger);
    first_ = 0;
  }

  inline static const bool kMadeAtLoad = make_at_load();

  std::mutex mutex_;
  std::vector<std::unique_ptr<Record>> records_;
  // Ring of released records, oldest at first_; it has room for all records there are.
  std::vector<Record*> released_;
  std::size_t first_ = 0;
  std::size_t count_ = 0;
};

}  // namespace zorvex
