// The registered callback of a model and the call of it that is in progress: what it may ask for, and where its answers
// go.
//   Ownership  the model owns the record; its memory comes from a pool, so that a handle kept too long reads as dead.
//   Threads    the user's function runs on the thread that solves, one call at a time.
#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

#include "base/solve_hooks.hpp"
#include "zorvex.h"

namespace zorvex {

inline constexpr std::uint32_t kCallbackMagic = 0x3C8B11D6;

// What is known in one call; null where there is nothing of the kind. Units as in SolveHooks.
struct CallbackView {
  int where = ZLP_WHERE_POLLING;
  const char* text = nullptr;
  const PresolveProgress* presolve = nullptr;
  const SimplexProgress* simplex = nullptr;
  const BarrierProgress* barrier = nullptr;
  const SearchProgress* search = nullptr;
  const std::vector<double>* x = nullptr;  // solution or relaxation
  double objective = 0;                    // of x
  int depth = 0;
  std::vector<SideRow>* rows = nullptr;  // takes cuts and constraints
};

}  // namespace zorvex

struct ZLPcbdata {
  std::atomic<std::uint32_t> magic{0};
  ZLPmodel* model = nullptr;
  ZLPcallback function = nullptr;
  void* user = nullptr;

  const zorvex::CallbackView* view = nullptr;  // of the call in progress
  bool solving = false;
  bool failed = false;      // the function has ended this solve
  bool takes_rows = false;  // the solve counts on further constraints
  double start_time = 0;    // now_seconds() at which the solve began
  std::deque<std::vector<double>> offered;
};

namespace zorvex {

// A record of the model, as yet without effect. Throws std::bad_alloc.
std::shared_ptr<ZLPcbdata> make_callback(ZLPmodel& model, ZLPcallback function, void* user);

// Makes the record the model's callback, for messages too; null removes the one there is.
void install_callback(ZLPmodel& model, std::shared_ptr<ZLPcbdata> record);

// Calls the function, unless it is running already or has ended the solve: nothing happens then, and the answer is
// false. A failing call during a solve also asks the solve to stop.
bool call_callback(ZLPcbdata& record, const CallbackView& view);

// ZLPcbget for a call in progress: 0 or 10011, 10002, with the text recorded on the model's environment.
int get_callback_data(const ZLPcbdata& record, int where, int what, void* result);

}  // namespace zorvex
