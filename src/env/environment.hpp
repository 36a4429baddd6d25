// The environment record behind the handle ZLPenv, its creation and its end.
//   Ownership  A master environment (from ZLPloadenv) owns its parameter store, licence and error buffer. A model's
//              record copies the parameter values of the environment it is made from, shares the immutable store and
//              the open log file, and has an error buffer of its own.
//   Liveness   The magic is the only mark. A record's memory stays readable after it was freed (env/handle_pool.hpp);
//              a model's record asks `master_magic`, which it co-owns, and never the master's record itself.
//   Threads    One caller thread at a time, except `terminate`, which anybody may set.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <memory>

#include "env/parameter_store.hpp"
#include "license/license.hpp"
#include "zorvex.h"

namespace zorvex {

inline constexpr std::uint32_t kEnvironmentMagic = 0x129E2D82;
inline constexpr int kErrorBufferSize = 512;
inline constexpr int kMessageSize = 512;
inline constexpr int kWhereMessage = 6;  // 'where' code of a message callback

using ErrorBuffer = std::array<char, kErrorBufferSize>;

// Closed when the last record using it lets go, or for all of them at once by close().
class LogFile {
 public:
  explicit LogFile(std::FILE* file) : file_(file) {}
  ~LogFile() { close(); }
  LogFile(const LogFile&) = delete;
  LogFile& operator=(const LogFile&) = delete;

  [[nodiscard]] std::FILE* file() const { return file_; }
  void close() {
    if (file_ != nullptr) std::fclose(file_);
    file_ = nullptr;
  }

 private:
  std::FILE* file_;
};

// What a message callback is called with; `text` is the formatted message, cut to fit.
struct CallbackData {
  std::array<char, kMessageSize> text{};
  void* user = nullptr;
};
using MessageCallback = void (*)(CallbackData& data, int where);

}  // namespace zorvex

struct ZLPenv {
  std::atomic<std::uint32_t> magic{0};
  std::atomic<int> terminate{0};  // non-zero: the running solve is to stop
  const char* version_text = nullptr;
  ZLPenv* master = nullptr;  // itself for a master; compare only, it may be dead
  std::shared_ptr<std::atomic<std::uint32_t>> master_magic;
  std::unique_ptr<zorvex::License> license;  // null in a model's record

  std::unique_ptr<zorvex::ErrorBuffer> error_text;
  int last_error = 0;
  int message_lock = 0;  // 1 while an optimization runs: recorded texts stay

  std::shared_ptr<const zorvex::ParameterStore> store;
  bool owns_store = false;  // true exactly for a master
  std::unique_ptr<zorvex::ParameterValues> values;

  std::shared_ptr<zorvex::LogFile> log_file;
  zorvex::MessageCallback message_callback = nullptr;
  std::unique_ptr<zorvex::CallbackData> callback_data;

  // Of a master only.
  std::int64_t models_made = 0;
  bool master_warning_armed = false;
};

namespace zorvex {

void free_environment(ZLPenv* env) noexcept;

struct EnvironmentDeleter {
  void operator()(ZLPenv* env) const noexcept { free_environment(env); }
};
using EnvironmentPtr = std::unique_ptr<ZLPenv, EnvironmentDeleter>;

// A master record that is alive and logs to standard output, still without error buffer and parameter store. Throws
// std::bad_alloc.
EnvironmentPtr new_master_environment();
void make_error_buffer(ZLPenv& env);
// Parameter store and defaults, keeping the log file name that is in place. Throws std::bad_alloc.
void build_parameters(ZLPenv& env);

// The record of a model made from `parent` (which must be alive; a model's own record will do): copies the values and
// arms the master warning. Throws std::bad_alloc.
EnvironmentPtr new_model_environment(ZLPenv& parent);

// Whether the environment this record was made from still exists.
[[nodiscard]] inline bool master_alive(const ZLPenv& env) {
  return env.master_magic != nullptr && env.master_magic->load(std::memory_order_acquire) == kEnvironmentMagic;
}

// Value of a parameter by compile-time id: int, double or const char*.
template <Param P>
[[nodiscard]] auto param(const ZLPenv& env) {
  return env.values->get<P>();
}

}  // namespace zorvex
