#include "opt/callback_record.hpp"

#include "env/environment.hpp"
#include "env/handle_pool.hpp"
#include "model/model.hpp"

namespace zorvex {

namespace {

void release_record(ZLPcbdata* record) {
  record->magic.store(0);
  record->model = nullptr;
  record->function = nullptr;
  record->user = nullptr;
  record->view = nullptr;
  record->solving = record->failed = record->takes_rows = false;
  record->start_time = 0;
  record->offered.clear();
  HandlePool<ZLPcbdata>::instance().release(record);
}

void message_callback(CallbackData& data, int where) {
  call_callback(*static_cast<ZLPcbdata*>(data.user), {.where = where, .text = data.text.data()});
}

// The call in progress, taken back however it ends.
class Calling {
 public:
  Calling(ZLPcbdata& record, const CallbackView& view) : record_(record) {
    record_.view = &view;
    record_.model->callback_allowed = true;
  }
  ~Calling() {
    record_.model->callback_allowed = false;
    record_.view = nullptr;
  }
  Calling(const Calling&) = delete;
  Calling& operator=(const Calling&) = delete;

 private:
  ZLPcbdata& record_;
};

}  // namespace

std::shared_ptr<ZLPcbdata> make_callback(ZLPmodel& model, ZLPcallback function, void* user) {
  std::shared_ptr<ZLPcbdata> record(HandlePool<ZLPcbdata>::instance().acquire(), release_record);
  record->magic.store(kCallbackMagic);
  record->model = &model;
  record->function = function;
  record->user = user;
  return record;
}

void install_callback(ZLPmodel& model, std::shared_ptr<ZLPcbdata> record) {
  ZLPenv& env = *model.env;
  if (record != nullptr && env.callback_data == nullptr) env.callback_data = std::make_unique<CallbackData>();
  env.message_callback = record == nullptr ? nullptr : message_callback;
  if (env.callback_data != nullptr) env.callback_data->user = record.get();
  model.callback = std::move(record);
}

bool call_callback(ZLPcbdata& record, const CallbackView& view) {
  if (record.view != nullptr || record.failed) return false;
  const Calling calling(record, view);
  const int code = record.function(record.model, &record, view.where, record.user);
  if (code == 0 || !record.solving) return code == 0;
  record.failed = true;
  record.model->env->terminate.store(1);
  return false;
}

}  // namespace zorvex
