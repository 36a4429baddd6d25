// Number and index types, infinity. Infinity is IEEE inside; the finite 1e30/1e100 of the C interface are converted
// at the boundary.
#pragma once

#include <cstdint>
#include <limits>

namespace zorvex {

using Index = std::int32_t;   // rows, columns, basis positions
using Offset = std::int64_t;  // counts of nonzeros, positions in compressed storage
using Extended = long double;
static_assert(std::numeric_limits<Extended>::digits == 64, "the extended kernel needs the 80-bit x87 format");

inline constexpr double kInf = std::numeric_limits<double>::infinity();

}  // namespace zorvex
