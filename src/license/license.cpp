#include "license/license.hpp"

#include "base/status.hpp"

namespace zorvex {

int License::acquire() {
  held_ = true;
  return kOk;
}

int License::status() const { return held_ ? kOk : kErrorNoLicense; }

}  // namespace zorvex
