#include "env/interrupt.hpp"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>

#include "env/environment.hpp"
#include "env/errors.hpp"

namespace zorvex {

namespace {

// The process has one console, hence one slot. A record's memory stays readable for the life of the process
// (env/handle_pool.hpp), so the handler may look at it whenever it runs.
std::atomic<ZLPenv*> interrupt_target{nullptr};
static_assert(std::atomic<ZLPenv*>::is_always_lock_free, "used in a signal handler");

void say_freed_too_early_from_handler() {
  const ssize_t written = write(STDOUT_FILENO, kFreedTooEarly, sizeof(kFreedTooEarly) - 1);
  static_cast<void>(written);
}

extern "C" void handle_interrupt(int signal_number) {
  const int saved_errno = errno;
  constexpr char kNotice[] = "\nInterrupt request received\n";
  const ssize_t written = write(STDOUT_FILENO, kNotice, sizeof(kNotice) - 1);
  static_cast<void>(written);
  ZLPenv* env = interrupt_target.load();
  if (env != nullptr && env->magic.load(std::memory_order_acquire) == kEnvironmentMagic) {
    if (master_alive(*env)) {
      env->terminate.store(1);
    } else if (param<Param::OutputFlag>(*env) >= 1) {
      say_freed_too_early_from_handler();
    }
  }
  std::signal(signal_number, SIG_DFL);
  errno = saved_errno;
}

}  // namespace

void request_termination(ZLPenv* env) {
  if (env == nullptr || env->magic.load(std::memory_order_acquire) != kEnvironmentMagic) return;
  if (master_alive(*env)) {
    env->terminate.store(1);
  } else if (param<Param::OutputFlag>(*env) >= 1) {
    std::fputs(kFreedTooEarly, stdout);
    std::fflush(stdout);
  }
}

void install_interrupt_handler(ZLPenv* env) {
  interrupt_target.store(env);
  std::signal(SIGINT, handle_interrupt);
}

void forget_interrupt_target(const ZLPenv* env) noexcept {
  ZLPenv* expected = const_cast<ZLPenv*>(env);
  interrupt_target.compare_exchange_strong(expected, nullptr);
}

}  // namespace zorvex
