// Replaces the global operator new of the test program. In a file of its own, so that callers do not see its body.
#include "support/failing_allocation.hpp"

#include <cstdlib>
#include <new>

namespace zorvex::testing {

namespace {

thread_local long allocations_left = -1;  // negative: none fails

}  // namespace

FailingAllocations::FailingAllocations(long allowed) { allocations_left = allowed; }
FailingAllocations::~FailingAllocations() { allocations_left = -1; }

}  // namespace zorvex::testing

// All forms that the library may end up in: a sanitizer brings its own for those that are missing here.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  long& left = zorvex::testing::allocations_left;
  if (left == 0) return nullptr;
  if (left > 0) --left;
  return std::malloc(size == 0 ? 1 : size);
}

void* operator new(std::size_t size) {
  if (void* memory = operator new(size, std::nothrow)) return memory;
  throw std::bad_alloc();
}

void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept { return operator new(size, tag); }
void* operator new[](std::size_t size) { return operator new(size); }

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
