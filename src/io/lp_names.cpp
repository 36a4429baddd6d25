#include "io/lp_names.hpp"

#include "io/lp_keywords.hpp"
#include "io/lp_lexer.hpp"

namespace zorvex {

bool lp_can_carry_name(const std::string& name) {
  constexpr std::size_t kLongest = 240;  // leaves room for a coefficient's sign on a line of 255 characters
  if (name.size() > kLongest || !is_lp_name(name) || name.find('[') != std::string::npos) return false;
  const bool exponent = (name[0] == 'e' || name[0] == 'E') && name.size() > 1 && name[1] >= '0' && name[1] <= '9';
  return !exponent && !is_lp_reserved(name);
}

}  // namespace zorvex
