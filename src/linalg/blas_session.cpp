#include "linalg/blas_session.hpp"

#include <mutex>

#include "linalg/blas.hpp"

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

// The library when its number of threads can be set.
const BlasLibrary* threaded_library() {
  const BlasLibrary* const library = blas_library();
  const bool controlled =
      library != nullptr && library->get_num_threads != nullptr && library->set_num_threads != nullptr;
  return controlled ? library : nullptr;
}

}  // namespace

BlasSession::BlasSession() {
  const BlasLibrary* const library = threaded_library();
  if (library == nullptr) return;
  ProcessState& state = process_state();
  const std::lock_guard<std::mutex> lock(state.mutex);
  if (state.sessions++ > 0) return;
  state.program_threads = library->get_num_threads();
  library->set_num_threads(1);
}

BlasSession::~BlasSession() {
  const BlasLibrary* const library = threaded_library();
  if (library == nullptr) return;
  ProcessState& state = process_state();
  const std::lock_guard<std::mutex> lock(state.mutex);
  if (--state.sessions == 0) library->set_num_threads(state.program_threads);
}

}  // namespace zorvex
