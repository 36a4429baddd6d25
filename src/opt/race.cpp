#include "opt/race.hpp"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

namespace zorvex {

namespace {

constexpr auto kPollInterval = std::chrono::milliseconds(5);

// One contestant's place in the race. The answer and the exception belong to its thread until `done`.
struct Lane {
  explicit Lane(const std::atomic<double>& work_limit) : gauge(work_limit) {}
  std::atomic<int> terminate{0};
  WorkGauge gauge;
  EngineAnswer answer;
  std::exception_ptr exception;
  bool done = false;
  std::thread thread;
};

class Race {
 public:
  Race(const std::vector<Contestant>& contestants, bool by_work, const StopToken& stop)
      : contestants_(contestants), by_work_(by_work), stop_(stop) {}
  ~Race() { join(); }
  Race(const Race&) = delete;
  Race& operator=(const Race&) = delete;

  RaceResult run() {
    for (std::size_t k = 0; k < contestants_.size(); ++k) lanes_.emplace_back(work_limit_);
    for (std::size_t k = 0; k < contestants_.size(); ++k) lanes_[k].thread = std::thread([this, k] { run_lane(k); });
    wait();
    join();
    return result();
  }

 private:
  void run_lane(std::size_t k);
  void finish_lane(std::size_t k);
  void wait();
  void join();
  RaceResult result();
  [[nodiscard]] Index most_useful() const;
  void terminate_all() {
    for (Lane& lane : lanes_) lane.terminate.store(1, std::memory_order_relaxed);
  }

  const std::vector<Contestant>& contestants_;
  bool by_work_;
  const StopToken& stop_;
  std::atomic<double> work_limit_{kInf};
  std::deque<Lane> lanes_;
  std::mutex mutex_;
  std::condition_variable finished_;
  std::size_t done_ = 0;                      // lanes; under the mutex, as are the next and Lane::done
  Index first_ = -1;                          // lane that decided the model first
  SolveStatus asked_ = SolveStatus::kLoaded;  // why the caller wants the end
};

void Race::run_lane(std::size_t k) {
  Lane& lane = lanes_[k];
  try {
    lane.answer = contestants_[k].solve(StopToken(&lane.terminate, stop_.deadline(), nullptr, &lane.gauge));
  } catch (...) {
    lane.exception = std::current_exception();
  }
  finish_lane(k);
}

void Race::finish_lane(std::size_t k) {
  Lane& lane = lanes_[k];
  const std::lock_guard<std::mutex> lock(mutex_);
  lane.done = true;
  ++done_;
  if (lane.exception == nullptr && decides(lane.answer)) {
    if (first_ < 0) first_ = static_cast<Index>(k);
    if (by_work_) {
      work_limit_.store(std::min(work_limit_.load(), lane.gauge.spent()));
    } else {
      terminate_all();
    }
  }
  finished_.notify_one();
}

void Race::wait() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (done_ < lanes_.size()) {
    finished_.wait_for(lock, kPollInterval);
    lock.unlock();
    if (asked_ == SolveStatus::kLoaded) asked_ = stop_.poll();
    if (asked_ != SolveStatus::kLoaded) terminate_all();
    lock.lock();
  }
}

void Race::join() {
  terminate_all();
  for (Lane& lane : lanes_) {
    if (lane.thread.joinable()) lane.thread.join();
  }
}

// When nobody decided the model: whose answer says most.
Index Race::most_useful() const {
  Index best = -1;
  for (std::size_t k = 0; k < lanes_.size(); ++k) {
    const Lane& lane = lanes_[k];
    if (lane.exception != nullptr || lane.answer.error != kOk) continue;
    if (best < 0 || (lanes_[best].answer.point.x.empty() && !lane.answer.point.x.empty())) {
      best = static_cast<Index>(k);
    }
  }
  return best;
}

RaceResult Race::result() {
  RaceResult result;
  if (by_work_) {
    for (std::size_t k = 0; k < lanes_.size(); ++k) {
      if (lanes_[k].exception != nullptr || !decides(lanes_[k].answer)) continue;
      if (result.winner >= 0 && lanes_[result.winner].gauge.spent() <= lanes_[k].gauge.spent()) continue;
      result.winner = static_cast<Index>(k);
    }
  } else {
    result.winner = first_;
  }
  const Index chosen = result.winner >= 0 ? result.winner : most_useful();
  if (chosen >= 0) {
    result.work = lanes_[chosen].gauge.spent();
    result.answer = std::move(lanes_[chosen].answer);
    // A contestant cannot tell the end of the caller's time from any other request.
    if (result.winner < 0 && asked_ != SolveStatus::kLoaded && result.answer.status == SolveStatus::kInterrupted) {
      result.answer.status = asked_;
    }
    return result;
  }
  for (Lane& lane : lanes_) {
    if (lane.exception != nullptr) std::rethrow_exception(lane.exception);
  }
  result.answer = std::move(lanes_.front().answer);
  return result;
}

}  // namespace

bool decides(const EngineAnswer& answer) {
  if (answer.error != kOk) return false;
  switch (answer.status) {
    case SolveStatus::kOptimal:
    case SolveStatus::kInfeasible:
    case SolveStatus::kUnbounded:
    case SolveStatus::kCutoff:
      return true;
    default:
      return false;
  }
}

RaceResult run_race(const std::vector<Contestant>& contestants, bool by_work, const StopToken& stop) {
  return Race(contestants, by_work, stop).run();
}

}  // namespace zorvex
