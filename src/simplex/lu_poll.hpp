// Counts deterministic work and looks at the stop token once per few thousand units of it.
#pragma once

#include "base/stop_token.hpp"
#include "base/types.hpp"

namespace zorvex {

class LuPoll {
 public:
  explicit LuPoll(const StopToken& stop) : stop_(stop) {}

  // Adds work; true if the solve was asked to stop.
  [[nodiscard]] bool spend(Offset units) {
    work_ += units;
    if (work_ < next_) return false;
    next_ = work_ + kInterval;
    return stop_.stop_requested();
  }
  [[nodiscard]] Offset work() const { return work_; }

 private:
  static constexpr Offset kInterval = 8192;
  const StopToken& stop_;
  Offset work_ = 0;
  Offset next_ = 0;
};

}  // namespace zorvex
