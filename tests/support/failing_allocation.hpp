// Running out of memory on purpose, for the calling thread only.
#pragma once

namespace zorvex::testing {

// While it lives, `allowed` more allocations succeed and all after them fail.
class FailingAllocations {
 public:
  explicit FailingAllocations(long allowed);
  ~FailingAllocations();
  FailingAllocations(const FailingAllocations&) = delete;
  FailingAllocations& operator=(const FailingAllocations&) = delete;
};

}  // namespace zorvex::testing
