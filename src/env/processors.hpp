// How many processors this process may use, and whether they can run the library at all.
#pragma once

namespace zorvex {

inline constexpr int kMaxProcessors = 1024;

// Processors of the system that this process is allowed to run on; at most kMaxProcessors, or at most the environment
// variable NUMBER_OF_PROCESSORS where that holds an integer in (0, 1024). At least 1.
int count_logical_processors();

// As above, counting processor cores where the system tells which processors share one. At least 1.
int count_physical_cores();

bool processor_has_sse2();

}  // namespace zorvex
