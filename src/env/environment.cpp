#include "env/environment.hpp"

#include "env/handle_pool.hpp"
#include "env/interrupt.hpp"
#include "env/processors.hpp"

namespace zorvex {

namespace {

constexpr const char* kVersionText = "Zorvex Optimizer, version 4.6.1";

EnvironmentPtr new_record() {
  EnvironmentPtr env(HandlePool<ZLPenv>::instance().acquire());
  // Alive from here on, so that the deleter gives back whatever was built when something below throws.
  env->magic.store(kEnvironmentMagic, std::memory_order_release);
  env->version_text = kVersionText;
  env->values = std::make_unique<ParameterValues>();
  return env;
}

}  // namespace

void make_error_buffer(ZLPenv& env) {
  env.error_text = std::make_unique<ErrorBuffer>();
  env.error_text->front() = '\0';
}

EnvironmentPtr new_master_environment() {
  EnvironmentPtr env = new_record();
  env->master = env.get();
  env->master_magic = std::make_shared<std::atomic<std::uint32_t>>(kEnvironmentMagic);
  env->owns_store = true;
  env->license = std::make_unique<License>();
  env->values->ints[slot_of(Param::OutputFlag)] = 1;
  return env;
}

void build_parameters(ZLPenv& env) {
  auto store = std::make_shared<ParameterStore>(count_logical_processors());
  store->reset_numbers(*env.values);
  const auto log_file_name = env.values->texts[slot_of(Param::LogFile)];
  store->reset_texts(*env.values);
  env.values->texts[slot_of(Param::LogFile)] = log_file_name;
  env.store = std::move(store);
}

EnvironmentPtr new_model_environment(ZLPenv& parent) {
  EnvironmentPtr env = new_record();
  make_error_buffer(*env);
  ZLPenv& master = *parent.master;
  env->master = &master;
  env->master_magic = parent.master_magic;
  env->store = parent.store;
  *env->values = *parent.values;
  env->log_file = parent.log_file;
  ++master.models_made;
  master.master_warning_armed = param<Param::ZORV_PAR_MASTERENVWARN>(master) != 0;
  return env;
}

void free_environment(ZLPenv* env) noexcept {
  if (env == nullptr || env->magic.load(std::memory_order_acquire) != kEnvironmentMagic) return;
  forget_interrupt_target(env);
  if (env->owns_store) {
    if (env->master_magic != nullptr) env->master_magic->store(0, std::memory_order_release);
    // Models that share the file cannot log any more.
    if (env->log_file != nullptr) env->log_file->close();
  }
  env->log_file.reset();
  env->message_callback = nullptr;
  env->callback_data.reset();
  env->store.reset();
  env->owns_store = false;
  env->values.reset();
  env->error_text.reset();
  env->license.reset();
  env->master_magic.reset();
  env->master = nullptr;
  env->last_error = 0;
  env->message_lock = 0;
  env->models_made = 0;
  env->master_warning_armed = false;
  env->terminate.store(0, std::memory_order_relaxed);
  env->magic.store(0, std::memory_order_release);
  HandlePool<ZLPenv>::instance().release(env);
}

}  // namespace zorvex
