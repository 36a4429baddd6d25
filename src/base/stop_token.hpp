// Deadline and termination request of one solve; polled by every loop whose length depends on the model.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <utility>

#include "base/solve_hooks.hpp"
#include "base/status.hpp"
#include "base/types.hpp"

namespace zorvex {

// Seconds on a monotonic clock since an arbitrary origin.
inline double now_seconds() {
  using Clock = std::chrono::steady_clock;
  return std::chrono::duration<double>(Clock::now().time_since_epoch()).count();
}

// Deterministic effort of one solve among several that run at the same time, in units of about a nanosecond, so that
// the efforts of different methods compare, and the effort that one of them needed to finish: a solve that has spent
// more need not go on. The same model and parameters stop each solve at the same effort or not at all, whatever the
// clock says.
class WorkGauge {
 public:
  // `limit` is shared by the solves and outlives the gauge.
  explicit WorkGauge(const std::atomic<double>& limit) : limit_(limit) {}

  // From one thread.
  void spend(double units) {
    spent_.store(spent() + units, std::memory_order_relaxed);
    if (spent() <= ask_at_) return;
    ask_at_ = kInf;
    const std::function<void()> question = std::move(question_);
    question();
  }
  // Once more than `units` are spent, `question` is called, once and by the spending thread: it may set the limit, or
  // leave another question.
  void ask_at(double units, std::function<void()> question) {
    ask_at_ = units;
    question_ = std::move(question);
  }
  [[nodiscard]] double spent() const { return spent_.load(std::memory_order_relaxed); }
  [[nodiscard]] bool exceeded() const { return spent() > limit_.load(std::memory_order_relaxed); }

 private:
  const std::atomic<double>& limit_;
  std::atomic<double> spent_{0};
  double ask_at_ = kInf;
  std::function<void()> question_;
};

// A token is cheap to copy and may be polled from several threads. `terminate`, `hooks` and `gauge` are owned by the
// caller and outlive the solve; null means that nobody can interrupt, nobody listens, nobody counts. A poll costs one
// clock read (tens of nanoseconds): call it once per simplex iteration or per few thousand nonzeros of work, not per
// nonzero.
class StopToken {
 public:
  StopToken() = default;
  StopToken(const std::atomic<int>* terminate, double deadline, SolveHooks* hooks = nullptr, WorkGauge* gauge = nullptr)
      : terminate_(terminate), deadline_(deadline), hooks_(hooks), gauge_(gauge) {}

  // kLoaded while the solve may go on, else kInterrupted or kTimeLimit.
  [[nodiscard]] SolveStatus poll() const {
    if (hooks_ != nullptr) hooks_->poll();
    if (terminate_ != nullptr && terminate_->load(std::memory_order_relaxed) != 0) return SolveStatus::kInterrupted;
    if (gauge_ != nullptr && gauge_->exceeded()) return SolveStatus::kInterrupted;
    if (deadline_ < kInf && now_seconds() > deadline_) return SolveStatus::kTimeLimit;
    return SolveStatus::kLoaded;
  }
  [[nodiscard]] bool stop_requested() const { return poll() != SolveStatus::kLoaded; }
  // Counts effort; solves tell it before they poll.
  void spend(double units) const {
    if (gauge_ != nullptr) gauge_->spend(units);
  }
  [[nodiscard]] double deadline() const { return deadline_; }
  [[nodiscard]] const std::atomic<int>* terminate_flag() const { return terminate_; }
  // Who wants to hear of the solve, null for nobody.
  [[nodiscard]] SolveHooks* hooks() const { return hooks_; }

 private:
  const std::atomic<int>* terminate_ = nullptr;
  double deadline_ = kInf;  // in now_seconds() time
  SolveHooks* hooks_ = nullptr;
  WorkGauge* gauge_ = nullptr;
};

}  // namespace zorvex
