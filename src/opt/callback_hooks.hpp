// Carries what a running solve tells to the user's callback, and its answers back.
#pragma once

#include <thread>

#include "opt/callback_record.hpp"

namespace zorvex {

// Alive for the time of one solve; `record` outlives it.
class CallbackHooks final : public SolveHooks {
 public:
  // `takes_rows`: the solve counts on cuts and constraints from the callback.
  CallbackHooks(ZLPcbdata& record, double start_time, bool takes_rows);
  ~CallbackHooks() override;
  CallbackHooks(const CallbackHooks&) = delete;
  CallbackHooks& operator=(const CallbackHooks&) = delete;

  // Whether the callback has ended the solve.
  [[nodiscard]] bool failed() const { return record_.failed; }

  void poll() override;
  void presolve(const PresolveProgress& progress) override;
  void simplex(const SimplexProgress& progress) override;
  void barrier(const BarrierProgress& progress) override;
  void search(const SearchProgress& progress) override;
  bool solution(const SearchProgress& progress, const std::vector<double>& x, double objective,
                std::vector<SideRow>& rows) override;
  void node(const SearchProgress& progress, int depth, const std::vector<double>& x, double objective,
            std::vector<SideRow>& rows) override;
  bool take_offered(std::vector<double>& x) override;

 private:
  bool call(const CallbackView& view);

  ZLPcbdata& record_;
  std::thread::id thread_ = std::this_thread::get_id();
  double last_call_ = -1;  // now_seconds() of the last call of any kind
};

}  // namespace zorvex
