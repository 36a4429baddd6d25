#include "env/processors.hpp"

#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <set>
#include <string>

namespace zorvex {

namespace {

int processor_ceiling() {
  const char* text = std::getenv("NUMBER_OF_PROCESSORS");
  if (text == nullptr) return kMaxProcessors;
  const long count = std::strtol(text, nullptr, 10);
  return count > 0 && count < kMaxProcessors ? static_cast<int>(count) : kMaxProcessors;
}

// Numbers of the processors this process may run on; empty when the system does not tell.
std::set<int> allowed_processors() {
  std::set<int> allowed;
  cpu_set_t mask;
  CPU_ZERO(&mask);
  if (sched_getaffinity(0, sizeof(mask), &mask) != 0) return allowed;
  for (int cpu = 0; cpu < CPU_SETSIZE; ++cpu) {
    if (CPU_ISSET(cpu, &mask)) allowed.insert(cpu);
  }
  return allowed;
}

}  // namespace

int count_logical_processors() {
  int count = static_cast<int>(allowed_processors().size());
  if (count == 0) count = static_cast<int>(std::min<long>(sysconf(_SC_NPROCESSORS_ONLN), kMaxProcessors));
  return std::max(1, std::min(count, processor_ceiling()));
}

int count_physical_cores() {
  const int logical = count_logical_processors();
  std::set<std::string> cores;  // each core appears as the list of the processors on it
  for (const int cpu : allowed_processors()) {
    std::ifstream file("/sys/devices/system/cpu/cpu" + std::to_string(cpu) + "/topology/thread_siblings_list");
    std::string siblings;
    if (!std::getline(file, siblings)) return logical;
    cores.insert(siblings);
  }
  return cores.empty() ? logical : std::min(logical, static_cast<int>(cores.size()));
}

bool processor_has_sse2() { return __builtin_cpu_supports("sse2") != 0; }

}  // namespace zorvex
