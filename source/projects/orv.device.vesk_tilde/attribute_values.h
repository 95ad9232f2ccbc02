// How numbers become the values of attributes that are no plain floats.
#pragma once

#include <cstdint>
#include <limits>

namespace kv7::orv {

// Truncates; a number that does not fit or is not a number gives the smallest integer.
inline std::int64_t to_integer(double x) noexcept {
    constexpr double limit = 9223372036854775808.0;  // 2^63
    if (!(x >= -limit && x < limit)) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(x);
}

// An element of a list, clamped to the range; not a number counts as low.
inline double clamped_element(double x, double low, double high) noexcept {
    return x > high ? high : x >= low ? x : low;
}

}  // namespace kv7::orv
