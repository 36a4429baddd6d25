// Replaces the global operator new of the test program. In a file of its own, so that callers do not see its body.
#include "opt/failing_allocation.hpp"

#include <cstdlib>
#include <new>

namespace zorvex::testing {

namespace {

thread_local long allocations_left = -1;  // negative: none fails

}  // namespace

FailingAllocations::FailingAllocations(long allowed) { allocations_left = allowed; }
FailingAllocations::~FailingAllocations() { allocations_left = -1; }

}  // namespace zorvex::testing

void* operator new(std::size_t size) {
  long& left = zorvex::testing::allocations_left;
  if (left == 0) throw std::bad_alloc();
  if (left > 0) --left;
  if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
  throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { std::free(memory); }

void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
