// How many random trials a differential test makes and where it begins: a small slice by default, any stretch of the
// sequence by the environment variables ZORVEX_TRIALS and ZORVEX_FIRST_TRIAL. Trial numbers are seeds: a failing one is
// repeated alone by naming it.
#pragma once

#include <cstdlib>

namespace zorvex::differential {

inline long number_from(const char* variable, long otherwise) {
  const char* text = std::getenv(variable);
  return text == nullptr ? otherwise : std::atol(text);
}

struct Trials {
  explicit Trials(long usual)
      : first(number_from("ZORVEX_FIRST_TRIAL", 0)), end(first + number_from("ZORVEX_TRIALS", usual)) {}
  long first, end;
};

}  // namespace zorvex::differential
