// Several solves of one model at the same time, each on its own thread: the first that decides the model stops the
// others.
//   Winner   by the clock: whoever is done first. By work: whoever needed the least counted effort, a tie going to the
//            earlier in the list; the others are stopped only once they have spent more, so the winner, and with it
//            everything in its answer, is the same in every run.
//   Threads  the caller's thread only waits, polls the stop token every few milliseconds and passes its request on;
//            callbacks run nowhere else.
//   Errors   an exception of one solve matters only when no other decides the model: it is thrown again here.
#pragma once

#include <functional>
#include <vector>

#include "base/stop_token.hpp"
#include "simplex/lp_engine.hpp"

namespace zorvex {

// Whether an answer leaves nothing for another method to find out.
bool decides(const EngineAnswer& answer);

struct Contestant {
  const char* name;
  std::function<EngineAnswer(const StopToken&)> solve;  // polls the token; on a thread of its own
};

struct RaceResult {
  EngineAnswer answer;
  Index winner = -1;  // -1: none decided the model, the answer is the most useful of the others'
  double work = 0;    // counted effort of the winner
};

// At least one contestant.
RaceResult run_race(const std::vector<Contestant>& contestants, bool by_work, const StopToken& stop);

}  // namespace zorvex
