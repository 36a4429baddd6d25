#include "simplex/operation_statistics.hpp"

namespace zorvex {

namespace {
constexpr const char* kNames[kNumOperations] = {"factor", "recompute", "btran", "price",
                                                "ratio",  "ftran",     "flips", "update"};
}  // namespace

void OperationStatistics::begin(const LogSink& log) {
  kept_ = log.enabled() && log.diagnostics();
  entries_ = {};
}

void OperationStatistics::report(LogSink& log) const {
  if (!kept_) return;
  for (std::size_t k = 0; k < kNumOperations; ++k) {
    const Entry& entry = entries_[k];
    if (entry.seconds == 0) continue;
    const double density = entry.calls > 0 ? 100 * entry.density / entry.calls : 0;
    log.diagnose("Operation %-9s %9.0f calls, density %6.2f%%, %8.3f seconds\n", kNames[k], entry.calls, density,
                 entry.seconds);
  }
}

}  // namespace zorvex
