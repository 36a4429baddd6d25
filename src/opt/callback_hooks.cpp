#include "opt/callback_hooks.hpp"

#include "base/stop_token.hpp"

namespace zorvex {

namespace {

// Polls come by the thousand; one after this many seconds of silence is enough to keep a window alive.
constexpr double kPollInterval = 0.02;

}  // namespace

CallbackHooks::CallbackHooks(ZLPcbdata& record, double start_time, bool takes_rows) : record_(record) {
  record_.solving = true;
  record_.failed = false;
  record_.takes_rows = takes_rows;
  record_.start_time = start_time;
  record_.offered.clear();
}

CallbackHooks::~CallbackHooks() {
  record_.solving = record_.failed = record_.takes_rows = false;
  record_.offered.clear();
}

bool CallbackHooks::call(const CallbackView& view) {
  const bool answered = call_callback(record_, view);
  last_call_ = now_seconds();
  return answered;
}

void CallbackHooks::poll() {
  if (std::this_thread::get_id() != thread_ || now_seconds() - last_call_ < kPollInterval) return;
  call({});
}

void CallbackHooks::presolve(const PresolveProgress& progress) {
  call({.where = ZLP_WHERE_PRESOLVE, .presolve = &progress});
}

void CallbackHooks::simplex(const SimplexProgress& progress) {
  call({.where = ZLP_WHERE_SIMPLEX, .simplex = &progress});
}

void CallbackHooks::barrier(const BarrierProgress& progress) {
  call({.where = ZLP_WHERE_BARRIER, .barrier = &progress});
}

void CallbackHooks::search(const SearchProgress& progress) { call({.where = ZLP_WHERE_MIP, .search = &progress}); }

bool CallbackHooks::solution(const SearchProgress& progress, const std::vector<double>& x, double objective,
                             std::vector<SideRow>& rows) {
  return call({.where = ZLP_WHERE_MIP_SOLUTION, .search = &progress, .x = &x, .objective = objective, .rows = &rows});
}

void CallbackHooks::node(const SearchProgress& progress, int depth, const std::vector<double>& x, double objective,
                         std::vector<SideRow>& rows) {
  call({.where = ZLP_WHERE_MIP_NODE,
        .search = &progress,
        .x = &x,
        .objective = objective,
        .depth = depth,
        .rows = &rows});
}

bool CallbackHooks::take_offered(std::vector<double>& x) {
  if (record_.offered.empty()) return false;
  x = std::move(record_.offered.front());
  record_.offered.pop_front();
  return true;
}

}  // namespace zorvex
