#include "presolve/reduction.hpp"

namespace zorvex {

#define REDUCTION(name) extern const Reduction name;
#include "presolve/registry.inc"
#undef REDUCTION

std::span<const Reduction* const> reduction_registry() {
#define REDUCTION(name) &name,
  static const Reduction* const kAll[] = {
#include "presolve/registry.inc"
  };
#undef REDUCTION
  return kAll;
}

}  // namespace zorvex
