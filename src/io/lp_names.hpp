// Names that LP-format files can carry.
#pragma once

#include <string>

namespace zorvex {

// Whether the format and the tools that read it carry the name: an LP name without brackets, not like a number's
// exponent ("e5"), no keyword in any case, and short enough for its line.
[[nodiscard]] bool lp_can_carry_name(const std::string& name);

}  // namespace zorvex
