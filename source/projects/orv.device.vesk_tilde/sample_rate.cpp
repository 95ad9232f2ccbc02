#include "sample_rate.h"

#include <array>
#include <charconv>
#include <string>

#include "platform.h"

namespace kv7::orv {
namespace {

// With a decimal point in every locale.
std::string decimal(double x) {
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), x);
    return {digits.data(), end.ptr};
}

}  // namespace

void require_sample_rate(double hz) {
    if (!is_sample_rate(hz))
        refuse_argument("sample rate " + decimal(hz) + " Hz: expected " +
                        decimal(lowest_sample_rate) + " to " + decimal(highest_sample_rate) +
                        " Hz");
}

}  // namespace kv7::orv
