// Any bytes as a parameter file.
#include "fuzz_support.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ZLPenv* env = zorvex::fuzz::quiet_env();
  const zorvex::fuzz::MemoryFile file(zorvex::fuzz::text_of(data, size));
  if (ZLPreadparams(env, file.name().c_str()) == 0) {
    const zorvex::fuzz::MemoryFile written("");
    zorvex::fuzz::require(ZLPwriteparams(env, written.name().c_str()) == 0);
  }
  ZLPresetparams(env);
  ZLPsetintparam(env, "OutputFlag", 0);
  return 0;
}
