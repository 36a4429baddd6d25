// Deterministic effort counter. Decisions that would be tempted to look at the clock look here, so that the same model
// and parameters take the same path on any machine.
#pragma once

#include <cstdint>

namespace zorvex {

class WorkMeter {
 public:
  // One unit is about one nonzero touched.
  void add(std::int64_t units) { total_ += units; }
  [[nodiscard]] std::int64_t total() const { return total_; }

 private:
  std::int64_t total_ = 0;
};

}  // namespace zorvex
