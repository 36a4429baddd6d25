#include "linalg/blas_session.hpp"

extern "C" {
__attribute__((weak)) int openblas_get_parallel(void);
__attribute__((weak)) int openblas_get_num_threads(void);
__attribute__((weak)) void openblas_set_num_threads(int count);
}

namespace zorvex {

namespace {

// Mirrors state of the BLAS library that belongs to the whole process.
struct ProcessState {
  std::mutex mutex;
  int sessions = 0;
  int program_threads = 1;
};

ProcessState& process_state() {
  static ProcessState state;
  return state;
}

bool controls_threads() { return openblas_get_num_threads != nullptr && openblas_set_num_threads != nullptr; }

bool shares_scratch_memory() { return openblas_get_parallel != nullptr && openblas_get_parallel() == 0; }

}  // namespace

BlasSession::BlasSession() {
  if (!controls_threads()) return;
  ProcessState& state = process_state();
  const std::lock_guard<std::mutex> lock(state.mutex);
  if (state.sessions++ > 0) return;
  state.program_threads = openblas_get_num_threads();
  openblas_set_num_threads(1);
}

BlasSession::~BlasSession() {
  if (!controls_threads()) return;
  ProcessState& state = process_state();
  const std::lock_guard<std::mutex> lock(state.mutex);
  if (--state.sessions == 0) openblas_set_num_threads(state.program_threads);
}

std::unique_lock<std::mutex> blas_lock() {
  static const bool kNeeded = shares_scratch_memory();
  static std::mutex mutex;
  return kNeeded ? std::unique_lock<std::mutex>(mutex) : std::unique_lock<std::mutex>();
}

}  // namespace zorvex
