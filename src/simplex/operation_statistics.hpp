// Where a simplex run spends its time and how dense the results of its operations are: a table in the diagnostics.
#pragma once

#include <array>

#include "base/log_sink.hpp"
#include "base/stop_token.hpp"

namespace zorvex {

enum class Operation { kFactor, kRecompute, kRow, kPrice, kRatioTest, kColumn, kFlips, kUpdate };
inline constexpr std::size_t kNumOperations = 8;

class OperationStatistics {
  struct Entry {
    double calls = 0;
    double density = 0;  // sum over the calls
    double seconds = 0;
  };

 public:
  // Times one operation for as long as it lives, when statistics are kept.
  class Timer {
   public:
    Timer(OperationStatistics& statistics, Operation operation)
        : entry_(statistics.kept_ ? &statistics.entries_[static_cast<std::size_t>(operation)] : nullptr),
          begin_(entry_ != nullptr ? now_seconds() : 0) {}
    ~Timer() {
      if (entry_ != nullptr) entry_->seconds += now_seconds() - begin_;
    }
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;
    // One result with this share of nonzeros.
    void count(double density) {
      if (entry_ == nullptr) return;
      entry_->calls += 1;
      entry_->density += density;
    }

   private:
    Entry* entry_;
    double begin_;
  };

  // All zero; kept only for a log that wants diagnostics.
  void begin(const LogSink& log);
  // One line for each operation that ran, with calls, mean density of the results and seconds.
  void report(LogSink& log) const;

 private:
  bool kept_ = false;
  std::array<Entry, kNumOperations> entries_{};
};

}  // namespace zorvex
